#include "kalmia/analysis/report/internal/FitReport.h"

#include "kalmia/analysis/report/internal/StepChainReport.h"
#include "kalmia/analysis/report/internal/TableJson.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kShareDecimals = 4;
constexpr int kErrorDigits = 5;
using Align = TextTable::Align;

std::string Percent(int part, double whole) { return Fixed(100.0 * part / whole, 1) + " %"; }

/// "1.2 % of the X cells are missing"; empty if none is.
std::string MissingText(const ModelData& data) {
  const double cells = static_cast<double>(data.x.SizeRows()) * data.x.SizeColumns();
  std::string text;
  if (data.x.GetNumMisVal() > 0) text += Percent(data.x.GetNumMisVal(), cells) + " of the X cells";
  if (data.y.GetNumMisVal() > 0) {
    if (!text.empty()) text += " and ";
    text += Percent(data.y.GetNumMisVal(), static_cast<double>(data.y.SizeRows()) * data.y.SizeColumns()) +
            " of the Y cells";
  }
  return text.empty() ? "" : "; missing: " + text;
}

}  // namespace

std::string ShareText(double share) { return Fixed(share, kShareDecimals); }

std::string Verdict(bool significant, bool kept) {
  return std::string(significant ? "Q2 above limit" : "Q2 not above limit") + (kept ? "" : ", not kept");
}

std::string DataText(const ModelData& data, const ModelInfo& model) {
  const StepChain& chain = model.chain;
  const std::string made = chain.Empty() ? "" : "made of " + std::to_string(chain.inputNames.size()) + " ";
  const std::string steps = chain.Empty() ? "" : "Preprocessing of X:\n" + ChainText(chain);
  return Counted(data.xNames.size(), "column") + " " + made + "of " + model.table + ", " +
         Counted(data.rowNames.size(), "row") + "\n" + steps + "X " + ScalingText(model.scaling) + MissingText(data) +
         "\n\n";
}

std::string GroupsText(const ModelInfo& model) {
  return "cross-validated in " + std::to_string(model.groups) + " groups" +
         (model.groupColumn.empty() ? "" : " of " + OneLine(model.groupColumn));
}

void AddDataJson(const Table& table, const ModelData& data, const ModelInfo& model, Json* json) {
  (*json)["table"] = TableJson(table);
  (*json)["scaling"] = ScalingWord(model.scaling);
  (*json)["preprocessing"] = ChainJson(model.chain);
  (*json)["x"] = {{"columns", data.xNames}, {"missingCells", data.x.GetNumMisVal()}};
  (*json)["rows"] = data.rowNames.size();
  (*json)["leftOut"] = {{"textColumns", data.textColumns},
                        {"constantColumns", data.constantColumns},
                        {"emptyColumns", data.emptyColumns},
                        {"rows", data.leftOutRows}};
}

void AddGroupsJson(const ModelInfo& model, Json* json) {
  (*json)["crossValidation"] = {{"groups", model.groups},
                                {"groupColumn", TextOrNull(model.groupColumn)}};
}

void AddFilesJson(const FitFiles& files, const Notes& notes, Json* json) {
  (*json)["saved"] = TextOrNull(files.saved);
  (*json)["csvFiles"] = files.csv;
  if (!files.svg.empty()) (*json)["svgFiles"] = files.svg;
  if (!files.report.empty()) (*json)["report"] = files.report;
  (*json)["notes"] = notes.Lines();
}

std::vector<std::string> ShownYNames(const YModelInfo& model) {
  if (!model.classes || model.yNames.size() != 2) return model.yNames;
  return {Listed(model.yNames)};
}

std::string QualityText(const YModelInfo& model) {
  TextTable table;
  table.AddColumn("Y", Align::Left);
  for (const char* title : {"rows", "RMSEE", "RMSECV"}) table.AddColumn(title, Align::Right);
  const std::vector<std::string> names = ShownYNames(model);
  for (std::size_t j = 0; j < names.size(); ++j) {
    const YQuality& quality = model.quality[j];
    table.AddRow({names[j], std::to_string(quality.rows), Significant(quality.rmsee, kErrorDigits),
                  Significant(quality.rmsecv, kErrorDigits)});
  }
  return table.Text();
}

Json QualityJson(const YModelInfo& model) {
  Json list = Json::array();
  for (std::size_t j = 0; j < model.quality.size(); ++j) {
    const YQuality& quality = model.quality[j];
    list.push_back({{"name", model.yNames[j]},
                    {"rows", quality.rows},
                    {"rmsee", JsonNumber(quality.rmsee)},
                    {"rmsecv", JsonNumber(quality.rmsecv)}});
  }
  return list;
}

}  // namespace kalmia::analysis
