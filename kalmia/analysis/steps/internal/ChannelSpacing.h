#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kalmia::analysis {

/// The distance between neighbouring channels that their names tell: names that differ in one number, with the same
/// text before it and behind it ("900nm", "902nm"), which are equally spaced but for their rounding: to a hundredth of
/// the distance d, or, if that is more, to t, one unit of their last digit, at most 0.24 d ("4000", "3996", "3992",
/// "3988", "3985", "3981"). That takes enough of n names to tell: (2 t / d)^(n - 2) < 0.1, so that "1", "3", "6" are
/// not equally spaced. It is negative where the numbers fall. A number has digits, a decimal point and an exponent
/// ("1.2e3"); a sign, U+2212 too, and a point before the first digit, where no letter or digit stands before them
/// ("wl -5", but not "x-5"). With `decimalComma` a comma stands for a point as well. Nothing for other names, for less
/// than two, or for a distance that no float can hold.
std::optional<double> ChannelSpacing(std::vector<std::string> names, bool decimalComma = false);

/// Channels whose names tell a spacing.
struct Channels {
  double spacing = 0.0;
  std::vector<double> numbers;  ///< of each name
  std::string before, behind;   ///< what all names have around it
};

/// The same with the numbers in the names.
std::optional<Channels> ChannelsOf(std::vector<std::string> names, bool decimalComma = false);

}  // namespace kalmia::analysis
