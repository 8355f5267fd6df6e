#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/model/RealMatrix.h"

/// Names under a key.
inline kalmia::analysis::SharedNames NamesUnder(const std::string& key, std::vector<std::string> names) {
  return std::make_shared<kalmia::analysis::NameList>(kalmia::analysis::NameList{key, std::move(names)});
}

/// A figure with every type of mark and every look in two panels, of numbers and of categories.
inline kalmia::analysis::Figure FigureOfAllMarks() {
  using namespace kalmia::analysis;
  using Type = FigureMark::Type;
  const SharedNames rows = NamesUnder("rows", {"a", "b", "c", "d"});
  Figure figure;
  figure.name = "all";
  figure.kind = Figure::Kind::Rows;
  figure.title = "All marks & <looks>";
  figure.alt = "4 rows.";
  figure.notes = {"a note"};
  figure.classNames = {"first", "second", "third"};
  FigurePanel numbers;
  numbers.x = {"t1", FigureAxis::Kind::Number, -3.0, 3.0, false, {}, nullptr};
  numbers.y.label = "t2";
  FigureMark points;
  points.x = {-2, -1, 1, 2};
  points.y = {1, -1, 0.5, 2};
  points.names = rows;
  points.labels = true;
  points.selected = {3};
  points.low = {0.5, -1.5, 0, 1};
  points.high = {1.5, -0.5, 1, 3};
  numbers.marks.push_back(points);
  for (const FigureLook look : {FigureLook::Second, FigureLook::Faint, FigureLook::Plain, FigureLook::Centre,
                                FigureLook::Limit, FigureLook::Signal, FigureLook::Ring}) {
    FigureMark line;
    line.type = Type::Line;
    line.look = look;
    line.name = "line";
    line.x = {-2, -1, kNotANumber, 1, 2};
    line.y = {0, 1, 0, 1, static_cast<double>(look)};
    numbers.marks.push_back(line);
    line.type = Type::Points;
    numbers.marks.push_back(line);
  }
  FigureMark rule;
  rule.type = Type::Rule;
  rule.look = FigureLook::Limit;
  rule.name = "limit 95 %";
  rule.y = {2.5};
  numbers.marks.push_back(rule);
  rule.y.clear();
  rule.x = {1.5};
  numbers.marks.push_back(rule);
  FigurePanel categories;
  categories.x = {"column", FigureAxis::Kind::Category, {}, {}, false, {}, rows};
  categories.y.label = "share";
  FigureMark bars;
  bars.type = Type::Bars;
  bars.look = FigureLook::Class;
  bars.x = {0, 1, 2, 3};
  bars.y = {1, 2, 3, -1};
  bars.base = {0, 1, 2, 0};
  bars.classes = {0, 1, 2, -1};
  categories.marks.push_back(bars);
  FigureMark cells;
  cells.type = Type::Area;
  cells.x = {0, 1};
  cells.y = {0, 1};
  cells.value = {0.25, 1};
  categories.marks.push_back(cells);
  FigureMark band;
  band.type = Type::Area;
  band.x = {0, 3};
  band.y = {0.5, 0.5};
  band.low = {0, 0};
  band.high = {1, 1};
  categories.marks.push_back(band);
  FigureMark texts;
  texts.type = Type::Text;
  texts.x = {0};
  texts.y = {0};
  texts.names = NamesUnder("", {"17"});
  categories.marks.push_back(texts);
  figure.panels = {numbers, categories};
  return figure;
}
