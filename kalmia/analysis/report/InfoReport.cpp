#include "kalmia/analysis/report/InfoReport.h"

#include <variant>

#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/O2PLSComponents.h"
#include "kalmia/analysis/report/internal/RowReport.h"
#include "kalmia/analysis/report/internal/StepChainReport.h"
#include "kalmia/analysis/report/internal/StoredValidationReport.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kLineWidth = 100;
constexpr std::size_t kLabelWidth = 18;
constexpr int kDigits = 6;
constexpr int kShiftDigits = 10;
constexpr int kQ2Decimals = 4;

std::string Labelled(const std::string& label, const std::string& text) {
  return label + std::string(kLabelWidth - label.size(), ' ') + text + "\n";
}

/// The names after the label, separated by commas, in lines that fit a screen.
std::string LabelledNames(const std::string& label, const std::vector<std::string>& names) {
  std::string text;
  std::string line;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string name = OneLine(names[i]) + (i + 1 < names.size() ? "," : "");
    if (!line.empty() && kLabelWidth + DisplayWidth(line) + 1 + DisplayWidth(name) > kLineWidth) {
      text += Labelled(text.empty() ? label : "", line);
      line.clear();
    }
    line += (line.empty() ? "" : " ") + name;
  }
  return text + Labelled(text.empty() ? label : "", line);
}

std::string GroupCount(const ModelInfo& model) {
  return std::to_string(model.groups) + " groups" +
         (model.groupColumn.empty() ? "" : " of column " + OneLine(model.groupColumn));
}

std::string RowCountText(const ModelInfo& model) {
  return std::to_string(model.rows) +
         (model.idColumn.empty() ? "" : ", named by column " + OneLine(model.idColumn));
}

Json ColumnsJson(const std::vector<std::string>& names, const ColumnScaling& scaling) {
  Json list = Json::array();
  for (std::size_t i = 0; i < names.size(); ++i) {
    const int variable = static_cast<int>(i) + 1;
    list.push_back(
        {{"name", names[i]}, {"centre", CentreOf(scaling, variable)}, {"factor", FactorOf(scaling, variable)}});
    if (!scaling.shifts.empty()) list.back()["shift"] = scaling.shifts[i];
  }
  return list;
}

/// Which columns are shifted before their cells become single precision.
std::string ShiftsText(const std::string& block, const std::vector<std::string>& names, const ColumnScaling& scaling) {
  std::vector<std::string> shifted;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (scaling.ShiftOfColumn(i) != 0.0) {
      shifted.push_back(names[i] + " by " + Significant(scaling.ShiftOfColumn(i), kShiftDigits));
    }
  }
  return shifted.empty() ? "" : LabelledNames(block + " shifted", shifted);
}

std::string ShiftsText(const ModelInfo& model) { return ShiftsText("X", model.xNames, model.xScaling); }
std::string ShiftsText(const YModelInfo& model) {
  return ShiftsText("X", model.xNames, model.xScaling) + ShiftsText("Y", model.yNames, model.yScaling);
}

std::string StepsText(const StepChain& chain) {
  if (chain.Empty()) return "";
  std::string text = Labelled("Preprocessing", "of " + Counted(chain.inputNames.size(), "column"));
  for (const LearntStep& step : chain.steps) text += Labelled("", LearntText(step));
  return text;
}

// What each kind of model shows of its own: its name, lines of the list, tables below it, and fields of the JSON
// output.

std::string KindName(const StoredPLS& /*model*/) { return "PLS"; }
std::string KindName(const StoredPCA& /*model*/) { return "PCA"; }
std::string KindName(const StoredOPLS& /*model*/) { return "OPLS"; }
std::string KindName(const StoredO2PLS& /*model*/) { return "O2PLS"; }
std::string KindName(const StoredFilter& /*model*/) { return "filter of what has nothing to do with Y"; }

