#pragma once

#include <vector>

namespace kalmia {

/// Decomposes a square matrix in place as P A = L U by Crout's method, with partial pivoting on rows scaled by their
/// largest absolute value; of equal pivots the first is taken. `a` holds n row pointers from 1, with cells from 1; a
/// row exchange exchanges pointers. L has a unit diagonal; a pivot of exactly 0 becomes 1e-20 in T.
/// `order[i]`, from 1, is the original position of the row that came to stand at i.
/// Sums are held in double, cells are rounded to T. False, with the cells unchanged, where a row has no cell above 0 in
/// absolute value. Cost: n^3 / 3 multiplications.
/// Source: Golub & Van Loan (2013), Matrix Computations, 3.2 and 3.4.
template <class T>
bool DecomposeLU(T** a, int n, std::vector<int>& order);

/// The inverse from what DecomposeLU left, by forward and back substitution of every unit vector in double. `inverse`
/// holds n row pointers from 1, with cells from 1, that need not be set. Takes n^2 doubles; cost: n^3
/// multiplications.
template <class T>
void InvertLU(const T* const* a, int n, const std::vector<int>& order, T* const* inverse);

}  // namespace kalmia
