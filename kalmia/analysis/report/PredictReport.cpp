#include "kalmia/analysis/report/PredictReport.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/model/PredictionErrors.h"
#include "kalmia/analysis/report/internal/ClassReport.h"
#include "kalmia/analysis/report/internal/ContributionReport.h"
#include "kalmia/analysis/report/internal/RowReport.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kPredictionDigits = 6;
constexpr int kScoreDigits = 5;
constexpr int kMostMoreDigits = 10;
constexpr int kDistanceDecimals = 3;
constexpr int kErrorDigits = 5;
constexpr int kBiasDigits = 3;
constexpr double kLeastBias = 1e-4;  ///< of RMSEP, to be shown in a text
constexpr int kSlopeDecimals = 3;
constexpr int kLogOddsDigits = 4;

/// How many digits predictions of a Y column, from 0, need: those of a column far from zero as many more as its shift
/// has in front of what varies.
int PredictionDigits(const YModelInfo& model, const PLSPredictions& result, std::size_t j) {
  const double shift = model.yScaling.ShiftOfColumn(j);
  double spread = 0.0;
  for (const RowPrediction& row : result.predictions) {
    if (!row.y.empty()) spread = std::max(spread, std::fabs(row.y[j] - shift));
  }
  const double more = shift == 0.0 ? 0.0 : std::ceil(std::log10(std::fabs(shift) / spread));
  return kPredictionDigits + static_cast<int>(std::clamp<double>(more, 0.0, kMostMoreDigits));
}

/// Beside RMSEP: what is next to nothing of it, as of rows that the model was fitted to, is 0.
std::string BiasText(const PredictionError& error) {
  const bool isNone = std::fabs(error.bias) < kLeastBias * error.rmsep;
  return isNone ? "0" : Significant(error.bias, kBiasDigits);
}

std::string ErrorText(const YModelInfo& model, const PLSPredictions& result) {
  TextTable table;
  table.AddColumn("Y", TextTable::Align::Left);
  table.AddColumn("rows", TextTable::Align::Right);
  for (const char* title : {"RMSEP", "bias", "slope", "covered"}) table.AddColumn(title, TextTable::Align::Right);
  bool any = false;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    const PredictionError error = ErrorOf(result, j);
    if (error.rows == 0) continue;
    any = true;
    table.AddRow({model.yNames[j], std::to_string(error.rows), Significant(error.rmsep, kErrorDigits),
                  BiasText(error), Fixed(error.slope, kSlopeDecimals), Fixed(error.covered, kSlopeDecimals)});
  }
  return any ? "\n" + table.Text() : "";
}

constexpr int kT2Digits = 4;
constexpr auto kBeyond = "beyond";  ///< column of the limits that a row passes

/// The last of the limits of each kind that a row passes, which says all.
std::string BeyondText(const std::vector<std::string>& flags) {
  std::string text;
  for (std::size_t f = 0; f < flags.size(); ++f) {
    const auto what = [](const std::string& flag) { return flag.substr(0, flag.find(' ')); };
    if (f + 1 < flags.size() && what(flags[f]) == what(flags[f + 1])) continue;
    text += (text.empty() ? "" : ", ") + flags[f];
  }
  return text;
}

bool AnyFlag(const RowDiagnosis& diagnosis) {
  return std::any_of(diagnosis.flags.begin(), diagnosis.flags.end(), [](const auto& flags) { return !flags.empty(); });
}

bool AnyT2(const RowDiagnosis& diagnosis) {
  return std::any_of(diagnosis.t2.begin(), diagnosis.t2.end(), [](double t2) { return !std::isnan(t2); });
}

/// What both kinds of predictions say of rows behind what is their own.
void AddDiagnosisColumns(const RowDiagnosis& diagnosis, TextTable* text) {
  if (AnyT2(diagnosis)) text->AddColumn("T2", TextTable::Align::Right);
  text->AddColumn("distance", TextTable::Align::Right);
  if (AnyFlag(diagnosis)) text->AddColumn(kBeyond, TextTable::Align::Left);
}

