#pragma once

#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/VexStream.h"

template <class T>
class NCSVD;
template <class T>
class NCDataMatrix;

/// Holds a work matrix and deletes it at the end if it owns it. See NCDataMatrix::GetReturnMatrix.
template <class T>
struct KALMIA_EXPORT MatrixDestroyer {
  MatrixDestroyer() = default;
  MatrixDestroyer(const MatrixDestroyer&) = delete;
  MatrixDestroyer& operator=(const MatrixDestroyer&) = delete;
  ~MatrixDestroyer();

  NCDataMatrix<T>* matrix = nullptr;
  bool owner = true;
};

/// The table: observations in rows, variables in columns, both from 1. An array of NCDataVector rows with counts of
/// missing cells per column and in total. Sharing works on two levels: a copy shares the whole row array; a write
/// splits the row array, and each row goes on sharing its cells until it is written. Instantiated for `float` and
/// `double`. Indices and shapes of operands are not checked. An operand or a result target may be the matrix itself or
/// one of its rows; a target may also be an operand.
///
/// A table has at most 2^31 - 1 cells, so that every count is an `int`. Constructors, SetSize, Resize, operations that
/// add rows or columns, and operations with a larger result throw NCError for more cells or a negative size, before
/// they take memory.
///
/// Concurrent reads are safe. Nobody may then write to the table, name a result target, stream the table (`operator<<`
/// marks it as visited), or share it, because share counts are not atomic. These share: copies; GetRowSubMatrix;
/// InsertRow, push_back, SetRow and ConcatRows share their argument; InsertColumns does if this table is 0 by 0.
///
/// Writing operations unlink first and keep all counts of missing cells, unless they say otherwise. std::bad_alloc
/// leaves sharing and structure unchanged (Resize may have done some of its four steps); cell-by-cell writes may be
/// partly done, with correct counts.
///
/// An operation that returns a vector or a matrix builds it in the target named by `Result`, if there is one. The
/// target must already have the size of the result.
template <class T>
class KALMIA_EXPORT NCDataMatrix : public kalmia::Persistent<NCDataMatrix<T>, kalmia::VirtualStreamBase> {
  using Persistence = kalmia::Persistent<NCDataMatrix, kalmia::VirtualStreamBase>;

 public:
  using value_type = NCDataVector<T>;

  NCDataMatrix();                                        ///< 0 by 0
  NCDataMatrix(int rows, int columns, T value = kalmia::kMissingCell<T>);
  NCDataMatrix(const NCDataMatrix& other);               ///< shares; result targets are not copied
  NCDataMatrix& operator=(const NCDataMatrix& other);    ///< shares; result targets stay as they are
  ~NCDataMatrix() override;

  // Sharing.
  void swap(NCDataMatrix& other);                        ///< all members, result targets included
  void Clear();                                          ///< 0 by 0, without result targets
  void ForceUnlink();                                    ///< afterwards no storage is shared with anybody
  void CopyContent(const NCDataMatrix& other);           ///< a private deep copy of the other's cells

  // Access.
  int SizeRows() const { return rows_; }
  int SizeColumns() const { return columns_; }
  int GetNumMisVal() const { return numMisVal_; }
  int GetColumnMisVal(int c) const { return (*columnMisVal_)[c]; }
  const NCDataVector<T>& operator[](int r) const { return rowArray_[r]; }
  /// The row for writing. Writes through it update the row's count of missing cells, not those of the matrix.
  NCDataVector<T>& operator()(int r);
  T operator()(int r, int c, T value);                   ///< writes the cell and all counts, returns value
  const NCDataVector<T>* begin() const { return rowArray_ ? rowArray_ + 1 : nullptr; }
  const NCDataVector<T>* end() const { return rowArray_ ? rowArray_ + 1 + rows_ : nullptr; }
  const NCDataVector<T>& back() const { return rowArray_[rows_]; }
  NCDataVector<T> GetColumn(int c) const;                ///< rows cells, its holes counted; a target may be a row
  /// Rows first to last, sharing their cells with this matrix. All rows: a share of the whole matrix.
  NCDataMatrix GetRowSubMatrix(int first, int last) const;
  /// A new array of rows + 1 pointers; entry r points to the 1-based cells of row r. With `keep` it aliases the matrix.
  /// Without, the matrix gives its cells away, and may only be assigned to or destroyed.
  static T** GetMatrixAsPointerPointer(NCDataMatrix& m, bool keep);
  /// Frees the array, and with `cells` the cells of its `count` rows (those that `keep` = false gave away).
  static void ReleasePointerPointer(T** rows, int count, bool cells);

