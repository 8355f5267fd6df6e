#pragma once

#include <typeinfo>
#include <vector>

#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/VexPointer.h"
#include "kalmia/support/VexStream.h"

/// Names of variables and observations: a vector of strings, positions from 1. Copies share storage until one of them
/// is written. Indices are not checked. Inserting and removing treats positions below 1 as 1 and cuts positions and
/// lengths to the end. Position 0 means "not found". Throws std::bad_alloc, and NCError for more than 2^31 - 1 strings;
/// the strings then stay as they are, or are gone after a read.
///
/// Order: with `numeric`, two strings that are both numbers (VexString::ToFloat) compare as numbers. Other pairs
/// compare by text: byte by byte with `caseSensitive`, otherwise with A to Z as a to z.
class KALMIA_EXPORT NCStringVector : public kalmia::Persistent<NCStringVector> {
 public:
  NCStringVector();
  explicit NCStringVector(int n);  ///< n empty strings
  NCStringVector(std::vector<CString> strings);  // NOLINT: the two forms convert
  NCStringVector(const NCStringVector& other);
  NCStringVector& operator=(const NCStringVector& other);
  ~NCStringVector() override;

  // Sharing.
  void Unlink();       ///< ForceUnlink if the storage is shared
  void ForceUnlink();  ///< makes a private copy of the list
  void swap(NCStringVector& other);
  void Clear();

  // Access.
  int Size() const { return static_cast<int>(strings_->size()); }
  int size() const { return Size(); }
  bool empty() const { return strings_->empty(); }
  const CString& operator[](int i) const { return (*strings_)[static_cast<std::size_t>(i) - 1]; }
  const CString& operator()(int i, const CString& s);  ///< writes string i and returns it

  // Structure.
  void Reserve(int n);
  void reserve(int n) { Reserve(n); }
  void push_back(const CString& s);
  void InsertStrings(int at);                           ///< one empty string before position `at`
  void InsertStrings(int at, int n);                    ///< n empty ones
  void InsertStrings(int at, int n, const CString& s);  ///< n copies of s
  void RemoveStrings(int at, int n);
  void Remove(const NCIntegralVector<int, -99>& indices);  ///< removes the strings whose index is listed
  void Reduce(const NCIntegralVector<int, -99>& indices);  ///< the listed strings in the order of the list
  void Concat(const NCStringVector& v);
  int RemoveString(const char* s, bool caseSensitive);  ///< removes every match; returns how many

  // Search and order.
  /// Position of the first match from position `from` on (below 1 counts as 1), or 0. A null `s` counts as "", here and
  /// below.
  int FindString(const char* s, bool caseSensitive, int from = 1) const;
  /// Equal strings keep their order. A mixture of numbers and names has no consistent numeric order ("10" < "1x" < "9"
  /// by text, 9 < 10 by number): the result is then some arrangement of all strings, always the same one.
  void Sort(bool ascending, bool caseSensitive, bool numeric);
  /// Sorts by text; `order` receives the old positions (from 1) in the new order, at its indices 0 to Size() - 1.
  void SortWithOriginalIndex(bool ascending, bool caseSensitive, std::vector<int>& order);
  // In a vector that is sorted ascending in the order asked for:
  int SortedStringPos(const char* s, bool caseSensitive, bool numeric) const;   ///< first string not before s, or 0
  int FindSortedString(const char* s, bool caseSensitive, bool numeric) const;  ///< first string equal to s, or 0
  void SortedInsert(const CString& s, bool caseSensitive, bool numeric);        ///< before the first not before s

  // Conversion.
  static void Convert(const NCStringVector& from, std::vector<CString>& to);
  static void Convert(const std::vector<CString>& from, NCStringVector& to);

  bool operator==(const NCStringVector& other) const;
  bool operator!=(const NCStringVector& other) const { return !(*this == other); }

  // Persistence: magic "NCSV", version 2; version 1 is read. An unknown version reads as the empty vector, without
  // failure. ClassCreatorRegistrator makes one by the name "NCStringVector".
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  using Strings = std::vector<CString>;

  static VexStreamBase* CreateObject();
  Strings::iterator Position(int at);  ///< of string `at` in storage of our own, cut to the end
  void Insert(int at, Strings strings);
  bool ReadStrings(std::istream& stream);

  VexPointer<Strings> strings_;  ///< string i at index i - 1

  static const ClassCreatorRegistrator registration_;
};

// In the header, so that it is there in every program that uses the class, also from a static library.
inline const ClassCreatorRegistrator NCStringVector::registration_(typeid(NCStringVector).name(), "NCStringVector",
                                                                   &NCStringVector::CreateObject);
