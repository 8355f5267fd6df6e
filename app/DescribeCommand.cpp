#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>

#include "app/ColumnMoments.h"
#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"
#include "app/Json.h"
#include "app/Numbers.h"
#include "app/ReadTable.h"
#include "app/SharedWork.h"
#include "app/Skewness.h"
#include "app/TableColumns.h"
#include "app/TextTable.h"

namespace kalmia::app {

namespace {

constexpr int kDigits = 6;
constexpr std::chrono::milliseconds kShort{400};  ///< a command within this time shows no bar

/// A cell among numbers that is none: text, or infinite, or beyond single precision.
struct StrayWord {
  std::string text;  ///< its beginning
  int row = 0;  ///< from 1
  std::size_t line = 0;
};

/// What is told of one column.
struct ColumnSummary {
  std::string name;
  int missing = 0;
  int words = 0;
  std::vector<StrayWord> firstWords;
  ColumnMoments moments;

  bool IsConstant() const { return moments.n > 0 && moments.min == moments.max; }
  bool IsEmpty() const { return moments.n == 0 && words == 0; }
};

struct TableSummary {
  std::vector<ColumnSummary> columns;
  std::vector<std::string> textColumns;

  template <class Condition>
  std::vector<std::string> Names(Condition condition) const {
    std::vector<std::string> names;
    for (const ColumnSummary& column : columns) {
      if (condition(column)) names.push_back(column.name);
    }
    return names;
  }
  std::vector<std::string> Constant() const {
    return Names([](const ColumnSummary& column) { return column.IsConstant(); });
  }
  std::vector<std::string> Empty() const {
    return Names([](const ColumnSummary& column) { return column.IsEmpty(); });
  }
  std::vector<std::string> WithWords() const {
    return Names([](const ColumnSummary& column) { return column.words > 0; });
  }
};

/// Adds the first words of the columns. Each row that holds some of them is gone through once.
void NameWords(const CsvTable& table, const std::vector<int>& columns, std::vector<ColumnSummary>* summaries) {
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
      StopIfInterrupted();
      texts = table.RowTexts(place.row);
      rowRead = place.row;
    }
    const std::string& text = texts[static_cast<std::size_t>(columns[place.column])];
    (*summaries)[place.column].firstWords.push_back({Beginning(text), place.row + 1, table.Line(place.row)});
  }
}

/// Adds the moments of the columns. How many cells were measured as -99.
int SummariseNumbers(const CsvTable& table, const std::vector<int>& columns, ProgressLine* line,
                     std::vector<ColumnSummary>* summaries) {
  const auto proceed = [&](double share) {
    StopIfInterrupted();
    line->Show("describing " + Counted(columns.size(), "column"), share);
  };
  std::atomic<int> moved{0};
  ShareWork(columns.size(), proceed,
            [&](std::size_t k) {
              int movedHere = 0;
              const std::vector<float> cells = NumbersBesideStrays(table, columns[k], &movedHere);
              ColumnMoments& moments = (*summaries)[k].moments;
              moments = MomentsOf(cells);
              if (!std::isnan(moments.skewness)) {
                moments.skewness =
                    TellableSkewness(cells, moments.mean, moments.standardDeviation, moments.skewness);
              }
              moved += movedHere;
            });
  return moved;
}

TableSummary SummariseTable(const CsvTable& table, ProgressLine* line, Notes* notes) {
  TableSummary summary;
  std::vector<int> columns;
  for (int column = 0; column < table.Columns(); ++column) {
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    const CsvColumn& cells = table.Column(column);
    if (cells.kind == ColumnKind::Texts) {
      summary.textColumns.push_back(name);
      continue;
    }
    columns.push_back(column);
    summary.columns.emplace_back();
    summary.columns.back().name = name;
    summary.columns.back().missing = cells.missing;
    summary.columns.back().words = cells.strays;
  }
  NameWords(table, columns, &summary.columns);
  NoteMovedCells(SummariseNumbers(table, columns, line, &summary.columns), notes);
  if (table.Columns() == 1 && !summary.textColumns.empty()) {
    notes->Add("the table has one column only, of text: columns are separated by commas, ; or tabs");
  }
  if (summary.Empty().size() == static_cast<std::size_t>(table.Columns())) {
    throw BadData(table.Name() + ": every cell is missing");
  }
  return summary;
}

