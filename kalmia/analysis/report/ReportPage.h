#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"

namespace kalmia::analysis {

/// A column of the table of rows: texts, or numbers where there are no texts.
struct ReportColumn {
  std::string name;
  std::vector<std::string> texts;
  std::vector<double> numbers;  ///< not a number: an empty cell
};

/// One of the components that a figure can show.
struct FigureComponent {
  std::string label;
  std::vector<double> values;      ///< an item each
  double low = 0.0, high = 0.0;    ///< where the limit of the items begins and ends along it; alike: there is none
};

/// What a figure can show along its axes in place of what it shows: points two components, lines one each.
struct FigureComponents {
  std::string figure;  ///< its name
  std::size_t x = 0, y = 1;  ///< which it shows, from 0
  std::vector<FigureComponent> list;
};

/// A page that shows a model, as plain data. Texts are what they are, never markup.
struct ReportPage {
  std::string title;
  std::vector<std::pair<std::string, std::string>> facts;  ///< what a number is, and the number
  std::vector<std::string> summary;  ///< a paragraph each
  std::string text;                  ///< the report in lines of one width
  std::vector<std::string> notes;    ///< what was left out and why, what to know
  std::string command;               ///< that repeats it; empty: it is not known
  std::vector<Figure> figures;       ///< rows have names with the key "rows"
  std::vector<FigureComponents> components;
  std::vector<std::string> rowNames;  ///< of the table
  std::vector<ReportColumn> columns;  ///< as long as rowNames each
};

}  // namespace kalmia::analysis
