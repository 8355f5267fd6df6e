#pragma once

#include <string>
#include <vector>

#include "app/ChartPanels.h"
#include "app/CsvMarks.h"
#include "app/Notes.h"
#include "app/StatisticsOptions.h"

namespace kalmia::app {

/// A control chart ready to be told, drawn and written.
struct ChartResult {
  std::string table;
  std::string column;
  ControlChart chart;
  int subgroup;
  int values;        ///< in the subgroups, missing ones too
  int missing;       ///< of these
  bool weightGiven;  ///< of an EWMA: on the command line or by the limits read
  std::string limitsFrom;  ///< what the limits were read from; empty if nowhere
  std::string sigmaFrom;   ///< as in StoredLimits
  std::string rules;       ///< one of RunRuleWords(); empty for the limits alone
  PlotTexts texts;
  std::vector<ChartPanel> panels;
  std::vector<ChartSignal> signals;

  std::size_t Points() const { return panels.front().judged.front().values.size(); }
  bool IsSingle() const { return subgroup == 1; }
  /// "diameter of drift.csv: mean-range chart"
  std::string Title() const;
  /// "limits", "nelson 2": what the signal breaks.
  std::string RuleName(const ChartSignal& signal) const;
};

/// What `kalmia chart` prints: the limits of each panel, the spreads they come from, and the signals.
std::string ChartText(const ChartResult& result);

std::string ChartJson(const ChartResult& result, const Notes& notes);

/// A line for each point: its rows, each series with its limits, the signals, with run rules also their names.
std::string ChartCsv(const ChartResult& result, const CsvMarks& marks);

/// The panels below each other. Of more points than a page can tell apart it draws the highest and the lowest of each
/// stretch, so that no signal is lost.
std::string ChartSvg(const ChartResult& result);

}  // namespace kalmia::app
