#include "kalmia/analysis/figure/internal/TakenPixels.h"

#include <algorithm>
#include <cmath>

namespace kalmia::analysis {

TakenPixels::TakenPixels(double width, double height)
    : width_(static_cast<int>(width)),
      height_(static_cast<int>(height)),
      taken_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), false) {}

bool TakenPixels::IsFree(const Box& box) const {
  if (!(box.left >= 0.0 && box.top >= 0.0 && box.right <= width_ && box.bottom <= height_)) return false;
  const int right = static_cast<int>(std::ceil(box.right)), bottom = static_cast<int>(std::ceil(box.bottom));
  for (int y = static_cast<int>(box.top); y < bottom; ++y) {
    const auto row = taken_.begin() + static_cast<std::ptrdiff_t>(y) * width_;
    if (std::find(row + static_cast<int>(box.left), row + right, true) != row + right) return false;
  }
  return true;
}

void TakenPixels::Take(const Box& box) {
  const auto within = [](double place, int end) { return static_cast<int>(std::clamp(place, 0.0, double{1} * end)); };
  const int left = within(std::floor(box.left), width_), right = within(std::ceil(box.right), width_);
  for (int y = within(std::floor(box.top), height_); y < within(std::ceil(box.bottom), height_); ++y) {
    const auto row = taken_.begin() + static_cast<std::ptrdiff_t>(y) * width_;
    if (left < right) std::fill(row + left, row + right, true);
  }
}

}  // namespace kalmia::analysis
