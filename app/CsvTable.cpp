#include "app/CsvTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "app/CellNumber.h"
#include "app/CsvRecords.h"
#include "app/DisplayText.h"
#include "app/Failure.h"

namespace kalmia::app {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitCode::BadData, message); }

void RefuseOtherThanText(std::string_view text, const std::string& name) {
  const std::string_view start = text.substr(0, 2);
  if (start == "\xFF\xFE" || start == "\xFE\xFF") Refuse(name + " is UTF-16 text: save it as UTF-8");
  const std::size_t zero = text.find('\0');
  if (zero == std::string_view::npos) return;
  const auto before = text.substr(0, zero);
  Refuse(name + " is not a text file: line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
         " holds a zero byte");
}

/// Fields of the header and of the first row, as one separator divides them; 0 where there is none.
struct Division {
  std::size_t header = 0;
  std::size_t firstRow = 0;
};

Division Divide(std::string_view text, char separator, const std::string& name) {
  Division division;
  try {
    ForEachCsvRecord(text, separator, name, [&division](const CsvRecord& record) {
      if (division.header == 0) {
        division.header = record.fields.size();
        return true;
      }
      division.firstRow = record.fields.size();
      return false;
    });
  } catch (const Failure&) {
    return {};  // with this separator the quotation marks do not pair up
  }
  return division;
}

bool IsDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Whether the last field may be the end of a number and the one before it its beginning: "1" and "5" of 1,5.
bool MayBeNumbersCutAtCommas(const std::vector<std::string>& fields) {
  const std::string& before = fields[fields.size() - 2];
  return IsDigits(fields.back()) && IsDigits(before.substr(before.find_first_not_of("+-") == 1 ? 1 : 0));
}

std::string FieldCount(std::size_t count) { return Counted(count, "field"); }

}  // namespace

CsvTable::CsvTable(std::string_view text, const std::string& name) : name_(name) {
  RefuseOtherThanText(text, name);
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) Refuse(name + " is empty");
  DetectSeparator(text);
  Read(text);
  if (lines_.empty()) Refuse(name + " has a header but no data rows");
  if (separator_ != ',') DetectDecimalComma();
}

int CsvTable::Find(const std::string& columnName) const {
  const auto found = columnOf_.find(columnName);
  return found == columnOf_.end() ? -1 : found->second;
}

std::string_view CsvTable::Cell(int row, int column) const {
  const std::size_t cell = static_cast<std::size_t>(row) * columnNames_.size() + static_cast<std::size_t>(column);
  const std::size_t begin = cell == 0 ? 0 : ends_[cell - 1];
  return std::string_view(cells_).substr(begin, ends_[cell] - begin);
}

std::string CsvTable::RowPlace(int row) const {
  return "row " + std::to_string(row + 1) + " (line " + std::to_string(lines_[static_cast<std::size_t>(row)]) + ")";
}

void CsvTable::DetectSeparator(std::string_view text) {
  std::size_t most = 1;
  for (const char candidate : {'\t', ';', ','}) {
    const Division division = Divide(text, candidate, name_);
    if (division.header > 1 && division.header == division.firstRow) {
      separator_ = candidate;
      return;
    }
    if (division.header > most) {
      most = division.header;
      separator_ = candidate;
    }
  }
}

void CsvTable::Read(std::string_view text) {
  cells_.reserve(text.size());
  ForEachCsvRecord(text, separator_, name_, [this](const CsvRecord& record) {
    if (columnNames_.empty()) {
      TakeHeader(record.fields);
    } else {
      TakeRow(record.fields, record.line);
    }
    return true;
  });
}

void CsvTable::TakeHeader(const std::vector<std::string>& fields) {
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<int>::max() / 2);
  if (fields.size() > kMost) Refuse(name_ + ": too many columns");
  columnNames_ = fields;
  for (std::size_t c = 0; c < columnNames_.size(); ++c) {
    if (columnNames_[c].empty()) columnNames_[c] = "column " + std::to_string(c + 1);
    const auto [first, isNew] = columnOf_.emplace(columnNames_[c], static_cast<int>(c));
    if (!isNew) {
      Refuse(name_ + ": columns " + std::to_string(first->second + 1) + " and " + std::to_string(c + 1) +
             " have the same name, " + Quoted(columnNames_[c]));
    }
  }
}

void CsvTable::TakeRow(const std::vector<std::string>& fields, int line) {
  if (fields.size() != columnNames_.size()) {
    const bool tooMany = separator_ == ',' && fields.size() > columnNames_.size();
    const bool hint = tooMany && MayBeNumbersCutAtCommas(fields);
    Refuse(name_ + ": row " + std::to_string(lines_.size() + 1) + " (line " + std::to_string(line) + ") has " +
           FieldCount(fields.size()) + ", the header has " + std::to_string(columnNames_.size()) +
           (hint ? "; if the numbers have decimal commas, separate the columns by ; or tabs" : ""));
  }
  for (const std::string& field : fields) {
    cells_ += field;
    ends_.push_back(cells_.size());
  }
  lines_.push_back(line);
}

void CsvTable::DetectDecimalComma() {
  std::int64_t commas = 0;
  std::int64_t points = 0;
  for (int row = 0; row < Rows(); ++row) {
    for (int column = 0; column < Columns(); ++column) {
      const std::string_view cell = Cell(row, column);
      if (cell.find(',') != std::string_view::npos) {
        commas += ReadCell(cell, /*decimalComma=*/true).kind == CellKind::Number ? 1 : 0;
      } else if (cell.find('.') != std::string_view::npos) {
        points += ReadCell(cell, /*decimalComma=*/false).kind == CellKind::Number ? 1 : 0;
      }
    }
  }
  decimalComma_ = commas > points;
}

}  // namespace kalmia::app
