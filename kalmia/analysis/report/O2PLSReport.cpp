#include "kalmia/analysis/report/O2PLSReport.h"

#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/O2PLSTables.h"
#include "kalmia/analysis/report/internal/PCATables.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr int kShareDecimals = 4;

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
  return "\n" + SharesText(model.components) + "\nY as predicted from X: R2 " + Fixed(result.r2y, kShareDecimals) +
         "; X as predicted from Y: R2 " + Fixed(result.r2x, kShareDecimals) + "\n\n" +
         NamedComponentsText("X column", model.xNames, Both("p", o.p, o.po), kLinesShown) + "\n" +
         NamedComponentsText("Y column", model.yNames, Both("q", o.q, o.qo), kLinesShown) + "\n" +
         NamedComponentsText("row, in X", model.rowNames, Both("t", o.t, o.to), kLinesShown) + "\n" +
         NamedComponentsText("row, in Y", model.rowNames, Both("u", o.u, o.uo), kLinesShown);
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

}  // namespace

std::string O2PLSText(const O2PLSResult& result, const FitFiles& files) {
  return Heading(result) + O2PLSComponentText(result.components) + "\n" + KeptText(result) +
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
  json["components"] = O2PLSComponentJson(result.components);
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

}  // namespace kalmia::analysis