  // Structure. An insert position after the end + 1 counts as the end + 1. New cells are missing. Room for rows grows
  // by NCDataVector's rule. A matrix without rows takes its number of columns from the first row inserted; one without
  // columns takes its number of rows from a first single column; a 0 by 0 matrix becomes a share of a table whose
  // columns are inserted.
  void SetSize(int r, int c);                            ///< another size sets all missing; the present one keeps cells
  void Resize(int r, int c);                             ///< keeps the content
  void ReserveRows(int n);                               ///< room for exactly n rows, if that is more than now
  void ReserveColumns(int n);                            ///< the same for the cells of each row
  void InsertRows(int at, int n);
  void InsertRow(int at, const NCDataVector<T>& v);      ///< the new row shares v's cells
  const NCDataVector<T>* push_back(const NCDataVector<T>& v);  ///< after the last row; returns end()
  void RemoveRows(int at, int n);
  void RemoveRows(const NCIntegralVector<int, -99>& indices);  ///< listed in any order; repeats count once
  void InsertColumns(int at, int n);
  void InsertColumns(int at, const NCDataMatrix& m);     ///< m's columns, of as many rows
  void InsertColumn(int at, const NCDataVector<T>& v);   ///< the first column settles the number of rows
  void RemoveColumns(int at, int n);
  void ReduceColumns(const NCIntegralVector<int, -99>& indices);  ///< to the listed ones in their order, with repeats
  void ConcatRows(const NCDataMatrix& m);                ///< m's rows below this one's, shared
  void ConcatColumns(const NCDataMatrix& m);             ///< m's columns to the right
  void RearrangeColumns(const std::vector<int>& order);  ///< listed ones, counted anew; none: 0 by 0; drops targets
  void SwapRows(int a, int b);                           ///< does not unlink: for a matrix that nobody shares
  void SwapColumns(int a, int b);                        ///< neither matrix nor rows are unlinked: for unshared ones

  // Rows and columns of cells. Defined in NCDataMatrixCells.cpp.
  void SetRow(int r, const NCDataVector<T>& v);          ///< the row becomes a share of v
  void SetRow(int r, T value);
  void SetColumn(int c, const T* p);                     ///< p[1] to p[rows], not cells of this matrix
  void SetColumn(int c, const NCDataVector<T>& v);
  /// Sets the column. Setting it missing does nothing if it has as many holes as the matrix has columns.
  void SetColumn(int c, T value);
  /// Makes row `to` a share of row `from`. Neither unlinks nor keeps the counts (column count c changes by cell c of
  /// row c and of `from`), so only for complete, unshared tables.
  void CopyRow(int from, int to);
  void CopyColumn(int from, int to);
  void CopyColumn(int to, const NCDataMatrix& m, int from);
  void SetAllValues(T value);
  void MultiplyRow(int row, T factor);                   ///< every present cell times factor
  void MultiplyColumn(int c, long double d, int to);     ///< column `to` = column c times d; d missing empties c
  void MultiplyColumns(int a, int b, int to);            ///< column `to` = a times b, missing where either is
  /// Subtracts d from the present cells; d missing empties the column. A result of exactly -99 moves to the next float
  /// below (to -99.00001 in double), so that no hole appears.
  void SubtractFromColumn(int c, long double d);
  void LagColumn(int c, int k);                          ///< shifts down by k rows; vacated cells become missing
  /// Each cell times the cell of s for its column; a missing scale leaves the cell. Does not count a product of exactly
  /// -99. Unlinks neither matrix nor rows, so only for a matrix that shares nothing.
  void TransformToColumnScaled(const NCDataVector<T>& s);
  /// Subtracts v from every row; a cell with a hole on either side stays. A difference of exactly -99 is not counted.
  void TransformToDotSubRowVector(const NCDataVector<T>& v);
  /// Byte equality of the rows on the left with the first rows on the right. A left side without rows equals anything;
  /// one with more rows than the right side equals nothing.
  bool operator==(const NCDataMatrix& other) const;
  bool operator!=(const NCDataMatrix& other) const { return !(*this == other); }

