#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "app/ChartLimitsFile.h"
#include "app/ChartResult.h"
#include "app/ChartTypes.h"
#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/InputFile.h"
#include "app/MeasuredColumn.h"
#include "app/MovingRange.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"
#include "app/WorkProgress.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

[[noreturn]] void RefuseUsage(const std::string& message) { throw BadRequest(message + "; see kalmia chart --help"); }

std::vector<FilePlace> OutputsOf(const ChartOptions& options) {
  std::vector<FilePlace> places;
  if (!options.saveLimits.empty()) places.push_back({"--save-limits", options.saveLimits});
  if (!options.csv.empty()) places.push_back({"--csv", options.csv});
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  return places;
}

void CheckFiles(const ChartOptions& options) {
  std::vector<FilePlace> inputs = {{"the table", options.table}};
  if (!options.limitsFrom.empty()) inputs.push_back({"the limits", options.limitsFrom});
  CheckPlaces(inputs, OutputsOf(options));
}

void CheckSettings(const ChartOptions& options, ControlChart::ControlType type, int subgroup) {
  if (options.lambda && !IsEwma(type)) RefuseUsage("--lambda goes with --type ewma and ewma-sd, not " + options.type);
  if (NeedsFactors(type) && !HasFactors(subgroup)) {
    RefuseUsage("--type " + options.type + " takes subgroups of 2 to 25 values, not of " + std::to_string(subgroup) +
                ": give --subgroup");
  }
  if (!options.sigmaFrom.empty() && subgroup != 1) {
    RefuseUsage("--sigma-from goes with subgroups of 1 value, not of " + std::to_string(subgroup));
  }
  if (options.sigmaFrom == kFromMovingRange && type == ControlChart::EWMAStdDev) {
    RefuseUsage("--type ewma-sd takes the standard deviation of the values: take --type ewma for --sigma-from " +
                options.sigmaFrom);
  }
  if (!options.rules.empty() && !TakesRunRules(type)) {
    RefuseUsage("--rules goes with --type individual, mean-range and mean-sd, not " + options.type +
                ", whose points lean on those before");
  }
  if (!options.rules.empty() && type == ControlChart::Individual && subgroup != 1) {
    RefuseUsage("--rules with --type individual takes single values, not means of " + std::to_string(subgroup) +
                ", whose limits are those of the values: take --type mean-range or mean-sd");
  }
  const bool takesAnySigma = type == ControlChart::Individual || subgroup == 1;
  if (options.sigma && !takesAnySigma && !HasFactors(subgroup)) {
    RefuseUsage("--sigma with --type " + options.type + " takes subgroups of at most 25 values, not of " +
                std::to_string(subgroup));
  }
}

/// Throws BadData where the limits were made for another kind of chart.
void CheckMatch(const StoredLimits& stored, const ChartOptions& options, const std::string& name) {
  const std::string& type = WordOfChartType(stored.type);
  if (type != options.type) {
    throw BadData(name + " holds limits of type " + type + ", not " + options.type);
  }
  if (options.subgroup != 0 && options.subgroup != stored.subgroup) {
    throw BadData(name + " holds limits for subgroups of " + std::to_string(stored.subgroup) + ", not of " +
                  std::to_string(options.subgroup));
  }
}

/// Where the standard deviation comes from; empty for the estimate that the type makes of subgroups.
std::string SigmaFromFor(const ChartOptions& options, ControlChart::ControlType type, int subgroup) {
  if (options.sigma) return kGiven;
  if (subgroup != 1) return "";
  return options.sigmaFrom.empty() ? DefaultSigmaFrom(type) : options.sigmaFrom;
}

/// Throws BadData where there are values, but none beside each other.
void SetMovingRange(const std::string& where, const NCDataVector<float>& series, ControlChart* chart) {
  const double spread = SpreadOfMovingRanges(series);
  if (spread == kMissing && series.Size() - series.GetNumMisVal() > 1) {
    throw BadData(where + " has no two values beside each other, which a moving range takes: give " +
                  "--sigma-from values");
  }
  chart->SetStdDevSubgroup(spread);
}

bool HasMeans(const ControlChart& chart) {
  const NCDataVector<float>& means = *chart.GetMeanVector();
  return means.Size() > means.GetNumMisVal();
}

