#include "kalmia/analysis/table/internal/CsvCells.h"

#include <algorithm>
#include <array>
#include <limits>
#include <mutex>
#include <string>

#include "kalmia/analysis/table/internal/PlainNumber.h"
#include "kalmia/support/LargePages.h"

namespace kalmia::analysis {

namespace {

constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

/// What the rows read so far say of a column.
struct Tally {
  int missing = 0;
  int strays = 0;
  int infinities = 0;   ///< of the strays
  int likeNumbers = 0;  ///< of the strays: too large, or with the other decimal mark
  std::array<std::size_t, kStraysKept> firstStrays;  ///< rows, in their order: as many as there are strays

  std::size_t StraysKept() const { return std::min<std::size_t>(static_cast<std::size_t>(strays), kStraysKept); }
  void AddStray(std::size_t row) {
    if (StraysKept() < kStraysKept) firstStrays[StraysKept()] = row;
    ++strays;
  }
  /// Takes the tally of other rows, which come before these or after them.
  void Add(const Tally& other) {
    std::array<std::size_t, 2 * kStraysKept> rows;
    const auto end = std::merge(firstStrays.begin(), firstStrays.begin() + StraysKept(), other.firstStrays.begin(),
                                other.firstStrays.begin() + other.StraysKept(), rows.begin());
    std::copy(rows.begin(), std::min(end, rows.begin() + kStraysKept), firstStrays.begin());
    missing += other.missing;
    strays += other.strays;
    infinities += other.infinities;
    likeNumbers += other.likeNumbers;
  }
  ColumnKind KindAmong(std::size_t rows) const {
    const bool hasNumbers = static_cast<std::size_t>(missing) + static_cast<std::size_t>(strays) < rows;
    if (hasNumbers || likeNumbers > 0) return ColumnKind::Numbers;
    if (strays > infinities) return ColumnKind::Texts;
    return infinities > 0 ? ColumnKind::Numbers : ColumnKind::Empty;
  }
};

/// Which words for missing cells look like the beginning of a number, so that each number has to be compared with them.
bool MayHideNumbers(const CellFormat& format) {
  return std::any_of(format.missingWords.begin(), format.missingWords.end(), [](const std::string& word) {
    return !word.empty() && std::string_view("0123456789+-.,").find(word.front()) != std::string_view::npos;
  });
}

/// Reads rows one after the other, field by field.
class RowReader {
 public:
  RowReader(std::string_view text, const CsvFormat& format, const CellFormat& cellFormat, std::size_t columns)
      : text_(text),
        end_(text.data() + text.size()),
        format_(format),
        cellFormat_(cellFormat),
        mark_(cellFormat.decimalComma ? ',' : '.'),
        readsPlain_(!MayHideNumbers(cellFormat)),
        tallies_(columns) {}

  /// Reads the row that begins at `begin` into one cell for each column. False if it has not that many fields.
  bool Read(std::size_t row, std::size_t begin, double* cells) {
    row_ = row;
    const char* at = text_.data() + begin;
    for (std::size_t column = 0; column < tallies_.size(); ++column) {
      at = BehindBlanks(at);
      const char* const next = ReadField(at, column, &cells[column]);
      if (next == nullptr) return false;
      const bool isLast = column + 1 == tallies_.size();
      if ((next != end_ && *next == format_.separator) == isLast) return false;
      at = next + 1;
    }
    return true;
  }

  const std::vector<Tally>& Tallies() const { return tallies_; }
  std::int64_t OwnMarks() const { return ownMarks_; }
  std::int64_t OtherMarks() const { return otherMarks_; }

 private:
  const char* BehindBlanks(const char* at) const {
    while (at != end_ && format_.IsBlank(*at)) ++at;
    return at;
  }
  bool EndsField(const char* at) const { return at == end_ || *at == format_.separator || IsLineEnd(*at); }

  /// Reads one field that begins without blanks. Its end, or null where quotation marks do not pair up.
  const char* ReadField(const char* at, std::size_t column, double* cell) {
    if (EndsField(at)) {
      ++tallies_[column].missing;
      *cell = kHole;
      return at;
    }
    if (readsPlain_) {
      const PlainNumber number = TakePlainNumber(at, end_, mark_);
      if (number.end != nullptr) {
        const char* const next = BehindBlanks(number.end);
        if (EndsField(next)) {
          ownMarks_ += number.hasMark ? 1 : 0;
          *cell = number.value;
          return next;
        }
      }
    }
    FieldPlace field;
    if (!FindField(text_, static_cast<std::size_t>(at - text_.data()), format_, &field)) return nullptr;
    if (field.hasDoubled) {
      *cell = ReadText(ContentOf(text_, field), column);
    } else {
      *cell = ReadText(text_.substr(field.begin, field.end - field.begin), column);
    }
    return text_.data() + field.next;
  }

