// Search and sorting of NCStringVector.
#include <algorithm>
#include <utility>

#include "kalmia/containers/NCStringVector.h"
#include "kalmia/support/VexString.h"

namespace {

/// A string with what its comparisons need, so that each is read as a number once.
struct Key {
  const CString* string = nullptr;
  int position = 0;
  bool isNumber = false;
  float number = 0;
};

class TextOrder {
 public:
  TextOrder(bool caseSensitive, bool numeric) : caseSensitive_(caseSensitive), numeric_(numeric) {}

  Key KeyOf(const CString& string, int position) const {
    Key key;
    key.string = &string;
    key.position = position;
    key.isNumber = numeric_ && VexString::ToFloat(string, key.number);
    return key;
  }
  bool Before(const Key& a, const Key& b) const {
    if (a.isNumber && b.isNumber) return a.number < b.number;
    return Compare(*a.string, *b.string) < 0;
  }
  int Compare(const CString& a, const char* b) const {
    return caseSensitive_ ? a.Compare(b) : VexString::CompareWithoutCase(a, b);
  }

 private:
  bool caseSensitive_;
  bool numeric_;
};

/// Merges the sorted runs [first, middle) and [middle, last) of `from` into the same range of `to`; of equal keys that
/// of the first run goes first.
template <class Before>
void Merge(const std::vector<Key>& from, std::size_t first, std::size_t middle, std::size_t last, Before before,
           std::vector<Key>& to) {
  std::size_t left = first, right = middle;
  for (std::size_t at = first; at < last; ++at) {
    const bool takeRight = right < last && (left == middle || before(from[right], from[left]));
    to[at] = from[takeRight ? right++ : left++];
  }
}

/// A merge sort of our own: numbers and names mixed have no consistent order, which std::sort must not be given, while
/// merging stays within its bounds whatever `before` says.
template <class Before>
void MergeSort(std::vector<Key>& keys, Before before) {
  const std::size_t size = keys.size();
  std::vector<Key> merged(size);
  for (std::size_t run = 1; run < size; run *= 2) {
    for (std::size_t first = 0; first < size; first += 2 * run)
      Merge(keys, first, std::min(first + run, size), std::min(first + 2 * run, size), before, merged);
    keys.swap(merged);
  }
}

std::vector<Key> SortedKeys(const NCStringVector& strings, bool ascending, const TextOrder& order) {
  std::vector<Key> keys;
  for (int i = 1; i <= strings.Size(); ++i) keys.push_back(order.KeyOf(strings[i], i));
  MergeSort(keys, [&](const Key& a, const Key& b) { return ascending ? order.Before(a, b) : order.Before(b, a); });
  return keys;
}

std::vector<CString> StringsOf(const std::vector<Key>& keys) {
  std::vector<CString> strings;
  strings.reserve(keys.size());
  for (const Key& key : keys) strings.push_back(*key.string);
  return strings;
}

}  // namespace

int NCStringVector::FindString(const char* s, bool caseSensitive, int from) const {
  const TextOrder order(caseSensitive, /*numeric=*/false);
  for (int i = std::max(from, 1); i <= Size(); ++i)
    if (order.Compare((*this)[i], s) == 0) return i;
  return 0;
}

int NCStringVector::RemoveString(const char* s, bool caseSensitive) {
  if (FindString(s, caseSensitive) == 0) return 0;
  const TextOrder order(caseSensitive, /*numeric=*/false);
  const CString removed(s);  // `s` may point into a string that goes
  Unlink();
  const auto kept = std::remove_if(strings_->begin(), strings_->end(),
                                   [&](const CString& string) { return order.Compare(string, removed) == 0; });
  const auto count = strings_->end() - kept;
  strings_->erase(kept, strings_->end());
  return static_cast<int>(count);
}

void NCStringVector::Sort(bool ascending, bool caseSensitive, bool numeric) {
  *this = NCStringVector(StringsOf(SortedKeys(*this, ascending, TextOrder(caseSensitive, numeric))));
}

void NCStringVector::SortWithOriginalIndex(bool ascending, bool caseSensitive, std::vector<int>& order) {
  const std::vector<Key> keys = SortedKeys(*this, ascending, TextOrder(caseSensitive, /*numeric=*/false));
  order.clear();
  for (const Key& key : keys) order.push_back(key.position);
  *this = NCStringVector(StringsOf(keys));
}

int NCStringVector::SortedStringPos(const char* s, bool caseSensitive, bool numeric) const {
  const TextOrder order(caseSensitive, numeric);
  const CString wanted(s);
  const Key key = order.KeyOf(wanted, 0);
  int first = 1;
  for (int count = Size(); count > 0;) {
    const int half = count / 2;
    if (order.Before(order.KeyOf((*this)[first + half], 0), key)) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  return first <= Size() ? first : 0;
}

int NCStringVector::FindSortedString(const char* s, bool caseSensitive, bool numeric) const {
  const TextOrder order(caseSensitive, numeric);
  const CString wanted(s);
  const int at = SortedStringPos(wanted, caseSensitive, numeric);
  return at != 0 && !order.Before(order.KeyOf(wanted, 0), order.KeyOf((*this)[at], 0)) ? at : 0;
}

void NCStringVector::SortedInsert(const CString& s, bool caseSensitive, bool numeric) {
  const int at = SortedStringPos(s, caseSensitive, numeric);
  InsertStrings(at == 0 ? Size() + 1 : at, 1, s);
}
