#include "kalmia/analysis/report/FilterReport.h"

#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kAngleDecimals = 2;
using Align = TextTable::Align;

}  // namespace

std::string ComponentText(const std::vector<FilterComponentRecord>& components) {
  TextTable table;
  for (const char* title : {"component", "R2X", "R2X cum", "angle to Y"}) table.AddColumn(title, Align::Right);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const FilterComponentRecord& component = components[a];
    table.AddRow({std::to_string(a + 1), ShareText(component.r2x), ShareText(component.r2xCum),
                  Fixed(component.angle, kAngleDecimals)});
  }
  return table.Text();
}

Json ComponentJson(const std::vector<FilterComponentRecord>& components) {
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

std::string FilterText(const Table& table, const FilterResult& result, const FilterFiles& files) {
  const StoredFilter& filter = result.filter;
  const std::string early = result.endedEarly.empty() ? "" : "No further component: " + result.endedEarly + ".\n";
  std::vector<std::string> written = {files.out};
  if (!files.saved.empty()) written.push_back(files.saved);
  return "Taken out of X, " + Counted(filter.xNames.size(), "column") + " of " + table.Name() + ", " +
         Counted(static_cast<std::size_t>(table.Rows()), "row") + ": what has nothing to do with " +
         Listed(filter.yNames) + "\nX " + ScalingText(filter.scaling) +
         (result.source.empty() ? "" : "; the filter of " + result.source) + "\n\n" +
         ComponentText(filter.components) + early + "\n" + ShareText(result.filtered.removed) +
         " of the sum of squares of X is taken out of these rows.\n" + WrittenText(written);
}

std::string FilterJson(const Table& table, const FilterResult& result, const FilterFiles& files,
                       const Notes& notes) {
  const StoredFilter& filter = result.filter;
  Json json = JsonHeader("kalmia-filter");
  json["table"] = table.Name();
  json["rows"] = table.Rows();
  json["model"] = TextOrNull(result.source);
  json["scaling"] = ScalingWord(filter.scaling);
  json["x"] = filter.xNames;
  json["y"] = filter.yNames;
  json["missingColumns"] = result.filtered.missingColumns;
  json["components"] = ComponentJson(filter.components);
  json["endedEarly"] = TextOrNull(result.endedEarly);
  json["removed"] = JsonNumber(result.filtered.removed);
  json["out"] = files.out;
  json["saved"] = TextOrNull(files.saved);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
