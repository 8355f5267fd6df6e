#pragma once

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/VexStream.h"

template <class T>
class NCDataMatrix;
template <class T>
class NCDataVector;

namespace kalmia {
template <class T>
class AlignedBlock;
template <class T>
class UnlinkedRows;
}  // namespace kalmia

/// Holds a work vector and deletes it at the end if it owns it. See NCDataVector::GetReturnVector.
template <class T>
struct KALMIA_EXPORT VectorDestroyer {
  VectorDestroyer() = default;
  VectorDestroyer(const VectorDestroyer&) = delete;
  VectorDestroyer& operator=(const VectorDestroyer&) = delete;
  ~VectorDestroyer();

  NCDataVector<T>* vector = nullptr;
  bool owner = true;
};

/// The data vector: cells from 1, any of them possibly missing (-99), with a count of the missing ones. Copies share
/// storage until one of them is written to: reads never unlink; a non-const operation unlinks unless it says otherwise.
/// Instantiated for `float` and `double`; sums run in double, cells are stored as `T`.
/// Indices, positions and the sizes of operands are not checked. A size below 0 or above 2^31 - 1 throws NCError before
/// memory is taken; only the constructors treat a negative size as 0.
///
/// Concurrent reads are safe. Nobody may then write to the vector, name a result target, stream the vector
/// (`operator<<` marks it as visited), or copy or release it or a share of it.
///
/// An operation that returns a vector builds it in the target named by `Result`, if there is one. The target must
/// already have the size of the result.
template <class T>
class KALMIA_EXPORT NCDataVector : public kalmia::Persistent<NCDataVector<T>, kalmia::VirtualStreamBase> {
  using Persistence = kalmia::Persistent<NCDataVector, kalmia::VirtualStreamBase>;

 public:
  using value_type = T;

  NCDataVector();
  explicit NCDataVector(int n);                    ///< n cells, all missing
  NCDataVector(int n, T value);
  NCDataVector(const NCDataVector& other);         ///< shares, without the heap; the result target is not copied
  NCDataVector& operator=(const NCDataVector& other);
  ~NCDataVector() override;

  void Clear();
  void CopyContent(const NCDataVector& other);     ///< a private deep copy of the other's cells
  void CopyVector(const T* p, int n);              ///< n cells from a 1-based array
  /// n cells from a 0-based array, with their missing cells counted. Keeps a block that is large enough.
  void CopyZeroBasedVector(const T* p, int n);
  void ForceUnlink();                              ///< shares no storage afterwards

  // Access. A writing access keeps the count of missing cells. A NaN is not missing: it spoils sums, as NaNs do.
  int Size() const { return size_; }
  int size() const { return size_; }
  int GetNumMisVal() const { return numMisVal_; }
  const T* GetVector() const { return data_; }     ///< 1-based: cell i at [i]; [0] is never used
  const T* begin() const { return data_ ? data_ + 1 : nullptr; }
  const T* end() const { return begin() + size_; }
  T back() const { return data_[size_]; }
  T operator[](int i) const { return data_[i]; }
  T operator()(int i, T value);                    ///< writes cell i, returns value
  int SetAndReturn_dMisVal(int i, T value);        ///< the same; returns the change of the count: +1, 0 or -1
  // Ranges are written cell by cell in ascending order. If source and target overlap, cells already written are read
  // with their new values.
  void operator()(int first, const T* p, int n);   ///< n cells from a 0-based array
  void SetRange(int first, const T* p, int n);
  void operator()(int first, const NCDataVector& v, int from, int n);  ///< n cells of v, from its cell `from` on
  void SetRange(int first, const NCDataVector& v, int from, int n);
  void SetAllValues(T value);                      ///< a zero of either sign is written as +0

