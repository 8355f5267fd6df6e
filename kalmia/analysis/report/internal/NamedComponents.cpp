#include "kalmia/analysis/report/internal/NamedComponents.h"

#include <algorithm>

#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr int kNumberDigits = 5;
using Align = TextTable::Align;

}  // namespace

std::string NamedComponentsText(const std::string& what, const std::vector<std::string>& names,
                                const std::vector<NamedComponents>& parts) {
  TextTable table;
  table.AddColumn(what, Align::Left);
  for (const NamedComponents& part : parts)
    for (int a = 1; a <= part.prim.SizeRows(); ++a) table.AddColumn(part.symbol + std::to_string(a), Align::Right);
  const std::size_t shown = std::min(names.size(), kLinesShown);
  for (std::size_t i = 0; i < shown; ++i) {
    std::vector<std::string> cells = {names[i]};
    for (const NamedComponents& part : parts)
      for (int a = 1; a <= part.prim.SizeRows(); ++a) {
        const float cell = part.prim[a][static_cast<int>(i) + 1];
        cells.push_back(cell == kMissingCell<float> ? "-" : Significant(cell, kNumberDigits));
      }
    table.AddRow(cells);
  }
  if (shown == names.size()) return table.Text();
  return table.Text() + "  and " + std::to_string(names.size() - shown) + " more: CSV or JSON gives them all\n";
}

Json NamedComponentsJson(const std::vector<std::string>& names, const std::vector<NamedComponents>& parts) {
  Json list = Json::array();
  for (std::size_t i = 0; i < names.size(); ++i) {
    Json line = {{"name", names[i]}};
    for (const NamedComponents& part : parts) {
      Json numbers = Json::array();
      for (int a = 1; a <= part.prim.SizeRows(); ++a) {
        const float cell = part.prim[a][static_cast<int>(i) + 1];
        numbers.push_back(cell == kMissingCell<float> ? Json(nullptr) : JsonNumber(ShortestDouble(cell)));
      }
      line[part.symbol] = numbers;
    }
    list.push_back(line);
  }
  return list;
}

CsvFile NamedComponentsCsv(const std::string& file, const std::string& what, const std::vector<std::string>& names,
                      const std::vector<NamedComponents>& parts, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field(what);
  for (const NamedComponents& part : parts)
    for (int a = 1; a <= part.prim.SizeRows(); ++a) csv.Field(part.symbol + std::to_string(a));
  csv.EndLine();
  for (std::size_t i = 0; i < names.size(); ++i) {
    csv.Field(names[i]);
    for (const NamedComponents& part : parts)
      for (int a = 1; a <= part.prim.SizeRows(); ++a) csv.Cell(part.prim[a][static_cast<int>(i) + 1]);
    csv.EndLine();
  }
  return {file, csv.Text()};
}

}  // namespace kalmia::analysis
