#include <algorithm>
#include <vector>

#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"
#include "kalmia/signal/internal/OutOrNew.h"
#include "kalmia/signal/internal/WaveletSignals.h"
#include "kalmia/signal/internal/WaveletStep.h"

// The transform of one signal and its inverse, and the transforms of tables.

using kalmia::WaveletStep;

namespace {

using Vector = NCDataVector<float>;

/// All levels in place. A cell that is set aside where their number is odd stays where it is.
void ForwardLevels(WaveletStep& step, float* cells, int n) {
  for (int m = n; m > 1; m /= 2) {
    m -= m % 2;
    step.Forward(cells, cells, cells + m / 2, m);
  }
}

/// The same sizes from the smallest on.
void BackwardLevels(WaveletStep& step, float* cells, int n) {
  if (n <= 1) return;
  BackwardLevels(step, cells, n / 2);
  const int m = n - n % 2;
  step.Backward(cells, cells + m / 2, cells, m);
}

}  // namespace

void Wavelet::DetrendVector(NCDataVector<float>* v, DetrendMode mode, long double& mean, long double& slope) {
  if (mode == DetrendMean) v->DetrendMean(mean);
  if (mode == DetrendLinear) v->DetrendLinear(mean, slope);
}

void Wavelet::RetrendVector(NCDataVector<float>* v, DetrendMode mode, double mean, double slope) {
  if (mode != DetrendMean && mode != DetrendLinear) return;
  for (int i = 1; i <= v->Size(); ++i) {
    const double trend = mode == DetrendMean ? mean : mean + (i - 1) * slope;
    (*v)(i, static_cast<float>(static_cast<double>((*v)[i]) + trend));
  }
}

void Wavelet::PadVector(NCDataVector<float>* v, int length) {
  if (v->Size() > 0) kalmia::PadBackToStart(v, length);
}

void Wavelet::SubForwardTransform(const NCDataVector<float>* in, NCDataVector<float>* out, int n, int lowStart,
                                  int highStart, const WaveletFilters& filters) {
  std::vector<float> results(static_cast<std::size_t>(n));
  float* high = results.data() + n / 2;
  WaveletStep step(*filters.lowPass, *filters.highPass);
  step.Forward(in->begin() + (std::min(lowStart, highStart) - 1), results.data(), high, n);
  out->SetRange(lowStart, results.data(), n / 2);
  out->SetRange(highStart, high, n / 2);
}

void Wavelet::SubBackwardTransform(const NCDataVector<float>* in, NCDataVector<float>* out, int n, int lowStart,
                                   int highStart, const WaveletFilters& filters) {
  std::vector<float> block(static_cast<std::size_t>(n));
  WaveletStep step(*filters.lowPass, *filters.highPass);
  step.Backward(in->begin() + (lowStart - 1), in->begin() + (highStart - 1), block.data(), n);
  out->SetRange(std::min(lowStart, highStart), block.data(), n);
}

void Wavelet::PrepareSignal(const NCDataVector<float>& in, DetrendMode mode, long double& mean, long double& slope,
                            int length, NCDataVector<float>& work) {
  work.CopyContent(in);  // not a share: others may read the signal at the same time
  work.InterpolateMisVals(nullptr);
  DetrendVector(&work, mode, mean, slope);
  PadVector(&work, length);
}

void Wavelet::TransformSignal(const NCDataVector<float>& in, kalmia::WaveletStep& step, DetrendMode mode,
                              long double& mean, long double& slope, int length, NCDataVector<float>& out) {
  Vector work;
  PrepareSignal(in, mode, mean, slope, length, work);
  std::vector<float> cells(work.begin(), work.end());
  ForwardLevels(step, cells.data(), length);
  out.CopyZeroBasedVector(cells.data(), length);
}

NCDataVector<float>* Wavelet::ForwardTransform(const NCDataVector<float>* in, const WaveletFilters& filters,
                                               DetrendMode mode, long double& mean, long double& slope,
                                               NCDataVector<float>* out, bool pad) {
  if (!kalmia::HasPresentCell(in) || !kalmia::IsComplete(filters)) return nullptr;
  const int length = pad ? kalmia::PowerLength(in->Size()) : in->Size();
  if (length < 1) return nullptr;
  kalmia::OutOrNew<Vector> result(out);
  WaveletStep step(*filters.lowPass, *filters.highPass);
  TransformSignal(*in, step, mode, mean, slope, length, *result);
  return result.HandOver();
}

NCDataMatrix<float>* Wavelet::ForwardTransformObswise(const NCDataMatrix<float>* in, const WaveletFilters& filters,
                                                      DetrendMode mode, NCDataVector<float>*& means,
                                                      NCDataVector<float>*& slopes, NCDataMatrix<float>* out,
                                                      bool pad) {
  if (!in || !kalmia::IsComplete(filters)) return nullptr;
  const int length = pad ? kalmia::PowerLength(in->SizeColumns()) : in->SizeColumns();
  if (pad && length < 1) return nullptr;
  WaveletStep step(*filters.lowPass, *filters.highPass);
  return kalmia::TransformRows(in, length, {mode, means, slopes}, out,
                               [&](const Vector& signal, long double& mean, long double& slope, Vector& result) {
                                 TransformSignal(signal, step, mode, mean, slope, length, result);
                               });
}

NCDataMatrix<float>* Wavelet::ForwardTransformVarwise(const NCDataMatrix<float>* in, const WaveletFilters& filters,
                                                      DetrendMode mode, NCDataVector<float>*& means,
                                                      NCDataVector<float>*& slopes, NCDataMatrix<float>* out,
                                                      bool pad) {
  if (!in || !kalmia::IsComplete(filters)) return nullptr;
  const int length = pad ? kalmia::PowerLength(in->SizeRows()) : in->SizeRows();
  if (pad && length < 1) return nullptr;
  WaveletStep step(*filters.lowPass, *filters.highPass);
  return kalmia::TransformColumns(in, length, {mode, means, slopes}, out,
                                  [&](const Vector& signal, long double& mean, long double& slope, Vector& result) {
                                    TransformSignal(signal, step, mode, mean, slope, length, result);
                                  });
}

NCDataVector<float>* Wavelet::Restored(const float* cells, int length, DetrendMode mode, double mean, double slope,
                                       NCDataVector<float>* out) {
  kalmia::OutOrNew<Vector> signal(out);
  signal->CopyZeroBasedVector(cells, length);
  RetrendVector(&*signal, mode, mean, slope);
  return signal.HandOver();
}

NCDataVector<float>* Wavelet::BackwardTransform(const NCDataVector<float>* in, const WaveletFilters& filters,
                                                DetrendMode mode, int originalLength, double mean, double slope,
                                                NCDataVector<float>* out) {
  if (!in || !kalmia::IsComplete(filters)) return nullptr;
  const int n = in->Size();
  if (!kalmia::IsPowerOfTwo(n) && n != originalLength) return nullptr;
  if (originalLength < 0 || originalLength > n || (out && out->Size() != originalLength)) return nullptr;
  std::vector<float> cells(in->begin(), in->end());
  if (in->GetNumMisVal() > 0) std::replace(cells.begin(), cells.end(), kalmia::kMissingCell<float>, 0.0F);
  WaveletStep step(*filters.lowPass, *filters.highPass);
  BackwardLevels(step, cells.data(), n);
  return Restored(cells.data(), originalLength, mode, mean, slope, out);
}
