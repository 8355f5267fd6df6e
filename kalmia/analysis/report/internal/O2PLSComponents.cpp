#include "kalmia/analysis/report/internal/O2PLSComponents.h"

#include <map>

#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

using Align = TextTable::Align;

/// The name of the kind for a reader, and for a program.
struct KindName {
  const char* text;
  const char* json;
};

KindName NameOf(O2PLSComponentRecord::Kind kind) {
  switch (kind) {
    case O2PLSComponentRecord::XUnique: return {"X-unique", "xUnique"};
    case O2PLSComponentRecord::YUnique: return {"Y-unique", "yUnique"};
    case O2PLSComponentRecord::Joint: break;
  }
  return {"joint", "joint"};
}

/// The block that the component's Q2 is of.
const char* PredictedBlock(const O2PLSComponentRecord& component) {
  return component.kind == O2PLSComponentRecord::YUnique ? "X" : "Y";
}

/// "Q2 gains the limit", "Q2 of enough columns gains it", "Q2 does not gain the limit", "too few rows to tell" or "not
/// judged", with ", not kept" behind it.
std::string Verdict(const O2PLSComponentRecord& component) {
  std::string text =
      SignificanceE::IsSignificant(component.verdict) ? "Q2 gains the limit" : "Q2 does not gain the limit";
  if (component.verdict == SignificanceE::R2) text = "Q2 of enough columns gains it";
  if (component.verdict == SignificanceE::N3) text = "too few rows to tell";
  if (component.verdict == SignificanceE::NA) text = "not judged";
  return text + (component.kept ? "" : ", not kept");
}

/// Whether cross-validation has looked at the components, all of them or none.
bool AreJudged(const std::vector<O2PLSComponentRecord>& components) {
  return components.empty() || components.front().IsJudged();
}

BlockShares SharesOf(const std::vector<O2PLSComponentRecord>& components, double O2PLSComponentRecord::* share,
                     O2PLSComponentRecord::Kind unique) {
  BlockShares shares;
  for (const O2PLSComponentRecord& component : components) {
    if (!component.kept) continue;
    if (component.kind == O2PLSComponentRecord::Joint) shares.joint += component.*share;
    if (component.kind == unique) shares.unique += component.*share;
  }
  return shares;
}

Json SharesOfBlockJson(const BlockShares& shares) {
  return {{"joint", JsonNumber(shares.joint)},
          {"unique", JsonNumber(shares.unique)},
          {"rest", JsonNumber(shares.Rest())}};
}

}  // namespace

std::vector<std::string> ComponentNames(const std::vector<O2PLSComponentRecord>& components) {
  std::map<O2PLSComponentRecord::Kind, int> numbers;
  std::vector<std::string> names;
  for (const O2PLSComponentRecord& component : components) {
    names.push_back(std::string(NameOf(component.kind).text) + " " + std::to_string(++numbers[component.kind]));
  }
  return names;
}

std::string ComponentText(const std::vector<O2PLSComponentRecord>& components) {
  const bool areJudged = AreJudged(components);
  TextTable table;
  table.AddColumn("component", Align::Left);
  for (const char* title : {"R2X", "R2Y"}) table.AddColumn(title, Align::Right);
  if (areJudged) {
    for (const char* title : {"Q2 of", "Q2"}) table.AddColumn(title, Align::Right);
    for (const char* title : {"code", "verdict"}) table.AddColumn(title, Align::Left);
  }
  const std::vector<std::string> names = ComponentNames(components);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const O2PLSComponentRecord& component = components[a];
    std::vector<std::string> cells = {names[a], ShareText(component.r2x), ShareText(component.r2y)};
    if (areJudged) {
      cells.insert(cells.end(), {PredictedBlock(component), ShareText(component.q2),
                                 SignificanceE::GetSignificance(component.verdict), Verdict(component)});
    }
    table.AddRow(cells);
  }
  return table.Text();
}

Json ComponentJson(const std::vector<O2PLSComponentRecord>& components) {
  const bool areJudged = AreJudged(components);
  Json list = Json::array();
  const std::vector<std::string> names = ComponentNames(components);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const O2PLSComponentRecord& component = components[a];
    Json record = {{"component", names[a]}, {"kind", NameOf(component.kind).json}};
    if (areJudged) {
      record["kept"] = component.kept;
      record["code"] = SignificanceE::GetSignificance(component.verdict);
      record["significant"] = SignificanceE::IsSignificant(component.verdict);
    }
    record["r2x"] = JsonNumber(component.r2x);
    record["r2y"] = JsonNumber(component.r2y);
    if (areJudged) {
      record["q2Of"] = PredictedBlock(component);
      record["q2"] = JsonNumber(component.q2);
      record["q2Limit"] = JsonNumber(component.q2Limit);
    }
    list.push_back(record);
  }
  return list;
}

BlockShares SharesOfX(const std::vector<O2PLSComponentRecord>& components) {
  return SharesOf(components, &O2PLSComponentRecord::r2x, O2PLSComponentRecord::XUnique);
}

BlockShares SharesOfY(const std::vector<O2PLSComponentRecord>& components) {
  return SharesOf(components, &O2PLSComponentRecord::r2y, O2PLSComponentRecord::YUnique);
}

std::string SharesText(const std::vector<O2PLSComponentRecord>& components) {
  TextTable table;
  table.AddColumn("variation of", Align::Left);
  for (const char* title : {"joint", "unique", "rest"}) table.AddColumn(title, Align::Right);
  const BlockShares x = SharesOfX(components);
  const BlockShares y = SharesOfY(components);
  table.AddRow({"X", ShareText(x.joint), ShareText(x.unique), ShareText(x.Rest())});
  table.AddRow({"Y", ShareText(y.joint), ShareText(y.unique), ShareText(y.Rest())});
  return table.Text();
}

Json SharesJson(const std::vector<O2PLSComponentRecord>& components) {
  return {{"x", SharesOfBlockJson(SharesOfX(components))}, {"y", SharesOfBlockJson(SharesOfY(components))}};
}

}  // namespace kalmia::analysis
