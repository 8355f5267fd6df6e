#include "kalmia/analysis/report/internal/OPLSTables.h"

#include "kalmia/analysis/report/internal/ComponentTable.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kShareDecimals = 4;
using Align = TextTable::Align;

std::string Share(double value) { return Fixed(value, kShareDecimals); }

}  // namespace

std::vector<std::string> OPLSComponentNames(const std::vector<OPLSComponentRecord>& components) {
  std::vector<std::string> names;
  int predictive = 0;
  int orthogonal = 0;
  for (const OPLSComponentRecord& component : components) {
    names.push_back(component.orthogonal ? "orthogonal " + std::to_string(++orthogonal)
                                         : "predictive " + std::to_string(++predictive));
  }
  return names;
}

std::string OPLSComponentText(const std::vector<OPLSComponentRecord>& components) {
  TextTable table;
  table.AddColumn("component", Align::Left);
  for (const char* title : {"R2X", "R2Y", "Q2", "limit", "Q2 cum"}) table.AddColumn(title, Align::Right);
  table.AddColumn("verdict", Align::Left);
  const std::vector<std::string> names = OPLSComponentNames(components);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const OPLSComponentRecord& component = components[a];
    table.AddRow({names[a], Share(component.r2x), Share(component.r2y), Share(component.q2), Share(component.q2Limit),
                  Share(component.q2Cum), Verdict(component.significant, component.kept)});
  }
  return table.Text();
}

Json OPLSComponentJson(const std::vector<OPLSComponentRecord>& components) {
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

}  // namespace kalmia::analysis
