#include "kalmia/analysis/chart/ChartResult.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/chart/ChartTypes.h"
#include "kalmia/analysis/chart/RunRules.h"
#include "kalmia/analysis/chart/internal/ChartPanels.h"
#include "kalmia/analysis/chart/internal/MovingRange.h"
#include "kalmia/analysis/table/internal/MeasuredColumn.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

[[noreturn]] void Refuse(const char* setting, const std::string& message) {
  throw BadRequest(message, InSetting(setting));
}

ControlChart::ControlType TypeOf(const ChartRecipe& recipe) {
  const auto type = ChartTypeOfWord(recipe.type);
  if (!type) Refuse("type", "there is no control chart of type " + Quoted(recipe.type));
  return *type;
}

void CheckNumbers(const ChartRecipe& recipe, const StoredLimits* limits) {
  if (recipe.subgroup < 0 || (limits != nullptr && limits->subgroup < 1)) {
    Refuse("subgroup", "a subgroup has one value or more");
  }
  if (recipe.sigma && !(*recipe.sigma > 0.0)) Refuse("sigma", "the standard deviation of a process is above 0");
  if (recipe.lambda && !(*recipe.lambda > 0.0 && *recipe.lambda <= 1.0)) {
    Refuse("lambda", "lambda is above 0 and at most 1");
  }
  if (recipe.sigma && std::isinf(*recipe.sigma)) Refuse("sigma", "a standard deviation is a finite number");
  if (recipe.target && !std::isfinite(*recipe.target)) Refuse("target", "a target is a finite number");
}

/// An empty word is the default.
void CheckWord(const char* setting, const std::string& what, const std::string& word,
               const std::vector<std::string>& words) {
  if (word.empty() || std::find(words.begin(), words.end(), word) != words.end()) return;
  Refuse(setting, "there is no " + what + " called " + Quoted(word) + ": take " + Either(words));
}

int SubgroupOf(const ChartRecipe& recipe, const StoredLimits* limits) {
  return limits != nullptr ? limits->subgroup : std::max(recipe.subgroup, 1);
}

void CheckSettings(const ChartRecipe& recipe, ControlChart::ControlType type, int subgroup) {
  if (recipe.lambda && !IsEwma(type)) Refuse("lambda", "lambda goes with type ewma and ewma-sd, not " + recipe.type);
  if (NeedsFactors(type) && !HasFactors(subgroup)) {
    Refuse("subgroup",
           "type " + recipe.type + " takes subgroups of 2 to 25 values, not of " + std::to_string(subgroup));
  }
  if (!recipe.sigmaFrom.empty() && subgroup != 1) {
    Refuse("sigmaFrom", "sigma-from goes with subgroups of 1 value, not of " + std::to_string(subgroup));
  }
  if (recipe.sigmaFrom == kFromMovingRange && type == ControlChart::EWMAStdDev) {
    Refuse("sigmaFrom", "type ewma-sd takes the standard deviation of the values: take type ewma for that from " +
                            recipe.sigmaFrom);
  }
  if (!recipe.rules.empty() && !TakesRunRules(type)) {
    Refuse("rules", "rules go with type individual, mean-range and mean-sd, not " + recipe.type +
                        ", whose points lean on those before");
  }
  if (!recipe.rules.empty() && type == ControlChart::Individual && subgroup != 1) {
    Refuse("rules", "rules with type individual take single values, not means of " + std::to_string(subgroup) +
                        ", whose limits are those of the values: take type mean-range or mean-sd");
  }
  const bool takesAnySigma = type == ControlChart::Individual || subgroup == 1;
  if (recipe.sigma && !takesAnySigma && !HasFactors(subgroup)) {
    Refuse("sigma", "sigma with type " + recipe.type + " takes subgroups of at most 25 values, not of " +
                        std::to_string(subgroup));
  }
}

std::string NameOf(const StoredLimits& stored) { return stored.source.empty() ? "what is given" : stored.source; }

/// Throws BadData where the limits were made for another kind of chart.
void CheckMatch(const StoredLimits& stored, const ChartRecipe& recipe) {
  const std::string& type = WordOfChartType(stored.type);
  if (type != recipe.type) {
    throw BadData(NameOf(stored) + " holds limits of type " + type + ", not " + recipe.type);
  }
  if (recipe.subgroup != 0 && recipe.subgroup != stored.subgroup) {
    throw BadData(NameOf(stored) + " holds limits for subgroups of " + std::to_string(stored.subgroup) + ", not of " +
                  std::to_string(recipe.subgroup));
  }
}

