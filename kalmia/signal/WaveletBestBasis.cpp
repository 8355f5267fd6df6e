#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"
#include "kalmia/signal/internal/OutOrNew.h"
#include "kalmia/signal/internal/WaveletSignals.h"
#include "kalmia/signal/internal/WaveletStep.h"

// Wavelet packets: the best basis of a signal, and transforms in it. In the order of frequency the two halves of every
// block of even number change places, since a high pass that is halved in rate turns the frequencies round.

using kalmia::WaveletStep;

namespace {

using Vector = NCDataVector<float>;

/// -sum x ln x of the shares of energy of the cells p[0] to p[count - 1].
double Entropy(const float* p, int count, double norm) {
  double sum = 0;
  for (int i = 0; i < count; ++i) {
    const double root = static_cast<double>(p[i]) / norm, share = root * root;
    if (share > 0) sum -= share * std::log(share);
  }
  return sum;
}

/// Where the low and the high half of a block of m cells lie.
struct Halves {
  Halves(int m, int index, bool sequency) : low(sequency && index % 2 == 0 ? m / 2 : 0), high(m / 2 - low) {}
  int low, high;
};

/// Transforms along the decided tree, in place.
class Packets {
 public:
  Packets(const BoolVector& decisions, const Wavelet::WaveletFilters& filters, bool sequency)
      : decisions_(decisions), step_(*filters.lowPass, *filters.highPass), sequency_(sequency) {}

  /// The m cells of a node that is split.
  void Forward(float* cells, int m, int level, int index) {
    const Halves halves(m, index, sequency_);
    step_.Forward(cells, cells + halves.low, cells + halves.high, m);
    if (m < 3) return;
    if (IsSplit(level + 1, 2 * index - 1)) Forward(cells, m / 2, level + 1, 2 * index - 1);
    if (IsSplit(level + 1, 2 * index)) Forward(cells + m / 2, m / 2, level + 1, 2 * index);
  }

  void Backward(float* cells, int m, int level, int index) {
    if (m > 2) {
      if (IsSplit(level + 1, 2 * index - 1)) Backward(cells, m / 2, level + 1, 2 * index - 1);
      if (IsSplit(level + 1, 2 * index)) Backward(cells + m / 2, m / 2, level + 1, 2 * index);
    }
    const Halves halves(m, index, sequency_);
    step_.Backward(cells + halves.low, cells + halves.high, cells, m);
  }

 private:
  bool IsSplit(int level, int index) const { return decisions_[Wavelet::Node(level, index)]; }

  const BoolVector& decisions_;
  WaveletStep step_;
  bool sequency_;
};

/// A single cell has no decision.
bool RootIsSplit(const BoolVector& decisions) { return decisions.Size() > 0 && decisions[1]; }

/// Whether there is one decision for each node that `cells` cells have, their number a power of two or 0.
bool DecideAbout(const BoolVector* decisions, int cells) {
  return decisions && cells > 0 && decisions->Size() == cells - 1;
}

}  // namespace

int Wavelet::Node(int level, int index) { return (1 << (level - 1)) + (index - 1); }

double Wavelet::CalcEntropy(const NCDataVector<float>* v, int start, int count, double norm) {
  return count < 1 ? 0 : Entropy(v->begin() + (start - 1), count, norm);
}

NCDataVector<float>* Wavelet::MakeEntropyTree(const NCDataVector<float>* v, WaveletFilters filters) {
  const int n = v->Size();
  const auto norm = static_cast<double>(std::sqrt(v->GetSS()));
  auto tree = std::make_unique<Vector>(n + (n - 1), 0.0F);  // 2 n may be beyond an int
  (*tree)(1, static_cast<float>(Entropy(v->begin(), n, norm)));
  std::vector<float> cells(v->begin(), v->end());
  WaveletStep step(*filters.lowPass, *filters.highPass);
  int level = 1;
  for (int m = n; m > 1; m /= 2, ++level) {
    float* block = cells.data();
    for (int index = 1; index <= n / m; ++index, block += m) {
      const Halves halves(m, index, /*sequency=*/true);
      step.Forward(block, block + halves.low, block + halves.high, m);
      const int child = Node(level + 1, 2 * index - 1);
      (*tree)(child, static_cast<float>(Entropy(block, m / 2, norm)));
      (*tree)(child + 1, static_cast<float>(Entropy(block + m / 2, m / 2, norm)));
    }
  }
  return tree.release();
}

void Wavelet::GetBestBasisTree(NCDataVector<float>* tree, BoolVector* decisions) {
  for (int node = decisions->Size(); node >= 1; --node) {
    const double sum = static_cast<double>((*tree)[2 * node]) + static_cast<double>((*tree)[2 * node + 1]);
    const bool split = !(static_cast<double>((*tree)[node]) <= sum);
    (*decisions)(node) = split;
    if (split) (*tree)(node, static_cast<float>(sum));
  }
}

BoolVector* Wavelet::FindBestBasis(const NCDataVector<float>* in, const WaveletFilters& filters, DetrendMode mode,
                                   BoolVector* decisions) {
  if (!kalmia::HasPresentCell(in) || !kalmia::IsComplete(filters)) return nullptr;
  const int length = kalmia::PowerLength(in->Size());
  if (length < 1 || (decisions && !DecideAbout(decisions, length))) return nullptr;
  long double mean = 0, slope = 0;
  Vector work;
  PrepareSignal(*in, mode, mean, slope, length, work);
  const std::unique_ptr<Vector> tree(MakeEntropyTree(&work, filters));
  std::unique_ptr<BoolVector> made(decisions ? nullptr : std::make_unique<BoolVector>(length - 1, false));
  GetBestBasisTree(tree.get(), decisions ? decisions : made.get());
  return decisions ? decisions : made.release();
}

