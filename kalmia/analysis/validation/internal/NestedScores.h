#pragma once

#include <cstddef>
#include <vector>

namespace kalmia::analysis {

/// Scores by least squares, those on the loadings of the first 1, 2, ... components at once. With p the loadings of a
/// cell, G = sum p p' over the cells that count and its Cholesky factor L, G = L L': for z = L^-1 sum x p of a row of
/// these cells x, the first a components describe
///
///   sum over b <= a of z_b v_b in a cell of loadings q, with v = L^-1 q, and
///   sum over b <= a of z_b^2 of the sum of squares of the row.
///
/// A component that has next to nothing in these cells beside what those before it have, less than 1e-6 in length of
/// loadings that are of unit length over all cells, has no score in them: its z and v are 0. Loadings are floats, whose
/// roundings are some 1e-7.
class NestedScores {
 public:
  /// `gram` is G, row after row; what stands above its diagonal is not read.
  NestedScores(std::vector<double> gram, std::size_t components);

  /// L^-1 times the vector, in place.
  void Solve(double* vector) const;

 private:
  std::size_t components_;
  std::vector<double> factor_;  ///< L; 0 on the diagonal for a component without a score
};

}  // namespace kalmia::analysis
