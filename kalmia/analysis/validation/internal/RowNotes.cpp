#include "kalmia/analysis/validation/internal/RowNotes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

constexpr double kDeviationOfMedian = 1.4826;  ///< standard deviation of normal numbers over the median of their sizes
constexpr double kFar = 10.0;                  ///< deviations
constexpr std::size_t kFewestErrors = 10;
constexpr int kFewestColumns = 5;
constexpr std::size_t kRowsNamed = 5;

/// The cells of a row as bytes.
std::string BytesOf(const NCDataMatrix<float>& x, const std::vector<std::vector<double>>& measuredY, std::size_t row) {
  const NCDataVector<float>& cells = x[static_cast<int>(row) + 1];
  std::string bytes(reinterpret_cast<const char*>(cells.begin()), static_cast<std::size_t>(cells.Size()) * sizeof(float));
  for (const std::vector<double>& column : measuredY) {
    bytes.append(reinterpret_cast<const char*>(&column[row]), sizeof(double));
  }
  return bytes;
}

bool HasY(const std::vector<std::vector<double>>& measuredY, std::size_t row) {
  return std::any_of(measuredY.begin(), measuredY.end(),
                     [row](const std::vector<double>& column) { return !std::isnan(column[row]); });
}

double MedianOf(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

std::vector<double> PresentSizes(const RealMatrix& squaredErrors, std::size_t column) {
  std::vector<double> sizes;
  for (std::size_t i = 0; i < squaredErrors.rows; ++i) {
    if (!std::isnan(squaredErrors(i, column))) sizes.push_back(std::sqrt(squaredErrors(i, column)));
  }
  return sizes;
}

}  // namespace

void NoteEqualRows(const NCDataMatrix<float>& x, const std::vector<std::vector<double>>& measuredY, const Folds& folds,
                   Notes* notes) {
  const std::vector<int>& groups = folds.groupOfRow.front();
  std::unordered_map<std::string, std::vector<std::size_t>> rowsOfBytes;
  if (x.SizeColumns() < kFewestColumns) return;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (HasY(measuredY, i)) rowsOfBytes[BytesOf(x, measuredY, i)].push_back(i);
  }
  std::size_t equal = 0;
  for (const auto& alike : rowsOfBytes) {
    const std::vector<std::size_t>& rows = alike.second;
    const bool areApart = std::any_of(rows.begin(), rows.end(), [&](std::size_t i) {
      return groups[i] != groups[rows.front()];
    });
    if (areApart) equal += rows.size();
  }
  if (equal == 0) return;
  notes->Add(Counted(equal, "row") + " of " + std::to_string(groups.size()) +
                 " have the same cells of X and Y as a row of another group, which foretells them while they are left "
                 "out: if they are copies, keep them together",
             Remedy::NameGroups);
}

void NoteFarErrors(const std::vector<std::string>& rowNames, const std::vector<std::string>& yNames,
                   const RealMatrix& squaredErrors, Notes* notes) {
  for (std::size_t j = 0; j < squaredErrors.columns; ++j) {
    const std::vector<double> sizes = PresentSizes(squaredErrors, j);
    if (sizes.size() < kFewestErrors) continue;
    const double far = kFar * kDeviationOfMedian * MedianOf(sizes);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < squaredErrors.rows; ++i) {
      if (far > 0.0 && std::sqrt(squaredErrors(i, j)) > far) names.push_back(rowNames[i]);
    }
    if (names.empty()) continue;
    notes->Add("far beyond the errors of the other rows, more than ten of their standard deviations, while left out, in " +
               OneLine(yNames[j]) + ": " + (names.size() == 1 ? "row " : "rows ") + Listed(names, kRowsNamed));
  }
}

}  // namespace kalmia::analysis
