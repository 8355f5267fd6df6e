#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/chart/ChartPanel.h"
#include "kalmia/analysis/chart/ChartRecipe.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/statistics/ControlChart.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Target and limits of a chart, for others of the same type.
struct StoredLimits {
  std::string source;  ///< how messages call the file that they were read from; empty for those of a chart just made
  std::string table;   ///< that they come from
  std::string column;
  ControlChart::ControlType type;
  int subgroup;
  std::string sigmaFrom;  ///< moving-range, values or given; empty where subgroups give the estimate of the type
  ControlChart::Limits limits;
};

/// A control chart ready to be told, drawn and written.
struct KALMIA_EXPORT ChartResult {
  std::string table;
  std::string column;
  ControlChart chart;
  int subgroup;
  int values;        ///< in the subgroups, missing ones too
  int missing;       ///< of these
  bool weightGiven;  ///< of an EWMA: by the recipe or by the limits given
  std::string limitsFrom;  ///< source of the limits given; empty without
  std::string sigmaFrom;   ///< as in StoredLimits
  std::string rules;       ///< one of RunRuleWords(); empty for the limits alone
  std::vector<ChartPanel> panels;
  std::vector<ChartSignal> signals;
  Notes notes;  ///< what was done of its own accord

  std::size_t Points() const { return panels.front().judged.front().values.size(); }
  bool IsSingle() const { return subgroup == 1; }
  /// "diameter of drift.csv: mean-range chart"
  std::string Title() const;
  /// "limits", "nelson 2": what the signal breaks.
  std::string RuleName(const ChartSignal& signal) const;
};

/// The limits of a chart, for others.
KALMIA_EXPORT StoredLimits LimitsOf(const ChartResult& result);

/// Throws BadRequest where a recipe makes no sense or its parts do not go together, and BadData where the limits (null
/// for none) are of another kind of chart.
KALMIA_EXPORT void CheckChart(const ChartRecipe& recipe, const StoredLimits* limits);

/// Makes the chart that the recipe asks for, with the limits that are given unless they are null. `progress` may be
/// null. Throws as CheckChart and ReadMeasurements do, and BadData: less than one subgroup; too few values for limits;
/// numbers too large.
KALMIA_EXPORT ChartResult ComputeChart(const ChartRecipe& recipe, const Table& table, NCProgress* progress = nullptr,
                         const StoredLimits* limits = nullptr);

}  // namespace kalmia::analysis