/// Where the standard deviation comes from; empty for the estimate that the type makes of subgroups.
std::string SigmaFromFor(const ChartRecipe& recipe, ControlChart::ControlType type, int subgroup) {
  if (recipe.sigma) return kGiven;
  if (subgroup != 1) return "";
  return recipe.sigmaFrom.empty() ? DefaultSigmaFrom(type) : recipe.sigmaFrom;
}

/// Throws BadData where there are values, but none beside each other.
void SetMovingRange(const std::string& where, const NCDataVector<float>& series, ControlChart* chart) {
  const double spread = SpreadOfMovingRanges(series);
  if (spread == kMissing && series.Size() - series.GetNumMisVal() > 1) {
    throw BadData(where + " has no two values beside each other, which a moving range takes",
                  Remedy::TakeSpreadOfValues);
  }
  chart->SetStdDevSubgroup(spread);
}

bool HasMeans(const ControlChart& chart) {
  const NCDataVector<float>& means = *chart.GetMeanVector();
  return means.Size() > means.GetNumMisVal();
}

void ApplySettings(const ChartRecipe& recipe, ControlChart* chart) {
  const bool isMean99 = chart->GetTarget() == kMissing && HasMeans(*chart);
  if (recipe.target || isMean99) chart->SetTarget(TargetBeside99(recipe.target.value_or(kMissing)));
  if (recipe.sigma) chart->SetStdDevSubgroup(*recipe.sigma);
  if (recipe.lambda) chart->SetEWMALambda(*recipe.lambda);
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

ChartResult Compute(const ChartRecipe& recipe, const Table& table, const StoredLimits* limits,
                    NCProgress* progress) {
  WorkProgress(progress).Begin("computing the chart");
  const ControlChart::ControlType type = TypeOf(recipe);
  const int subgroup = SubgroupOf(recipe, limits);
  Notes notes;
  const NCDataVector<float> series = ReadMeasurements(table, recipe.column, &notes);
  const std::string where = table.Name() + ": the column " + Quoted(recipe.column);
  CheckSeries(where, series, subgroup);
  const int left = series.Size() % subgroup;
  NoteRowsLeft(left, &notes);
  const std::string sigmaFrom = limits != nullptr ? limits->sigmaFrom : SigmaFromFor(recipe, type, subgroup);
  ControlChart chart(type, series, subgroup);
  if (limits != nullptr) chart.ImportLimits(limits->limits);
  if (limits == nullptr && sigmaFrom == kFromMovingRange) SetMovingRange(where, series, &chart);
  ApplySettings(recipe, &chart);
  ChartResult result = {table.Name(), recipe.column, std::move(chart), subgroup, series.Size() - left, 0,
                        recipe.lambda || limits != nullptr, limits == nullptr ? "" : limits->source,
                        sigmaFrom, recipe.rules, {}, {}, std::move(notes)};
  for (int row = 1; row <= result.values; ++row) result.missing += series[row] == kMissingCell<float> ? 1 : 0;
  result.panels = ChartPanels(result.chart, subgroup);
  CheckPanels(where, result);
  result.signals = ChartSignals(result.panels, result.rules);
  return result;
}

}  // namespace

std::string ChartResult::Title() const {
  return OneLine(column) + " of " + OneLine(table) + ": " + WordOfChartType(chart.GetControlType()) + " chart";
}

std::string ChartResult::RuleName(const ChartSignal& signal) const {
  return rules.empty() ? "limits" : rules + " " + std::to_string(signal.rule.number);
}

StoredLimits LimitsOf(const ChartResult& result) {
  return {"", result.table, result.column, result.chart.GetControlType(), result.subgroup, result.sigmaFrom,
          result.chart.GetLimits()};
}

void CheckChart(const ChartRecipe& recipe, const StoredLimits* limits) {
  const ControlChart::ControlType type = TypeOf(recipe);
  CheckNumbers(recipe, limits);
  CheckWord("sigmaFrom", "source of the standard deviation", recipe.sigmaFrom, SigmaFromWords());
  CheckWord("rules", "set of run rules", recipe.rules, RunRuleWords());
  if (limits != nullptr) CheckMatch(*limits, recipe);
  CheckSettings(recipe, type, SubgroupOf(recipe, limits));
}

ChartResult ComputeChart(const ChartRecipe& recipe, const Table& table, NCProgress* progress,
                         const StoredLimits* limits) {
  CheckChart(recipe, limits);
  return WithoutLibraryErrors([&] { return Compute(recipe, table, limits, progress); });
}

}  // namespace kalmia::analysis
