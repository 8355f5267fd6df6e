#include "kalmia/analysis/report/internal/ComponentTable.h"

#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kShareDecimals = 4;
constexpr int kErrorDigits = 5;
using Align = TextTable::Align;

std::string Share(double value) { return Fixed(value, kShareDecimals); }

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
      table.AddRow({j == 0 ? std::to_string(a + 1) : "", yNames[j], Share(share.r2), Share(share.r2Cum),
                    Share(share.q2), Share(share.q2Cum)});
    }
  }
  return table.Text();
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
    table.AddRow({std::to_string(a + 1), Share(component.r2x), Share(component.r2xCum), Share(component.y.r2),
                  Share(component.y.r2Cum), Share(component.y.q2), Share(component.q2Limit), Share(component.y.q2Cum),
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

std::string QualityText(const YModelInfo& model) {
  TextTable table;
  table.AddColumn("Y", Align::Left);
  for (const char* title : {"rows", "RMSEE", "RMSECV"}) table.AddColumn(title, Align::Right);
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    const YQuality& quality = model.quality[j];
    table.AddRow({model.yNames[j], std::to_string(quality.rows), Significant(quality.rmsee, kErrorDigits),
                  Significant(quality.rmsecv, kErrorDigits)});
  }
  return table.Text();
}

Json QualityJson(const YModelInfo& model) {
  Json list = Json::array();
  for (std::size_t j = 0; j < model.quality.size(); ++j) {
    const YQuality& quality = model.quality[j];
    list.push_back({{"name", model.yNames[j]},
                    {"rows", quality.rows},
                    {"rmsee", JsonNumber(quality.rmsee)},
                    {"rmsecv", JsonNumber(quality.rmsecv)}});
  }
  return list;
}

std::string Verdict(bool significant, bool kept) {
  return std::string(significant ? "significant" : "not significant") + (kept ? "" : ", not kept");
}

}  // namespace kalmia::analysis
