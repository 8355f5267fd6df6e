#include "kalmia/signal/Derivate.h"

#include <algorithm>
#include <cmath>

#include "kalmia/kernels/simd/SlidingWindows.h"
#include "kalmia/signal/internal/WindowFit.h"

using kalmia::FitterWithHoles;
using kalmia::kMissingCell;
using kalmia::kMostCoefficients;
using kalmia::WindowFit;

/// What is taken of a fit: the smoothed value, or a derivative.
template <class T>
struct Derivate<T>::Wanted {
  bool IsLegal() const { return smoothed || (order >= 1 && order <= 3); }
  float Get(const WindowFit& fit, float x) const { return smoothed ? fit.GetYHat(x) : fit.GetDerivate(x, order); }
  /// The one coefficient that Get(fit, 0) depends on in a window without holes.
  int Coefficient() const { return smoothed ? 1 : order - 1; }

  bool smoothed;
  int order = 0;
};

/// Neighbouring windows without holes, and work space for their fits.
template <class T>
struct Derivate<T>::Batch {
  static constexpr int kRoom = 512;

  int count = 0;
  bool mayFail = true;  ///< whether a c0 of exactly -99 is possible
  float yMeans[kRoom], c0[kRoom], wanted[kRoom];
  std::vector<double> cells;
};

namespace {

/// Fills the half windows along the edges of n cells, from the first and from the last of `rounds` windows, i = 0 and
/// i = rounds - 1. Nothing to do for another.
template <class T, class Value>
void FillEdges(int i, int rounds, int half, const Value& value, T* cells, int n, bool failed) {
  if (i == 0) {
    for (int k = 0; k < half; ++k) cells[k] = failed ? kMissingCell<T> : value(static_cast<T>(k - half));
  }
  if (i == rounds - 1) {
    const int last = failed ? n - 2 : n - 1;  // where nothing can be filled in, the last cell is left out
    for (int k = 0; k < half; ++k) cells[last - k] = failed ? kMissingCell<T> : value(static_cast<T>(half - k));
  }
}

/// The next of n cells that is missing, from `from` on; n if there is none.
template <class T>
int NextHole(const T* y, int from, int n) {
  return static_cast<int>(std::find(y + from, y + n, kMissingCell<T>) - y);
}

/// Whether a cell is missing.
template <class T>
bool HasHole(const T* y, int n) {
  int found = 0;  // an int as wide as the cells, and no end before the last: this runs on vector registers
  for (int i = 0; i < n; ++i) found |= y[i] == kMissingCell<T> ? 1 : 0;
  return found != 0;
}

/// Whether the filter, applied to any centred window of the cells, stays away from -99: |sum f (y - mean)| is at most
/// 2 max|y| sum|f|.
template <class T>
bool StaysAboveMissing(const T* y, int n, const double* filter, int window) {
  double sum = 0;
  for (int i = 0; i < window; ++i) sum += std::abs(filter[i]);
  const T limit = static_cast<T>(-(kMissingCell<double> + 1) / 2 / sum);
  int beyond = 0;
  for (int i = 0; i < n; ++i) beyond |= std::abs(y[i]) < limit ? 0 : 1;  // a NaN is
  return beyond == 0;
}

}  // namespace

template <class T>
Derivate<T>::Derivate(PolynomialOrder order, int window)
    : order_(order == Cubic ? Cubic : Quadratic), window_(std::max(window, 0)) {
  std::vector<float> positions;
  for (int i = 0; i < window_; ++i) positions.push_back(static_cast<float>(i - window_ / 2));
  if (positions.empty()) return;
  kalmia::PositionPowers powers(order_);
  powers.Set(positions);
  meanSquare_ = powers.Centre(2);
  if (!powers.GetFilters(filter_)) filter_.assign(positions.size() * static_cast<std::size_t>(order_), 0.0);
}

template <class T>
Derivate<T>::Derivate(const Derivate& other) = default;

template <class T>
Derivate<T>& Derivate<T>::operator=(const Derivate& other) = default;

template <class T>
Derivate<T>::~Derivate() = default;

template <class T>
WindowFit Derivate<T>::Fit(const T* y, FitterWithHoles& fitter) const {
  if (HasHole(y, window_)) return fitter.Fit(y);
  WindowFit fit;
  fit.x2Mean = meanSquare_;
  const double* filters[kMostCoefficients] = {};
  float* coefficients[kMostCoefficients] = {};
  for (int k = 0; k < order_; ++k) {
    filters[k] = GetFilter(k);
    coefficients[k] = fit.coefficients + k;
  }
  const std::vector<double> cells(y, y + window_);
  kalmia::simd::FilterWindows(cells.data(), 1, window_, filters, order_, &fit.yMean, coefficients);
  return fit;
}