  // Structure. A position above size + 1 counts as size + 1. Capacity never shrinks; it grows from 0 to 4, from c below
  // 3000 to 2c, from other c to c + 3000, or to the size that is needed if this is more.
  void Reserve(int n);                             ///< room for exactly n cells, if that is more than now
  void SetSize(int n);                             ///< another size sets all cells missing; the present one keeps them
  NCDataVector& Resize(int n, T fill = kalmia::kMissingCell<T>);  ///< keeps the cells; new ones take fill
  void resize(int n, T fill = kalmia::kMissingCell<T>) { Resize(n, fill); }
  void InsertValues(int at, int n, T value);       ///< n cells of value in front of cell `at`
  void InsertValues(int at, const NCDataVector& v);  ///< the cells of v, which may be this vector
  void RemoveValues(int at, int n);                ///< cells `at` to at + n - 1
  /// Removes the cells whose index is listed. Neither unlinks nor counts, so only for unshared vectors without missing
  /// cells.
  void Remove(const NCIntegralVector<int, -99>& indices);
  /// Removes all cells equal to value; the others move to the front. The count of missing cells (0 at first if holes
  /// are removed) is reduced by the holes in the tail that is cut off, so it is right only if that tail had none.
  void Remove(T value);
  void Reduce(const NCIntegralVector<int, -99>& indices);  ///< the listed cells, in the order of the list
  void push_back(T value);
  // Writes through these pointers are not counted.
  T* insert(const T* at, T value);                 ///< before `at`, a pointer into this vector; returns the new cell
  T* erase(const T* at);                           ///< returns the cell after the erased one
  T* erase(const T* first, const T* last);

  // Results in place: `a.Result(&c) + b` builds the sum in c.
  NCDataVector& Result(NCDataVector* target);
  const NCDataVector& Result(NCDataVector* target) const;
  /// The work vector of a value-returning operation: the target, unlinked and used up, or a new one of n missing cells.
  void GetReturnVector(VectorDestroyer<T>& holder, int n) const;

  // Arithmetic, cell by cell, of vectors of one size. Missing in, missing out; computed in double, stored as T. If the
  // operands are one vector or complete ones, the result's missing cells are not counted from its cells: a result that
  // happens to be -99 is then a hole missing from the count.
  NCDataVector operator+(const NCDataVector& v) const;
  NCDataVector operator-(const NCDataVector& v) const;
  NCDataVector operator-(long double d) const;     ///< d missing: every cell becomes missing
  NCDataVector operator*(long double d) const;     ///< leaves the target's cells opposite a hole as they are
  NCDataVector& operator+=(const NCDataVector& v);
  NCDataVector& operator-=(const NCDataVector& v);
  NCDataVector& operator+=(long double d);         ///< subtracts -d, so d = 99 empties the vector
  NCDataVector& operator-=(long double d);
  NCDataVector& operator*=(long double d);
  // The same into `out`, which has the size of a, is unlinked first, and may be one of the sources.
  static void Subtract(NCDataVector& out, const NCDataVector& a, const NCDataVector& b);
  static void Subtract(NCDataVector& out, const NCDataVector& a, long double d);
  static void Multiply(NCDataVector& out, const NCDataVector& a, long double d);
  NCDataVector DotMultiplication(const NCDataVector& v) const;
  NCDataVector DotDivide(const NCDataVector& v) const;  ///< missing also where the divisor is 0
  /// d over the cell, without a test for 0. A hole makes the target's cell missing (`*` leaves it as it is).
  NCDataVector VectorDivide(long double d) const;
  void Abs();
  void Sqrt();                                          ///< a negative cell becomes a NaN
  /// In place a - d * v. A hole of v makes the cell missing, but the count stays.
  void TransformTo_Sub_d_x_Vt(long double d, const NCDataVector& v);
  void TransformTo_Add_d_x_Vt(long double d, const NCDataVector& v);  ///< the same with -d

