#include "kalmia/analysis/report/internal/PCATables.h"

#include <algorithm>

#include "kalmia/analysis/report/internal/ComponentTable.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr int kShareDecimals = 4;
constexpr int kNumberDigits = 5;
using Align = TextTable::Align;

std::string Share(double value) { return Fixed(value, kShareDecimals); }

}  // namespace

std::string PCAComponentText(const std::vector<PCAComponentRecord>& components) {
  TextTable table;
  for (const char* title : {"component", "R2X", "R2X cum", "Q2", "limit", "Q2 cum"}) {
    table.AddColumn(title, Align::Right);
  }
  table.AddColumn("enough left", Align::Left);
  table.AddColumn("cross-validation", Align::Left);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const PCAComponentRecord& component = components[a];
    table.AddRow({std::to_string(a + 1), Share(component.r2x), Share(component.r2xCum), Share(component.q2),
                  Share(component.q2Limit), Share(component.q2Cum), component.enoughLeft ? "yes" : "no",
                  Verdict(component.significant, component.kept)});
  }
  return table.Text();
}

Json PCAComponentJson(const std::vector<PCAComponentRecord>& components) {
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const PCAComponentRecord& component = components[a];
    list.push_back({{"component", a + 1},
                    {"kept", component.kept},
                    {"significant", component.significant},
                    {"enoughLeft", component.enoughLeft},
                    {"iterations", component.iterations},
                    {"r2x", JsonNumber(component.r2x)},
                    {"r2xCum", JsonNumber(component.r2xCum)},
                    {"q2", JsonNumber(component.q2)},
                    {"q2Cum", JsonNumber(component.q2Cum)},
                    {"q2Limit", JsonNumber(component.q2Limit)}});
  }
  return list;
}

std::string NamedComponentsText(const std::string& what, const std::vector<std::string>& names,
                                const std::vector<NamedComponents>& parts, std::size_t most) {
  TextTable table;
  table.AddColumn(what, Align::Left);
  for (const NamedComponents& part : parts)
    for (int a = 1; a <= part.prim.SizeRows(); ++a) table.AddColumn(part.symbol + std::to_string(a), Align::Right);
  const std::size_t shown = names.size() > most ? most : names.size();
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

}  // namespace kalmia::analysis
