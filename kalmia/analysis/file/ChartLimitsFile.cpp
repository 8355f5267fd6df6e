#include "kalmia/analysis/file/ChartLimitsFile.h"

#include <limits>
#include <optional>

#include "kalmia/analysis/chart/ChartTypes.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr auto kFormat = "kalmia-limits";

struct LimitField {
  const char* name;
  double ControlChart::Limits::*number;
  bool isSpread;  ///< which no number below 0 can be
};
using Limits = ControlChart::Limits;
constexpr LimitField kFields[] = {{"target", &Limits::target, false},
                                  {"meanUpper", &Limits::meanUCL, false},
                                  {"meanLower", &Limits::meanLCL, false},
                                  {"range", &Limits::rangeMean, true},
                                  {"rangeUpper", &Limits::rangeUCL, true},
                                  {"rangeLower", &Limits::rangeLCL, true},
                                  {"sdProcess", &Limits::stdDevProcess, true},
                                  {"sdValues", &Limits::stdDevIndividual, true},
                                  {"sd", &Limits::stdDevMean, true},
                                  {"sdUpper", &Limits::stdDevUCL, true},
                                  {"sdLower", &Limits::stdDevLCL, true},
                                  {"actionLimit", &Limits::actionLimit, true},
                                  {"deadBand", &Limits::deadBand, true},
                                  {"lambda", &Limits::lambda, false},
                                  {"ewmaUpper", &Limits::ewmaUCL, false},
                                  {"ewmaLower", &Limits::ewmaLCL, false},
                                  {"ewmaSd", &Limits::ewmaStdDev, true},
                                  {"sdSuccession", &Limits::mssd, true}};

/// The lower and the upper limit of one panel, by their places in the list above.
struct LimitPair {
  const LimitField& lower;
  const LimitField& upper;
};
constexpr LimitPair kPairs[] = {{kFields[2], kFields[1]}, {kFields[5], kFields[4]}, {kFields[10], kFields[9]},
                                {kFields[15], kFields[14]}};

[[noreturn]] void Refuse(const std::string& name, const std::string& why) {
  throw BadFile(name + " is no file of stored limits: " + why);
}

/// What is not known is null in the file.
double NumberOf(const Json& limits, const LimitField& field, const std::string& name) {
  const auto found = limits.find(field.name);
  if (found == limits.end()) Refuse(name, "it has no limit " + Quoted(field.name));
  if (found->is_null()) return kMissing;
  if (!found->is_number()) Refuse(name, "its limit " + Quoted(field.name) + " is not a number");
  const double number = found->get<double>();
  if (field.isSpread && number < 0.0) Refuse(name, "its limit " + Quoted(field.name) + " is below 0");
  return number;
}

/// Files of the first form do not say where sigma comes from, and have null for a target of exactly -99, which the
/// program does not store any more.
bool IsOfFirstForm(const Json& file) { return file.find("sigmaFrom") == file.end(); }

Limits LimitsOf(const Json& file, const std::string& name) {
  const Json json = file.value("limits", Json());
  if (!json.is_object()) Refuse(name, "it holds no limits");
  Limits limits = {};
  for (const LimitField& field : kFields) limits.*field.number = NumberOf(json, field, name);
  if (IsOfFirstForm(file)) limits.target = TargetBeside99(limits.target);
  if (limits.target == kMissing) Refuse(name, "it does not say what its target is");
  for (const LimitPair& pair : kPairs) {
    const double lower = limits.*pair.lower.number, upper = limits.*pair.upper.number;
    if (lower != kMissing && upper != kMissing && lower > upper) {
      Refuse(name, "its limit " + Quoted(pair.lower.name) + " is above " + Quoted(pair.upper.name));
    }
  }
  return limits;
}

/// A whole number from 1 on that is an int; the largest int for one beyond it.
std::optional<int> CountOf(const Json& json) {
  if (!json.is_number_integer()) return std::nullopt;
  const double number = json.get<double>();
  if (number < 1.0) return std::nullopt;
  constexpr int kLargest = std::numeric_limits<int>::max();
  return number < kLargest ? static_cast<int>(number) : kLargest;
}

