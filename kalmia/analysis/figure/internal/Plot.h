#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/figure/internal/Svg.h"

namespace kalmia::analysis {

/// A place on an axis, with the number to stand there.
struct Tick {
  double value;
  std::string label;
};

/// Ticks at round numbers, steps of 1, 2 or 5 times a power of ten, all within low to high: about `count` of them,
/// never more than twice that. The labels of one axis have equally many decimals. With `whole` steps are at least 1.
/// low < high, both finite.
std::vector<Tick> RoundTicks(double low, double high, int count, bool whole);

/// Ticks at the edges of `bins` bins, as BinEdge() has them: as many as have room, in steps of 1, 2 or 5 times a power
/// of ten bins, with equally many decimals. Cost: one label an edge.
std::vector<Tick> EdgeTicks(double low, double width, int bins, double pixels);

/// The range of values on an axis.
struct ValueRange {
  double low;
  double high;

  void Include(double value);  ///< widens the range; a number that is not finite changes nothing
  /// Adds this share of the range on both sides; where low and high nearly agree, a share of their size.
  void Widen(double share);
};

/// A rectangle of a drawing: where numbers stand in it.
class Plot {
 public:
  struct Place {
    double left, top, width, height;
  };
  Plot(const Place& place, const ValueRange& x, const ValueRange& y) : place_(place), x_(x), y_(y) {}

  double X(double value) const { return place_.left + (value - x_.low) / (x_.high - x_.low) * place_.width; }
  double Y(double value) const { return Bottom() - (value - y_.low) / (y_.high - y_.low) * place_.height; }
  double Right() const { return place_.left + place_.width; }
  double Bottom() const { return place_.top + place_.height; }

 private:
  Place place_;
  ValueRange x_, y_;
};

}  // namespace kalmia::analysis