  // Results in place. A target serves one operation. It is unlinked first and never resized.
  NCDataMatrix& Result(NCDataMatrix* target);
  const NCDataMatrix& Result(NCDataMatrix* target) const;
  NCDataMatrix& Result(NCDataVector<T>* target);
  const NCDataMatrix& Result(NCDataVector<T>* target) const;
  /// The work vector of an operation: the target, or a new one of n missing cells.
  void GetReturnVector(VectorDestroyer<T>& holder, int n) const;
  /// The work matrix of an operation: the target, or a new one, all missing; without rows it is 0 by 0.
  void GetReturnMatrix(MatrixDestroyer<T>& holder, int rows, int columns) const;

  // Statistics; n counts the present cells, -99 is "no estimate". Statistics of a column are as on NCDataVector; if its
  // count of holes is 0, its cells are not tested. Defined in NCDataMatrixStatistics.cpp and its neighbours.
  long double GetMean() const;                           ///< of all present cells; -99 of none
  long double GetColumnMean(int c) const;                ///< all missing: -99; no rows: 0
  long double GetColumnSS(int c, long double mean) const;  ///< sum (x - mean)^2; all missing: -99; no rows: 0
  /// Root of the sum of squares around the mean over `divisor`, or over n - 1 if `divisor` is -99. A denominator at or
  /// below 0, or no present cell, gives -99.
  long double GetColumnStdDev(int c, float divisor = static_cast<float>(kalmia::kMissing)) const;
  /// Standardised with GetColumnStdDev(c, divisor).
  long double GetColumnSkewness(int c, int divisor = kalmia::kMissing) const;
  long double GetColumnSkewnessTest(int c, int divisor = kalmia::kMissing) const;
  long double GetColumnKurtosis(int c) const;
  long double GetColumnMedian(int c) const;
  void GetColumnMinMax(int c, T& min, T& max) const;     ///< -99 in both if no cell is present
  void GetRowMinMax(int r, T& min, T& max) const;
  long double GetSSAroundColumnMeans() const;            ///< sum over the columns; empty ones are left out
  /// NCDataVector::Correlation of each column with v, which has a cell per row; missing where a column has no pair.
  NCDataVector<T> GetColumnCorrelation(const NCDataVector<T>& v) const;
  NCDataMatrix SNV() const;                              ///< standard normal variate of each row
  /// Coefficients (X X')^-1 X Y' of Y on this X, with variables in rows (X: p by n, Y: q by n, result p by q). Holes in
  /// either give zeros of rows by rows. Not tested: whether X X' has an inverse.
  NCDataMatrix GetRegressionCoefficients(const NCDataMatrix& Y) const;
  /// Averaged shifted histogram of the columns as points in the space of the rows: a density per column, scaled to 0 ..
  /// 1 unless all are equal. For s = 1, 2, 4 ... up to `shifts` every axis is cut into `bins` * s cells from its
  /// minimum to its maximum, and each point receives (s + 2) / 2, in whole numbers, for every point in its cell. Below
  /// 5000 columns, or with `all`, the same follows with the grid moved by half a step. `bins` below 1: columns^(1 /
  /// (rows + 1)), whole part; `shifts` below 1: 16, from 51 bins on 8, from 201 on 4, from 501 on 2, from 1001 on 1.
  /// Missing: a column with a hole, or a number that is not finite, has the density 0 before scaling.
  /// Cost: time rows * columns * log(shifts); memory of the points only, whatever the number of cells.
  /// Source: Scott (1985), Averaged shifted histograms, Ann. Statist. 13, 1024-1040.
  NCDataVector<T> GetDensity(int bins, int shifts, bool all) const;

