#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kalmia::app {

/// The distance between neighbouring channels that their names tell: names that differ in one number, with the same
/// text before it and behind it ("900nm", "902nm"), which are equally spaced but for their rounding: to one unit of
/// their last digit, at most 0.24 of the distance ("4000", "3996", "3992", "3988", "3985"), or to a hundredth of the
/// distance, if that is more. It is negative where the numbers fall. A number has digits, a decimal point and an
/// exponent ("1.2e3"); a sign, and a point before the first digit, where no letter or digit stands before them
/// ("wl -5", but not "x-5"). With `decimalComma` a comma stands for a point as well. Nothing for other names, for less
/// than two, or for a distance that no float can hold.
std::optional<double> ChannelSpacing(std::vector<std::string> names, bool decimalComma = false);

}  // namespace kalmia::app
