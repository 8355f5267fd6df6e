#include "app/Commands.h"
#include "app/ComponentTable.h"
#include "app/DisplayText.h"
#include "app/InputFile.h"
#include "app/Json.h"
#include "app/Numbers.h"
#include "app/Scaling.h"
#include "app/StoredModel.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kLineWidth = 100;
constexpr std::size_t kLabelWidth = 18;
constexpr int kDigits = 6;

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

std::string GroupsText(const StoredModel& model) {
  return std::to_string(model.groups) + " groups" +
         (model.groupColumn.empty() ? "" : " of column " + OneLine(model.groupColumn));
}

std::string RowsText(const StoredModel& model) {
  return std::to_string(model.rowNames.size()) +
         (model.idColumn.empty() ? "" : ", named by column " + OneLine(model.idColumn));
}

std::string InfoText(const StoredModel& model, const std::string& file) {
  return Labelled("Model file", file + ", version " + std::to_string(kModelFileVersion)) +
         Labelled("Written by", "kalmia " + OneLine(model.writtenBy)) + Labelled("Fitted to", OneLine(model.table)) +
         Labelled("Rows", RowsText(model)) + LabelledNames("Y", model.yNames) +
         Labelled("X columns", std::to_string(model.xNames.size()) + ", " + ScalingText(model.scaling)) +
         LabelledNames("", model.xNames) + Labelled("Cross-validation", GroupsText(model)) +
         Labelled("Pooled deviation", Significant(model.pooledDeviation, kDigits) + " of X, in scaled units") + "\n" +
         ComponentText(model.components, model.yNames) + "\n" + QualityText(model);
}

Json ColumnsJson(const std::vector<std::string>& names, const NCScale& scale) {
  Json list = Json::array();
  for (std::size_t i = 0; i < names.size(); ++i) {
    const int variable = static_cast<int>(i) + 1;
    list.push_back({{"name", names[i]}, {"centre", CentreOf(scale, variable)}, {"factor", FactorOf(scale, variable)}});
  }
  return list;
}

std::string InfoJson(const StoredModel& model, const std::string& file) {
  Json json = JsonHeader("kalmia-info");
  json["model"] = file;
  json["modelFileVersion"] = kModelFileVersion;
  json["writtenBy"] = model.writtenBy;
  json["table"] = model.table;
  json["idColumn"] = model.idColumn.empty() ? Json(nullptr) : Json(model.idColumn);
  json["scaling"] = ScalingWord(model.scaling);
  json["x"] = ColumnsJson(model.xNames, *model.xScale);
  json["y"] = ColumnsJson(model.yNames, *model.yScale);
  json["rows"] = model.rowNames;
  json["crossValidation"] = {{"groups", model.groups},
                             {"groupColumn", model.groupColumn.empty() ? Json(nullptr) : Json(model.groupColumn)}};
  json["components"] = ComponentJson(model.components, model.yNames);
  json["quality"] = QualityJson(model);
  json["pooledDeviation"] = JsonNumber(model.pooledDeviation);
  return JsonText(json);
}

}  // namespace

std::string RunInfo(const InfoOptions& options) {
  const std::string file = InputName(options.model);
  const StoredModel model = ReadModelFile(ReadInput(options.model), file);
  return options.json ? InfoJson(model, file) : InfoText(model, file);
}

}  // namespace kalmia::app
