#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

// Tables for tests, with and without holes, and a recount of what they claim to know of their holes.

/// What typed tests of the containers and kernels run for: TYPED_TEST_SUITE(Suite, CellTypes, CellTypeNames).
using CellTypes = ::testing::Types<float, double>;
struct CellTypeNames {
  template <class T>
  static const char* GetName(int) {
    return sizeof(T) == sizeof(float) ? "float" : "double";
  }
};

/// A missing cell.
template <class T>
constexpr T kHole = static_cast<T>(-99);
constexpr float kMissing = kHole<float>;  ///< of the tables that models take

/// A random vector: the same cells for the same arguments on every machine. A cell is a hole with the probability
/// `holes`, otherwise its magnitude lies between 1/16 and 3, its sign is either, and its mantissa is used to the end.
template <class T>
NCDataVector<T> RandomVector(int n, double holes, unsigned seed);

/// A random table of such cells.
template <class T>
NCDataMatrix<T> RandomMatrix(int rows, int columns, double holes, unsigned seed);

/// The table or vector of these cells.
template <class T>
NCDataMatrix<T> MatrixOf(std::initializer_list<std::initializer_list<T>> rows);
template <class T>
NCDataVector<T> VectorOf(std::initializer_list<T> cells);

/// The cells, from index 0 on, as something that shares nothing with the table.
template <class T>
std::vector<T> CellsOf(const NCDataVector<T>& vector);
template <class T>
std::vector<std::vector<T>> CellsOf(const NCDataMatrix<T>& matrix);

/// Whether the number of missing cells is what a count of the cells says; for a table also of each row, of each column
/// and of all cells, and whether each row has as many cells as the table has columns.
template <class T>
::testing::AssertionResult HasExactCounts(const NCDataVector<T>& vector);
template <class T>
::testing::AssertionResult HasExactCounts(const NCDataMatrix<T>& matrix);
