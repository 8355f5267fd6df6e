#include "kalmia/signal/Derivate.h"

#include <algorithm>
#include <array>

#include "kalmia/kernels/simd/SlidingWindows.h"
#include "kalmia/signal/WindowFit.h"

using kalmia::kMissingCell;
using kalmia::WindowFit;

template <class T>
Derivate<T>::Derivate(PolynomialOrder order, int window)
    : order_(order == Cubic ? Cubic : Quadratic), window_(std::max(window, 0)) {
  std::vector<float> positions;
  for (int i = 0; i < window_; ++i) positions.push_back(static_cast<float>(i - window_ / 2));
  if (positions.empty()) return;
  kalmia::PositionPowers powers(positions, order_);
  meanSquare_ = powers.Centre(2);
  if (!powers.GetFilters(filter_)) filter_.assign(positions.size() * static_cast<std::size_t>(order_), 0.0);
}

template <class T>
Derivate<T>::Derivate(const Derivate& other) = default;

template <class T>
Derivate<T>& Derivate<T>::operator=(const Derivate& other) = default;

template <class T>
Derivate<T>::~Derivate() = default;

/// Calls visit(i, fit) for the complete windows i = first to last - 1, a batch at a time.
template <class T>
template <class Visit>
void Derivate<T>::EachCompleteWindow(const double* y, int first, int last, const Visit& visit) const {
  constexpr int kBatch = 256;
  std::array<float, kBatch> means, sums[kalmia::kMostCoefficients];
  const double* filters[kalmia::kMostCoefficients] = {};
  float* rows[kalmia::kMostCoefficients] = {};
  for (int k = 0; k < order_; ++k) {
    filters[k] = filter_.data() + static_cast<std::ptrdiff_t>(k) * window_;
    rows[k] = sums[k].data();
  }
  WindowFit fit;
  fit.x2Mean = meanSquare_;
  for (; first < last; first += kBatch) {
    const int count = std::min(kBatch, last - first);
    kalmia::simd::FilterWindows(y + first, count, window_, filters, order_, means.data(), rows);
    for (int j = 0; j < count; ++j) {
      fit.yMean = means[static_cast<std::size_t>(j)];
      for (int k = 0; k < order_; ++k) fit.coefficients[k] = rows[k][j];
      visit(first + j, fit);
    }
  }
}

/// Calls visit(i, fit) for the windows i = 0 to rounds - 1, the first cell of window i being y[i], in this order.
template <class T>
template <class Visit>
void Derivate<T>::EachWindow(const T* y, int rounds, const Visit& visit) const {
  const int cells = rounds + window_ - 1;
  const std::vector<double> wide(y, y + cells);
  for (int next = 0; next < rounds;) {
    const int hole = static_cast<int>(std::find(y + next, y + cells, kMissingCell<T>) - y);
    const int complete = std::max(next, std::min(rounds, hole == cells ? rounds : hole - window_ + 1));
    EachCompleteWindow(wide.data(), next, complete, visit);
    for (next = complete; next < rounds && next <= hole; ++next)
      visit(next, kalmia::FitWithHoles(y + next, window_, order_));
  }
}

/// Writes value(fit, x) of each window to the place of its middle, and along the edges.
template <class T>
template <class Value>
void Derivate<T>::Slide(const NCDataVector<T>& input, NCDataVector<T>& output, const Value& value) const {
  const NCDataVector<T> signal(input);  // a share: the output may be the input
  const int n = signal.Size(), half = window_ / 2, rounds = window_ > 0 ? n - window_ + 1 : 0;
  output.SetSize(n);
  if (rounds < 1) return;

  std::vector<T> result(output.begin(), output.end());
  T* const cells = result.data() - 1;
  EachWindow(signal.begin(), rounds, [&](int before, const WindowFit& fit) {
    const int i = before + 1;
    const bool failed = fit.HasFailed();
    for (int k = 0; i == 1 && k < half; ++k)
      cells[k + 1] = failed ? kMissingCell<T> : value(fit, static_cast<float>(k - half));
    for (int k = 0; i == rounds && k < half; ++k) {
      const int cell = failed ? n - k - 1 : n - k;  // one further in where nothing can be filled in
      cells[cell] = failed ? kMissingCell<T> : value(fit, static_cast<float>(half - k));
    }
    cells[half + i] = failed ? kMissingCell<T> : value(fit, 0.0F);
  });
  output.CopyZeroBasedVector(result.data(), n);
}

template <class T>
void Derivate<T>::DoDerivate(const NCDataVector<T>& input, NCDataVector<T>& output, int order, float spacing) const {
  Slide(input, output, [order](const WindowFit& fit, float x) { return fit.GetDerivate(x, order); });
  if (spacing == 1) return;
  if (order < 1 || order > 3) kalmia::ThrowIllegalOrder();
  double unit = 1;
  for (int k = 0; k < order; ++k) unit *= spacing;
  output *= 1 / unit;
}

template <class T>
void Derivate<T>::Smooth(const NCDataVector<T>& input, NCDataVector<T>& output) const {
  Slide(input, output, [](const WindowFit& fit, float x) { return fit.GetYHat(x); });
}

template <class T>
float Derivate<T>::GetOptima(const NCDataVector<T>& input, float spacing, bool minimum, bool limitBelow,
                             float& height) const {
  constexpr float kNone = kMissingCell<float>;
  if (window_ < 1 || input.Size() < window_) return kNone;
  WindowFit fit;
  EachWindow(input.begin(), /*rounds=*/1, [&fit](int, const WindowFit& first) { fit = first; });
  const float c0 = fit.coefficients[0], c1 = fit.coefficients[1];
  if (fit.HasFailed() || c1 == kNone || !(minimum ? c1 > 0 : c1 < 0)) return kNone;

  const float x = -c0 / (2 * c1);
  height = fit.GetYHat(x);
  const float place = x - fit.xMean + static_cast<float>(window_ / 2 + 1);
  if ((limitBelow && place < 1) || place > static_cast<float>(window_)) return kNone;
  return place * spacing;
}

template class Derivate<float>;