template <class T>
void Derivate<T>::FillMiddles(const T* y, const Wanted& wanted, Batch& batch, T* middles) const {
  const int k = wanted.Coefficient(), n = batch.count;
  const double* filters[] = {GetFilter(k), GetFilter(0)};
  float* sums[] = {batch.wanted, batch.c0};
  batch.cells.assign(y, y + n + window_ - 1);
  kalmia::simd::FilterWindows(batch.cells.data(), n, window_, filters, batch.mayFail ? 2 : 1, batch.yMeans, sums);
  // What Get(fit, 0) gives, as loops that vector registers can run.
  if (wanted.smoothed) {
    const double x2Mean = meanSquare_;
    for (int j = 0; j < n; ++j) middles[j] = static_cast<T>(batch.yMeans[j] - batch.wanted[j] * x2Mean);
  } else {
    const float factorial = wanted.order == 3 ? 6 : static_cast<float>(wanted.order);
    for (int j = 0; j < n; ++j) middles[j] = factorial * batch.wanted[j];
  }
  if (!batch.mayFail) return;
  for (int j = 0; j < n; ++j)
    if (batch.c0[j] == kMissingCell<float>) middles[j] = kMissingCell<T>;
}

template <class T>
void Derivate<T>::Slide(const NCDataVector<T>& input, NCDataVector<T>& output, const Wanted& wanted) const {
  const int n = input.Size(), half = window_ / 2, rounds = window_ > 0 ? n - window_ + 1 : 0;
  output.SetSize(n);
  if (rounds < 1) return;

  const T* y = input.begin();
  std::vector<T> result(output.begin(), output.end());  // the output may be the input
  T* const middles = result.data() + half;
  FitterWithHoles fitter(window_, order_);
  const bool inBatches = wanted.IsLegal() && wanted.Coefficient() < order_;
  Batch batch;
  batch.mayFail = !StaysAboveMissing(y, n, GetFilter(0), window_);
  int hole = HasHole(y, n) ? NextHole(y, 0, n) : n;
  for (int i = 0; i < rounds;) {
    if (hole < i) hole = NextHole(y, i, n);
    const int complete = hole == n ? n : hole - window_ + 1;  // windows before this one have no hole
    batch.count = std::min({Batch::kRoom, complete - i, rounds - 1 - i});
    if (inBatches && i > 0 && batch.count > 0) {
      FillMiddles(y + i, wanted, batch, middles + i);
      i += batch.count;
      continue;
    }
    const WindowFit fit = Fit(y + i, fitter);
    const bool failed = fit.HasFailed();
    FillEdges(i, rounds, half, [&](T x) { return wanted.Get(fit, x); }, result.data(), n, failed);
    middles[i] = failed ? kMissingCell<T> : wanted.Get(fit, 0);
    ++i;
  }
  output.CopyZeroBasedVector(result.data(), n);
}

template <class T>
void Derivate<T>::DoDerivate(const NCDataVector<T>& input, NCDataVector<T>& output, int order, float spacing) const {
  const Wanted derivative{/*smoothed=*/false, order};
  Slide(input, output, derivative);
  if (spacing == 1) return;
  if (!derivative.IsLegal()) kalmia::ThrowIllegalOrder();
  double unit = 1;
  for (int k = 0; k < order; ++k) unit *= spacing;
  output *= 1 / unit;
}

template <class T>
void Derivate<T>::Smooth(const NCDataVector<T>& input, NCDataVector<T>& output) const {
  Slide(input, output, Wanted{/*smoothed=*/true});
}

template <class T>
float Derivate<T>::GetOptima(const NCDataVector<T>& input, float spacing, bool minimum, bool limitBelow,
                             float& height) const {
  constexpr float kNone = kMissingCell<float>;
  if (window_ < 1 || input.Size() < window_) return kNone;
  FitterWithHoles fitter(window_, order_);
  const WindowFit fit = Fit(input.begin(), fitter);
  const float c0 = fit.coefficients[0], c1 = fit.coefficients[1];
  if (fit.HasFailed() || c1 == kNone || !(minimum ? c1 > 0 : c1 < 0)) return kNone;

  const float x = -c0 / (2 * c1);
  height = fit.GetYHat(x);
  const float place = x - fit.xMean + static_cast<float>(window_ / 2 + 1);
  if ((limitBelow && place < 1) || place > static_cast<float>(window_)) return kNone;
  return place * spacing;
}

template class Derivate<float>;
