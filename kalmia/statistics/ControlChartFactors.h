#pragma once

#include "kalmia/support/Export.h"

namespace kalmia {

/// Factors for subgroups of one size, for normal data. They turn a mean range or a mean standard deviation into limits
/// (three standard errors) and into estimates of the standard deviation of the process.
struct ControlChartFactors {
  float a2;  ///< half width of the limits of means, per mean range
  float a3;  ///< half width of the limits of means, per mean standard deviation
  float b3;  ///< lower limit of standard deviations, per mean standard deviation
  float b4;  ///< upper limit of standard deviations, per mean standard deviation
  float c4;  ///< mean standard deviation, per standard deviation of the process
  float d2;  ///< mean range, per standard deviation of the process
  float d3;  ///< lower limit of ranges, per mean range
  float d4;  ///< upper limit of ranges, per mean range
};

/// The factors for subgroups of `size` cells; null outside 2 to 25. Rounded to three or four decimals, as published:
/// ASTM MNL 7 (2010), Manual on Presentation of Data and Control Chart Analysis, 8th ed., table 6.
KALMIA_EXPORT const ControlChartFactors* FindControlChartFactors(int size);

}  // namespace kalmia
