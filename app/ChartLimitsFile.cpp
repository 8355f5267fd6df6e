#include "app/ChartLimitsFile.h"

#include "app/ChartTypes.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Json.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

constexpr auto kFormat = "kalmia-limits";

struct LimitField {
  const char* name;
  double ControlChart::Limits::*number;
};
using Limits = ControlChart::Limits;
constexpr LimitField kFields[] = {{"target", &Limits::target},
                                  {"meanUpper", &Limits::meanUCL},
                                  {"meanLower", &Limits::meanLCL},
                                  {"range", &Limits::rangeMean},
                                  {"rangeUpper", &Limits::rangeUCL},
                                  {"rangeLower", &Limits::rangeLCL},
                                  {"sdProcess", &Limits::stdDevProcess},
                                  {"sdValues", &Limits::stdDevIndividual},
                                  {"sd", &Limits::stdDevMean},
                                  {"sdUpper", &Limits::stdDevUCL},
                                  {"sdLower", &Limits::stdDevLCL},
                                  {"actionLimit", &Limits::actionLimit},
                                  {"deadBand", &Limits::deadBand},
                                  {"lambda", &Limits::lambda},
                                  {"ewmaUpper", &Limits::ewmaUCL},
                                  {"ewmaLower", &Limits::ewmaLCL},
                                  {"ewmaSd", &Limits::ewmaStdDev},
                                  {"sdSuccession", &Limits::mssd}};

[[noreturn]] void Refuse(const std::string& name, const std::string& why) {
  throw Failure(ExitCode::Files, name + " is no file of limits that --save-limits has written: " + why);
}

/// What is not known is null in the file.
double NumberOf(const Json& limits, const char* field, const std::string& name) {
  const auto found = limits.find(field);
  if (found == limits.end()) Refuse(name, "it has no limit " + Quoted(field));
  if (found->is_null()) return kMissing;
  if (!found->is_number()) Refuse(name, "its limit " + Quoted(field) + " is not a number");
  return found->get<double>();
}

void CheckHeader(const Json& json, const std::string& name) {
  if (!json.is_object() || json.value("format", Json()) != kFormat) {
    Refuse(name, "its format is not " + std::string(kFormat));
  }
  const Json version = json.value("formatVersion", Json());
  if (!version.is_number_integer() || version.get<int>() < 1) Refuse(name, "it has no format version");
  if (version.get<int>() > kJsonVersion) {
    throw Failure(ExitCode::Files, name + " has version " + version.dump() + "; this program reads versions up to " +
                                       std::to_string(kJsonVersion));
  }
}

/// Files of earlier versions do not say where sigma comes from: for single values it was that of the values, or given.
std::string UnsaidSigmaFrom(const StoredLimits& stored) {
  if (stored.subgroup != 1) return "";
  const double process = stored.limits.stdDevProcess;
  return process == kMissing || process == stored.limits.stdDevIndividual ? kFromValues : kGiven;
}

std::string SigmaFromOf(const Json& json, const StoredLimits& stored, const std::string& name) {
  const auto found = json.find("sigmaFrom");
  if (found == json.end()) return UnsaidSigmaFrom(stored);
  if (found->is_null()) return "";
  for (const char* word : {kFromMovingRange, kFromValues, kGiven}) {
    if (*found == word) return word;
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
  json["sigmaFrom"] = stored.sigmaFrom.empty() ? Json(nullptr) : Json(stored.sigmaFrom);
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
  const Json subgroup = json.value("subgroup", Json());
  if (!subgroup.is_number_integer() || subgroup.get<int>() < 1) Refuse(name, "it names no size of subgroups");
  const Json limits = json.value("limits", Json());
  if (!limits.is_object()) Refuse(name, "it holds no limits");
  StoredLimits stored = {TextOf(json, "table"), TextOf(json, "column"), *type, subgroup.get<int>(), "", {}};
  for (const LimitField& field : kFields) stored.limits.*field.number = NumberOf(limits, field.name, name);
  stored.sigmaFrom = SigmaFromOf(json, stored, name);
  return stored;
}

}  // namespace kalmia::app
