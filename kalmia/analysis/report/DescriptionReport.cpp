#include "kalmia/analysis/report/DescriptionReport.h"

#include <cstddef>
#include <vector>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 6;

std::string NamedColumns(const std::string& kind, const std::vector<std::string>& names) {
  return names.empty() ? "" : kind + ": " + Listed(names) + "\n";
}

/// "'n/a' in row 3 (line 4), 'x' in row 7 (line 8) and 5 more".
std::string WordsText(const ColumnDescription& column) {
  std::vector<std::string> words;
  for (const StrayWord& word : column.firstWords) {
    const std::string line = word.line > 0 ? " (line " + std::to_string(word.line) + ")" : "";
    words.push_back(Quoted(word.text) + " in row " + std::to_string(word.row) + line);
  }
  const std::size_t others = static_cast<std::size_t>(column.words) - words.size();
  if (others > 0) words.push_back(std::to_string(others) + " more");
  return Listed(words);
}

Json WordsJson(const ColumnDescription& column) {
  Json words = Json::array();
  for (const StrayWord& word : column.firstWords) {
    words.push_back({{"word", word.text}, {"row", word.row}, {"line", word.line}});
  }
  return words;
}

}  // namespace

std::string DescriptionText(const Description& description) {
  const bool hasWords = description.HasWords();
  TextTable text;
  text.AddColumn("column", TextTable::Align::Left);
  std::vector<const char*> titles = {"n", "missing", "mean", "sd", "min", "max", "skewness"};
  if (hasWords) titles.insert(titles.begin() + 2, "words");
  for (const char* title : titles) text.AddColumn(title, TextTable::Align::Right);
  for (const ColumnDescription& column : description.columns) {
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
  std::string lists = NamedColumns("Text columns", description.textColumns) +
                      NamedColumns("Constant columns", description.Constant()) +
                      NamedColumns("Empty columns", description.Empty());
  for (const ColumnDescription& column : description.columns) {
    if (column.words > 0)
      lists += "Words among the numbers of " + OneLine(column.name) + ": " + WordsText(column) + "\n";
  }
  if (!lists.empty()) lists.insert(0, "\n");
  return description.table + ": " + Counted(static_cast<std::size_t>(description.rows), "row") + ", " +
         Counted(description.allColumns, "column") + "\n\n" +
         (description.columns.empty() ? "" : text.Text()) + lists;
}

std::string DescriptionJson(const Description& description) {
  Json json = JsonHeader("kalmia-describe");
  json["table"] = description.table;
  json["rows"] = description.rows;
  Json columns = Json::array();
  for (const ColumnDescription& column : description.columns) {
    columns.push_back({{"name", column.name},
                       {"n", column.moments.n},
                       {"missing", column.missing},
                       {"words", column.words},
                       {"firstWords", WordsJson(column)},
                       {"mean", JsonNumber(column.moments.mean)},
                       {"standardDeviation", JsonNumber(column.moments.standardDeviation)},
                       {"min", JsonNumber(column.moments.min)},
                       {"max", JsonNumber(column.moments.max)},
                       {"skewness", JsonNumber(column.moments.skewness)}});
  }
  json["columns"] = columns;
  json["textColumns"] = description.textColumns;
  json["constantColumns"] = description.Constant();
  json["emptyColumns"] = description.Empty();
  json["notes"] = description.notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
