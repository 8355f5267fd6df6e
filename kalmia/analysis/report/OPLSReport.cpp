#include "kalmia/analysis/report/OPLSReport.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

using Align = TextTable::Align;

/// "predictive 1", "orthogonal 2": the kind of each component, and its number among its kind.
std::vector<std::string> ComponentNames(const std::vector<OPLSComponentRecord>& components) {
  std::vector<std::string> names;
  int predictive = 0;
  int orthogonal = 0;
  for (const OPLSComponentRecord& component : components) {
    names.push_back(component.orthogonal ? "orthogonal " + std::to_string(++orthogonal)
                                         : "predictive " + std::to_string(++predictive));
  }
  return names;
}

CsvFile ComponentRecordsCsv(const OPLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component");
  for (const char* title : {"R2X", "R2Y", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  const std::vector<std::string> names = ComponentNames(result.components);
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const OPLSComponentRecord& record = result.components[a];
    csv.Field(names[a]).Number(record.r2x).Number(record.r2y).Number(record.q2).Number(record.q2Cum);
    csv.Number(record.q2Limit).Field(record.significant ? "yes" : "no").Field(record.kept ? "yes" : "no").EndLine();
  }
  return {"components.csv", csv.Text()};
}

CsvFile VipCsv(const StoredOPLS& model, const CsvMarks& marks) {
  const std::vector<double> predictive = PredictiveImportance(model);
  const std::vector<double> orthogonal = OrthogonalImportance(model);
  CsvText csv(marks);
  csv.Field("column").Field("VIP predictive").Field("VIP orthogonal").EndLine();
  for (std::size_t k = 0; k < predictive.size(); ++k)
    csv.Field(model.xNames[k]).Number(predictive[k]).Number(orthogonal[k]).EndLine();
  return {"vip.csv", csv.Text()};
}

CsvFile SPlotCsv(const OPLSResult& result, const CsvMarks& marks) {
  const StoredOPLS& model = result.model;
  CsvText csv(marks);
  csv.Field("column");
  for (int a = 1; a <= model.Predictive(); ++a)
    csv.Field("covariance t" + std::to_string(a)).Field("correlation t" + std::to_string(a));
  csv.EndLine();
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    csv.Field(model.xNames[k]);
    for (int a = 1; a <= model.Predictive(); ++a) {
      const ColumnWithScores related = RelateColumn(result.scaledX, static_cast<int>(k) + 1, model.opls.t[a]);
      csv.Number(related.covariance).Number(related.correlation);
    }
    csv.EndLine();
  }
  return {"s-plot.csv", csv.Text()};
}

NCDataMatrix<float> Together(const NCDataMatrix<float>& above, const NCDataMatrix<float>& below) {
  NCDataMatrix<float> both = above;
  for (int r = 1; r <= below.SizeRows(); ++r) both.push_back(below[r]);
  return both;
}

}  // namespace

std::string ComponentText(const std::vector<OPLSComponentRecord>& components) {
  TextTable table;
  table.AddColumn("component", Align::Left);
  for (const char* title : {"R2X", "R2Y", "Q2", "limit", "Q2 cum"}) table.AddColumn(title, Align::Right);
  table.AddColumn("verdict", Align::Left);
  const std::vector<std::string> names = ComponentNames(components);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const OPLSComponentRecord& component = components[a];
    table.AddRow({names[a], ShareText(component.r2x), ShareText(component.r2y), ShareText(component.q2),
                  ShareText(component.q2Limit), ShareText(component.q2Cum),
                  Verdict(component.significant, component.kept)});
  }
  return table.Text();
}

Json ComponentJson(const std::vector<OPLSComponentRecord>& components) {
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const OPLSComponentRecord& component = components[a];
    list.push_back({{"component", a + 1},
                    {"kind", component.orthogonal ? "orthogonal" : "predictive"},
                    {"kept", component.kept},
                    {"significant", component.significant},
                    {"r2x", JsonNumber(component.r2x)},
                    {"r2y", JsonNumber(component.r2y)},
                    {"q2", JsonNumber(component.q2)},
                    {"q2Cum", JsonNumber(component.q2Cum)},
                    {"q2Limit", JsonNumber(component.q2Limit)}});
  }
  return list;
}

std::string OPLSText(const OPLSResult& result, const FitFiles& files) {
  const StoredOPLS& model = result.model;
  const std::string early = result.endedEarly.empty() ? "" : "; no further one: " + result.endedEarly;
  return "OPLS of " + Listed(result.data.yNames) + " on " + DataText(result.data, model) +
         ComponentText(result.components) + "\n" + std::to_string(model.Predictive()) + " predictive and " +
         Counted(static_cast<std::size_t>(model.Orthogonal()), "orthogonal component") + " kept, " +
         GroupsText(model) + early + ".\n\n" + QualityText(model) + WrittenText(files);
}

std::string OPLSJson(const Table& table, const OPLSResult& result, const Notes& notes, const FitFiles& files) {
  const StoredOPLS& model = result.model;
  Json json = JsonHeader("kalmia-opls");
  AddDataJson(table, result.data, model, &json);
  AddGroupsJson(model, &json);
  json["y"] = {{"columns", result.data.yNames}, {"missingCells", result.data.y.GetNumMisVal()}};
  json["components"] = ComponentJson(result.components);
  json["predictive"] = model.Predictive();
  json["orthogonal"] = model.Orthogonal();
  json["endedEarly"] = TextOrNull(result.endedEarly);
  json["quality"] = QualityJson(model);
  json["savedCv"] = TextOrNull(files.savedCv);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> OPLSCsvFiles(const OPLSResult& result, const CsvMarks& marks) {
  const ModelData& data = result.data;
  const StoredOPLS& model = result.model;
  const OPLSMatrices& opls = model.opls;
  const CrossValidatedScores& left = result.crossValidated;
  return {
      ComponentRecordsCsv(result, marks),
      NamedComponentsCsv("scores.csv", "row", model.rowNames, {{"t", opls.t}, {"to", opls.to}}, marks),
      NamedComponentsCsv("cross-validated-scores.csv", "row", model.rowNames, {{"t", left.t}, {"to", left.to}}, marks),
      NamedComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", result.u}}, marks),
      NamedComponentsCsv("loadings.csv", "column", model.xNames, {{"p", opls.p.back()}, {"po", opls.po}}, marks),
      NamedComponentsCsv("weights.csv", "column", model.xNames, {{"w", opls.w.back()}, {"wo", opls.wo}}, marks),
      NamedComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", opls.c.back()}, {"co", opls.co}}, marks),
      SPlotCsv(result, marks),
      CoefficientsCsv(CoefficientsInOriginalUnits(model), model, marks),
      VipCsv(model, marks),
      RowsCsv(model.rowNames, HotellingT2(Together(opls.t, opls.to)),
              DistancesToModel(model, model.Components(), result.fitted), marks),
      FitCsv("fit.csv", data.rowNames, data.yNames, data.measuredY, result.fitted, marks)};
}

std::vector<std::string> OPLSCsvFileNames() {
  return {"components.csv", "scores.csv",      "cross-validated-scores.csv",
          "y-scores.csv",   "loadings.csv",    "weights.csv",
          "y-weights.csv",  "s-plot.csv",      "coefficients.csv",
          "vip.csv",        "rows.csv",        "fit.csv"};
}

}  // namespace kalmia::analysis