void ApplySettings(const ChartOptions& options, ControlChart* chart) {
  const bool isMean99 = chart->GetTarget() == kMissing && HasMeans(*chart);
  if (options.target || isMean99) chart->SetTarget(TargetBeside99(options.target.value_or(kMissing)));
  if (options.sigma) chart->SetStdDevSubgroup(*options.sigma);
  if (options.lambda) chart->SetEWMALambda(*options.lambda);
}

void CheckSeries(const std::string& where, const NCDataVector<float>& series, int subgroup) {
  if (series.Size() >= subgroup) return;
  throw BadData(where + " has " + Counted(static_cast<std::size_t>(series.Size()), "row") +
                ", less than one subgroup of " + std::to_string(subgroup));
}

void NoteRowsLeft(int left, Notes* notes) {
  if (left == 0) return;
  notes->Add("the last " + Counted(static_cast<std::size_t>(left), "row") + (left == 1 ? " is" : " are") +
             " no whole subgroup and left out");
}

void CheckPanels(const std::string& where, const ChartResult& result) {
  if (!HasLimits(result.chart)) {
    throw BadData(where + " has too few values for the limits of a chart of type " +
                  WordOfChartType(result.chart.GetControlType()));
  }
  for (const ChartPanel& panel : result.panels) {
    for (const double number : {panel.zones.lower, panel.zones.centre, panel.zones.upper}) {
      if (std::isinf(number)) throw BadData(where + " has values too large for a chart");
    }
    for (const ChartSeries& series : panel.judged) {
      for (const double value : series.values) {
        if (std::isinf(value)) throw BadData(where + " has values too large for a chart");
      }
    }
  }
}

void WriteFiles(const ChartOptions& options, const ChartResult& result) {
  OutputFiles files;
  if (!options.saveLimits.empty()) {
    files.Stage(options.saveLimits, LimitsText({result.table, result.column, result.chart.GetControlType(),
                                                result.subgroup, result.sigmaFrom, result.chart.GetLimits()}));
  }
  if (!options.csv.empty()) files.Stage(options.csv, ChartCsv(result, MarksOf(options.csvMarks)));
  if (!options.svg.empty()) files.Stage(options.svg, ChartSvg(result));
  files.Commit();
}

}  // namespace

std::string RunCommand(const ChartOptions& options, Notes* notes) {
  CheckFiles(options);
  const ControlChart::ControlType type = *ChartTypeOfWord(options.type);
  std::optional<StoredLimits> stored;
  if (!options.limitsFrom.empty()) {
    stored = ReadLimits(ReadInput(options.limitsFrom), InputName(options.limitsFrom));
    CheckMatch(*stored, options, InputName(options.limitsFrom));
  }
  const int subgroup = stored ? stored->subgroup : std::max(options.subgroup, 1);
  CheckSettings(options, type, subgroup);

  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  WorkProgress(bar.Get()).Begin("computing the chart");
  const NCDataVector<float> series = ReadMeasurements(table, options.column, notes);
  const std::string where = table.Name() + ": the column " + Quoted(options.column);
  CheckSeries(where, series, subgroup);
  const int left = series.Size() % subgroup;
  NoteRowsLeft(left, notes);
  const std::string sigmaFrom = stored ? stored->sigmaFrom : SigmaFromFor(options, type, subgroup);
  ControlChart chart(type, series, subgroup);
  if (stored) chart.ImportLimits(stored->limits);
  if (!stored && sigmaFrom == kFromMovingRange) SetMovingRange(where, series, &chart);
  ApplySettings(options, &chart);
  ChartResult result = {table.Name(), options.column, std::move(chart), subgroup, series.Size() - left, 0,
                        options.lambda || stored, options.limitsFrom.empty() ? "" : InputName(options.limitsFrom),
                        sigmaFrom, options.rules, options.texts, {}, {}};
  for (int row = 1; row <= result.values; ++row) result.missing += series[row] == kMissingCell<float> ? 1 : 0;
  result.panels = ChartPanels(result.chart, subgroup);
  CheckPanels(where, result);
  result.signals = ChartSignals(result.panels, result.rules);
  WriteFiles(options, result);
  return options.json ? ChartJson(result, *notes) : ChartText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