const char* InfoFormat(const StoredPLS& /*model*/) { return "kalmia-info"; }
const char* InfoFormat(const StoredPCA& /*model*/) { return "kalmia-info-pca"; }
const char* InfoFormat(const StoredOPLS& /*model*/) { return "kalmia-info-opls"; }
const char* InfoFormat(const StoredO2PLS& /*model*/) { return "kalmia-info-o2pls"; }
const char* InfoFormat(const StoredFilter& /*model*/) { return "kalmia-info-filter"; }

std::string JudgementLines(const ModelInfo& model) {
  return Labelled("Cross-validation", GroupCount(model)) +
         Labelled("Pooled deviation", Significant(model.pooledDeviation, kDigits) + " of " + model.inputBlock +
                                          ", in scaled units");
}
std::string JudgementLines(const StoredFilter& /*model*/) { return ""; }

void AddJudgementJson(const ModelInfo& model, Json* json) {
  (*json)["crossValidation"] = {{"groups", model.groups},
                                {"groupColumn", TextOrNull(model.groupColumn)}};
  (*json)["pooledDeviation"] = JsonNumber(model.pooledDeviation);
}
void AddJudgementJson(const StoredFilter& /*model*/, Json* /*json*/) {}

std::string OwnLines(const YModelInfo& model) {
  if (!model.classes) return LabelledNames("Y", model.yNames);
  return LabelledNames("Classes", model.yNames) + Labelled("", "of column " + OneLine(model.classes->column));
}
std::string OwnLines(const StoredPCA& /*model*/) { return ""; }
std::string OwnLines(const StoredO2PLS& model) {
  return Labelled("Y block of", OneLine(model.yTable)) +
         Labelled("Y columns", std::to_string(model.yNames.size()) + ", " + ScalingText(model.scaling)) +
         LabelledNames("", model.yNames) +
         Labelled("", "pooled deviation " + Significant(model.yPooledDeviation, kDigits) + " of Y, in scaled units");
}

std::string OwnLines(const StoredFilter& model) { return LabelledNames("Y", model.yNames); }

std::string OwnTables(const StoredPLS& model) {
  return ComponentText(model.components, ShownYNames(model)) + "\n" + QualityText(model);
}

std::string OwnTables(const StoredPCA& model) { return ComponentText(model.components); }

std::string OwnTables(const StoredOPLS& model) {
  return ComponentText(model.components) + "\n" + QualityText(model);
}

std::string OwnTables(const StoredO2PLS& model) {
  return ComponentText(model.components) + "\n" + SharesText(model.components);
}

std::string OwnTables(const StoredFilter& model) { return ComponentText(model.components); }

void AddOwnJson(const StoredPLS& model, Json* json) {
  (*json)["y"] = ColumnsJson(model.yNames, model.yScaling);
  (*json)["components"] = ComponentJson(model.components, model.yNames);
  (*json)["quality"] = QualityJson(model);
}

void AddOwnJson(const StoredPCA& model, Json* json) { (*json)["components"] = ComponentJson(model.components); }

void AddOwnJson(const StoredOPLS& model, Json* json) {
  (*json)["y"] = ColumnsJson(model.yNames, model.yScaling);
  (*json)["components"] = ComponentJson(model.components);
  (*json)["quality"] = QualityJson(model);
}

void AddOwnJson(const StoredO2PLS& model, Json* json) {
  (*json)["yTable"] = model.yTable;
  (*json)["y"] = ColumnsJson(model.yNames, model.yScaling);
  (*json)["yPooledDeviation"] = JsonNumber(model.yPooledDeviation);
  (*json)["components"] = ComponentJson(model.components);
  (*json)["shares"] = SharesJson(model.components);
}

void AddOwnJson(const StoredFilter& model, Json* json) {
  (*json)["y"] = model.yNames;
  (*json)["components"] = ComponentJson(model.components);
}

