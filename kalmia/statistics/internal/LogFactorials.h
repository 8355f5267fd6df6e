#pragma once

#include <vector>

namespace kalmia {

/// ln n! in double, from a table for small n and Stirling's series beyond it (relative error below 1e-15).
class LogFactorials {
 public:
  explicit LogFactorials(int largest);
  double operator[](int n) const { return n < static_cast<int>(table_.size()) ? table_[Index(n)] : Stirling(n); }

 private:
  static std::size_t Index(int n) { return static_cast<std::size_t>(n); }
  static double Stirling(int n);

  std::vector<double> table_;
};

}  // namespace kalmia