  // Sums over the present cells, in double, in the same order on every machine.
  long double GetSS() const;                       ///< sum x^2; 0 of an empty vector, -99 if all are missing
  long double GetSS(long double mean) const;       ///< sum (x - mean)^2, same rules
  long double GetSum() const;                      ///< -99 if no cell is present
  void GetMinMax(T& min, T& max) const;            ///< -99 in both if no cell is present
  /// Divides by the norm sqrt(sum x^2) and returns it. A norm of 0 changes nothing; all missing returns -99.
  long double Normalise();
  /// Relative squared change sum (a - b)^2 / sum a^2 over pairs present: the convergence measure of the models.
  /// In this order: -99 without a pair (if there are holes); 1e30 where the denominator is below 1e-30; -99 where
  /// numerator or denominator is NaN, infinite or denormal.
  long double Difference(const NCDataVector& v) const;
  bool operator==(const NCDataVector& other) const;  ///< byte equality of the cells: 0.0 is not -0.0
  bool operator!=(const NCDataVector& other) const { return !(*this == other); }

  // Statistics; n counts the present cells, -99 is "no estimate". Orders place NaNs after all numbers. Skewness,
  // kurtosis, SNV, both detrendings and the line over positions are computed in double and return doubles (defined in
  // kernels/rows/NCDataVectorStandardise.cpp).
  long double GetMean() const;                     ///< sum(x) / n; -99 when there is none, or where the sum is -99
  long double GetVariance() const;                 ///< over n - 1; 0 for n = 1, -99 for n = 0 or a mean of -99
  long double GetStdDev() const;                   ///< -99 below 2 cells
  /// sum(z^3) n / ((n-1)(n-2)) with z = (x - mean) / sd; -99 below 2 cells or if sd is 0 or -99. Two cells give no
  /// number.
  long double GetSkewness() const;
  /// Skewness over its standard error sqrt(6 n (n-1) / ((n+3)(n+1)(n-2))); below 3 cells, or if -99, the skewness.
  long double GetSkewnessTest() const;
  /// Unbiased excess: sum(z^4) n (n+1) / ((n-1)(n-2)(n-3)) - 3 (n-1)^2 / ((n-2)(n-3)); -99 as the skewness. Two or
  /// three cells give no finite number.
  long double GetKurtosis() const;
  long double GetMedian() const;                   ///< mean of the two middle cells where n is even; -99 of none
  /// Quartiles by the rule that leaves the median out of both halves. Below 2 cells: all -99, false.
  bool GetInterquartiles(long double& q1, long double& median, long double& q3) const;
  long double GetInterquartileRange() const;       ///< q3 - q1; -99 below 2 cells
  long double GetRobustStdDev() const;             ///< (q3 - q1) / 1.075; -99 below 2 cells
  /// sum(a b) / sqrt(sum a^2 sum b^2) over pairs: for vectors that are centred already. -99 without a pair; a product
  /// of the sums at or below 1e-30 gives the bare numerator. Shape: `v` has the size of this one.
  long double Correlation(const NCDataVector& v) const;
  /// Straight line through the cells over `x`, or over their positions if null. False below 2 cells, or if the abscissa
  /// of a present cell is missing. Equal abscissas give the largest float as slope, leave the intercept unwritten and
  /// return true.
  bool LeastSquare(const NCDataVector* x, long double& intercept, long double& slope) const;
  void DetrendMean(long double& mean);             ///< subtracts the mean in place; a mean of -99 changes nothing
  /// Subtracts the fitted line in place. Below 2 cells nothing happens and the outputs stay unwritten.
  void DetrendLinear(long double& intercept, long double& slope);
  /// Fills holes in place along straight lines over `x` or the positions, flat at both ends; the count becomes 0. True
  /// if there are no holes. False if all cells are missing or a needed abscissa is; holes filled before stay filled.
  bool InterpolateMisVals(const NCDataVector* x);
  NCDataVector SNV() const;                        ///< (x - mean) / sd; all missing below 2 cells, 0 where sd is 0
  /// Sorts into `out`, or in place if null; returns the old positions. Missing cells come last in both directions; ties
  /// keep ascending positions. With fewer than 2 cells, or an `out` of the same size, nothing happens and the result is
  /// empty. Any other `out` must be larger, and keeps its cells after the sorted ones.
  NCIntegralVector<int, -99> Sort(NCDataVector* out, bool ascending);
  void Lag(int k);                                 ///< cell i moves to i + k; vacated cells become missing

