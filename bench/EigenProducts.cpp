#include "EigenProducts.h"

#include <Eigen/Core>

using Table = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

struct EigenProducts::Tables {
  Table first, second, product;
};

EigenProducts::EigenProducts(int rows, int columns, int otherColumns, int threads)
    : tables_(new Tables{Table::Random(rows, columns), Table::Random(rows, otherColumns),
                         Table(columns, otherColumns)}) {
  Eigen::setNbThreads(threads);
}

EigenProducts::~EigenProducts() = default;

void EigenProducts::Multiply() { tables_->product.noalias() = tables_->first.transpose() * tables_->second; }
