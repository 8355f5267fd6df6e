#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kalmia::app {

/// The distance between neighbouring channels that their names tell: names with one number each, the same text before
/// it and behind it ("900nm", "902nm"), that are equally spaced but for their rounding: to one unit of their last
/// decimal, at most 0.24 of the distance ("4000", "3996", "3992", "3988", "3985"), or to a hundredth of the distance,
/// if that is more. It is negative where the numbers fall. Nothing for other names, or for less than two.
std::optional<double> ChannelSpacing(const std::vector<std::string>& names);

}  // namespace kalmia::app
