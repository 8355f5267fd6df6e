#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/internal/Plot.h"

namespace kalmia::analysis {

// Which items of a mark a picture shows apart: the others lie on the same pixels. Places of items, from 0, in order.

/// Whether a number has a place on paper: differences of such numbers are finite.
inline bool IsDrawn(double value) { return std::fabs(value) <= 1e300; }

/// Whether the item has one.
bool HasPlace(const FigureMark& mark, std::size_t item);

/// Points: one of those that fall on the same half pixel and are of one class. Selected ones are all there, and they
/// come last, on top of the others.
std::vector<std::size_t> PointsApart(const FigureMark& mark, const Plot& plot);

/// Items of lines and bars, where there are more than two a pixel of `width`: the lowest and the highest of those that
/// share one. Gaps stay.
std::vector<std::size_t> ExtremesOfStretches(const FigureMark& mark, double width);

}  // namespace kalmia::analysis
