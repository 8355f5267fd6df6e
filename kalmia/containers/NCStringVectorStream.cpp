// The stream form. Version 2: a directory whose one entry holds the count and the strings; version 1: the same straight
// on the stream.
#include <cstring>

#include "kalmia/containers/NCStringVector.h"

NCStringVector::DerivedStreamableData NCStringVector::MyStreamableData(2, "NCSV");

VexStreamBase* NCStringVector::CreateObject() { return new NCStringVector; }

bool NCStringVector::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, 1);
  std::ostream& entry = directory.GetOutput(0);
  const int count = Size();
  WriteFourBytes(&count, 1, entry);
  for (int i = 1; i <= count; ++i) WriteBinaryString((*this)[i], entry);
  directory.Close();
  return stream.good();
}

bool NCStringVector::VexStreamableRead(std::istream& stream) {
  if (!VexStreamableReadBases(stream)) return false;
  Clear();
  const short version = GetVexStreamVersionNumber();
  if (version == 1) return ReadStrings(stream);
  if (version != 2) return true;
  InputStreamDirectory directory(stream);
  std::istream* entry = directory.GetInput(0);
  const bool good = entry && ReadStrings(*entry) && kalmia::BytesLeft(*entry) == 0;
  directory.Close();
  if (!good) Clear();
  return good;
}

/// The texts are collected one behind the other first: a list of strings takes several times the bytes of short texts,
/// and is made only once it is known how many are really there.
bool NCStringVector::ReadStrings(std::istream& stream) {
  constexpr int kSmallestString = 4;  // its length
  int count = 0;
  if (!ReadFourBytes(&count, 1, stream) || !kalmia::HasBytesFor(stream, count, kSmallestString)) return false;
  std::vector<char> texts;
  CString text;
  for (int i = 0; i < count; ++i) {
    if (!ReadBinaryString(text, stream)) return false;
    const char* bytes = text;
    texts.insert(texts.end(), bytes, bytes + std::strlen(bytes) + 1);
  }
  texts.shrink_to_fit();
  Strings strings;
  strings.reserve(static_cast<std::size_t>(count));
  for (const char* at = texts.data(); count > 0; --count) {
    strings.emplace_back(at);
    at += std::strlen(at) + 1;
  }
  strings_->swap(strings);
  return true;
}
