#pragma once

#include <vector>

#include "kalmia/support/Export.h"
#include "kalmia/support/VexPointer.h"
#include "kalmia/support/VexStream.h"

/// Vector of whole numbers, positions from 1: indices, group numbers, flags, counts. Copies share storage until one of
/// them is written. `M` is the default cell; missing cells are not counted. Instantiated for <int,-99>, <bool,0> and
/// <unsigned long,0>. Indices are not checked; sizes are checked as in NCDataVector.
template <class T, int M>
class KALMIA_EXPORT NCIntegralVector : public kalmia::Persistent<NCIntegralVector<T, M>, kalmia::VirtualStreamBase> {
  using Persistence = kalmia::Persistent<NCIntegralVector, kalmia::VirtualStreamBase>;

 public:
  using value_type = T;

  /// How the cells lie, for Find.
  enum SortType { SortedAscending = 0, SortedDescending = 1, NotSorted = 2 };

  NCIntegralVector() = default;
  explicit NCIntegralVector(int n, T value = static_cast<T>(M));  ///< n cells of value
  NCIntegralVector(const T* p, int n);                            ///< n cells from a 0-based array
  NCIntegralVector(const NCIntegralVector& other);
  NCIntegralVector& operator=(const NCIntegralVector& other);
  ~NCIntegralVector() override;

  // Access.
  int Size() const { return size_; }
  int size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T operator[](int i) const { return storage_[i]; }
  T& operator()(int i);  ///< reference to cell i, after unlinking
  const T* begin() const { return storage_.Get() ? storage_.Get() + 1 : nullptr; }
  const T* end() const { return begin() + size_; }
  const T* GetPtr() const { return storage_.Get(); }  ///< 1-based: cell i at [i]; null when nothing is allocated

  // Sharing.
  void ForceUnlink();
  void CopyContent(const NCIntegralVector& other);  ///< private deep copy of the cells

  // Structure. A position above size + 1 counts as size + 1. Capacity grows by the rule of NCDataVector.
  void Clear();
  void clear() { Clear(); }
  void SetSize(int n);                 ///< another size leaves the cells undefined; the present size keeps them
  void SetNumValues(int n, T value);   ///< a new array of exactly n cells, all value
  void SetAllValues(T value);
  void SetRange(int at, int n, T value);       ///< n cells from `at`; an empty vector does nothing
  void GenerateIndex(int first, int step);     ///< cell i becomes first + (i - 1) * step
  void Reserve(int n);
  void reserve(int n) { Reserve(n); }
  void InsertValues(int at, int n, T value);
  void InsertValues(int at, const NCIntegralVector& v);
  void Concat(const NCIntegralVector& v);
  void push_back(T value);
  T* insert(const T* at, T value);             ///< before `at`, a pointer into this vector; returns the new cell
  T* erase(const T* at);                       ///< returns the cell after the erased one
  T* erase(const T* first, const T* last);
  NCIntegralVector& Resize(int n, T fill = static_cast<T>(M));
  void resize(int n, T fill = static_cast<T>(M)) { Resize(n, fill); }
  void RemoveValues(int at, int n);
  void Remove(const NCIntegralVector<int, -99>& indices);  ///< removes the cells whose index is listed
  void Reduce(const NCIntegralVector<int, -99>& indices);  ///< the listed cells in the order of the list

  /// Unlinks and returns the vector; the argument is not applied.
  NCIntegralVector& operator+=(T value);

  // Statistics.
  long int GetSum() const;
  double GetMean() const;      ///< sum / size; -99 when size is below 1
  double GetVariance() const;  ///< around the mean, over size - 1; -99 when size is below 2
  double GetStdDev() const;    ///< root of the variance; -99 stays -99

  // Comparison is lexical over the cells.
  bool operator==(const NCIntegralVector& other) const;
  bool operator!=(const NCIntegralVector& other) const;
  bool operator<(const NCIntegralVector& other) const;
  bool operator<=(const NCIntegralVector& other) const;
  bool operator>(const NCIntegralVector& other) const;
  bool operator>=(const NCIntegralVector& other) const;

  // Order. With `misValAware` missing cells come last in both directions.
  bool IsSorted(bool ascending) const;  ///< true below 2 cells; equal neighbours are in order
  void Sort(bool ascending, bool misValAware);
  /// The same; `order` receives the old positions (from 1) in the new order, at its indices 0 to size - 1.
  void SortWithOriginalIndex(bool ascending, bool misValAware, std::vector<int>& order);
  /// Position of the first cell not below value (not above, in descending data); size + 1 if there is none.
  int LowerBound(T value, bool ascending) const;
  /// Position of `value`, or -1. Sorted: binary search over the whole vector. NotSorted: first match from `first` to
  /// `last` inclusive; `last` of -1 means size.
  int Find(T value, SortType type, int first = 1, int last = -1) const;
  /// Random permutation, drawn from rand(); srand makes it repeatable.
  void Scramble();

  // Persistence: magic "NCIV", version 4; versions 1 to 3 are read.
  using typename Persistence::DerivedStreamableData;
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 protected:
  void Insert(int at, int n);  ///< opens a gap of n undefined cells
  bool VexStreamableStartWrite(std::ostream& stream) override;

 private:
  static void UnLinkVecPointer(VexVecPointer<T>& storage, int capacity);
  bool CanBeStored() const;    ///< on the stream a number has four bytes
  bool ReadDirectory(std::istream& stream);  ///< version 4
  bool ReadOldLayout(std::istream& stream, short version);
  bool ReadSizeAndCells(std::istream& stream);

  int size_ = 0;
  int capacity_ = 0;
  VexVecPointer<T> storage_;  ///< capacity + 1 cells, cell i at index i; null array when nothing is allocated
};

extern template class NCIntegralVector<int, -99>;
extern template class NCIntegralVector<bool, 0>;
extern template class NCIntegralVector<unsigned long, 0>;

/// For each cell of `wanted` its first position in `table`, or -1.
KALMIA_EXPORT NCIntegralVector<int, -99> GetIndexLookupVector(const NCIntegralVector<unsigned long, 0>& wanted,
                                                              const NCIntegralVector<unsigned long, 0>& table);
