#pragma once

#include <string>

#include "kalmia/statistics/ControlChart.h"

namespace kalmia::app {

/// Limits as --save-limits stores them: a JSON text of format kalmia-limits, numbers in full precision.
struct StoredLimits {
  std::string table;   ///< that they come from
  std::string column;
  ControlChart::ControlType type;
  int subgroup;
  std::string sigmaFrom;  ///< moving-range, values or given; empty where subgroups give the estimate of the type
  ControlChart::Limits limits;
};

std::string LimitsText(const StoredLimits& stored);

/// Throws BadFile for a text that LimitsText() has not written; `name` is how messages call it.
StoredLimits ReadLimits(const std::string& text, const std::string& name);

}  // namespace kalmia::app
