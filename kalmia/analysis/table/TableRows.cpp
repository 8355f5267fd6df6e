#include "kalmia/analysis/table/TableRows.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/NearestName.h"

namespace kalmia::analysis {

namespace {

/// The row of that number, from 0; nothing for a word that is none of a row.
std::optional<int> RowOfNumber(const Table& table, const std::string& word) {
  int number = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  if (error != std::errc() || stop != end || number < 1 || number > table.Rows()) return std::nullopt;
  return number - 1;
}

int RequireRow(const Table& table, const std::vector<std::string>& names, const std::string& word) {
  const auto found = std::find(names.begin(), names.end(), word);
  if (found != names.end()) {
    const auto again = std::find(found + 1, names.end(), word);
    const auto first = static_cast<int>(found - names.begin());
    if (again == names.end()) return first;
    Refuse(table, "several rows are called " + Quoted(word) + ", such as " + table.RowPlace(first) + " and " +
                      table.RowPlace(static_cast<int>(again - names.begin())),
           {first + 1, {}, word});
  }
  if (const std::optional<int> row = RowOfNumber(table, word)) return *row;
  Refuse(table, "there is no row " + Quoted(word) + DidYouMean(word, names) +
                    "; a row is called by its name, or by its number from 1 to " + std::to_string(table.Rows()),
         AtWord(word));
}

}  // namespace

std::vector<int> RequireRows(const Table& table, const std::vector<std::string>& names,
                             const std::vector<std::string>& words) {
  std::vector<int> rows;
  for (const std::string& word : words) {
    const int row = RequireRow(table, names, word);
    if (std::find(rows.begin(), rows.end(), row) == rows.end()) rows.push_back(row);
  }
  return rows;
}

}  // namespace kalmia::analysis
