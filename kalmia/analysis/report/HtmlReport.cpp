#include "kalmia/analysis/report/HtmlReport.h"

#include <utility>

#include "kalmia/analysis/figure/internal/FigureFields.h"
#include "kalmia/analysis/report/internal/SmallerReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kFewestItems = 250;  ///< that thinning leaves
constexpr std::size_t kMostItems = std::size_t{1} << 17U;

/// No request leaves the page, and no text becomes a script.
constexpr auto kHead = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; script-src 'unsafe-inline'; )"
                       R"(style-src 'unsafe-inline'; img-src data: blob:; form-action 'none'; base-uri 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="referrer" content="no-referrer">
)";

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

/// Text between tags.
std::string Escaped(const std::string& text) { return Replaced(Replaced(text, "&", "&amp;"), "<", "&lt;"); }

/// In JSON a less-than sign stands in texts alone, where it may be written as its number. Then nothing in it ends the
/// element, or begins a comment.
std::string DataBlock(const std::string& id, const Json& json) {
  const std::string text =
      Replaced(json.dump(-1, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace), "<", "\\u003c");
  return "<script type=\"application/json\" id=\"" + id + "\">" + text + "</script>\n";
}

std::string ScriptBlock(const std::string& script) {
  return "<script>\n" + Replaced(script, "</script", "<\\/script") + "</script>\n";
}

Json ComponentsJson(const FigureComponents& components) {
  Json json = {{"figure", components.figure}, {"x", components.x}, {"y", components.y}, {"list", Json::array()}};
  for (const FigureComponent& component : components.list) {
    json["list"].push_back({{"label", component.label},
                            {"values", JsonNumbers(component.values)},
                            {"low", JsonNumber(component.low)},
                            {"high", JsonNumber(component.high)}});
  }
  return json;
}

Json ColumnJson(const ReportColumn& column) {
  const bool isText = !column.texts.empty();
  return {{"name", column.name},
          {"kind", isText ? "text" : "number"},
          {"values", isText ? Json(column.texts) : JsonNumbers(column.numbers)}};
}

Json PageJson(const ReportPage& report) {
  Json json = JsonHeader("kalmia-report");
  json["title"] = report.title;
  json["facts"] = report.facts;
  json["summary"] = report.summary;
  json["text"] = report.text;
  json["notes"] = report.notes;
  json["command"] = report.command;
  json["components"] = Json::array();
  for (const FigureComponents& components : report.components) json["components"].push_back(ComponentsJson(components));
  json["columns"] = Json::array();
  for (const ReportColumn& column : report.columns) json["columns"].push_back(ColumnJson(column));
  return json;
}

std::string DataBlocks(const ReportPage& report) {
  Json figures = FigureFields(report.figures), page = PageJson(report);
  if (!figures["names"].contains("rows")) figures["names"]["rows"] = report.rowNames;
  return DataBlock("kalmia-report", page) + DataBlock("kalmia-figures", figures);
}

std::string PageText(const std::string& data, const ReportAssets& assets) {
  return kHead + std::string("<title>Kalmia</title>\n<style>\n") + assets.style +
         "</style>\n</head>\n<body>\n<main></main>\n"
         "<noscript>This report is drawn by JavaScript, which is switched off here.</noscript>\n"
         "<template id=\"kalmia-notice\">" + Escaped(assets.notice) + "</template>\n" + data +
         ScriptBlock(assets.echarts) + ScriptBlock(assets.script) + "</body>\n</html>\n";
}

/// What was done so that the page stays small.
std::string SmallerText(std::size_t rows, std::size_t rowsLeft, bool isThinned) {
  std::string text = "numbers of this page are rounded to five digits";
  if (isThinned) text += ", and lines keep the lowest and the highest of each stretch";
  text += ", so that it stays small";
  if (rowsLeft == rows) return text;
  return text + "; of " + Counted(rows, "row") + " it shows " + std::to_string(rowsLeft) +
         ", those that stand out and others evenly between";
}

/// Makes the data fit, as far as that can be, and notes what it did.
std::string DataThatFits(ReportPage report, std::size_t most) {
  std::string data = DataBlocks(report);
  if (data.size() <= most) return data;
  const std::size_t rows = report.rowNames.size();
  Round(&report);
  report.notes.push_back(SmallerText(rows, rows, false));
  data = DataBlocks(report);
  for (std::size_t items = kMostItems; data.size() > most && items >= kFewestItems; items /= 2) {
    if (!Thin(items, &report)) continue;
    report.notes.back() = SmallerText(rows, report.rowNames.size(), true);
    data = DataBlocks(report);
  }
  return data;
}

}  // namespace

std::string HtmlText(ReportPage report, const ReportAssets& assets, std::size_t most) {
  const std::size_t rest = PageText("", assets).size();
  return PageText(DataThatFits(std::move(report), most > rest ? most - rest : 0), assets);
}

}  // namespace kalmia::analysis
