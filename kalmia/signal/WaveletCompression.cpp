#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"
#include "kalmia/signal/internal/OutOrNew.h"
#include "kalmia/signal/internal/WaveletSignals.h"

// Compressed vectors of coefficients and the names of their cells.

namespace {

using Vector = NCDataVector<float>;
using Indices = NCIntegralVector<int, -99>;

bool AllWithin(const Indices& indices, int last) {
  return std::all_of(indices.begin(), indices.end(), [last](int index) { return index >= 1 && index <= last; });
}

CString NameOf(const char* prefix, int index) {
  CString name;
  name.Format("%s_%d", prefix ? prefix : "", index);
  return name;
}

/// Depth of the unsplit block in which a cell of the best basis lies.
int DepthOf(int index, const BoolVector& decisions) {
  const int length = decisions.Size() + 1, levels = kalmia::Levels(length);
  int depth = 0;
  for (int block = 1; depth < levels && decisions[Wavelet::Node(depth + 1, block)];
       block = (index - 1) / (length >> depth) + 1)
    ++depth;
  return depth;
}

}  // namespace

NCDataVector<float>* Wavelet::CompressVector(const NCDataVector<float>* in, const NCIntegralVector<int, -99>* indices,
                                             NCDataVector<float>* out) {
  if (!in || !indices || in->Size() > indices->Size() || !AllWithin(*indices, in->Size())) return nullptr;
  if (out && out->Size() != indices->Size()) return nullptr;
  std::vector<float> cells;
  for (const int index : *indices) cells.push_back((*in)[index]);
  kalmia::OutOrNew<Vector> result(out);
  result->CopyZeroBasedVector(cells.data(), indices->Size());
  return result.HandOver();
}

NCDataVector<float>* Wavelet::UncompressVector(const NCDataVector<float>* in, const NCIntegralVector<int, -99>* indices,
                                               int originalLength, NCDataVector<float>* out, bool padded) {
  if (!in || !indices || originalLength < 0) return nullptr;
  const int length = padded ? kalmia::PowerLength(originalLength) : originalLength;
  if ((padded && length < 1) || (out && out->Size() != length)) return nullptr;
  if (indices->Size() > length || in->Size() != indices->Size() || !AllWithin(*indices, length)) return nullptr;
  std::vector<float> cells(static_cast<std::size_t>(length), 0.0F);
  for (int k = 1; k <= in->Size(); ++k) cells[static_cast<std::size_t>((*indices)[k] - 1)] = (*in)[k];
  kalmia::OutOrNew<Vector> result(out);
  result->CopyZeroBasedVector(cells.data(), length);
  return result.HandOver();
}

NCIntegralVector<int, -99> Wavelet::GetNumInDetails(int length, int levels) {
  Indices sizes;
  int m = length - length % 2;
  for (int level = 0; level < levels; ++level) {
    m /= 2;  // without the cell that is set aside, if m is odd
    const bool leavesOne = m % 2 != 0 && m != 1;
    sizes.push_back(leavesOne ? m + 1 : m);
  }
  return sizes;
}

NCIntegralVector<int, -99> Wavelet::GetMovedIndexses(int length, int levels) {
  Indices moved;
  int m = length;
  for (int level = 0; level < levels; ++level) {
    if (m % 2 != 0) {
      moved.push_back(m);
      --m;
    }
    m /= 2;
  }
  return moved;
}

NCStringVector* Wavelet::MakeVarNames(const char* prefix, int count) {
  auto names = std::make_unique<NCStringVector>();
  for (int i = 0; i < count; ++i) names->push_back(NameOf(prefix, i + 1));
  return names.release();
}

NCStringVector* Wavelet::MakeVarNames(const char* prefix, const NCIntegralVector<int, -99>* indices) {
  if (!indices) return nullptr;
  auto names = std::make_unique<NCStringVector>();
  for (const int index : *indices) names->push_back(NameOf(prefix, index));
  return names.release();
}

NCStringVector* Wavelet::MakeVarNames(const char* prefix, const NCIntegralVector<int, -99>* indices,
                                      const BoolVector* decisions) {
  if (!indices || !decisions || decisions->empty() || !kalmia::IsPowerOfTwo(decisions->Size() + 1) ||
      !AllWithin(*indices, decisions->Size() + 1))
    return nullptr;
  auto names = std::make_unique<NCStringVector>();
  for (const int index : *indices) {
    const CString prefixAndDepth = NameOf(prefix, DepthOf(index, *decisions));
    names->push_back(NameOf(prefixAndDepth, index));
  }
  return names.release();
}