/// What the file holds, in words; `parts` are those of a version that has them.
std::vector<std::string> PartsOf(const ModelInfo& model, const ModelParts& parts) {
  std::vector<std::string> names = {"prediction", "judgement"};
  if (parts.rows) names.push_back("rows");
  if (parts.table || model.fileVersion < kModelVersion) names.push_back("table");
  return names;
}

template <class Model>
std::string LimitsLines(const Model& model) {
  if (!model.rowTerms) return Labelled("Limits", "none in this file");
  const std::string limits = LimitsText(LimitsOfNewRows(*model.rowTerms, model.Components()));
  return Labelled("Limits", limits.empty() ? "none" : limits);
}
std::string LimitsLines(const StoredFilter& /*model*/) { return ""; }

/// N, degrees and s of the intervals of each Y.
std::string IntervalLines(const YModelInfo& model) {
  std::string text;
  for (std::size_t j = 0; model.rowTerms && j < model.rowTerms->intervals.size(); ++j) {
    const std::optional<YIntervalTerms>& terms = model.rowTerms->intervals[j];
    if (!terms) continue;
    text += Labelled(text.empty() ? "Intervals" : "", OneLine(model.yNames[j]) + ": s " +
                                                          Significant(terms->s, kDigits) + ", " +
                                                          Counted(static_cast<std::size_t>(terms->degrees),
                                                                  "degree") + " of freedom");
  }
  return text;
}
std::string IntervalLines(const StoredPCA& /*model*/) { return ""; }
std::string IntervalLines(const StoredFilter& /*model*/) { return ""; }

Json IntervalsJson(const YModelInfo& model) {
  Json list = Json::array();
  for (std::size_t j = 0; model.rowTerms && j < model.rowTerms->intervals.size(); ++j) {
    const std::optional<YIntervalTerms>& terms = model.rowTerms->intervals[j];
    list.push_back({{"name", model.yNames[j]},
                    {"rows", terms ? Json(terms->rows) : Json(nullptr)},
                    {"degrees", terms ? Json(terms->degrees) : Json(nullptr)},
                    {"s", terms ? JsonNumber(terms->s) : Json(nullptr)}});
  }
  return list;
}
Json IntervalsJson(const StoredPCA& /*model*/) { return Json::array(); }
Json IntervalsJson(const StoredFilter& /*model*/) { return Json::array(); }

template <class Model>
Json LimitsOfModel(const Model& model) {
  return LimitsJson(model, model.Components());
}
Json LimitsOfModel(const StoredFilter& /*model*/) { return nullptr; }

template <class Model>
std::string ModelText(const Model& model, const std::string& file, const ModelParts& parts) {
  return Labelled("Model file", file + ", version " + std::to_string(model.fileVersion)) +
         Labelled("Parts", Listed(PartsOf(model, parts))) + Labelled("Digest", ModelDigest(model)) +
         Labelled("Kind", KindName(model)) + Labelled("Written by", "kalmia " + OneLine(model.writtenBy)) +
         Labelled("Fitted to", OneLine(model.table)) + Labelled("Rows", RowCountText(model)) + OwnLines(model) +
         StepsText(model.chain) +
         Labelled("X columns", std::to_string(model.xNames.size()) + ", " + ScalingText(model.scaling)) +
         LabelledNames("", model.xNames) + ShiftsText(model) + JudgementLines(model) + LimitsLines(model) +
         IntervalLines(model) + "\n" + OwnTables(model) + StoredValidationText(model);
}

template <class Model>
std::string ModelJson(const Model& model, const std::string& file, const ModelParts& parts) {
  Json json = JsonHeader(InfoFormat(model), kRefitJsonVersion);
  json["model"] = file;
  json["modelFileVersion"] = model.fileVersion;
  json["parts"] = PartsOf(model, parts);
  json["digest"] = ModelDigest(model);
  json["writtenBy"] = model.writtenBy;
  json["table"] = model.table;
  json["idColumn"] = TextOrNull(model.idColumn);
  json["scaling"] = ScalingWord(model.scaling);
  json["preprocessing"] = ChainJson(model.chain);
  json["x"] = ColumnsJson(model.xNames, model.xScaling);
  json["rowCount"] = model.rows;
  json["rows"] = model.rowNames;
  AddJudgementJson(model, &json);
  json["limits"] = LimitsOfModel(model);
  json["intervals"] = IntervalsJson(model);
  AddOwnJson(model, &json);
  AddStoredValidationJson(model, &json);
  return JsonText(json);
}