void AddDiagnosisCells(const RowDiagnosis& diagnosis, std::size_t i, std::vector<std::string>* cells) {
  if (AnyT2(diagnosis)) cells->push_back(Significant(diagnosis.t2[i], kT2Digits));
  cells->push_back(Fixed(diagnosis.distances[i], kDistanceDecimals));
  if (AnyFlag(diagnosis)) cells->push_back(BeyondText(diagnosis.flags[i]));
}

std::string NewLimitsText(const RowDiagnosis& diagnosis) {
  const std::string limits = LimitsText(diagnosis.limits);
  return limits.empty() ? "" : "\nLimits for new rows: " + limits + "\n";
}

void AddDiagnosisJson(const RowDiagnosis& diagnosis, std::size_t i, Json* row) {
  (*row)["t2"] = JsonNumber(diagnosis.t2[i]);
  (*row)["distance"] = JsonNumber(diagnosis.distances[i]);
  (*row)["absoluteDistance"] = JsonNumber(diagnosis.absoluteDistances[i]);
  (*row)["flags"] = diagnosis.flags[i];
}

void AddDiagnosisTitles(CsvText* csv) {
  csv->Field("T2").Field("distance").Field("absolute distance").Field("flags");
}

void AddDiagnosisFields(const RowDiagnosis& diagnosis, std::size_t i, CsvText* csv) {
  csv->Number(diagnosis.t2[i]).Number(diagnosis.distances[i]).Number(diagnosis.absoluteDistances[i]);
  csv->Field(FlagsText(diagnosis.flags[i]));
}

/// Of a row, from 0, and a Y column, from 0: what the interval is the half of; not a number without one.
double HalfWidth(const PLSPredictions& result, std::size_t i, std::size_t j) {
  return result.predictions[i].y.empty() ? kNone : result.diagnosis.halfWidths(i, j);
}
double Predicted(const PLSPredictions& result, std::size_t i, std::size_t j) {
  return result.predictions[i].y.empty() ? kNone : result.predictions[i].y[j];
}
double Lower(const PLSPredictions& result, std::size_t i, std::size_t j) {
  return Predicted(result, i, j) - HalfWidth(result, i, j);
}
double Upper(const PLSPredictions& result, std::size_t i, std::size_t j) {
  return Predicted(result, i, j) + HalfWidth(result, i, j);
}

bool AnyInterval(const PLSPredictions& result, std::size_t j) {
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    if (!std::isnan(HalfWidth(result, i, j))) return true;
  }
  return false;
}

/// Beyond a limit an interval is none of what the model knows.
bool IsExtrapolated(const PLSPredictions& result, std::size_t i) {
  return result.diagnosis.IsBeyond(i) && result.diagnosis.HasInterval(i);
}

/// The columns on Y in the text of predictions: of numbers what is predicted and measured, of classes what is assigned.
class YColumns {
 public:
  YColumns(const YModelInfo& model, const PLSPredictions& result) : model_(model), result_(result) {
    for (std::size_t j = 0; j < model.yNames.size(); ++j) digits_.push_back(PredictionDigits(model, result, j));
    if (!result.classes) return;
    for (std::size_t i = 0; i < result.predictions.size(); ++i) anyBeyond_ |= IsUnlikeAny(i);
  }

  void AddTitles(TextTable* text) const {
    if (result_.classes) {
      AddClassTitles(text);
      return;
    }
    for (std::size_t j = 0; j < model_.yNames.size(); ++j) {
      text->AddColumn(OneLine(model_.yNames[j]), TextTable::Align::Right);
      if (AnyInterval(result_, j)) {
        text->AddColumn("lower", TextTable::Align::Right);
        text->AddColumn("upper", TextTable::Align::Right);
      }
      if (!result_.measured[j].empty()) text->AddColumn("measured", TextTable::Align::Right);
    }
  }

