#include "kalmia/analysis/figure/FigureJson.h"

#include "kalmia/analysis/figure/internal/FigureFields.h"

namespace kalmia::analysis {

namespace {

const char* WordOf(Figure::Kind kind) {
  switch (kind) {
    case Figure::Kind::Rows: return "rows";
    case Figure::Kind::Columns: return "columns";
    case Figure::Kind::Components: return "components";
    case Figure::Kind::Other: break;
  }
  return "other";
}

const char* WordOf(FigureMark::Type type) {
  switch (type) {
    case FigureMark::Type::Points: return "points";
    case FigureMark::Type::Line: return "line";
    case FigureMark::Type::Bars: return "bars";
    case FigureMark::Type::Area: return "area";
    case FigureMark::Type::Rule: return "rule";
    case FigureMark::Type::Text: break;
  }
  return "text";
}

const char* WordOf(FigureLook look) {
  switch (look) {
    case FigureLook::Data: return "data";
    case FigureLook::Second: return "second";
    case FigureLook::Faint: return "faint";
    case FigureLook::Plain: return "plain";
    case FigureLook::Centre: return "centre";
    case FigureLook::Limit: return "limit";
    case FigureLook::Signal: return "signal";
    case FigureLook::Ring: return "ring";
    case FigureLook::Class: break;
  }
  return "class";
}

/// The key of the names, which `lists` then has, or the names themselves; null without any.
Json NamesJson(const SharedNames& names, Json* lists) {
  if (!names) return nullptr;
  if (names->key.empty()) return names->names;
  if (!lists->contains(names->key)) (*lists)[names->key] = names->names;
  return names->key;
}

Json NumberOrNull(const std::optional<double>& number) { return number ? JsonNumber(*number) : Json(nullptr); }

Json AxisJson(const FigureAxis& axis, Json* lists) {
  const bool isCategory = axis.kind == FigureAxis::Kind::Category;
  Json json = {{"label", axis.label}, {"kind", isCategory ? "category" : "number"}};
  if (axis.low) json["low"] = NumberOrNull(axis.low);
  if (axis.high) json["high"] = NumberOrNull(axis.high);
  if (axis.whole) json["whole"] = true;
  if (!axis.ticks.empty()) {
    json["ticks"] = Json::array();
    for (const FigureTick& tick : axis.ticks) json["ticks"].push_back({{"at", tick.at}, {"label", tick.label}});
  }
  if (isCategory) json["categories"] = NamesJson(axis.categories, lists);
  return json;
}

void AddNumbers(const char* name, const std::vector<double>& numbers, Json* json) {
  if (!numbers.empty()) (*json)[name] = JsonNumbers(numbers);
}

void AddPlaces(const char* name, const std::vector<int>& places, Json* json) {
  if (!places.empty()) (*json)[name] = places;
}

Json MarkJson(const FigureMark& mark, Json* lists) {
  Json json = {{"type", WordOf(mark.type)}, {"look", WordOf(mark.look)}};
  if (!mark.name.empty()) json["name"] = mark.name;
  json["x"] = JsonNumbers(mark.x);
  json["y"] = JsonNumbers(mark.y);
  AddNumbers("low", mark.low, &json);
  AddNumbers("high", mark.high, &json);
  AddNumbers("base", mark.base, &json);
  AddNumbers("value", mark.value, &json);
  if (mark.type == FigureMark::Type::Bars) json["width"] = mark.width;
  if (mark.names) json["names"] = NamesJson(mark.names, lists);
  AddPlaces("index", mark.index, &json);
  AddPlaces("class", mark.classes, &json);
  AddPlaces("selected", mark.selected, &json);
  if (mark.labels) json["labels"] = true;
  return json;
}

/// The fields x, y and marks.
void AddPanel(const FigurePanel& panel, Json* json, Json* lists) {
  (*json)["x"] = AxisJson(panel.x, lists);
  (*json)["y"] = AxisJson(panel.y, lists);
  (*json)["marks"] = Json::array();
  for (const FigureMark& mark : panel.marks) (*json)["marks"].push_back(MarkJson(mark, lists));
}

Json OneFigureJson(const Figure& figure, Json* lists) {
  Json json = {{"name", figure.name}, {"kind", WordOf(figure.kind)}, {"title", figure.title}};
  AddPanel(figure.panels.front(), &json, lists);
  json["below"] = Json::array();
  for (std::size_t i = 1; i < figure.panels.size(); ++i) {
    Json panel = Json::object();
    AddPanel(figure.panels[i], &panel, lists);
    json["below"].push_back(panel);
  }
  json["classes"] = figure.classNames;
  json["alt"] = figure.alt;
  json["notes"] = figure.notes;
  return json;
}

}  // namespace

Json FigureFields(const std::vector<Figure>& figures) {
  Json json = JsonHeader("kalmia-figure"), lists = Json::object(), list = Json::array();
  for (const Figure& figure : figures) list.push_back(OneFigureJson(figure, &lists));
  json["names"] = lists;
  json["figures"] = list;
  return json;
}

std::string JsonWithFigures(const std::string& json, const std::vector<Figure>& figures) {
  Json output = Json::parse(json);
  output["figures"] = FigureFields(figures);
  return JsonText(output);
}

std::string FigureJson(const std::vector<Figure>& figures) { return JsonText(FigureFields(figures)); }

}  // namespace kalmia::analysis
