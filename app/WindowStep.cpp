#include "app/WindowStep.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "app/Scaling.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

using Vector = NCDataVector<float>;

constexpr auto kMissingCell = kalmia::kMissingCell<float>;

/// Binary places between 1 and the largest cell of a small row. Through four cells side by side at one end of the
/// widest window, 100001 channels, goes a cubic that at the other end is some 2^51 times as large.
constexpr int kPlacesBelowOne = 60;

/// The power of 2 that makes the row a small one.
int PowerOfSmallRow(const Vector& row) {
  float largest = 0.0F;
  for (const float cell : row) {
    if (cell != kMissingCell) largest = std::max(largest, std::fabs(cell));
  }
  int exponent = 0;
  std::frexp(largest, &exponent);
  return -exponent - kPlacesBelowOne;
}

Vector Small(Vector row, int power) {
  for (int c = 1; c <= row.Size(); ++c) {
    if (row[c] != kMissingCell) row(c, std::ldexp(row[c], power));
  }
  return row;
}

}  // namespace

WindowStep::WindowStep(const LearntStep& learnt)
    : order_(learnt.step.kind == StepKind::Derivative ? learnt.step.Whole(0) : 0),
      spacing_(learnt.spacing),
      window_(static_cast<Derivate<float>::PolynomialOrder>(learnt.step.Polynomial()), learnt.step.Window()) {}

Vector WindowStep::AsItIs(const Vector& row, float spacing) const {
  Vector result;
  if (order_ > 0) {
    window_.DoDerivate(row, result, order_, spacing);
  } else {
    window_.Smooth(row, result);
  }
  return result;
}

std::vector<float> WindowStep::Slid(const Vector& row) const {
  const Vector result = AsItIs(row, spacing_);
  std::vector<float> cells(result.begin(), result.end());
  if (std::find(cells.begin(), cells.end(), kMissingCell) == cells.end()) return cells;
  // Nothing in or behind a window of a small row reaches -99, and a power of 2 changes no other bit of a cell.
  const int power = PowerOfSmallRow(row);
  const Vector small = AsItIs(Small(row, power), 1.0F);
  double unit = 1.0;
  for (int k = 0; k < order_; ++k) unit *= spacing_;
  for (int c = 1; c <= small.Size(); ++c) {
    float& cell = cells[static_cast<std::size_t>(c) - 1];
    if (cell != kMissingCell || small[c] == kMissingCell) continue;
    cell = UnlessMissing(static_cast<float>(std::ldexp(double{small[c]}, -power) * (1 / unit)));
  }
  return cells;
}

}  // namespace kalmia::app
