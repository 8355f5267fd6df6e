#include "kalmia/analysis/text/internal/TextTable.h"

#include <algorithm>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

void TextTable::AddColumn(const std::string& title, Align align) {
  aligns_.push_back(align);
  rows_.front().push_back(title);
}

void TextTable::AddRow(const std::vector<std::string>& cells) {
  rows_.emplace_back();
  for (const std::string& cell : cells) rows_.back().push_back(OneLine(cell));
}

std::string TextTable::Text() const {
  std::vector<std::size_t> widths(aligns_.size(), 0);
  for (const auto& row : rows_) {
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], DisplayWidth(row[c]));
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c) {
      const std::string blanks(widths[c] - DisplayWidth(row[c]), ' ');
      line += "  " + (aligns_[c] == Align::Right ? blanks + row[c] : row[c] + blanks);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace kalmia::analysis
