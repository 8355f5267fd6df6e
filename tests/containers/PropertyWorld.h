#pragma once

#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

using IndexVector = NCIntegralVector<int, -99>;

/// A few small tables, vectors and lists of whole numbers that operations are let loose on. Assignments and shares make
/// them share storage with each other in every way there is, so that whatever writes without splitting off is seen as a
/// change of an object that nobody named.
///
/// Present cells keep a magnitude between 1/16 and 3, zero apart, and tables have at most kMost rows and columns, so
/// that no result of one operation can reach 99 in magnitude: none lands on the missing value by accident.
template <class T>
class World {
 public:
  static constexpr int kMost = 7;

  explicit World(unsigned seed);
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  int Int(int first, int last);        ///< both included; `first` if there is nothing in between
  bool Chance(double probability);
  T Cell();                            ///< every fourth is a hole
  T PresentCell();
  std::vector<T> Cells(int n);
  long double Scalar() { return PresentCell(); }

  // What an operation changes; asking names it.
  NCDataMatrix<T>& Matrix();
  NCDataMatrix<T>& FilledMatrix();             ///< with rows and columns
  NCDataMatrix<T>& CompleteMatrix();           ///< without holes
  NCDataVector<T>& Vector();
  NCDataVector<T>& FilledVector();
  IndexVector& Integers();
  IndexVector& FilledIntegers();
  /// A vector of n cells to build a result in, or null for none.
  NCDataVector<T>* VectorTarget(int n);
  NCDataMatrix<T>* MatrixTarget(int rows, int columns);

  // What an operation only reads; may be what it changes, too.
  const NCDataMatrix<T>& AnyMatrix();
  const NCDataMatrix<T>& AnyFilledMatrix();
  const NCDataVector<T>& AnyVector();
  const IndexVector& AnyIntegers();
  const NCDataVector<T>& VectorOfSize(int n);  ///< a vector, a row, or a new one
  const NCDataMatrix<T>& MatrixOfRows(int rows);
  const NCDataMatrix<T>& MatrixOfColumns(int columns);
  const NCDataMatrix<T>& MatrixOfSize(int rows, int columns);
  const NCDataVector<T>& CompleteVectorOfSize(int n);
  IndexVector Indices(int n, int among);       ///< n of the positions 1 to `among`, with repeats

  /// What the last operation did to counts and to objects that it did not name; then makes ready for the next one.
  void CheckAndSettle();

 private:
  using Shape = std::function<bool(const NCDataMatrix<T>&)>;

  NCDataMatrix<T> NewMatrix(int fewest, double holes);  ///< with at least `fewest` rows and columns
  NCDataVector<T> NewVector(int fewest);
  const NCDataMatrix<T>& MatrixWhere(const Shape& fits, int rows, int columns);
  void Tame(NCDataMatrix<T>& m);
  void Tame(NCDataVector<T>& v);
  bool IsWild(T cell) const;

  std::mt19937 random_;
  std::vector<NCDataMatrix<T>> matrices_;
  std::vector<NCDataVector<T>> vectors_;
  std::vector<IndexVector> integers_;
  std::vector<std::string> fingerprints_;  ///< of the matrices, the vectors, the integers
  std::set<const void*> named_;
  std::vector<NCDataMatrix<T>> newMatrices_;
  std::vector<NCDataVector<T>> newVectors_;
};

template <class T>
struct Operation {
  const char* name;
  std::function<void(World<T>&)> run;
};

// All operations that keep counts, by theme.
template <class T>
std::vector<Operation<T>> VectorOperations();
template <class T>
std::vector<Operation<T>> VectorArithmetic();
template <class T>
std::vector<Operation<T>> IntegerOperations();
template <class T>
std::vector<Operation<T>> MatrixOperations();
template <class T>
std::vector<Operation<T>> MatrixCellOperations();
template <class T>
std::vector<Operation<T>> KernelOperations();