  // Regression primitives. Defined in kernels/.
  long double operator*(const NCDataVector& v) const;          ///< dot product over pairs
  NCDataVector operator*(const NCDataMatrix<T>& m) const;      ///< row vector times matrix
  /// Coefficient of w on this vector: sum(this w) / sum(this^2) over pairs; -99 where nothing can be estimated.
  long double Regress(const NCDataVector& w) const;
  /// The same with a denominator of at least a third of this vector's full sum of squares: the coefficient shrinks,
  /// instead of exploding, if most of the vector lies opposite holes of w.
  long double SpecialNipalsRegressFix(const NCDataVector& w) const;
  /// Leaves out the positions i with i mod stride equal to start; a stride below 2 leaves out nothing.
  long double SpecialNipalsRegressFixWithExclude(const NCDataVector& w, int start, int stride) const;
  /// Leaves out the positions whose cell in `groups` equals `group`.
  long double SpecialNipalsRegressFixWithExclude(const NCDataVector& w, const NCIntegralVector<int, -99>& groups,
                                                 int group) const;

  // Persistence: magic "NCDV", version 4; versions 1 to 3 are read.
  using typename Persistence::DerivedStreamableData;
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 protected:
  void Unlink();                                   ///< ForceUnlink if shared
  T* NewVec(int n, int& offset);                   ///< block for n cells with cell 1 on a 16-byte boundary
  void DeleteVec(T* p, int offset);
  /// The three sums behind the regressions, over positions not excluded: this * v2 and this^2 over pairs, and this^2
  /// over all present cells of this vector. The first two are -99 without a pair or with a denominator below 1e-30.
  void Calculate_V1txV2_and_V1txV1(long double& v1tv2, long double& v1tv1, long double& v1tv1All,
                                   const NCDataVector& v2, int start, int stride) const;
  void Calculate_V1txV2_and_V1txV1(long double& v1tv2, long double& v1tv1, long double& v1tv1All,
                                   const NCDataVector& v2, const NCIntegralVector<int, -99>& groups, int group) const;

 private:
  friend class NCDataMatrix<T>;
  friend class kalmia::UnlinkedRows<T>;

  void LetGo();                                    ///< of the storage, as one holder of it; members stay as they are
  /// The block becomes the storage, with a use count of its own; what was there is let go. Size and count stay.
  void ReplaceBlock(kalmia::AlignedBlock<T>& block, int capacity);
  void PrepareToOverwrite(int n);                  ///< size n, unshared, room by the capacity rule; cells undefined
  void UnInitialisedInsert(int at, int n);         ///< opens a gap of n undefined cells; size + n
  void CountMissing();                             ///< numMisVal_ from the cells
  void SetCountOfCombination(bool complete);       ///< 0 if the sources were complete, else from the cells
  void SNVInto(NCDataVector& out) const;           ///< `out` has the size of this one, and may be this one
  void FitOverPositions(double& intercept, double& slope) const;  ///< the line of LeastSquare; at least 2 cells present
  static void Add(NCDataVector& out, const NCDataVector& a, const NCDataVector& b);
  T* Cells() { return data_ ? data_ + 1 : nullptr; }  ///< begin() for writing; the caller has unlinked
  bool ReadCells(std::istream& stream, int size);  ///< the size is from a stream, and may be a lie
  bool ReadDirectory(std::istream& stream);        ///< version 4
  bool ReadOldLayout(std::istream& stream, short version);

  int alignmentOffset_ = 0;   ///< bytes from the start of the allocation to data_
  int size_ = 0;
  T* data_ = nullptr;         ///< cell i is data_[i]; null when nothing is allocated
  int* refCount_;             ///< use count of the storage, from IntPool; never null
  int numMisVal_ = 0;         ///< cells equal to -99
  int capacity_ = 0;
  mutable NCDataVector* resultTarget_ = nullptr;
};

extern template struct VectorDestroyer<float>;
extern template struct VectorDestroyer<double>;
extern template class NCDataVector<float>;
extern template class NCDataVector<double>;