  // Regressions with holes: the heart of the models. Defined in kernels/. All results through GetReturnVector.
  NCDataVector<T> RegressColumns(const NCDataVector<T>& v) const;  ///< sum x v / sum v^2 for each column
  static void RegressOneColumn(T* out, int c, const NCDataMatrix& X, const NCDataVector<T>& v, long double ss,
                               int misValMode, int& numMisVal);
  /// The same with a denominator of at least a third of v's full sum of squares.
  NCDataVector<T> SpecialNipalsRegressColumnsFix(const NCDataVector<T>& v) const;
  /// Leaves out the columns whose cell in `groups` equals `group`; they stay missing. Null leaves out nothing.
  NCDataVector<T> SpecialNipalsRegressColumnsFix(const NCDataVector<T>& v, const NCIntegralVector<int, -99>* groups,
                                                 int group) const;
  static void SpecialNipalsRegressOneColumnFix(T* out, int c, const NCDataMatrix& X, const NCDataVector<T>& v,
                                               long double ss, int misValMode, int& numMisVal);
  NCDataVector<T> RegressRows(const NCDataVector<T>& v) const;     ///< v.Regress(row) for each row
  /// v.SpecialNipalsRegressFix(row) for each row, leaving out the positions of v whose cell in `groups` equals `group`.
  NCDataVector<T> SpecialNipalsRegressRowsFix(const NCDataVector<T>& v, const NCIntegralVector<int, -99>* groups,
                                              int group) const;
  NCDataVector<T> SpecialNipalsRegressRowsFixWithExclude(const NCDataVector<T>& v, int start, int stride) const;
  /// The column of largest sum of squares (a later one must win by a part in a million), holes filled with a hundredth
  /// of its largest absolute value (9900: -99 is a hole again), signs alternating; one column alone keeps its holes.
  NCDataVector<T> GetNIPALSStartColumn() const;
  NCDataVector<T> PreMultiply(const NCDataVector<T>& v) const;     ///< v' X
  /// Row r of X takes f * w added (w from 0); the row step of AddVprimV. A missing f empties the row.
  static void AddFV(NCDataMatrix& X, T f, const T* w, int misValMode, int r, int& numMisVal, int* columnMisVal);

  // Products and deflation. A cell without a pair is missing. Defined in kernels/.
  NCDataMatrix operator*(const NCDataMatrix& B) const;
  NCDataVector<T> operator*(const NCDataVector<T>& v) const;
  NCDataMatrix operator*(long double d) const;
  NCDataMatrix MatrixMultiply(const NCDataMatrix& B, bool transposeThis, bool transposeOther) const;
  void TransformToMprim_mul_M();                         ///< A' A
  void Transpose();                                      ///< in place
  void AddVprimV(const NCDataVector<T>& u, const NCDataVector<T>& w, T f);  ///< in place A += f u w'
  void TransformToAdd_V_x_Vt(const NCDataVector<T>& u, const NCDataVector<T>& w);
  void TransformToSub_V_x_Vt(const NCDataVector<T>& u, const NCDataVector<T>& w);  ///< the deflation of the models
  NCDataMatrix operator+(const NCDataMatrix& B) const;
  NCDataMatrix operator-(const NCDataMatrix& B) const;
  NCDataMatrix& operator+=(const NCDataMatrix& B);
  NCDataMatrix& operator-=(const NCDataMatrix& B);
  NCDataMatrix DotMultiplyVector(const NCDataVector<T>& v) const;     ///< cell (r, c) times v[r]
  NCDataMatrix DotDivideVector(const NCDataVector<T>& v) const;       ///< over v[r]; a zero is not tested for
  NCDataMatrix DotPreMultiplyVector(const NCDataVector<T>& v) const;  ///< cell (r, c) times v[c]
  NCDataMatrix DotPreDivideVector(const NCDataVector<T>& v) const;
  long double GetSS() const;                             ///< sum of the rows' sums of squares

