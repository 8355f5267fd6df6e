#include "kalmia/signal/Derivate.h"

#include <algorithm>

#include "kalmia/kernels/simd/SlidingWindows.h"
#include "kalmia/signal/WindowFit.h"

using kalmia::kMissingCell;
using kalmia::kMostCoefficients;
using kalmia::WindowFit;

/// The fits of neighbouring windows without holes: what differs from one to the next, in arrays.
template <class T>
struct Derivate<T>::CompleteFits {
  static constexpr int kRoom = 256;

  CompleteFits(int window, float meanSquare)
      : x2Mean(meanSquare), cells(static_cast<std::size_t>(kRoom + window - 1)) {}

  WindowFit Get(int j) const {
    WindowFit fit;
    for (int k = 0; k < kMostCoefficients; ++k) fit.coefficients[k] = coefficients[k][j];
    fit.yMean = yMeans[j];
    fit.x2Mean = x2Mean;
    return fit;
  }

  /// middles[j] = value(j), or missing where the fit has failed: a loop that vector registers can run.
  template <class Value>
  void Fill(T* middles, const Value& value) const {
    const float* c0 = coefficients[0];
    for (int j = 0; j < count; ++j) middles[j] = c0[j] == kMissingCell<float> ? kMissingCell<T> : value(j);
  }

  int count = 0;
  float x2Mean;
  float yMeans[kRoom];
  float coefficients[kMostCoefficients][kRoom] = {};
  std::vector<double> cells;  ///< work space
};

// What is taken of the fits: of one of them at x, and of many at 0, where the polynomial has few terms.

template <class T>
struct Derivate<T>::SmoothedValue {
  float Get(const WindowFit& fit, float x) const { return fit.GetYHat(x); }

  void GetMiddles(const CompleteFits& fits, T* middles) const {
    const float* c1 = fits.coefficients[1];
    fits.Fill(middles, [&](int j) { return static_cast<T>(fits.yMeans[j] - double{c1[j]} * fits.x2Mean); });
  }
};

template <class T>
struct Derivate<T>::DerivativeOfOrder {
  float Get(const WindowFit& fit, float x) const { return fit.GetDerivate(x, order); }

  void GetMiddles(const CompleteFits& fits, T* middles) const {
    const float* c0 = fits.coefficients[0];
    const float* c1 = fits.coefficients[1];
    if (order == 1) return fits.Fill(middles, [c0](int j) { return c0[j]; });
    if (order == 2) return fits.Fill(middles, [c1](int j) { return 2 * c1[j]; });
    fits.Fill(middles, [&](int j) { return Get(fits.Get(j), 0); });
  }

  int order;
};

namespace {

/// Fills the half windows along the edges of n cells, from the first and from the last of `rounds` windows, i = 0 and
/// i = rounds - 1. Nothing to do for another.
template <class T, class Value>
void FillEdges(int i, int rounds, int half, bool failed, const Value& value, T* cells, int n) {
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
void Derivate<T>::FitComplete(const T* y, int count, CompleteFits& fits) const {
  const double* filters[kMostCoefficients] = {};
  float* coefficients[kMostCoefficients] = {};
  for (int k = 0; k < order_; ++k) {
    filters[k] = filter_.data() + static_cast<std::ptrdiff_t>(k) * window_;
    coefficients[k] = fits.coefficients[k];
  }
  fits.count = count;
  std::copy_n(y, count + window_ - 1, fits.cells.begin());
  kalmia::simd::FilterWindows(fits.cells.data(), count, window_, filters, order_, fits.yMeans, coefficients);
}

template <class T>
template <class Quantity>
void Derivate<T>::Slide(const NCDataVector<T>& input, NCDataVector<T>& output, const Quantity& quantity) const {
  const NCDataVector<T> signal(input);  // a share: the output may be the input
  const int n = signal.Size(), half = window_ / 2, rounds = window_ > 0 ? n - window_ + 1 : 0;
  output.SetSize(n);
  if (rounds < 1) return;

  std::vector<T> result(output.begin(), output.end());
  T* const middles = result.data() + half;
  const auto fillEdges = [&](int i, const WindowFit& fit) {
    FillEdges(i, rounds, half, fit.HasFailed(), [&](T x) { return quantity.Get(fit, x); }, result.data(), n);
  };
  const T* y = signal.begin();
  CompleteFits complete(window_, meanSquare_);
  kalmia::FitterWithHoles fitter(window_, order_);
  const bool holes = std::count(y, y + n, kMissingCell<T>) > 0;
  for (int i = 0, hole = holes ? NextHole(y, 0, n) : n; i < rounds;) {
    if (hole < i) hole = NextHole(y, i, n);
    // The last window is on its own: what it fills along the edge comes after all before it, and before its middle.
    const int windows = std::min({CompleteFits::kRoom, hole == n ? rounds - i : hole - window_ + 1 - i,
                                  std::max(rounds - 1 - i, 1)});
    if (windows > 0) {
      FitComplete(y + i, windows, complete);
      fillEdges(i, complete.Get(0));
      quantity.GetMiddles(complete, middles + i);
      i += windows;
    } else {
      const WindowFit fit = fitter.Fit(y + i);
      fillEdges(i, fit);
      middles[i] = fit.HasFailed() ? kMissingCell<T> : quantity.Get(fit, 0);
      ++i;
    }
  }
  output.CopyZeroBasedVector(result.data(), n);
}

template <class T>
void Derivate<T>::DoDerivate(const NCDataVector<T>& input, NCDataVector<T>& output, int order, float spacing) const {
  Slide(input, output, DerivativeOfOrder{order});
  if (spacing == 1) return;
  if (order < 1 || order > 3) kalmia::ThrowIllegalOrder();
  double unit = 1;
  for (int k = 0; k < order; ++k) unit *= spacing;
  output *= 1 / unit;
}

template <class T>
void Derivate<T>::Smooth(const NCDataVector<T>& input, NCDataVector<T>& output) const {
  Slide(input, output, SmoothedValue());
}

template <class T>
float Derivate<T>::GetOptima(const NCDataVector<T>& input, float spacing, bool minimum, bool limitBelow,
                             float& height) const {
  constexpr float kNone = kMissingCell<float>;
  if (window_ < 1 || input.Size() < window_) return kNone;
  WindowFit fit;
  if (NextHole(input.begin(), 0, window_) < window_) {
    fit = kalmia::FitterWithHoles(window_, order_).Fit(input.begin());
  } else {
    CompleteFits one(window_, meanSquare_);
    FitComplete(input.begin(), 1, one);
    fit = one.Get(0);
  }
  const float c0 = fit.coefficients[0], c1 = fit.coefficients[1];
  if (fit.HasFailed() || c1 == kNone || !(minimum ? c1 > 0 : c1 < 0)) return kNone;

  const float x = -c0 / (2 * c1);
  height = fit.GetYHat(x);
  const float place = x - fit.xMean + static_cast<float>(window_ / 2 + 1);
  if ((limitBelow && place < 1) || place > static_cast<float>(window_)) return kNone;
  return place * spacing;
}

template class Derivate<float>;
