#include "kalmia/containers/NCStringVector.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "kalmia/containers/internal/SizeLimit.h"

namespace {

std::size_t ToSize(int n) { return static_cast<std::size_t>(std::max(n, 0)); }

}  // namespace

NCStringVector::NCStringVector() : strings_(new Strings) {}

NCStringVector::NCStringVector(int n) : strings_(new Strings(ToSize(n))) {}

NCStringVector::NCStringVector(std::vector<CString> strings) : strings_(new Strings(std::move(strings))) {}

NCStringVector::NCStringVector(const NCStringVector& other) : Persistent(), strings_(other.strings_) {}

NCStringVector& NCStringVector::operator=(const NCStringVector& other) {
  strings_ = other.strings_;
  return *this;
}

NCStringVector::~NCStringVector() = default;

void NCStringVector::Unlink() {
  if (strings_.UseCount() > 1) ForceUnlink();
}

void NCStringVector::ForceUnlink() { NCStringVector(*strings_).swap(*this); }

void NCStringVector::swap(NCStringVector& other) { strings_.swap(other.strings_); }

void NCStringVector::Clear() { NCStringVector().swap(*this); }

const CString& NCStringVector::operator()(int i, const CString& s) {
  Unlink();
  return (*strings_)[ToSize(i) - 1] = s;
}

void NCStringVector::Reserve(int n) {
  Unlink();
  strings_->reserve(ToSize(n));
}

void NCStringVector::push_back(const CString& s) {
  kalmia::RequireVectorSize(std::int64_t{Size()} + 1);
  Unlink();
  strings_->push_back(s);
}

NCStringVector::Strings::iterator NCStringVector::Position(int at) {
  Unlink();
  return strings_->begin() + (std::clamp(at, 1, Size() + 1) - 1);
}

void NCStringVector::InsertStrings(int at) { InsertStrings(at, 1); }

void NCStringVector::InsertStrings(int at, int n) { InsertStrings(at, n, CString()); }

void NCStringVector::InsertStrings(int at, int n, const CString& s) {
  if (n < 1) return;
  kalmia::RequireVectorSize(std::int64_t{Size()} + n);
  Insert(at, Strings(ToSize(n), s));
}

/// The strings are there already and only move into place: where memory runs out the list is as it was.
void NCStringVector::Insert(int at, Strings strings) {
  const Strings::iterator position = Position(at);
  strings_->insert(position, std::make_move_iterator(strings.begin()), std::make_move_iterator(strings.end()));
}

void NCStringVector::RemoveStrings(int at, int n) {
  if (n <= 0 || at > Size()) return;
  const Strings::iterator first = Position(at);
  strings_->erase(first, first + std::min<std::ptrdiff_t>(n, strings_->end() - first));
}

void NCStringVector::Remove(const NCIntegralVector<int, -99>& indices) {
  const auto isHere = [this](int i) { return i >= 1 && i <= Size(); };
  if (std::none_of(indices.begin(), indices.end(), isHere)) return;
  std::vector<bool> listed(ToSize(Size()) + 1);
  for (int k = 1; k <= indices.Size(); ++k)
    if (isHere(indices[k])) listed[ToSize(indices[k])] = true;
  Strings kept;
  for (int i = 1; i <= Size(); ++i)
    if (!listed[ToSize(i)]) kept.push_back((*this)[i]);
  NCStringVector(std::move(kept)).swap(*this);
}

void NCStringVector::Reduce(const NCIntegralVector<int, -99>& indices) {
  Strings picked;
  picked.reserve(ToSize(indices.Size()));
  for (int k = 1; k <= indices.Size(); ++k) picked.push_back((*this)[indices[k]]);
  NCStringVector(std::move(picked)).swap(*this);
}

void NCStringVector::Concat(const NCStringVector& v) {
  kalmia::RequireVectorSize(std::int64_t{Size()} + v.Size());
  if (!v.empty()) Insert(Size() + 1, *v.strings_);
}

void NCStringVector::Convert(const NCStringVector& from, std::vector<CString>& to) { to = *from.strings_; }

void NCStringVector::Convert(const std::vector<CString>& from, NCStringVector& to) { to = NCStringVector(from); }

bool NCStringVector::operator==(const NCStringVector& other) const {
  return strings_.Get() == other.strings_.Get() || *strings_ == *other.strings_;
}
