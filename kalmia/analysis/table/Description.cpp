#include "kalmia/analysis/table/Description.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/Skewness.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

/// Adds the first words of the columns. Each row that holds some of them is gone through once.
void NameWords(const Table& table, const std::vector<int>& columns, WorkProgress* work,
               std::vector<ColumnDescription>* described) {
  struct Place {
    int row;
    std::size_t column;
  };
  std::vector<Place> places;
  for (std::size_t k = 0; k < columns.size(); ++k) {
    for (const int row : table.Column(columns[k]).firstStrays) places.push_back({row, k});
  }
  std::stable_sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.row < b.row; });
  int rowRead = -1;
  std::vector<std::string> texts;
  for (const Place& place : places) {
    if (place.row != rowRead) {
      work->Ask();
      texts = table.RowTexts(place.row);
      rowRead = place.row;
    }
    const std::string& text = texts[static_cast<std::size_t>(columns[place.column])];
    (*described)[place.column].firstWords.push_back({Beginning(text), place.row + 1, table.Line(place.row)});
  }
}

/// Adds the moments of the columns.
void DescribeNumbers(const Table& table, const std::vector<int>& columns, WorkProgress* work,
                     std::vector<ColumnDescription>* described) {
  work->Begin("describing " + Counted(columns.size(), "column"));
  ShareWork(columns.size(), [work](double share) { work->MoveTo(share); },
            [&](std::size_t k) {
              const double* const cells = table.Column(columns[k]).numbers;
              const auto rows = static_cast<std::size_t>(table.Rows());
              ColumnMoments& moments = (*described)[k].moments;
              moments = MomentsOf(cells, rows);
              if (!std::isnan(moments.skewness)) moments.skewness = TellableSkewness(cells, rows, moments);
            });
}

template <class Condition>
std::vector<std::string> NamesWhere(const std::vector<ColumnDescription>& columns, Condition condition) {
  std::vector<std::string> names;
  for (const ColumnDescription& column : columns) {
    if (condition(column)) names.push_back(column.name);
  }
  return names;
}

}  // namespace

std::vector<std::string> Description::Constant() const {
  return NamesWhere(columns, [](const ColumnDescription& column) { return column.IsConstant(); });
}

std::vector<std::string> Description::Empty() const {
  return NamesWhere(columns, [](const ColumnDescription& column) { return column.IsEmpty(); });
}

bool Description::HasWords() const {
  return std::any_of(columns.begin(), columns.end(), [](const ColumnDescription& column) { return column.words > 0; });
}

Description Describe(const Table& table, NCProgress* progress) {
  Description description;
  description.table = table.Name();
  description.rows = table.Rows();
  description.allColumns = table.ColumnNames().size();
  std::vector<int> columns;
  for (int column = 0; column < table.Columns(); ++column) {
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    const CsvColumn& cells = table.Column(column);
    if (cells.kind == ColumnKind::Texts) {
      description.textColumns.push_back(name);
      continue;
    }
    columns.push_back(column);
    description.columns.emplace_back();
    description.columns.back().name = name;
    description.columns.back().missing = cells.missing;
    description.columns.back().words = cells.strays;
  }
  WorkProgress work(progress);
  NameWords(table, columns, &work, &description.columns);
  DescribeNumbers(table, columns, &work, &description.columns);
  if (table.Columns() == 1 && !description.textColumns.empty()) {
    description.notes.Add("the table has one column only, of text: columns are separated by commas, ; or tabs");
  }
  if (description.Empty().size() == description.allColumns) throw BadData(table.Name() + ": every cell is missing");
  return description;
}

}  // namespace kalmia::analysis
