#include "kalmia/analysis/table/Table.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/table/internal/CsvCells.h"
#include "kalmia/analysis/table/internal/CsvDialect.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/table/internal/CsvRows.h"
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

[[noreturn]] void Refuse(const std::string& message, FailurePlace place = {}) {
  throw BadData(message, std::move(place));
}

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

std::size_t CellsOf(const NamedColumn& column) {
  return std::visit([](const auto& cells) { return cells.size(); }, column.cells);
}

CellKind KindOf(double number) {
  if (std::isnan(number)) return CellKind::Missing;
  if (std::isinf(number)) return CellKind::Infinite;
  return std::isinf(static_cast<float>(number)) ? CellKind::TooLarge : CellKind::Number;
}

/// Whatever a text in memory says, it is a text.
CellKind KindOf(const std::string& text) {
  return ReadCell(text, /*decimalComma=*/false).kind == CellKind::Missing ? CellKind::Missing : CellKind::Word;
}

template <class T>
CsvColumn TallyOf(const std::vector<T>& cells) {
  CsvColumn column;
  for (std::size_t row = 0; row < cells.size(); ++row) {
    const CellKind kind = KindOf(cells[row]);
    if (kind == CellKind::Missing) {
      ++column.missing;
      continue;
    }
    column.kind = kind == CellKind::Word ? ColumnKind::Texts : ColumnKind::Numbers;
    if (kind == CellKind::Number) continue;
    if (column.strays++ < static_cast<int>(kStraysKept)) column.firstStrays.push_back(static_cast<int>(row));
  }
  return column;
}

std::vector<std::string> ContentsOf(std::string_view text, const std::vector<FieldPlace>& fields) {
  std::vector<std::string> contents;
  contents.reserve(fields.size());
  for (const FieldPlace& field : fields) contents.push_back(ContentOf(text, field));
  return contents;
}

}  // namespace

struct Table::Csv {
  CsvFormat format;
  CsvRows rows;
};

Table::Table(TextBuffer text, const std::string& name, const ReadOptions& options, NCProgress* progress,
             std::size_t bytesAtOnce)
    : name_(name),
      text_(std::move(text)),
      csv_(std::make_unique<Csv>(Csv{DetectFormat(Text(), name, options), {}})) {
  for (const std::string& word : options.missingWords) missingWords_.emplace_back(WithoutBlanks(word));
  const CsvPlace headerEnd = ReadHeader(ShareOf(0.0, 0.0, progress));
  csv_->rows = FindRows(Text(), Format(), headerEnd, bytesAtOnce, ShareOf(0.0, kShareOfRows, progress));
  const std::size_t rows = csv_->rows.Size();
  if (rows == 0) Refuse(name_ + " has a header but no data rows");
  if (rows > kMostRows) Refuse(name_ + " has more than " + std::to_string(kMostRows) + " rows");
  rowCount_ = static_cast<int>(rows);
  ReadRows(bytesAtOnce, ShareOf(kShareOfRows, 1.0, progress));
}

Table::Table(std::vector<NamedColumn> columns, const std::string& name)
    : name_(name), csv_(std::make_unique<Csv>()), given_(std::move(columns)) {
  if (given_.empty()) Refuse(name_ + " has no columns");
  if (given_.size() > kMostColumns) Refuse(name_ + ": too many columns");
  std::vector<std::string> names;
  for (const NamedColumn& column : given_) names.push_back(column.name);
  TakeNames(std::move(names), ShareOf(0.0, 0.0, nullptr));
  const std::size_t rows = CellsOf(given_.front());
  if (rows == 0) Refuse(name_ + " has no rows");
  if (rows > kMostRows) Refuse(name_ + " has more than " + std::to_string(kMostRows) + " rows");
  rowCount_ = static_cast<int>(rows);
  for (std::size_t c = 0; c < given_.size(); ++c) {
    if (CellsOf(given_[c]) != rows) {
      Refuse(name_ + ": column " + Quoted(columnNames_[c]) + " has " + Counted(CellsOf(given_[c]), "cell") +
                 ", column " + Quoted(columnNames_.front()) + " has " + std::to_string(rows),
             {{}, columnNames_[c]});
    }
    columns_.push_back(std::visit([](const auto& cells) { return TallyOf(cells); }, given_[c].cells));
    PointToNumbers(given_[c], &columns_.back());
  }
}

Table::Table(Table&& other) noexcept = default;
Table& Table::operator=(Table&& other) noexcept = default;
Table::~Table() = default;

const CsvFormat& Table::Format() const { return csv_->format; }

char Table::Separator() const { return Format().separator; }

std::size_t Table::Line(int row) const { return HasText() ? csv_->rows.Line(static_cast<std::size_t>(row)) : 0; }

void Table::PointToNumbers(const NamedColumn& given, CsvColumn* column) {
  if (column->kind == ColumnKind::Texts) return;
  const auto* numbers = std::get_if<std::vector<double>>(&given.cells);
  if (numbers == nullptr || column->strays > 0) {
    besideStrays_.emplace_back(static_cast<std::size_t>(rowCount_), std::numeric_limits<double>::quiet_NaN());
    for (std::size_t row = 0; numbers != nullptr && row < numbers->size(); ++row) {
      if (KindOf((*numbers)[row]) == CellKind::Number) besideStrays_.back()[row] = (*numbers)[row];
    }
    numbers = &besideStrays_.back();
  }
  column->numbers = numbers->data();
}

int Table::Find(const std::string& columnName) const {
  const auto found = columnOf_.find(columnName);
  return found == columnOf_.end() ? -1 : found->second;
}

