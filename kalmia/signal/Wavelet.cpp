#include "kalmia/signal/Wavelet.h"

#include <cmath>
#include <cstring>
#include <memory>

#include "kalmia/signal/internal/WaveletTables.h"
#include "kalmia/support/LanguageString.h"

// Names and filters. Transforms are defined in WaveletTransform.cpp, WaveletBestBasis.cpp and their neighbours.

namespace {

using Vector = NCDataVector<float>;

const char* NameIn(const VexLanguageStringVector& names, int i) {
  return i >= 0 && i < names.Size() ? names[i] : nullptr;
}

/// Place of a text among the names, from 0, or -1.
int PlaceIn(const VexLanguageStringVector& names, const char* text) {
  for (int i = 0; text && i < names.Size(); ++i)
    if (std::strcmp(names[i], text) == 0) return i;
  return -1;
}

/// Null out of range.
const kalmia::WaveletTable* TableOf(Wavelet::WaveletFunctionType type, int order) {
  const kalmia::WaveletTables tables = kalmia::TablesOfFamily(type);
  return order >= 1 && order <= tables.count ? tables.first + (order - 1) : nullptr;
}

bool IsOrthogonal(Wavelet::WaveletFunctionType type) { return type <= Wavelet::FunctionSymmlet; }

std::unique_ptr<Vector> AsFloats(const double* values, int length) {
  auto vector = std::make_unique<Vector>(length, 0.0F);
  for (int i = 1; i <= length; ++i) (*vector)(i, static_cast<float>(values[i - 1]));
  return vector;
}

void ScaleToSumOfRootTwo(Vector& filter) { filter *= std::sqrt(2.0L) / filter.GetSum(); }

std::unique_ptr<Vector> Reversed(const Vector& filter) {
  const int length = filter.Size();
  auto reversed = std::make_unique<Vector>(length, 0.0F);
  for (int i = 1; i <= length; ++i) (*reversed)(i, filter[length + 1 - i]);
  return reversed;
}

/// Changes the sign of every other cell from `first` on.
std::unique_ptr<Vector> Alternated(std::unique_ptr<Vector> filter, int first) {
  for (int i = first; i <= filter->Size(); i += 2) (*filter)(i, -(*filter)[i]);
  return filter;
}

std::unique_ptr<Vector> CopyOf(const Vector& filter) { return std::make_unique<Vector>(filter); }

Wavelet::WaveletFilters Pair(std::unique_ptr<Vector> lowPass, std::unique_ptr<Vector> highPass) {
  Wavelet::WaveletFilters pair;
  pair.lowPass = lowPass.release();
  pair.highPass = highPass.release();
  return pair;
}

}  // namespace

void Wavelet::WaveletFilters::CleanUp() {
  delete highPass;
  delete lowPass;
  highPass = lowPass = nullptr;
}

const char* Wavelet::DetrendStr(DetrendMode mode) { return NameIn(kalmia::DetrendNames(), mode); }

Wavelet::DetrendMode Wavelet::Detrend(const char* text, DetrendMode otherwise) {
  const int place = PlaceIn(kalmia::DetrendNames(), text);
  return place < 0 ? otherwise : static_cast<DetrendMode>(place);
}

const char* Wavelet::WaveletFunctionStr(WaveletFunctionType type) {
  return NameIn(kalmia::WaveletFunctionNames(), type);
}

Wavelet::WaveletFunctionType Wavelet::WaveletFunction(const char* text, WaveletFunctionType otherwise) {
  const int place = PlaceIn(kalmia::WaveletFunctionNames(), text);
  return place < 0 ? otherwise : static_cast<WaveletFunctionType>(place);
}

int Wavelet::GetNumFunctionOrder(WaveletFunctionType type) { return kalmia::TablesOfFamily(type).count; }

char* Wavelet::GetFunctionOrderName(WaveletFunctionType type, int order) {
  const kalmia::WaveletTable* table = TableOf(type, order);
  return table ? const_cast<char*>(table->order) : nullptr;
}

int Wavelet::GetFunctionOrderIndex(WaveletFunctionType type, const char* name) {
  for (int order = 1; name && order <= GetNumFunctionOrder(type); ++order)
    if (std::strcmp(GetFunctionOrderName(type, order), name) == 0) return order;
  return 0;
}

NCDataVector<float>* Wavelet::GetWaveletFunction(WaveletFunctionType type, int order) {
  const kalmia::WaveletTable* table = TableOf(type, order);
  return table && IsOrthogonal(type) ? AsFloats(table->decomposition, table->length).release() : nullptr;
}

NCDataVector<float>* Wavelet::GetWaveletFunctionD(WaveletFunctionType type, int order) {
  const kalmia::WaveletTable* table = TableOf(type, order);
  return table && !IsOrthogonal(type) ? AsFloats(table->decomposition, table->length).release() : nullptr;
}

NCDataVector<float>* Wavelet::GetWaveletFunctionR(WaveletFunctionType type, int order) {
  const kalmia::WaveletTable* table = TableOf(type, order);
  return table && !IsOrthogonal(type) ? AsFloats(table->reconstruction, table->length).release() : nullptr;
}

Wavelet::WaveletFilters Wavelet::GetDecompositionFilter(WaveletFunctionType type, int order) {
  if (!TableOf(type, order)) return {};
  if (IsOrthogonal(type)) {
    const std::unique_ptr<Vector> h(GetWaveletFunction(type, order));
    h->Normalise();
    return Pair(Reversed(*h), Alternated(CopyOf(*h), 2));
  }
  const std::unique_ptr<Vector> d(GetWaveletFunctionD(type, order)), r(GetWaveletFunctionR(type, order));
  ScaleToSumOfRootTwo(*d);
  ScaleToSumOfRootTwo(*r);
  return Pair(Reversed(*d), Alternated(CopyOf(*r), 1));
}

Wavelet::WaveletFilters Wavelet::GetReconstructionFilter(WaveletFunctionType type, int order) {
  if (!TableOf(type, order)) return {};
  if (IsOrthogonal(type)) {
    const std::unique_ptr<Vector> h(GetWaveletFunction(type, order));
    h->Normalise();
    return Pair(CopyOf(*h), Alternated(Reversed(*h), 1));
  }
  const std::unique_ptr<Vector> d(GetWaveletFunctionD(type, order)), r(GetWaveletFunctionR(type, order));
  ScaleToSumOfRootTwo(*d);
  ScaleToSumOfRootTwo(*r);
  return Pair(CopyOf(*r), Alternated(Reversed(*d), 2));
}
