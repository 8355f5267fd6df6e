#include "kalmia/signal/FFT.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

#include "kalmia/containers/internal/LaneSum.h"
#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/WindowedPower.h"
#include "kalmia/signal/internal/Correlation.h"
#include "kalmia/support/NCError.h"

namespace {

constexpr std::int64_t kMostCells = std::numeric_limits<int>::max();

[[noreturn]] void FailSpectrum() { throw NCError("Power spectrum could not be computed."); }

/// The length of the transforms that correlate n cells up to so many lags: a power of two, at least their sum.
int PaddedSize(int n, int lags) {
  const int size = kalmia::PowerLength(static_cast<std::int64_t>(n) + lags);
  if (size == 0) throw std::bad_alloc();
  return size;
}

bool CanCorrelate(const NCDataVector<float>* input, int lags, const NCDataVector<float>* output) {
  return input != nullptr && output != nullptr && input->Size() > 0 && lags >= 0 && lags <= input->Size();
}

/// The cells of a private array of that many, numbered from 1.
std::vector<float> CellsFromOne(int n) { return std::vector<float>(static_cast<std::size_t>(n) + 1); }

}  // namespace

void FFT::DetrendVector(NCDataVector<float>* vector, FFT::DetrendMode mode, long double& mean, long double& slope) {
  if (mode == DetrendMean) vector->DetrendMean(mean);
  if (mode == DetrendLinear) vector->DetrendLinear(mean, slope);
}

void FFT::DetrendVecMeanStd(NCDataVector<float>* vector) {
  const int n = vector->Size();
  if (n == 0) return;
  std::vector<float> cells(vector->begin(), vector->end());
  float* x = cells.data();
  const double mean = kalmia::LaneSum(n, [x](int i) { return static_cast<double>(x[i]); }) / n;
  for (float& cell : cells) cell = static_cast<float>(cell - mean);
  const double s = std::sqrt(kalmia::LaneSum(n, [x](int i) { return static_cast<double>(x[i]) * x[i]; }));
  if (s > 0.0)
    for (float& cell : cells) cell = static_cast<float>(cell / s);
  vector->CopyZeroBasedVector(x, n);
}

void FFT::PadVectorZeros(NCDataVector<float>* vector, int size) {
  if (size > vector->Size()) vector->Resize(size, 0.0F);
}

void FFT::PadVectorLinearly(NCDataVector<float>* vector, int size) {
  if (vector->Size() == 0) return PadVectorZeros(vector, size);
  kalmia::PadBackToStart(vector, size);
}

void FFT::ReorderFromVec(const float* const input, float* const output, int size, int count) {
  const int down = count / 2, up = count - down;
  std::copy(input + size - down + 1, input + size + 1, output + 1);
  std::copy(input + 1, input + up + 1, output + down + 1);
}

namespace {

/// A signal in the form that is correlated. The preparing steps are protected operations of FFT.
struct Prepared : FFT {
  Prepared(const NCDataVector<float>& signal, DetrendMode detrend, int size) {
    cells.CopyContent(signal);  // not a share: others may read the signal at the same time, here and below
    long double mean = 0, slope = 0;
    cells.InterpolateMisVals(nullptr);
    DetrendVector(&cells, detrend, mean, slope);
    PadVectorZeros(&cells, size);
    DetrendVecMeanStd(&cells);
  }
  NCDataVector<float> cells;
};

}  // namespace

void FFT::AutoCorrelation(const NCDataVector<float>* input, FFT::DetrendMode detrend, int lags,
                          NCDataVector<float>* output) {
  if (!CanCorrelate(input, lags, output)) return;
  const int size = PaddedSize(input->Size(), lags);
  const Prepared signal(*input, detrend, size);
  std::vector<float> result = CellsFromOne(size);
  kalmia::Correlate(signal.cells.GetVector(), signal.cells.GetVector(), size, result.data());
  output->CopyZeroBasedVector(result.data() + 1, lags + 1);
}

void FFT::CrossCorrelation(const NCDataVector<float>* input1, const NCDataVector<float>* input2,
                           FFT::DetrendMode detrend, int lags, NCDataVector<float>* output) {
  if (!CanCorrelate(input1, lags, output) || input2 == nullptr || input2->Size() != input1->Size()) return;
  const int size = PaddedSize(input1->Size(), lags);
  const Prepared a(*input1, detrend, size), b(*input2, detrend, size);
  std::vector<float> result = CellsFromOne(size), reordered = CellsFromOne(2 * lags + 1);
  kalmia::Correlate(a.cells.GetVector(), b.cells.GetVector(), size, result.data());
  ReorderFromVec(result.data(), reordered.data(), size, 2 * lags + 1);
  output->CopyZeroBasedVector(reordered.data() + 1, 2 * lags + 1);
}

void FFT::PowerSpectrum(const NCDataVector<float>* input, int segmentSize, bool overlap, FFT::DetrendMode detrend,
                        FFT::ScalingMode scaling, FFT::DataWindowMode window, NCDataVector<float>* output) {
  if (input == nullptr || output == nullptr || !kalmia::IsPowerOfTwo(segmentSize)) return;
  if (segmentSize == 1) FailSpectrum();  // no frequency but 0, and no window to weigh it
  const kalmia::SegmentCut cut = kalmia::CutIntoSegments(input->Size(), segmentSize / 2, overlap);
  if (cut.rounds == 0 || cut.cells > kMostCells) FailSpectrum();

  NCDataVector<float> signal;
  signal.CopyContent(*input);
  long double mean = 0, slope = 0;
  signal.InterpolateMisVals(nullptr);
  DetrendVector(&signal, detrend, mean, slope);
  PadVectorLinearly(&signal, static_cast<int>(cut.cells));

  const int m = segmentSize / 2;
  std::vector<float> power = CellsFromOne(m + 1);
  if (!kalmia::WindowedPower(signal.GetVector(), m, cut.rounds, overlap, scaling, window, power.data())) FailSpectrum();
  output->CopyZeroBasedVector(power.data() + 1, m + 1);
}
