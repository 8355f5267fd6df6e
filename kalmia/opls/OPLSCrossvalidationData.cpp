#include "kalmia/opls/OPLSCrossvalidationData.h"

#include <istream>
#include <ostream>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/support/VexStream.h"

namespace {

using Matrices = std::vector<NCDataMatrix<float>>;

constexpr unsigned short kEntries = 11;
constexpr unsigned short kFirstEntry = 1;
constexpr int kSmallestMatrix = 32;  ///< bytes on a stream: less than magic, version and directory of an empty one
constexpr int kSmallestVector = 4;   ///< its count

template <class Item>
void WriteCount(std::ostream& stream, const std::vector<Item>& items) {
  const int count = static_cast<int>(items.size());
  WriteFourBytes(&count, 1, stream);
}

void WriteField(std::ostream& stream, const Matrices& matrices) {
  WriteCount(stream, matrices);
  for (const NCDataMatrix<float>& matrix : matrices) stream << matrix;
}

void WriteField(std::ostream& stream, const std::vector<Matrices>& rounds) {
  WriteCount(stream, rounds);
  for (const Matrices& matrices : rounds) WriteField(stream, matrices);
}

void WriteField(std::ostream& stream, const NCDataVector<float>& vector) { stream << vector; }

int ReadCount(std::istream& stream, int smallestItem) {
  int count = 0;
  if (!ReadFourBytes(&count, 1, stream) || !kalmia::HasBytesFor(stream, count, smallestItem)) kalmia::ThrowReadError();
  return count;
}

void ReadField(std::istream& stream, Matrices* matrices) {
  for (int left = ReadCount(stream, kSmallestMatrix); left > 0; --left)
    if (!(stream >> matrices->emplace_back())) kalmia::ThrowReadError();
}

void ReadField(std::istream& stream, std::vector<Matrices>* rounds) {
  const int count = ReadCount(stream, kSmallestVector);
  rounds->reserve(static_cast<std::size_t>(count));
  for (int left = count; left > 0; --left) ReadField(stream, &rounds->emplace_back());
}

void ReadField(std::istream& stream, NCDataVector<float>* vector) {
  if (!(stream >> *vector)) kalmia::ThrowReadError();
}

/// Calls `action(entry, field)` for the fields in their order, which are those of `data`, constant or not.
template <class Data, class Action>
void ForEachField(Data& data, Action action) {
  unsigned short entry = kFirstEntry;
  for (auto* rounds : {&data.WMatricesPerRound, &data.PMatricesPerRound, &data.CMatricesPerRound})
    action(entry++, rounds);
  for (auto* matrices : {&data.WOPerRound, &data.POPerRound, &data.COPerRound}) action(entry++, matrices);
  action(entry, &data.SSY);
}

}  // namespace

OPLSCrossvalidationData::OPLSCrossvalidationData() = default;

OPLSCrossvalidationData::OPLSCrossvalidationData(int rounds, const NCDataMatrix<float>& Y)
    : WMatricesPerRound(static_cast<std::size_t>(rounds)),
      PMatricesPerRound(static_cast<std::size_t>(rounds)),
      CMatricesPerRound(static_cast<std::size_t>(rounds)),
      WOPerRound(static_cast<std::size_t>(rounds)),
      POPerRound(static_cast<std::size_t>(rounds)),
      COPerRound(static_cast<std::size_t>(rounds)),
      SSY(Y.SizeColumns()) {
  for (int j = 1; j <= Y.SizeColumns(); ++j) SSY(j, static_cast<float>(Y.GetColumnSS(j, 0.0L)));
}

OPLSCrossvalidationData::OPLSCrossvalidationData(const OPLSCrossvalidationData& other)
    : WMatricesPerRound(kalmia::DeepCopy(other.WMatricesPerRound)),
      PMatricesPerRound(kalmia::DeepCopy(other.PMatricesPerRound)),
      CMatricesPerRound(kalmia::DeepCopy(other.CMatricesPerRound)),
      WOPerRound(kalmia::DeepCopy(other.WOPerRound)),
      POPerRound(kalmia::DeepCopy(other.POPerRound)),
      COPerRound(kalmia::DeepCopy(other.COPerRound)),
      SSY(kalmia::DeepCopy(other.SSY)) {}

OPLSCrossvalidationData& OPLSCrossvalidationData::operator=(const OPLSCrossvalidationData& other) {
  if (this == &other) return *this;
  OPLSCrossvalidationData copy(other);
  WMatricesPerRound.swap(copy.WMatricesPerRound);
  PMatricesPerRound.swap(copy.PMatricesPerRound);
  CMatricesPerRound.swap(copy.CMatricesPerRound);
  WOPerRound.swap(copy.WOPerRound);
  POPerRound.swap(copy.POPerRound);
  COPerRound.swap(copy.COPerRound);
  SSY = copy.SSY;
  return *this;
}

OPLSCrossvalidationData::~OPLSCrossvalidationData() = default;

void OPLSCrossvalidationData::clear() {
  for (auto* rounds : {&WMatricesPerRound, &PMatricesPerRound, &CMatricesPerRound}) rounds->clear();
  for (auto* matrices : {&WOPerRound, &POPerRound, &COPerRound}) matrices->clear();
  SSY.Clear();
}

bool OPLSCrossvalidationData::WriteObject(std::ostream& stream) const {
  return VexStreamLight::WriteMagicStringAndVersionNumber(stream, Version, Magic) && UnLoad(stream);
}

bool OPLSCrossvalidationData::ReadObject(std::istream& stream) {
  clear();
  unsigned short version = 0;
  if (!VexStreamLight::CheckMagicStringAndVersionNumber(stream, version, Magic)) return false;
  if (ReLoad(stream)) return true;
  clear();
  return false;
}

bool OPLSCrossvalidationData::UnLoad(std::ostream& stream) const {
  OutputStreamDirectory directory(stream, kEntries);
  ForEachField(*this, [&directory](unsigned short entry, const auto* field) {
    WriteField(directory.GetOutput(entry), *field);
  });
  directory.Close();
  return stream.good();
}

bool OPLSCrossvalidationData::ReLoad(std::istream& stream) try {
  InputStreamDirectory directory(stream);
  ForEachField(*this, [&directory](unsigned short entry, auto* field) {
    std::istream* input = directory.GetInput(entry);
    if (!input) throw VexStreamError("ReadFromStreamDir failed");
    ReadField(*input, field);
  });
  directory.Close();
  return stream.good();
} catch (const VexStreamError&) {
  return false;
}
