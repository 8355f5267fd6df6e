#include "kalmia/analysis/figure/internal/DrawnItems.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_set>

namespace kalmia::analysis {

namespace {

constexpr std::size_t kFewPoints = 500;  ///< are drawn whatever they hide
constexpr double kCellsPerPixel = 2;

/// A number for the half pixel and the class.
std::uint64_t PlaceOf(const FigureMark& mark, std::size_t item, const Plot& plot) {
  const auto cell = [](double pixels) { return static_cast<std::uint64_t>(std::llround(kCellsPerPixel * pixels)); };
  const bool isOfClasses = mark.classes.size() > item;
  const auto number = static_cast<std::uint64_t>(isOfClasses ? mark.classes[item] + 1 : 0);
  return (number << 40U) ^ (cell(plot.X(mark.x[item])) << 20U) ^ cell(plot.Y(mark.y[item]));
}

/// The items of one stretch without a gap.
void AddStretches(const FigureMark& mark, std::size_t begin, std::size_t end, std::size_t length,
                  std::vector<std::size_t>* drawn) {
  for (std::size_t from = begin; from < end; from += length) {
    const std::size_t to = std::min(from + length, end);
    std::size_t lowest = from, highest = from;
    for (std::size_t i = from; i < to; ++i) {
      if (mark.y[i] < mark.y[lowest]) lowest = i;
      if (mark.y[i] > mark.y[highest]) highest = i;
    }
    drawn->push_back(std::min(lowest, highest));
    if (lowest != highest) drawn->push_back(std::max(lowest, highest));
  }
}

}  // namespace

bool HasPlace(const FigureMark& mark, std::size_t item) { return IsDrawn(mark.x[item]) && IsDrawn(mark.y[item]); }

std::vector<std::size_t> PointsApart(const FigureMark& mark, const Plot& plot) {
  std::vector<bool> isSelected(mark.x.size(), false);
  for (const int item : mark.selected) isSelected[static_cast<std::size_t>(item)] = true;
  std::vector<std::size_t> drawn;
  std::unordered_set<std::uint64_t> places;
  for (std::size_t i = 0; i < mark.x.size(); ++i) {
    if (isSelected[i] || !HasPlace(mark, i)) continue;
    if (mark.x.size() <= kFewPoints || places.insert(PlaceOf(mark, i, plot)).second) drawn.push_back(i);
  }
  for (std::size_t i = 0; i < mark.x.size(); ++i) {
    if (isSelected[i] && HasPlace(mark, i)) drawn.push_back(i);
  }
  return drawn;
}

std::vector<std::size_t> ExtremesOfStretches(const FigureMark& mark, double width) {
  const auto pixels = static_cast<std::size_t>(width);
  const std::size_t size = mark.x.size(), length = size > 2 * pixels ? (size + pixels - 1) / pixels : 1;
  std::vector<std::size_t> drawn;
  for (std::size_t begin = 0; begin < size;) {
    if (!HasPlace(mark, begin)) {
      drawn.push_back(begin++);
      continue;
    }
    std::size_t end = begin;
    while (end < size && HasPlace(mark, end)) ++end;
    AddStretches(mark, begin, end, length, &drawn);
    begin = end;
  }
  return drawn;
}

}  // namespace kalmia::analysis