  void AddCells(std::size_t i, std::vector<std::string>* cells) const {
    if (result_.classes) {
      AddClassCells(i, cells);
      return;
    }
    for (std::size_t j = 0; j < model_.yNames.size(); ++j) {
      cells->push_back(Significant(Predicted(result_, i, j), digits_[j]));
      if (AnyInterval(result_, j)) {
        cells->push_back(Significant(Lower(result_, i, j), digits_[j]));
        cells->push_back(Significant(Upper(result_, i, j), digits_[j]));
      }
      if (!result_.measured[j].empty()) cells->push_back(Significant(result_.measured[j][i], digits_[j]));
    }
  }

 private:
  /// Of a row that has a nearest class, and is not assigned to it.
  bool IsUnlikeAny(std::size_t i) const {
    return result_.classes->nearest[i] >= 0 && result_.classes->assigned[i] < 0;
  }

  void AddClassTitles(TextTable* text) const {
    text->AddColumn("class", TextTable::Align::Left);
    if (anyBeyond_) text->AddColumn("nearest", TextTable::Align::Left);
    if (!result_.classes->measured.empty()) text->AddColumn("measured", TextTable::Align::Left);
    text->AddColumn("log odds", TextTable::Align::Right);
  }

  void AddClassCells(std::size_t i, std::vector<std::string>* cells) const {
    const ClassPredictions& classes = *result_.classes;
    const auto nameOf = [this](int number) { return number < 0 ? "-" : ClassName(model_, number); };
    const int nearest = classes.nearest[i];
    cells->push_back(nameOf(classes.assigned[i]));
    if (anyBeyond_) cells->push_back(IsUnlikeAny(i) ? nameOf(nearest) : "");
    if (!classes.measured.empty()) cells->push_back(classes.measured[i].empty() ? "-" : classes.measured[i]);
    cells->push_back(
        Significant(nearest < 0 ? kNone : classes.logOdds(i, static_cast<std::size_t>(nearest)), kLogOddsDigits));
  }

  const YModelInfo& model_;
  const PLSPredictions& result_;
  std::vector<int> digits_;
  bool anyBeyond_ = false;
};

std::string WhatIsPredicted(const YModelInfo& model) {
  return model.classes ? "the classes of " + OneLine(model.classes->column) : Listed(model.yNames);
}

/// By what a model without components predicts.
std::string MeanText(const YModelInfo& model) {
  return std::string(model.classes ? "by the prior" : "the mean of the training rows") +
         ": the model has no component";
}

double Score(const RowFit& row, std::size_t a) { return row.t.empty() ? kNone : row.t[a]; }

Json ScoresJson(const RowFit& row, std::size_t count) {
  Json scores = Json::array();
  for (std::size_t a = 0; a < count; ++a) scores.push_back(JsonNumber(Score(row, a)));
  return scores;
}

Json RowsJson(const YModelInfo& model, const PLSPredictions& result) {
  Json list = Json::array();
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    const RowPrediction& row = result.predictions[i];
    Json predicted = Json::array(), lower = Json::array(), upper = Json::array(), measured = Json::array();
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      predicted.push_back(JsonNumber(Predicted(result, i, j)));
      lower.push_back(JsonNumber(Lower(result, i, j)));
      upper.push_back(JsonNumber(Upper(result, i, j)));
      const bool has = !result.measured[j].empty() && !std::isnan(result.measured[j][i]);
      measured.push_back(has ? JsonNumber(result.measured[j][i]) : Json(nullptr));
    }
    list.push_back({{"row", result.rows.names[i]},
                    {"predicted", predicted},
                    {"lower", lower},
                    {"upper", upper},
                    {"measured", measured},
                    {"t", ScoresJson(row, result.scoreNames.size())}});
    if (result.classes) AddClassJson(model, *result.classes, i, &list.back());
    AddDiagnosisJson(result.diagnosis, i, &list.back());
    list.back()["extrapolation"] = IsExtrapolated(result, i);
    list.back()["reason"] = TextOrNull(row.reason);
  }
  return list;
}

std::size_t CountOf(const StoredPCA& model) { return model.components.size(); }

// What the JSON of predictions has for each kind of model: the name of its format, and fields of its own.

