#include "kalmia/analysis/table/internal/CsvRows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kalmia::analysis {

namespace {

/// Finds quotation marks and line ends one after the other. Each kind is searched by itself, as the bytes of a table
/// are mostly neither, and searches for one byte are fast.
class MarkFinder {
 public:
  MarkFinder(const char* begin, const char* end) : end_(end) {
    for (Kind& kind : kinds_) Search(begin, &kind);
  }

  /// The first mark at or behind `at`, which does not go back; the end if there is none.
  const char* Find(const char* at) {
    const char* first = end_;
    for (Kind& kind : kinds_) {
      if (kind.next < at) Search(at, &kind);
      first = std::min(first, kind.next);
    }
    return first;
  }

 private:
  struct Kind {
    char byte;
    const char* next;
  };
  void Search(const char* from, Kind* kind) const {
    const void* const found = std::memchr(from, kind->byte, static_cast<std::size_t>(end_ - from));
    kind->next = found == nullptr ? end_ : static_cast<const char*>(found);
  }

  const char* end_;
  std::array<Kind, 3> kinds_ = {{{'"', nullptr}, {'\n', nullptr}, {'\r', nullptr}}};
};

/// What is found in one part of a text.
struct Part {
  /// From this row of the part on so many more line ends than rows are before a row, until the next lead.
  struct Lead {
    std::uint32_t row;
    std::uint32_t lines;
  };
  /// Rows behind line ends: where they begin, counted from the beginning of the part.
  struct Rows {
    std::vector<std::uint32_t> begins;
    std::vector<Lead> leads;

    void Add(std::uint32_t begin, std::uint32_t lineEnds) {
      const auto row = static_cast<std::uint32_t>(begins.size());
      if (leads.empty() || leads.back().lines != lineEnds - row) leads.push_back({row, lineEnds - row});
      begins.push_back(begin);
    }
  };
  std::size_t begin = 0;
  std::array<Rows, 2> rows;  ///< with an even number of quotation marks before them in this part, and with an odd one
  std::uint32_t lines = 0;
  unsigned marks = 0;  ///< 1 where their number is odd
};

/// Searches one part.
class PartReader {
 public:
  /// `marks` before the part, 1 where their number is odd, tell comments; without comments it may be anything.
  PartReader(std::string_view text, const CsvFormat& format, unsigned marks)
      : text_(text), format_(format), marksBefore_(marks) {}

  /// Searches from `begin` to `end`, and a comment to its end. The place to go on at.
  std::size_t Read(std::size_t begin, std::size_t end, Part* part) {
    part_ = part;
    part_->begin = begin;
    const char* const bytes = text_.data();
    const char* const stop = bytes + end;
    MarkFinder finder(bytes + begin, stop);
    const char* at = finder.Find(bytes + begin);
    while (at < stop) {
      if (*at == '"') {
        part_->marks ^= 1U;
        ++at;
      } else {
        at = bytes + TakeLineEnd(static_cast<std::size_t>(at - bytes));
      }
      if (at < stop) at = finder.Find(at);
    }
    return static_cast<std::size_t>(at - bytes);
  }

 private:
  /// The place to go on at: behind the line end, or at the end of a comment behind it.
  std::size_t TakeLineEnd(std::size_t at) {
    const std::size_t behind = at + 1;
    if (BehindLineEnd(text_, at) != behind) return behind;  // its LF follows
    ++part_->lines;
    std::size_t first = behind;
    while (first < text_.size() && format_.IsBlank(text_[first])) ++first;
    if (first == text_.size() || IsLineEnd(text_[first])) return behind;
    const bool isComment = format_.comment != '\0' && text_[first] == format_.comment && part_->marks == marksBefore_;
    if (isComment) return EndOfLine(text_, first);
    part_->rows[part_->marks].Add(static_cast<std::uint32_t>(behind - part_->begin), part_->lines);
    return behind;
  }

  std::string_view text_;
  const CsvFormat& format_;
  unsigned marksBefore_;
  Part* part_ = nullptr;
};

}  // namespace

std::size_t CsvRows::Line(std::size_t row) const {
  const auto next = std::upper_bound(leads_.begin(), leads_.end(), row,
                                     [](std::size_t wanted, const Lead& lead) { return wanted < lead.row; });
  return row + std::prev(next)->lines;
}

/// Puts the rows of the parts together, in their order.
class CsvRowMerger {
 public:
  explicit CsvRowMerger(std::size_t line) : line_(line) {}

  /// Sets room aside for the rows of these parts.
  void Await(const std::vector<Part>& parts) {
    std::size_t count = 0;
    unsigned marks = marks_;
    for (const Part& part : parts) {
      count += part.rows[marks].begins.size();
      marks ^= part.marks;
    }
    rows_.begins_.reserve(count);
  }

  void Take(const Part& part) {
    const Part::Rows& rows = part.rows[marks_];
    const std::size_t before = rows_.Size();
    for (const Part::Lead& lead : rows.leads) {
      const std::size_t lines = line_ + lead.lines - before;
      const bool isNew = rows_.leads_.empty() || rows_.leads_.back().lines != lines;
      if (isNew) rows_.leads_.push_back({before + lead.row, lines});
    }
    for (const std::uint32_t begin : rows.begins) rows_.begins_.push_back(part.begin + begin);
    marks_ ^= part.marks;
    line_ += part.lines;
  }

  /// Quotation marks so far: 1 where their number is odd.
  unsigned Marks() const { return marks_; }
  CsvRows Rows() { return std::move(rows_); }

 private:
  std::size_t line_;
  unsigned marks_ = 0;
  CsvRows rows_;
};

namespace {

/// One part behind the other, as comments may hold any marks: where a comment begins depends on those before it.
CsvRows FindRowsInTurn(std::string_view text, const CsvFormat& format, const CsvPlace& end, std::size_t bytesInPart,
                       const Proceed& proceed) {
  CsvRowMerger merger(end.line);
  for (std::size_t at = end.at; at < text.size();) {
    Part part;
    at = PartReader(text, format, merger.Marks()).Read(at, std::min(at + bytesInPart, text.size()), &part);
    merger.Take(part);
    proceed(static_cast<double>(at) / static_cast<double>(text.size()));
  }
  return merger.Rows();
}

}  // namespace

CsvRows FindRows(std::string_view text, const CsvFormat& format, const CsvPlace& end, std::size_t bytesInPart,
                 const Proceed& proceed) {
  if (format.comment != '\0') return FindRowsInTurn(text, format, end, bytesInPart, proceed);
  const std::size_t bytes = text.size() - end.at;
  std::vector<Part> parts(bytes / bytesInPart + (bytes % bytesInPart > 0 ? 1 : 0));
  ShareWork(parts.size(), proceed, [&](std::size_t k) {
    const std::size_t begin = end.at + k * bytesInPart;
    PartReader(text, format, 0).Read(begin, std::min(begin + bytesInPart, text.size()), &parts[k]);
  });
  CsvRowMerger merger(end.line);
  merger.Await(parts);
  for (Part& part : parts) {
    merger.Take(std::exchange(part, {}));
    proceed(1.0);
  }
  return merger.Rows();
}

}  // namespace kalmia::analysis