  // Decompositions. Defined in kernels/.
  NCSVD<T>* GetSVD() const;                              ///< the caller owns it; look at its status
  NCSVD<T>* TransformToSVD();                            ///< for a heap object: it becomes U, owned by the result
  /// Replaces a square matrix by its inverse, without a test for holes. False if a row is zero or the matrix is not
  /// square; its cells are then undefined. A pivot of exactly 0 counts as 1e-20: very large cells, and true.
  bool TransformToInverse();

  // Persistence: magic "NCDM", version 4; versions 1 to 3 are read. Missing cells are counted from the cells. A read
  // refuses sizes that the stream does not cover, rows of other lengths, another number of column counts, and more than
  // 2^31 - 1 cells: version 4 throws VexStreamError, older versions return false. The matrix is then 0 by 0.
  using typename Persistence::DerivedStreamableData;
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 protected:
  void Unlink();                                         ///< UnlinkMe if shared
  void UnlinkMe();                                       ///< a row array of its own; rows go on sharing their cells
  void SetNoMisVal();                                    ///< declares the matrix free of holes without looking
  NCDataVector<T> PreMultiplyNonMisVal(const NCDataVector<T>& v) const;
  NCDataVector<T> PreMultiplyMisVal(const NCDataVector<T>& v) const;
  NCDataMatrix MultiplyTransposeThis(const NCDataMatrix& B) const;
  NCDataMatrix MultiplyTransposeOther(const NCDataMatrix& B) const;
  NCDataMatrix MultiplyTransposeBoth(const NCDataMatrix& B) const;
  static NCSVD<T>* SVD(NCDataMatrix* m);

 private:
  friend class kalmia::UnlinkedRows<T>;

  bool ReadStreamDirectory(std::istream& stream);        ///< version 4
  bool ReadOldLayout(std::istream& stream, short version);
  void CountMissing();                                   ///< all counts of the matrix from its rows' cells
  void AddToCounts(const NCDataVector<T>& row, int times);  ///< the row's holes, times +1 or -1, into all counts
  void LetGo();                                          ///< of the content: frees what nobody else shares
  void GiveCellsAway();                                  ///< forgets the rows' cells, which somebody else now owns
  void MoveRows(int capacity);                           ///< to a row array of its own with room for `capacity` rows
  void MakeRoom(int wanted);                             ///< unlinks; room for `wanted` rows by the rule of growth
  /// Rows 1 to `rows` of the array: unshared, with room for `cells` cells by the rule of growth. Their cells stay.
  void PrepareRows(int rows, int cells);
  void VacateRows(int first, int last);                  ///< empties these; needs no memory
  void EmptyColumn(int c);                               ///< sets the whole column missing

  // What the kernels use.
  /// Calls fillRow(r, cells) for every row, its 1-based cells unlinked, and counts the missing cells afterwards.
  template <class FillRow>
  void FillRows(const FillRow& fillRow);
  /// this * B, each factor transposed if so told, into a matrix of the shape of the product that is neither factor.
  void MultiplyInto(NCDataMatrix& product, const NCDataMatrix& B, bool transposeThis, bool transposeOther) const;
  void GiveBackSurplus(int oldRows);                     ///< the end of Transpose: memory that is not needed any more

  int* linkCount_;                                       ///< use count of the row array and the column counts
  int columns_ = 0;
  int rows_ = 0;
  NCDataVector<T>* rowArray_ = nullptr;                  ///< rowCapacity + 1 rows; row 0 is never used
  NCIntegralVector<int, -99>* columnMisVal_;             ///< missing cells per column; shared only with the row array
  int numMisVal_ = 0;
  int rowCapacity_ = 0;
  mutable NCDataVector<T>* vectorResultTarget_ = nullptr;
  mutable NCDataMatrix* matrixResultTarget_ = nullptr;
};

extern template struct MatrixDestroyer<float>;
extern template struct MatrixDestroyer<double>;
extern template class NCDataMatrix<float>;
extern template class NCDataMatrix<double>;
