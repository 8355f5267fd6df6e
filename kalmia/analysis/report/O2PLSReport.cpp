#include "kalmia/analysis/report/O2PLSReport.h"

#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/report/internal/O2PLSComponents.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

std::string Heading(const O2PLSResult& result) {
  const BlockPair& data = result.data;
  const int filled = result.filledX + result.filledY;
  return "O2PLS of X, " + Counted(data.x.names.size(), "column") + " of " + data.x.table + ", and Y, " +
         Counted(data.y.names.size(), "column") + " of " + data.y.table + ", " +
         Counted(data.rowNames.size(), "row") + "\nboth " + ScalingText(result.model.scaling) +
         (filled == 0 ? "" : "; " + Counted(static_cast<std::size_t>(filled), "missing cell") + " estimated") + "\n\n";
}

std::string KeptText(const O2PLSResult& result) {
  const StoredO2PLS& model = result.model;
  if (!result.AnyKept()) {
    return "X and Y share no component, " + GroupsText(model) + ".\nNothing is saved.\n";
  }
  return std::to_string(model.Joint()) + " joint, " + std::to_string(model.XUnique()) + " X-unique and " +
         std::to_string(model.YUnique()) + " Y-unique components kept, " + GroupsText(model) + ".\n";
}

std::vector<NamedComponents> Both(const std::string& symbol, const NCDataMatrix<float>& joint,
                                  const NCDataMatrix<float>& unique) {
  return {{symbol, joint}, {symbol + "o", unique}};
}

std::string ModelText(const O2PLSResult& result) {
  const StoredO2PLS& model = result.model;
  const O2PLSMatrices& o = model.o2pls;
  return "\n" + SharesText(model.components) + "\nY as predicted from X: R2 " + ShareText(result.r2y) +
         "; X as predicted from Y: R2 " + ShareText(result.r2x) + "\n\n" +
         NamedComponentsText("X column", model.xNames, Both("p", o.p, o.po)) + "\n" +
         NamedComponentsText("Y column", model.yNames, Both("q", o.q, o.qo)) + "\n" +
         NamedComponentsText("row, in X", model.rowNames, Both("t", o.t, o.to)) + "\n" +
         NamedComponentsText("row, in Y", model.rowNames, Both("u", o.u, o.uo));
}

Json BlockJson(const Block& block, int filled) {
  return {{"file", block.table},
          {"columns", block.names},
          {"missingCells", block.cells.GetNumMisVal()},
          {"filledCells", filled},
          {"leftOut",
           {{"textColumns", block.textColumns},
            {"constantColumns", block.constantColumns},
            {"emptyColumns", block.emptyColumns}}}};
}

CsvFile ComponentRecordsCsv(const O2PLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component");
  for (const char* title : {"R2X", "R2Y", "Q2", "Q2 limit", "code", "kept"}) csv.Field(title);
  csv.EndLine();
  const std::vector<std::string> names = ComponentNames(result.components);
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const O2PLSComponentRecord& record = result.components[a];
    csv.Field(names[a]).Number(record.r2x).Number(record.r2y).Number(record.q2).Number(record.q2Limit);
    csv.Field(SignificanceE::GetSignificance(record.verdict)).Field(record.kept ? "yes" : "no").EndLine();
  }
  return {"components.csv", csv.Text()};
}

CsvFile SharesCsv(const O2PLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("block").Field("joint").Field("unique").Field("rest").Field("R2 predicted").EndLine();
  const BlockShares x = SharesOfX(result.components), y = SharesOfY(result.components);
  csv.Field("X").Number(x.joint).Number(x.unique).Number(x.Rest()).Number(result.r2x).EndLine();
  csv.Field("Y").Number(y.joint).Number(y.unique).Number(y.Rest()).Number(result.r2y).EndLine();
  return {"shares.csv", csv.Text()};
}

}  // namespace

std::string O2PLSText(const O2PLSResult& result, const FitFiles& files) {
  return Heading(result) + ComponentText(result.components) + "\n" + KeptText(result) +
         (result.AnyKept() ? ModelText(result) : "") + WrittenText(files);
}

std::string O2PLSJson(const O2PLSResult& result, const Notes& notes, const FitFiles& files) {
  const StoredO2PLS& model = result.model;
  const O2PLSMatrices& o = model.o2pls;
  const bool any = result.AnyKept();
  const auto named = [any](const std::vector<std::string>& names, const std::vector<NamedComponents>& parts) {
    return any ? NamedComponentsJson(names, parts) : Json::array();
  };
  Json json = JsonHeader("kalmia-o2pls");
  json["x"] = BlockJson(result.data.x, result.filledX);
  json["y"] = BlockJson(result.data.y, result.filledY);
  json["scaling"] = ScalingWord(model.scaling);
  json["rows"] = result.data.rowNames.size();
  json["leftOutRows"] = {{"onlyInX", result.data.onlyInX},
                         {"onlyInY", result.data.onlyInY},
                         {"empty", result.data.emptyRows}};
  json["crossValidation"] = {{"groups", model.groups}};
  json["components"] = ComponentJson(result.components);
  json["joint"] = model.Joint();
  json["xUnique"] = model.XUnique();
  json["yUnique"] = model.YUnique();
  json["shares"] = any ? SharesJson(model.components) : Json(nullptr);
  json["predicted"] = any ? Json({{"r2y", JsonNumber(result.r2y)}, {"r2x", JsonNumber(result.r2x)}}) : Json(nullptr);
  json["xLoadings"] = named(model.xNames, Both("p", o.p, o.po));
  json["yLoadings"] = named(model.yNames, Both("q", o.q, o.qo));
  json["xScores"] = named(model.rowNames, Both("t", o.t, o.to));
  json["yScores"] = named(model.rowNames, Both("u", o.u, o.uo));
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> O2PLSCsvFiles(const O2PLSResult& result, const CsvMarks& marks) {
  const StoredO2PLS& model = result.model;
  const O2PLSMatrices& o = model.o2pls;
  return {ComponentRecordsCsv(result, marks),
          SharesCsv(result, marks),
          NamedComponentsCsv("x-scores.csv", "row", model.rowNames, {{"t", o.t}, {"to", o.to}}, marks),
          NamedComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", o.u}, {"uo", o.uo}}, marks),
          NamedComponentsCsv("x-loadings.csv", "column", model.xNames, {{"p", o.p}, {"po", o.po}}, marks),
          NamedComponentsCsv("y-loadings.csv", "column", model.yNames, {{"q", o.q}, {"qo", o.qo}}, marks),
          NamedComponentsCsv("x-weights.csv", "column", model.xNames, {{"w", o.w}, {"wo", o.wo}}, marks),
          NamedComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", o.c}, {"co", o.co}}, marks),
          FitCsv("y-fit.csv", model.rowNames, result.data.y.names, result.data.y.measured, result.fittedY, marks),
          FitCsv("x-fit.csv", model.rowNames, result.data.x.names, result.data.x.measured, result.fittedX, marks)};
}

std::vector<std::string> O2PLSCsvFileNames() {
  return {"components.csv", "shares.csv",    "x-scores.csv",  "y-scores.csv", "x-loadings.csv",
          "y-loadings.csv", "x-weights.csv", "y-weights.csv", "y-fit.csv",    "x-fit.csv"};
}

}  // namespace kalmia::analysis