  double ReadText(std::string_view text, std::size_t column) {
    const CellValue cell = ReadCell(text, cellFormat_);
    Tally& tally = tallies_[column];
    if (IsNumber(cell.kind)) ownMarks_ += text.find(mark_) != std::string_view::npos ? 1 : 0;
    if (cell.kind == CellKind::Number) return cell.value;
    if (cell.kind == CellKind::Missing) {
      ++tally.missing;
      return kHole;
    }
    tally.AddStray(row_);
    if (cell.kind == CellKind::Infinite) ++tally.infinities;
    if (cell.kind == CellKind::TooLarge) ++tally.likeNumbers;
    if (cell.kind == CellKind::Word && IsNumberWithOtherMark(text)) {
      // It makes a column of numbers too, which is refused for it, not left out.
      ++tally.likeNumbers;
      ++otherMarks_;
    }
    return kHole;
  }

  bool IsNumberWithOtherMark(std::string_view text) const {
    const bool hasOtherMark = text.find(cellFormat_.decimalComma ? '.' : ',') != std::string_view::npos;
    return hasOtherMark && IsNumber(ReadCell(text, !cellFormat_.decimalComma).kind);
  }

  std::string_view text_;
  const char* end_;
  const CsvFormat& format_;
  const CellFormat& cellFormat_;
  char mark_;
  bool readsPlain_;
  std::vector<Tally> tallies_;
  std::int64_t ownMarks_ = 0;
  std::int64_t otherMarks_ = 0;
  std::size_t row_ = 0;
};

/// The columns under construction, filled by several threads, each with rows of its own.
class Columns {
 public:
  /// A cell takes at least one byte of the text: where there seem to be more rows of so many columns, one of them has
  /// too few fields, and those beyond need no room.
  Columns(std::size_t rows, std::size_t columns, std::size_t bytes)
      : rows_(rows), room_(std::min(rows, bytes / columns + 1)), tallies_(columns) {
    cells_.columns.resize(columns);
    cells_.numbers.reset(new double[room_ * columns]);  // not cleared: the threads that fill it touch it first
    PreferLargePages(cells_.numbers.get(), room_ * columns * sizeof(double));
  }

  /// Takes `count` rows, which lie one behind the other in `cells`.
  void Store(std::size_t first, std::size_t count, const double* cells) {
    if (first >= room_) return;
    const std::size_t stored = std::min(count, room_ - first);
    const std::size_t columns = cells_.columns.size();
    for (std::size_t c = 0; c < columns; ++c) {
      double* const column = cells_.numbers.get() + c * room_ + first;
      for (std::size_t r = 0; r < stored; ++r) column[r] = cells[r * columns + c];
    }
  }

  bool IsBehindBadRow(std::size_t row) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return cells_.badRow && row > *cells_.badRow;
  }
  void NoteBadRow(std::size_t row) {
    const std::lock_guard<std::mutex> lock(mutex_);
    cells_.badRow = std::min(row, cells_.badRow.value_or(row));
  }
  void Add(const RowReader& reader, bool decimalComma) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::size_t c = 0; c < tallies_.size(); ++c) tallies_[c].Add(reader.Tallies()[c]);
    (decimalComma ? cells_.commas : cells_.points) += reader.OwnMarks();
    (decimalComma ? cells_.points : cells_.commas) += reader.OtherMarks();
  }

  CsvCells Finish() {
    for (std::size_t c = 0; c < tallies_.size(); ++c) {
      CsvColumn& column = cells_.columns[c];
      column.kind = tallies_[c].KindAmong(rows_);
      column.missing = tallies_[c].missing;
      column.strays = tallies_[c].strays;
      for (std::size_t k = 0; k < tallies_[c].StraysKept(); ++k) {
        column.firstStrays.push_back(static_cast<int>(tallies_[c].firstStrays[k]));
      }
      if (column.kind != ColumnKind::Texts) column.numbers = cells_.numbers.get() + c * room_;
    }
    return std::move(cells_);
  }

 private:
  std::size_t rows_;
  std::size_t room_;
  std::mutex mutex_;  ///< of the tallies and the bad row
  std::vector<Tally> tallies_;
  CsvCells cells_;
};

/// Rows that are read before they go to their columns together: a cache line of each, unless rows are very wide.
std::size_t RowsInABatch(std::size_t columns) {
  constexpr std::size_t kCells = 65536;
  return std::clamp<std::size_t>(kCells / columns, 1, 16);
}

}  // namespace

CsvCells ReadCells(std::string_view text, const CsvFormat& format, const CsvRows& rows, std::size_t count,
                   std::size_t columns, const CellFormat& cellFormat, std::size_t rowsAtOnce, const Proceed& proceed) {
  Columns made(count, columns, text.size());
  const std::size_t batch = RowsInABatch(columns);
  ShareWork((count + rowsAtOnce - 1) / rowsAtOnce, proceed, [&](std::size_t k) {
    const std::size_t end = std::min((k + 1) * rowsAtOnce, count);
    if (made.IsBehindBadRow(k * rowsAtOnce)) return;
    RowReader reader(text, format, cellFormat, columns);
    std::vector<double> cells(batch * columns);
    for (std::size_t first = k * rowsAtOnce; first < end; first += batch) {
      const std::size_t read = std::min(batch, end - first);
      for (std::size_t r = 0; r < read; ++r) {
        if (!reader.Read(first + r, rows.Begin(first + r), &cells[r * columns])) return made.NoteBadRow(first + r);
      }
      made.Store(first, read, cells.data());
    }
    made.Add(reader, cellFormat.decimalComma);
  });
  return made.Finish();
}

}  // namespace kalmia::analysis
