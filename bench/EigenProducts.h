#pragma once

#include <memory>

/// The yardstick of products: Eigen's, in double precision, with so many threads, of two tables of the same number of
/// rows.
class EigenProducts {
 public:
  EigenProducts(int rows, int columns, int otherColumns, int threads);
  ~EigenProducts();
  void Multiply();  ///< the product of the transposed first with the second, columns x otherColumns

 private:
  struct Tables;
  std::unique_ptr<Tables> tables_;
};