constexpr auto PredictFormat(const YModelInfo& /*model*/) { return "kalmia-predict"; }
constexpr auto PredictFormat(const StoredO2PLS& /*model*/) { return "kalmia-predict-o2pls"; }
constexpr auto PredictFormat(const StoredPCA& /*model*/) { return "kalmia-predict-pca"; }

void AddPredictJson(const YModelInfo& model, const PLSPredictions& result, Json* json) {
  (*json)["y"] = model.yNames;
  (*json)["scores"] = result.scoreNames;
  (*json)["rows"] = RowsJson(model, result);
  Json errors = Json::array();
  for (std::size_t j = 0; j < (model.classes ? 0 : model.yNames.size()); ++j) {
    const PredictionError error = ErrorOf(result, j);
    errors.push_back({{"name", model.yNames[j]},
                      {"rows", error.rows},
                      {"rmsep", JsonNumber(error.rmsep)},
                      {"bias", JsonNumber(error.bias)},
                      {"slope", JsonNumber(error.slope)},
                      {"covered", JsonNumber(error.covered)}});
  }
  (*json)["errors"] = errors;
  if (result.classes) (*json)["classes"] = TallyJson(model, *result.classes);
}

void AddPredictJson(const StoredO2PLS& model, const PLSPredictions& result, Json* json) {
  const YModelInfo& info = model;
  (*json)["from"] = model.inputBlock == "X" ? "x" : "y";
  AddPredictJson(info, result, json);
}

void AddPredictJson(const StoredPCA& model, const PCAPredictions& result, Json* json) {
  Json list = Json::array();
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    list.push_back({{"row", result.rows.names[i]}, {"t", ScoresJson(row, CountOf(model))}});
    AddDiagnosisJson(result.diagnosis, i, &list.back());
    list.back()["reason"] = TextOrNull(row.reason);
  }
  (*json)["rows"] = list;
}

/// `contributions` is null for a kind of model that has none.
template <class Model, class Result>
std::string JsonOf(const Model& model, const Result& result, const PredictFiles& files, const Notes& notes,
                   const std::vector<RowContributions>* contributions) {
  Json json = JsonHeader(PredictFormat(model), kRefitJsonVersion);
  json["model"] = files.model;
  json["digest"] = ModelDigest(model);
  json["table"] = files.table;
  json["components"] = model.Components();
  json["missingColumns"] = result.rows.missingColumns;
  json["limits"] = LimitsJson(model, model.Components());
  AddPredictJson(model, result, &json);
  if (contributions != nullptr) json["contributions"] = ContributionJson(*contributions);
  json["csvFiles"] = files.csv;
  if (!files.svg.empty()) json["svgFiles"] = files.svg;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string PredictText(const YModelInfo& model, const Table& table, const PLSPredictions& result,
                        const std::vector<RowContributions>& contributions) {
  const bool anyReason = std::any_of(result.predictions.begin(), result.predictions.end(),
                                     [](const auto& row) { return !row.reason.empty(); });
  TextTable text;
  text.AddColumn("row", TextTable::Align::Left);
  const YColumns ofY(model, result);
  ofY.AddTitles(&text);
  AddDiagnosisColumns(result.diagnosis, &text);
  if (anyReason) text.AddColumn("not predicted because", TextTable::Align::Left);
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    std::vector<std::string> cells = {result.rows.names[i]};
    ofY.AddCells(i, &cells);
    AddDiagnosisCells(result.diagnosis, i, &cells);
    if (anyReason) cells.push_back(result.predictions[i].reason);
    text.AddRow(cells);
  }
  const std::string with = result.components == 0
                               ? MeanText(model)
                               : "with " + Counted(static_cast<std::size_t>(result.components), "component");
  return "Predictions of " + WhatIsPredicted(model) + " for " + table.Name() + ", " +
         Counted(result.predictions.size(), "row") + ", " + with + "\n\n" + text.Text() +
         NewLimitsText(result.diagnosis) +
         (result.classes ? TallyText(model, *result.classes) : ErrorText(model, result)) +
         ContributionText(contributions, model.xNames);
}

