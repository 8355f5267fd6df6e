#include "kalmia/analysis/report/PLSReport.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

using Align = TextTable::Align;

Json ShareJson(const YShare& share) {
  return {{"r2", JsonNumber(share.r2)},
          {"r2Cum", JsonNumber(share.r2Cum)},
          {"q2", JsonNumber(share.q2)},
          {"q2Cum", JsonNumber(share.q2Cum)}};
}

std::string PerYText(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames) {
  TextTable table;
  table.AddColumn("component", Align::Right);
  table.AddColumn("Y", Align::Left);
  for (const char* title : {"R2Y", "R2Y cum", "Q2", "Q2 cum"}) table.AddColumn(title, Align::Right);
  for (std::size_t a = 0; a < components.size(); ++a) {
    for (std::size_t j = 0; j < yNames.size(); ++j) {
      const YShare& share = components[a].perY[j];
      table.AddRow({j == 0 ? std::to_string(a + 1) : "", yNames[j], ShareText(share.r2), ShareText(share.r2Cum),
                    ShareText(share.q2), ShareText(share.q2Cum)});
    }
  }
  return table.Text();
}

std::string Heading(const PLSResult& result) {
  return "PLS of " + Listed(result.data.yNames) + " on " + DataText(result.data, result.model);
}

std::string VerdictText(const PLSResult& result) {
  if (result.AnyKept()) {
    const std::string kept = Counted(static_cast<std::size_t>(result.model.Components()), "component") + " kept, ";
    const std::string early = result.endedEarly.empty() ? "" : "; no further one: " + result.endedEarly;
    return kept + GroupsText(result.model) + early + ".\n\n" + QualityText(result.model);
  }
  if (result.components.empty()) {
    return "No component is kept: none can be computed, " + result.endedEarly + ".\nNothing is saved.\n";
  }
  const ComponentRecord& first = result.components.front();
  return "No component is kept, " + GroupsText(result.model) + ": Q2 of the first, " + Significant(first.y.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

CsvFile VipCsv(const StoredPLS& model, const CsvMarks& marks) {
  const std::vector<double> vip = VariableImportance(*model.pls);
  CsvText csv(marks);
  csv.Field("column").Field("VIP").EndLine();
  for (std::size_t k = 0; k < vip.size(); ++k) csv.Field(model.xNames[k]).Number(vip[k]).EndLine();
  return {"vip.csv", csv.Text()};
}

CsvFile QCsv(const PLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component").Field("Y");
  for (const char* title : {"R2X", "R2X cum", "R2Y", "R2Y cum", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const ComponentRecord& record = result.components[a];
    const auto line = [&](const std::string& y, const YShare& share) {
      csv.Field(std::to_string(a + 1)).Field(y).Number(record.r2x).Number(record.r2xCum).Number(share.r2);
      csv.Number(share.r2Cum).Number(share.q2).Number(share.q2Cum).Number(record.q2Limit);
      csv.Field(record.significant ? "yes" : "no").Field(record.kept ? "yes" : "no").EndLine();
    };
    line("(all)", record.y);
    for (std::size_t j = 0; j < record.perY.size(); ++j) line(result.data.yNames[j], record.perY[j]);
  }
  return {"components.csv", csv.Text()};
}

}  // namespace

std::string ComponentText(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames) {
  TextTable table;
  for (const char* title : {"component", "R2X", "R2X cum", "R2Y", "R2Y cum", "Q2", "limit", "Q2 cum"}) {
    table.AddColumn(title, Align::Right);
  }
  table.AddColumn("verdict", Align::Left);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const ComponentRecord& component = components[a];
    table.AddRow({std::to_string(a + 1), ShareText(component.r2x), ShareText(component.r2xCum),
                  ShareText(component.y.r2), ShareText(component.y.r2Cum), ShareText(component.y.q2),
                  ShareText(component.q2Limit), ShareText(component.y.q2Cum),
                  Verdict(component.significant, component.kept)});
  }
  if (yNames.size() < 2) return table.Text();
  return table.Text() + "\n" + PerYText(components, yNames);
}

Json ComponentJson(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames) {
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const ComponentRecord& component = components[a];
    Json perY = Json::array();
    for (std::size_t j = 0; j < yNames.size(); ++j) {
      Json share = {{"name", yNames[j]}};
      share.update(ShareJson(component.perY[j]));
      perY.push_back(share);
    }
    list.push_back({{"component", a + 1},
                    {"kept", component.kept},
                    {"significant", component.significant},
                    {"iterations", component.iterations},
                    {"r2x", JsonNumber(component.r2x)},
                    {"r2xCum", JsonNumber(component.r2xCum)},
                    {"r2y", JsonNumber(component.y.r2)},
                    {"r2yCum", JsonNumber(component.y.r2Cum)},
                    {"q2", JsonNumber(component.y.q2)},
                    {"q2Cum", JsonNumber(component.y.q2Cum)},
                    {"q2Limit", JsonNumber(component.q2Limit)},
                    {"y", perY}});
  }
  return list;
}

std::string PLSText(const PLSResult& result, const FitFiles& files) {
  std::string text = Heading(result);
  if (!result.components.empty()) text += ComponentText(result.components, result.data.yNames) + "\n";
  return text + VerdictText(result) + WrittenText(files);
}

std::string PLSJson(const Table& table, const PLSResult& result, const Notes& notes, const FitFiles& files) {
  const ModelData& data = result.data;
  const StoredPLS& model = result.model;
  Json json = JsonHeader("kalmia-pls");
  AddDataJson(table, data, model, &json);
  json["y"] = {{"columns", data.yNames}, {"missingCells", data.y.GetNumMisVal()}};
  json["components"] = ComponentJson(result.components, data.yNames);
  json["kept"] = model.Components();
  json["endedEarly"] = TextOrNull(result.endedEarly);
  json["quality"] = QualityJson(model);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> PLSCsvFiles(const PLSResult& result, const CsvMarks& marks) {
  const ModelData& data = result.data;
  const StoredPLS& model = result.model;
  const NCPLS& pls = *model.pls;
  return {QCsv(result, marks),
          NamedComponentsCsv("scores.csv", "row", model.rowNames, {{"t", *pls.GetTprim()}}, marks),
          NamedComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", *pls.GetUprim()}}, marks),
          NamedComponentsCsv("loadings.csv", "column", model.xNames, {{"p", *pls.GetPprim()}}, marks),
          NamedComponentsCsv("weights.csv", "column", model.xNames, {{"w", *pls.GetWprim()}}, marks),
          NamedComponentsCsv("w-star.csv", "column", model.xNames, {{"w*", pls.GetWStarPrim()}}, marks),
          NamedComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", *pls.GetCprim()}}, marks),
          CoefficientsCsv(CoefficientsInOriginalUnits(pls, model.xScaling, model.yScaling), model, marks),
          VipCsv(model, marks),
          RowsCsv(model.rowNames, HotellingT2(*pls.GetTprim()),
                  DistancesToModel(model, model.Components(), result.fitted), marks),
          FitCsv("fit.csv", data.rowNames, data.yNames, data.measuredY, result.fitted, marks)};
}

std::vector<std::string> PLSCsvFileNames() {
  return {"components.csv", "scores.csv",       "y-scores.csv", "loadings.csv", "weights.csv", "w-star.csv",
          "y-weights.csv",  "coefficients.csv", "vip.csv",      "rows.csv",     "fit.csv"};
}

}  // namespace kalmia::analysis
