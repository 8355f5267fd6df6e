#include "kalmia/analysis/report/FilterReport.h"

#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kShareDecimals = 4;
constexpr int kAngleDecimals = 2;
using Align = TextTable::Align;

std::string Share(double value) { return Fixed(value, kShareDecimals); }

}  // namespace

std::string FilterComponentText(const std::vector<FilterComponentRecord>& components) {
  TextTable table;
  for (const char* title : {"component", "R2X", "R2X cum", "angle to Y"}) table.AddColumn(title, Align::Right);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const FilterComponentRecord& component = components[a];
    table.AddRow({std::to_string(a + 1), Share(component.r2x), Share(component.r2xCum),
                  Fixed(component.angle, kAngleDecimals)});
  }
  return table.Text();
}

Json FilterComponentJson(const std::vector<FilterComponentRecord>& components) {
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const FilterComponentRecord& component = components[a];
    list.push_back({{"component", a + 1},
                    {"r2x", JsonNumber(component.r2x)},
                    {"r2xCum", JsonNumber(component.r2xCum)},
                    {"angle", JsonNumber(component.angle)}});
  }
  return list;
}

std::string FilterText(const CsvTable& table, const FilterResult& result, const FilterFiles& files) {
  const StoredFilter& filter = result.filter;
  const std::string early = result.endedEarly.empty() ? "" : "No further component: " + result.endedEarly + ".\n";
  std::vector<std::string> written = {files.out};
  if (!files.saved.empty()) written.push_back(files.saved);
  return "Taken out of X, " + Counted(filter.xNames.size(), "column") + " of " + table.Name() + ", " +
         Counted(static_cast<std::size_t>(table.Rows()), "row") + ": what has nothing to do with " +
         Listed(filter.yNames) + "\nX " + ScalingText(filter.scaling) +
         (result.source.empty() ? "" : "; the filter of " + result.source) + "\n\n" +
         FilterComponentText(filter.components) + early + "\n" + Share(result.filtered.removed) +
         " of the sum of squares of X is taken out of these rows.\n" + WrittenText(written);
}

std::string FilterJson(const CsvTable& table, const FilterResult& result, const FilterFiles& files,
                       const Notes& notes) {
  const StoredFilter& filter = result.filter;
  Json json = JsonHeader("kalmia-filter");
  json["table"] = table.Name();
  json["rows"] = table.Rows();
  json["model"] = result.source.empty() ? Json(nullptr) : Json(result.source);
  json["scaling"] = ScalingWord(filter.scaling);
  json["x"] = filter.xNames;
  json["y"] = filter.yNames;
  json["missingColumns"] = result.filtered.missingColumns;
  json["components"] = FilterComponentJson(filter.components);
  json["endedEarly"] = result.endedEarly.empty() ? Json(nullptr) : Json(result.endedEarly);
  json["removed"] = JsonNumber(result.filtered.removed);
  json["out"] = files.out;
  json["saved"] = files.saved.empty() ? Json(nullptr) : Json(files.saved);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