std::string NamedColumns(const std::string& kind, const std::vector<std::string>& names) {
  return names.empty() ? "" : kind + ": " + Listed(names) + "\n";
}

/// "'n/a' in row 3 (line 4), 'x' in row 7 (line 8) and 5 more".
std::string WordsText(const ColumnSummary& column) {
  std::vector<std::string> words;
  for (const StrayWord& word : column.firstWords) {
    words.push_back(Quoted(word.text) + " in row " + std::to_string(word.row) + " (line " + std::to_string(word.line) +
                    ")");
  }
  const std::size_t others = static_cast<std::size_t>(column.words) - words.size();
  if (others > 0) words.push_back(std::to_string(others) + " more");
  return Listed(words);
}

std::string DescribeText(const CsvTable& table, const TableSummary& summary) {
  const bool hasWords = !summary.WithWords().empty();
  TextTable text;
  text.AddColumn("column", TextTable::Align::Left);
  std::vector<const char*> titles = {"n", "missing", "mean", "sd", "min", "max", "skewness"};
  if (hasWords) titles.insert(titles.begin() + 2, "words");
  for (const char* title : titles) text.AddColumn(title, TextTable::Align::Right);
  for (const ColumnSummary& column : summary.columns) {
    std::vector<std::string> row = {column.name,
                                    std::to_string(column.moments.n),
                                    std::to_string(column.missing),
                                    Significant(column.moments.mean, kDigits),
                                    Significant(column.moments.standardDeviation, kDigits),
                                    Shortest(column.moments.min, "-"),
                                    Shortest(column.moments.max, "-"),
                                    Significant(column.moments.skewness, kDigits)};
    if (hasWords) row.insert(row.begin() + 3, std::to_string(column.words));
    text.AddRow(row);
  }
  std::string lists = NamedColumns("Text columns", summary.textColumns) +
                      NamedColumns("Constant columns", summary.Constant()) +
                      NamedColumns("Empty columns", summary.Empty());
  for (const ColumnSummary& column : summary.columns) {
    if (column.words > 0)
      lists += "Words among the numbers of " + OneLine(column.name) + ": " + WordsText(column) + "\n";
  }
  if (!lists.empty()) lists.insert(0, "\n");
  return table.Name() + ": " + Counted(static_cast<std::size_t>(table.Rows()), "row") + ", " +
         Counted(static_cast<std::size_t>(table.Columns()), "column") + "\n\n" +
         (summary.columns.empty() ? "" : text.Text()) + lists;
}

Json WordsJson(const ColumnSummary& column) {
  Json words = Json::array();
  for (const StrayWord& word : column.firstWords) {
    words.push_back({{"word", word.text}, {"row", word.row}, {"line", word.line}});
  }
  return words;
}

std::string DescribeJson(const CsvTable& table, const TableSummary& summary, const Notes& notes) {
  Json json = JsonHeader("kalmia-describe");
  json["table"] = table.Name();
  json["rows"] = table.Rows();
  Json columns = Json::array();
  for (const ColumnSummary& column : summary.columns) {
    columns.push_back({{"name", column.name},
                       {"n", column.moments.n},
                       {"missing", column.missing},
                       {"words", column.words},
                       {"firstWords", WordsJson(column)},
                       {"mean", JsonNumber(column.moments.mean)},
                       {"standardDeviation", JsonNumber(column.moments.standardDeviation)},
                       {"min", JsonNumber(AsWritten(column.moments.min))},
                       {"max", JsonNumber(AsWritten(column.moments.max))},
                       {"skewness", JsonNumber(column.moments.skewness)}});
  }
  json["columns"] = columns;
  json["textColumns"] = summary.textColumns;
  json["constantColumns"] = summary.Constant();
  json["emptyColumns"] = summary.Empty();
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string RunCommand(const DescribeOptions& options, Notes* notes) {
  ProgressLine line(kShort);
  const CsvTable table = ReadTable(options.table, options.reading);
  const TableSummary summary = SummariseTable(table, &line, notes);
  return options.json ? DescribeJson(table, summary, *notes) : DescribeText(table, summary);
}

}  // namespace kalmia::app
