#include "kalmia/analysis/table/Table.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "kalmia/analysis/table/internal/CsvDialect.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/TextParts.h"

namespace kalmia::analysis {

namespace {

constexpr auto kMostRows = static_cast<std::size_t>(std::numeric_limits<int>::max());
constexpr auto kMostColumns = kMostRows / 2;
constexpr double kShareOfRows = 0.1;        ///< of the time, to find where they begin
constexpr double kShareOfFirstReading = 0.9;  ///< of the rows, where they may have to be read again
constexpr std::size_t kSampleRows = 64;       ///< that the decimal mark is guessed from, or fewer
constexpr std::size_t kSampleBytes = std::size_t{1} << 20U;  ///< where they are longer than this
constexpr std::size_t kNamesAtOnce = 4096;  ///< between two questions whether to stop

[[noreturn]] void Refuse(const std::string& message) { throw BadData(message); }

/// Moves the bar onto a share of the range.
Proceed ShareOf(double from, double to, NCProgress* progress) {
  return [=](double share) {
    if (progress == nullptr || progress->SetValue(static_cast<float>(from + (to - from) * share))) return;
    throw Stopped("stopped");
  };
}

bool IsDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Whether the last field may be the end of a number and the one before it its beginning: "1" and "5" of 1,5.
bool MayBeNumbersCutAtCommas(const std::vector<std::string>& fields) {
  const std::string& before = fields[fields.size() - 2];
  return IsDigits(fields.back()) && IsDigits(before.substr(before.find_first_not_of("+-") == 1 ? 1 : 0));
}

std::vector<std::string> ContentsOf(std::string_view text, const std::vector<FieldPlace>& fields) {
  std::vector<std::string> contents;
  contents.reserve(fields.size());
  for (const FieldPlace& field : fields) contents.push_back(ContentOf(text, field));
  return contents;
}

}  // namespace

Table::Table(TextBuffer text, const std::string& name, const ReadOptions& options, NCProgress* progress,
                   std::size_t bytesAtOnce)
    : name_(name), text_(std::move(text)), format_(DetectFormat(Text(), name, options)) {
  for (const std::string& word : options.missingWords) cellFormat_.missingWords.emplace_back(WithoutBlanks(word));
  const CsvPlace headerEnd = ReadHeader(ShareOf(0.0, 0.0, progress));
  rows_ = FindRows(Text(), format_, headerEnd, bytesAtOnce, ShareOf(0.0, kShareOfRows, progress));
  if (rows_.Size() == 0) Refuse(name_ + " has a header but no data rows");
  if (rows_.Size() > kMostRows) Refuse(name_ + " has more than " + std::to_string(kMostRows) + " rows");
  ReadRows(bytesAtOnce, ShareOf(kShareOfRows, 1.0, progress));
}

int Table::Find(const std::string& columnName) const {
  const auto found = columnOf_.find(columnName);
  return found == columnOf_.end() ? -1 : found->second;
}

std::vector<std::string> Table::RowTexts(int row) const {
  CsvPlace place{rows_.Begin(static_cast<std::size_t>(row)), 0};
  std::vector<FieldPlace> fields;
  PassRecord(Text(), format_, &place, &fields);
  return ContentsOf(Text(), fields);
}

std::string Table::Cell(int row, int column) const {
  std::size_t at = rows_.Begin(static_cast<std::size_t>(row));
  FieldPlace field;
  for (int c = 0; c <= column; ++c, at = field.next + 1) FindField(Text(), at, format_, &field);
  return ContentOf(Text(), field);
}

std::vector<std::string> Table::ColumnTexts(int column) const {
  std::vector<std::string> texts;
  texts.reserve(rows_.Size());
  for (int row = 0; row < Rows(); ++row) texts.push_back(Cell(row, column));
  return texts;
}

std::string Table::RowPlace(int row) const {
  return "row " + std::to_string(row + 1) + " (line " + std::to_string(Line(row)) + ")";
}

CsvPlace Table::ReadHeader(const Proceed& proceed) {
  CsvPlace place{format_.begin, format_.firstLine};
  FindRecord(Text(), format_, &place);
  const std::size_t line = place.line;
  std::vector<FieldPlace> fields;
  if (!PassRecord(Text(), format_, &place, &fields)) Refuse(name_ + ": " + UnpairedMarks(line));
  if (fields.size() > kMostColumns) Refuse(name_ + ": too many columns");
  columnNames_ = ContentsOf(Text(), fields);
  for (std::size_t c = 0; c < columnNames_.size(); ++c) {
    if (c % kNamesAtOnce == 0) proceed(0.0);
    if (columnNames_[c].empty()) columnNames_[c] = "column " + std::to_string(c + 1);
    const auto [first, isNew] = columnOf_.emplace(columnNames_[c], static_cast<int>(c));
    if (!isNew) {
      Refuse(name_ + ": columns " + std::to_string(first->second + 1) + " and " + std::to_string(c + 1) +
             " have the same name, " + Quoted(columnNames_[c]));
    }
  }
  const std::size_t end = fields.back().next;
  return {end, end == Text().size() ? place.line : place.line - 1};
}

std::size_t Table::RowsInSample() const {
  const std::size_t most = std::min(rows_.Size(), kSampleRows);
  std::size_t count = 1;
  while (count < most && rows_.Begin(count) - rows_.Begin(0) < kSampleBytes) ++count;
  return count;
}

void Table::ReadRows(std::size_t bytesAtOnce, const Proceed& proceed) {
  const std::size_t bytesInARow = std::max<std::size_t>(Text().size() / rows_.Size(), 1);
  const std::size_t rowsAtOnce = std::max<std::size_t>(bytesAtOnce / bytesInARow, 1);
  const auto read = [&](std::size_t rows, double from, double to) {
    const auto report = [&](double share) { proceed(from + (to - from) * share); };
    CsvCells cells = ReadCells(Text(), format_, rows_, rows, columnNames_.size(), cellFormat_, rowsAtOnce, report);
    if (cells.badRow) RefuseRow(*cells.badRow);
    cells_ = std::move(cells);
    return cells_.commas > cells_.points;
  };
  if (format_.separator == ',') {
    read(rows_.Size(), 0.0, 1.0);
    return;
  }
  const std::size_t sample = RowsInSample();  // tells the mark, most of the time
  if (read(sample, 0.0, 0.0)) {
    cellFormat_.decimalComma = true;
  } else if (sample == rows_.Size()) {
    proceed(1.0);
    return;
  }
  const bool hasCommas = read(rows_.Size(), 0.0, kShareOfFirstReading);
  if (hasCommas != cellFormat_.decimalComma) {  // the first rows were not like the others
    cellFormat_.decimalComma = hasCommas;
    read(rows_.Size(), kShareOfFirstReading, 1.0);
  }
  proceed(1.0);
}

void Table::RefuseRow(std::size_t row) const {
  CsvPlace place{rows_.Begin(row), 0};
  std::vector<FieldPlace> places;
  if (!PassRecord(Text(), format_, &place, &places)) Refuse(name_ + ": " + UnpairedMarks(rows_.Line(row)));
  const std::vector<std::string> fields = ContentsOf(Text(), places);
  const bool tooMany = format_.separator == ',' && fields.size() > columnNames_.size();
  std::string hint;
  Remedy remedy = Remedy::None;
  if (tooMany && MayBeNumbersCutAtCommas(fields)) {
    hint = "; if the numbers have decimal commas, separate the columns by ; or tabs";
  } else if (columnNames_.size() == 1 && fields.size() > 1) {
    hint = "; if there are lines above the header";
    remedy = Remedy::LeaveOutLinesAbove;
  }
  throw BadData(name_ + ": " + RowPlace(static_cast<int>(row)) + " has " + Counted(fields.size(), "field") +
                    ", the header has " + std::to_string(columnNames_.size()) + hint,
                remedy, {static_cast<int>(row) + 1});
}

}  // namespace kalmia::analysis