CsvFile PredictCsv(const YModelInfo& model, const PLSPredictions& result, const std::string& file,
                   const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row");
  if (result.classes) AddClassTitles(model, *result.classes, &csv);
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    if (!result.measured[j].empty()) csv.Field("measured " + model.yNames[j]);
    csv.Field("predicted " + model.yNames[j]);
    if (!result.classes) csv.Field("lower " + model.yNames[j]).Field("upper " + model.yNames[j]);
  }
  for (const std::string& name : result.scoreNames) csv.Field(name);
  AddDiagnosisTitles(&csv);
  csv.Field("extrapolation").Field("reason").EndLine();
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    csv.Field(result.rows.names[i]);
    if (result.classes) AddClassFields(model, *result.classes, i, &csv);
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      if (!result.measured[j].empty()) csv.Number(result.measured[j][i]);
      csv.Number(Predicted(result, i, j));
      if (!result.classes) csv.Number(Lower(result, i, j)).Number(Upper(result, i, j));
    }
    for (std::size_t a = 0; a < result.scoreNames.size(); ++a) csv.Number(Score(result.predictions[i], a));
    AddDiagnosisFields(result.diagnosis, i, &csv);
    csv.Field(IsExtrapolated(result, i) ? "yes" : "no").Field(result.predictions[i].reason).EndLine();
  }
  return {file, csv.Text()};
}

std::string PredictText(const StoredPCA& model, const Table& table, const PCAPredictions& result,
                        const std::vector<RowContributions>& contributions) {
  const bool anyReason =
      std::any_of(result.scores.begin(), result.scores.end(), [](const auto& row) { return !row.reason.empty(); });
  TextTable text;
  text.AddColumn("row", TextTable::Align::Left);
  for (std::size_t a = 1; a <= CountOf(model); ++a) text.AddColumn("t" + std::to_string(a), TextTable::Align::Right);
  AddDiagnosisColumns(result.diagnosis, &text);
  if (anyReason) text.AddColumn("no scores because", TextTable::Align::Left);
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    std::vector<std::string> cells = {result.rows.names[i]};
    for (std::size_t a = 0; a < CountOf(model); ++a) cells.push_back(Significant(Score(row, a), kScoreDigits));
    AddDiagnosisCells(result.diagnosis, i, &cells);
    if (anyReason) cells.push_back(row.reason);
    text.AddRow(cells);
  }
  return "Scores of " + table.Name() + ", " + Counted(result.scores.size(), "row") + ", in " +
         Counted(CountOf(model), "component") + "\n\n" + text.Text() + NewLimitsText(result.diagnosis) +
         ContributionText(contributions, model.xNames);
}

CsvFile PredictCsv(const StoredPCA& model, const PCAPredictions& result, const std::string& file,
                   const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row");
  for (std::size_t a = 1; a <= CountOf(model); ++a) csv.Field("t" + std::to_string(a));
  AddDiagnosisTitles(&csv);
  csv.Field("reason").EndLine();
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    csv.Field(result.rows.names[i]);
    for (std::size_t a = 0; a < CountOf(model); ++a) csv.Number(Score(row, a));
    AddDiagnosisFields(result.diagnosis, i, &csv);
    csv.Field(row.reason).EndLine();
  }
  return {file, csv.Text()};
}

std::string PredictJson(const StoredPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes, const std::vector<RowContributions>& contributions) {
  return JsonOf(model, result, files, notes, &contributions);
}

std::string PredictJson(const StoredOPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes, const std::vector<RowContributions>& contributions) {
  return JsonOf(model, result, files, notes, &contributions);
}

std::string PredictJson(const StoredO2PLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes, /*contributions=*/nullptr);
}

std::string PredictJson(const StoredPCA& model, const PCAPredictions& result, const PredictFiles& files,
                        const Notes& notes, const std::vector<RowContributions>& contributions) {
  return JsonOf(model, result, files, notes, &contributions);
}

}  // namespace kalmia::analysis
