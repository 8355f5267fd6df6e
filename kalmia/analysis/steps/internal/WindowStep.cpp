#include "kalmia/analysis/steps/internal/WindowStep.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

using Vector = NCDataVector<float>;

constexpr auto kMissingCell = kalmia::kMissingCell<float>;

/// Windows between two looks whether to stop. The widest one, with holes, takes about a millisecond.
constexpr int kWindowsAtOnce = 256;

/// Binary places between 1 and the largest cell of a small window. A quadratic or cubic through the cells of a window
/// that has few of them goes far beyond these: through four side by side at one end of the widest window, 100001
/// channels, goes a cubic that at the other end is some 2^51 times as large.
constexpr int kPlacesBelowOne = 60;

/// The power of 2 that makes the window a small one.
int PowerOfSmallWindow(const Vector& window) {
  float largest = 0.0F;
  for (const float cell : window) {
    if (cell != kMissingCell) largest = std::max(largest, std::fabs(cell));
  }
  int exponent = 0;
  std::frexp(largest, &exponent);
  return -exponent - kPlacesBelowOne;
}

Vector Small(const Vector& window, int power) {
  std::vector<float> cells(window.begin(), window.end());
  for (float& cell : cells) {
    if (cell != kMissingCell) cell = std::ldexp(cell, power);
  }
  Vector small;
  small.CopyZeroBasedVector(cells.data(), window.Size());
  return small;
}

/// `count` cells from place `begin` on, from 0.
Vector Part(const Vector& row, int begin, int count) {
  Vector part;
  part.CopyZeroBasedVector(row.begin() + begin, count);
  return part;
}

}  // namespace

WindowStep::WindowStep(const LearntStep& learnt)
    : order_(learnt.step.kind == StepKind::Derivative ? learnt.step.Whole(0) : 0),
      width_(learnt.step.Window()),
      spacing_(learnt.spacing),
      window_(static_cast<Derivate<float>::PolynomialOrder>(learnt.step.Polynomial()), width_) {}

Vector WindowStep::AsItIs(const Vector& row, float spacing) const {
  Vector result;
  if (order_ > 0) {
    window_.DoDerivate(row, result, order_, spacing);
  } else {
    window_.Smooth(row, result);
  }
  return result;
}

std::vector<float> WindowStep::OfSmall(const Vector& window) const {
  const int power = PowerOfSmallWindow(window);
  const Vector small = AsItIs(Small(window, power), 1.0F);
  double unit = 1.0;
  for (int k = 0; k < order_; ++k) unit *= spacing_;
  std::vector<float> cells(small.begin(), small.end());
  for (float& cell : cells) {
    if (cell == kMissingCell) continue;
    cell = AvoidMissingValue(static_cast<float>(std::ldexp(double{cell}, -power) * (1 / unit)));
  }
  return cells;
}

void WindowStep::FindLost(const Vector& row, std::vector<float>* cells, WorkProgress* progress) const {
  std::vector<float> found;
  int foundIn = -1;  // the window of these, from 0: at the ends it serves many cells
  for (int c = 0; c < row.Size(); ++c) {
    float& cell = (*cells)[static_cast<std::size_t>(c)];
    if (cell != kMissingCell) continue;
    const int begin = std::clamp(c - width_ / 2, 0, row.Size() - width_);
    if (begin != foundIn) {
      progress->Ask();
      found = OfSmall(Part(row, begin, width_));
      foundIn = begin;
    }
    cell = found[static_cast<std::size_t>(c - begin)];
  }
}

std::vector<float> WindowStep::Slid(const Vector& row, WorkProgress* progress) const {
  std::vector<float> cells(static_cast<std::size_t>(row.Size()), kMissingCell);
  const int windows = row.Size() - width_ + 1;
  for (int begin = 0; begin < windows; begin += kWindowsAtOnce) {
    progress->Ask();
    const int count = std::min(kWindowsAtOnce, windows - begin);
    const Vector slid = AsItIs(Part(row, begin, count + width_ - 1), spacing_);
    // Before and behind the middles of windows are edges, which only the ends of the row have.
    const int from = begin == 0 ? 0 : width_ / 2;
    const int to = begin + count == windows ? slid.Size() : width_ / 2 + count;
    std::copy(slid.begin() + from, slid.begin() + to, cells.begin() + begin + from);
  }
  FindLost(row, &cells, progress);
  return cells;
}

}  // namespace kalmia::analysis