BoolVector* Wavelet::FindBestBasisObswise(const NCDataMatrix<float>* in, int row, WaveletFilters filters,
                                          DetrendMode mode, BoolVector* decisions) {
  if (!in || row < 0 || row > in->SizeRows()) return nullptr;
  if (row > 0) return FindBestBasis(&(*in)[row], filters, mode, decisions);
  Vector means(in->SizeColumns());
  for (int c = 1; c <= in->SizeColumns(); ++c) means(c, static_cast<float>(kalmia::ColumnOf(*in, c).GetMean()));
  return FindBestBasis(&means, filters, mode, decisions);
}

void Wavelet::SubForwardTransFormBestBasis(NCDataVector<float>* work, NCDataVector<float>* out,
                                           const BoolVector* decisions, const WaveletFilters& filters, int level,
                                           int index, bool sequency) {
  const int m = work->Size() >> (level - 1), start = (index - 1) * m;
  std::vector<float> cells(work->begin() + start, work->begin() + start + m);
  Packets(*decisions, filters, sequency).Forward(cells.data(), m, level, index);
  out->SetRange(start + 1, cells.data(), m);
}

void Wavelet::SubBackwardTransFormBestBasis(NCDataVector<float>* work, NCDataVector<float>* out,
                                            const BoolVector* decisions, const WaveletFilters& filters, int level,
                                            int index, bool sequency) {
  const int m = work->Size() >> (level - 1), start = (index - 1) * m;
  std::vector<float> cells(work->begin() + start, work->begin() + start + m);
  Packets(*decisions, filters, sequency).Backward(cells.data(), m, level, index);
  out->SetRange(start + 1, cells.data(), m);
}

void Wavelet::TransformSignalBestBasis(const NCDataVector<float>& in, const BoolVector& decisions,
                                       const WaveletFilters& filters, DetrendMode mode, long double& mean,
                                       long double& slope, NCDataVector<float>& out) {
  const int length = decisions.Size() + 1;
  Vector work;
  PrepareSignal(in, mode, mean, slope, length, work);
  std::vector<float> cells(work.begin(), work.end());
  if (RootIsSplit(decisions)) Packets(decisions, filters, /*sequency=*/true).Forward(cells.data(), length, 1, 1);
  out.CopyZeroBasedVector(cells.data(), length);
}

NCDataVector<float>* Wavelet::ForwardTransformBestBasis(const NCDataVector<float>* in, const BoolVector* decisions,
                                                        WaveletFilters filters, DetrendMode mode, long double& mean,
                                                        long double& slope, NCDataVector<float>* out) {
  if (!kalmia::HasPresentCell(in) || !kalmia::IsComplete(filters)) return nullptr;
  const int length = kalmia::PowerLength(in->Size());
  if (!DecideAbout(decisions, length) || (out && out->Size() != length)) return nullptr;
  kalmia::OutOrNew<Vector> result(out);
  TransformSignalBestBasis(*in, *decisions, filters, mode, mean, slope, *result);
  return result.HandOver();
}

NCDataMatrix<float>* Wavelet::ForwardTransformBestBasisObswise(const NCDataMatrix<float>* in,
                                                               const BoolVector* decisions, WaveletFilters filters,
                                                               DetrendMode mode, NCDataVector<float>*& means,
                                                               NCDataVector<float>*& slopes,
                                                               NCDataMatrix<float>* out) {
  if (!in || !kalmia::IsComplete(filters)) return nullptr;
  const int length = kalmia::PowerLength(in->SizeColumns());
  if (!DecideAbout(decisions, length)) return nullptr;
  return kalmia::TransformRows(in, length, {mode, means, slopes}, out,
                               [&](const Vector& signal, long double& mean, long double& slope, Vector& result) {
                                 TransformSignalBestBasis(signal, *decisions, filters, mode, mean, slope, result);
                               });
}

NCDataMatrix<float>* Wavelet::ForwardTransformBestBasisVarwise(const NCDataMatrix<float>* in,
                                                               const BoolVector* decisions, WaveletFilters filters,
                                                               DetrendMode mode, NCDataVector<float>*& means,
                                                               NCDataVector<float>*& slopes,
                                                               NCDataMatrix<float>* out) {
  if (!in || !kalmia::IsComplete(filters)) return nullptr;
  const int length = kalmia::PowerLength(in->SizeRows());
  if (!DecideAbout(decisions, length)) return nullptr;
  return kalmia::TransformColumns(in, length, {mode, means, slopes}, out,
                                  [&](const Vector& signal, long double& mean, long double& slope, Vector& result) {
                                    TransformSignalBestBasis(signal, *decisions, filters, mode, mean, slope, result);
                                  });
}

NCDataVector<float>* Wavelet::BackwardTransformBestBasis(const NCDataVector<float>* in, const BoolVector* decisions,
                                                         WaveletFilters filters, DetrendMode mode, int originalLength,
                                                         double mean, double slope, NCDataVector<float>* out) {
  if (!in || !kalmia::IsComplete(filters)) return nullptr;
  const int n = in->Size();
  if (!kalmia::IsPowerOfTwo(n) || in->GetNumMisVal() > 0 || !DecideAbout(decisions, n)) return nullptr;
  if (originalLength < 0 || originalLength > n || (out && out->Size() != originalLength)) return nullptr;
  std::vector<float> cells(in->begin(), in->end());
  if (RootIsSplit(*decisions)) Packets(*decisions, filters, /*sequency=*/true).Backward(cells.data(), n, 1, 1);
  return Restored(cells.data(), originalLength, mode, mean, slope, out);
}