std::vector<std::string> Table::RowTexts(int row) const {
  if (!HasText()) {
    std::vector<std::string> texts;
    for (int c = 0; c < Columns(); ++c) texts.push_back(GivenText(row, c));
    return texts;
  }
  CsvPlace place{csv_->rows.Begin(static_cast<std::size_t>(row)), 0};
  std::vector<FieldPlace> fields;
  PassRecord(Text(), Format(), &place, &fields);
  return ContentsOf(Text(), fields);
}

std::string Table::Cell(int row, int column) const {
  if (!HasText()) return GivenText(row, column);
  std::size_t at = csv_->rows.Begin(static_cast<std::size_t>(row));
  FieldPlace field;
  for (int c = 0; c <= column; ++c, at = field.next + 1) FindField(Text(), at, Format(), &field);
  return ContentOf(Text(), field);
}

std::vector<std::string> Table::ColumnTexts(int column) const {
  std::vector<std::string> texts;
  texts.reserve(static_cast<std::size_t>(rowCount_));
  for (int row = 0; row < Rows(); ++row) texts.push_back(Cell(row, column));
  return texts;
}

std::string Table::GivenText(int row, int column) const {
  const auto& cells = given_[static_cast<std::size_t>(column)].cells;
  const auto r = static_cast<std::size_t>(row);
  if (const auto* texts = std::get_if<std::vector<std::string>>(&cells)) return (*texts)[r];
  const double number = std::get<std::vector<double>>(cells)[r];
  if (std::isnan(number)) return "";
  if (std::isinf(number)) return number > 0.0 ? "inf" : "-inf";
  return CellText(number, /*decimalComma=*/false);
}

std::string Table::RowPlace(int row) const {
  const std::string place = "row " + std::to_string(row + 1);
  return HasText() ? place + " (line " + std::to_string(Line(row)) + ")" : place;
}

void Table::TakeNames(std::vector<std::string> names, const Proceed& proceed) {
  columnNames_ = std::move(names);
  for (std::size_t c = 0; c < columnNames_.size(); ++c) {
    if (c % kNamesAtOnce == 0) proceed(0.0);
    if (columnNames_[c].empty()) columnNames_[c] = "column " + std::to_string(c + 1);
    const auto [first, isNew] = columnOf_.emplace(columnNames_[c], static_cast<int>(c));
    if (!isNew) {
      Refuse(name_ + ": columns " + std::to_string(first->second + 1) + " and " + std::to_string(c + 1) +
                 " have the same name, " + Quoted(columnNames_[c]),
             {{}, columnNames_[c]});
    }
  }
}

CsvPlace Table::ReadHeader(const Proceed& proceed) {
  CsvPlace place{Format().begin, Format().firstLine};
  FindRecord(Text(), Format(), &place);
  const std::size_t line = place.line;
  std::vector<FieldPlace> fields;
  if (!PassRecord(Text(), Format(), &place, &fields)) Refuse(name_ + ": " + UnpairedMarks(line));
  if (fields.size() > kMostColumns) Refuse(name_ + ": too many columns");
  TakeNames(ContentsOf(Text(), fields), proceed);
  const std::size_t end = fields.back().next;
  return {end, end == Text().size() ? place.line : place.line - 1};
}

std::size_t Table::RowsInSample() const {
  const CsvRows& rows = csv_->rows;
  const std::size_t most = std::min(rows.Size(), kSampleRows);
  std::size_t count = 1;
  while (count < most && rows.Begin(count) - rows.Begin(0) < kSampleBytes) ++count;
  return count;
}

void Table::ReadRows(std::size_t bytesAtOnce, const Proceed& proceed) {
  const std::size_t bytesInARow = std::max<std::size_t>(Text().size() / csv_->rows.Size(), 1);
  const std::size_t rowsAtOnce = std::max<std::size_t>(bytesAtOnce / bytesInARow, 1);
  const auto read = [&](std::size_t rows, double from, double to) {
    const auto report = [&](double share) { proceed(from + (to - from) * share); };
    CsvCells cells = ReadCells(Text(), Format(), csv_->rows, rows, columnNames_.size(),
                               CellFormat{decimalComma_, missingWords_}, rowsAtOnce, report);
    if (cells.badRow) RefuseRow(*cells.badRow);
    columns_ = std::move(cells.columns);
    numbers_ = std::move(cells.numbers);
    return cells.commas > cells.points;
  };
  const std::size_t all = csv_->rows.Size();
  if (Separator() == ',') {
    read(all, 0.0, 1.0);
    return;
  }
  const std::size_t sample = RowsInSample();  // tells the mark, most of the time
  if (read(sample, 0.0, 0.0)) {
    decimalComma_ = true;
  } else if (sample == all) {
    proceed(1.0);
    return;
  }
  const bool hasCommas = read(all, 0.0, kShareOfFirstReading);
  if (hasCommas != decimalComma_) {  // the first rows were not like the others
    decimalComma_ = hasCommas;
    read(all, kShareOfFirstReading, 1.0);
  }
  proceed(1.0);
}

void Table::RefuseRow(std::size_t row) const {
  CsvPlace place{csv_->rows.Begin(row), 0};
  std::vector<FieldPlace> places;
  if (!PassRecord(Text(), Format(), &place, &places)) {
    Refuse(name_ + ": " + UnpairedMarks(csv_->rows.Line(row)), {static_cast<int>(row) + 1});
  }
  const std::vector<std::string> fields = ContentsOf(Text(), places);
  const bool tooMany = Separator() == ',' && fields.size() > columnNames_.size();
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
