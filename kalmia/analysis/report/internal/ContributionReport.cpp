#include "kalmia/analysis/report/internal/ContributionReport.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kPartDigits = 4;
constexpr int kSumDigits = 5;
using Align = TextTable::Align;

/// Places of the numbers, the largest by their absolute value first, columns of one size in their order.
std::vector<std::size_t> LargestFirst(const std::vector<double>& numbers) {
  std::vector<std::size_t> places;
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    if (!std::isnan(numbers[k])) places.push_back(k);
  }
  std::stable_sort(places.begin(), places.end(), [&numbers](std::size_t left, std::size_t right) {
    return std::fabs(numbers[left]) > std::fabs(numbers[right]);
  });
  return places;
}

/// Name and number of the column that comes in that place, or two empty cells.
void AddCells(const std::vector<std::string>& columns, const std::vector<double>& numbers,
              const std::vector<std::size_t>& places, std::size_t place, std::vector<std::string>* cells) {
  const bool has = place < places.size();
  cells->push_back(has ? columns[places[place]] : "");
  cells->push_back(has ? Significant(numbers[places[place]], kPartDigits) : "");
}

std::string SumsText(const RowContributions& row) {
  double parts = 0.0, squares = 0.0;
  for (const double part : row.t2Parts) parts += std::isnan(part) ? 0.0 : part;
  for (const double residual : row.residuals) squares += std::isnan(residual) ? 0.0 : residual * residual;
  const std::string t2 = std::isnan(row.t2) ? ""
                                            : "T2 " + Significant(row.t2, kSumDigits) + ", its parts sum to " +
                                                  Significant(parts, kSumDigits) + "; ";
  return t2 + "squared residuals sum to " + Significant(squares, kSumDigits) + ".\n";
}

std::string RowText(const RowContributions& row, const std::vector<std::string>& columns) {
  const std::vector<std::size_t> parts = LargestFirst(row.t2Parts), residuals = LargestFirst(row.residuals);
  const std::string heading = "\nContributions of row " + OneLine(row.row);
  const std::size_t most = std::max(parts.size(), residuals.size());
  if (most == 0) return heading + ": none.\n";
  const std::size_t shown = std::min(most, kContributionsShown);
  TextTable table;
  if (!parts.empty()) {
    table.AddColumn("column", Align::Left);
    table.AddColumn("part of T2", Align::Right);
  }
  table.AddColumn("column", Align::Left);
  table.AddColumn("residual", Align::Right);
  for (std::size_t place = 0; place < shown; ++place) {
    std::vector<std::string> cells;
    if (!parts.empty()) AddCells(columns, row.t2Parts, parts, place, &cells);
    AddCells(columns, row.residuals, residuals, place, &cells);
    table.AddRow(cells);
  }
  const std::string of = shown == most ? "" : ", the largest " + std::to_string(shown) + " of " +
                                                  Counted(most, "column");
  return heading + of + "\n\n" + table.Text() + SumsText(row);
}

}  // namespace

std::string ContributionText(const std::vector<RowContributions>& rows, const std::vector<std::string>& columns) {
  std::string text;
  for (const RowContributions& row : rows) text += RowText(row, columns);
  return text;
}

Json ContributionJson(const std::vector<RowContributions>& rows) {
  Json list = Json::array();
  for (const RowContributions& row : rows) {
    list.push_back(
        {{"row", row.row}, {"t2", JsonNumbers(row.t2Parts)}, {"residual", JsonNumbers(row.residuals)}});
  }
  return list;
}

}  // namespace kalmia::analysis