/// What the steps of a cross-validation added: the predictive components together, then each orthogonal one.
std::vector<std::string> CvStepNames(const StoredOPLSCv& cv) {
  std::vector<std::string> names = {Counted(static_cast<std::size_t>(cv.state.predictive), "predictive component")};
  for (std::size_t s = 1; s < cv.state.steps.size(); ++s) names.push_back("orthogonal " + std::to_string(s));
  return names;
}

}  // namespace

std::string InfoText(const StoredModel& model, const std::string& file) {
  const ModelParts parts = {KeepsRows(model), KeepsTable(model)};
  return std::visit([&](const auto& own) { return ModelText(own, file, parts); }, model);
}

std::string InfoJson(const StoredModel& model, const std::string& file) {
  const ModelParts parts = {KeepsRows(model), KeepsTable(model)};
  return std::visit([&](const auto& own) { return ModelJson(own, file, parts); }, model);
}

std::string InfoText(const StepChain& chain, const std::string& file) {
  const std::vector<std::string> names = OutputNames(chain);
  return Labelled("Steps file", file) + StepsText(chain) + LabelledNames("Takes", chain.inputNames) +
         Labelled("Makes", Counted(names.size(), "column")) + LabelledNames("", names);
}

std::string InfoJson(const StepChain& chain, const std::string& file) {
  Json json = JsonHeader("kalmia-info-steps");
  json["stepsFile"] = file;
  json["columns"] = chain.inputNames;
  json["steps"] = ChainJson(chain);
  json["outColumns"] = OutputNames(chain);
  return JsonText(json);
}

std::string InfoText(const StoredOPLSCv& cv, const std::string& file) {
  TextTable table;
  table.AddColumn("step", TextTable::Align::Left);
  table.AddColumn("Q2 cum", TextTable::Align::Right);
  const std::vector<std::string> names = CvStepNames(cv);
  for (std::size_t s = 0; s < names.size(); ++s) table.AddRow({names[s], Fixed(cv.state.steps[s].q2Cum, kQ2Decimals)});
  return Labelled("Cross-validation", file + ", of kalmia opls") +
         Labelled("Written by", "kalmia " + OneLine(cv.writtenBy)) +
         Labelled("Rows", std::to_string(cv.groups.Size()) + ", in " + std::to_string(cv.rounds) + " groups") +
         LabelledNames("Y", cv.yNames) +
         Labelled("X columns", std::to_string(cv.xNames.size()) + ", " + ScalingText(cv.scaling)) +
         LabelledNames("", cv.xNames) + "\n" + table.Text();
}

std::string InfoJson(const StoredOPLSCv& cv, const std::string& file) {
  Json json = JsonHeader("kalmia-info-crossvalidation");
  json["crossValidation"] = file;
  json["writtenBy"] = cv.writtenBy;
  json["scaling"] = ScalingWord(cv.scaling);
  json["x"] = cv.xNames;
  json["y"] = cv.yNames;
  json["groups"] = cv.rounds;
  json["groupOfRow"] = Json::array();
  for (const int group : cv.groups) json["groupOfRow"].push_back(group + 1);
  json["predictive"] = cv.state.predictive;
  json["q2Cum"] = Json::array();
  for (const OPLSCvStep& step : cv.state.steps) json["q2Cum"].push_back(JsonNumber(ShortestDouble(step.q2Cum)));
  return JsonText(json);
}

}  // namespace kalmia::analysis