void CheckHeader(const Json& json, const std::string& name) {
  if (!json.is_object() || json.value("format", Json()) != kFormat) {
    Refuse(name, "its format is not " + std::string(kFormat));
  }
  const Json version = json.value("formatVersion", Json());
  const std::optional<int> number = CountOf(version);
  if (!number) Refuse(name, "it has no format version");
  if (*number > kJsonVersion) {
    throw BadFile(name + " has version " + version.dump() + "; this program reads versions up to " +
                  std::to_string(kJsonVersion));
  }
}

bool IsKnown(double number) { return number != kMissing; }

/// Files of earlier versions do not say where sigma comes from. For single values it was that of the values, or given.
/// For subgroups a given one leaves limits that an estimate does not: of individual that of the process, of cusum and
/// ewma those of standard deviations. Means with ranges or standard deviations have the same numbers either way.
std::string UnsaidSigmaFrom(const StoredLimits& stored) {
  const Limits& limits = stored.limits;
  const bool isSingle = stored.subgroup == 1;
  switch (stored.type) {
    case ControlChart::MeanRange:
    case ControlChart::MeanStdDev: return "";
    case ControlChart::Individual:
      if (IsKnown(limits.stdDevProcess)) return kGiven;
      return isSingle ? kFromValues : "";
    default: break;
  }
  if (isSingle) return limits.stdDevProcess == limits.stdDevIndividual ? kFromValues : kGiven;
  return IsKnown(limits.stdDevUCL) ? kGiven : "";
}

/// Whether a file of limits can have that word with such limits.
bool CanComeFrom(const std::string& word, const StoredLimits& stored) {
  if (word == kGiven) return true;
  if (word == kFromMovingRange && stored.type == ControlChart::EWMAStdDev) return false;
  return word.empty() == (stored.subgroup != 1);
}

std::string SigmaFromOf(const Json& json, const StoredLimits& stored, const std::string& name) {
  if (IsOfFirstForm(json)) return UnsaidSigmaFrom(stored);
  const Json& found = json["sigmaFrom"];
  for (const char* word : {"", kFromMovingRange, kFromValues, kGiven}) {
    const Json written = *word == '\0' ? Json() : Json(word);
    if (found == written && CanComeFrom(word, stored)) return word;
  }
  Refuse(name, "it does not say where its standard deviation comes from");
}

std::string TextOf(const Json& json, const char* field) {
  const Json text = json.value(field, Json());
  return text.is_string() ? text.get<std::string>() : std::string();
}

}  // namespace

std::string LimitsText(const StoredLimits& stored) {
  Json json = JsonHeader(kFormat);
  json["table"] = stored.table;
  json["column"] = stored.column;
  json["type"] = WordOfChartType(stored.type);
  json["subgroup"] = stored.subgroup;
  json["sigmaFrom"] = TextOrNull(stored.sigmaFrom);
  for (const LimitField& field : kFields) {
    const double number = stored.limits.*field.number;
    json["limits"][field.name] = number == kMissing ? Json(nullptr) : JsonNumber(number);
  }
  return JsonText(json);
}

StoredLimits ReadLimits(const std::string& text, const std::string& name) {
  const Json json = Json::parse(text, /*callback=*/nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded()) Refuse(name, "it is not JSON");
  CheckHeader(json, name);
  const auto type = ChartTypeOfWord(TextOf(json, "type"));
  if (!type) Refuse(name, "it names no type of chart");
  const std::optional<int> subgroup = CountOf(json.value("subgroup", Json()));
  if (!subgroup || *subgroup == std::numeric_limits<int>::max()) Refuse(name, "it names no size of subgroups");
  StoredLimits stored = {name, TextOf(json, "table"), TextOf(json, "column"), *type, *subgroup, "",
                         LimitsOf(json, name)};
  stored.sigmaFrom = SigmaFromOf(json, stored, name);
  return stored;
}

}  // namespace kalmia::analysis
