#include "app/CsvRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace kalmia::app {

namespace {

/// Finds quotation marks and line ends one after the other. Each kind is searched by itself, as the bytes of a table are
/// mostly neither, and searches for one byte are fast.
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
  struct Row {
    std::size_t begin;
    std::size_t line;  ///< line ends before it in this part
  };
  /// Rows behind line ends with an even number of quotation marks before them in this part, and with an odd one.
  std::array<std::vector<Row>, 2> rows;
  std::size_t lines = 0;
  unsigned marks = 0;  ///< 1 where their number is odd
};

/// Searches one part.
class PartReader {
 public:
  PartReader(std::string_view text, const CsvFormat& format) : text_(text), format_(format) {}

  Part Read(std::size_t begin, std::size_t end) {
    const char* const bytes = text_.data();
    const char* const stop = bytes + end;
    MarkFinder finder(bytes + begin, stop);
    for (const char* at = finder.Find(bytes + begin); at < stop; at = finder.Find(at)) {
      if (*at == '"') {
        part_.marks ^= 1U;
        ++at;
      } else {
        at = bytes + TakeLineEnd(static_cast<std::size_t>(at - bytes));
      }
    }
    return std::move(part_);
  }

 private:
  /// The place to go on at: behind the line end, or at the end of a comment behind it.
  std::size_t TakeLineEnd(std::size_t at) {
    const std::size_t behind = at + 1;
    if (BehindLineEnd(text_, at) != behind) return behind;  // its LF follows
    ++part_.lines;
    std::size_t first = behind;
    while (first < text_.size() && format_.IsBlank(text_[first])) ++first;
    if (first == text_.size() || IsLineEnd(text_[first])) return behind;
    const bool isComment = format_.comment != '\0' && text_[first] == format_.comment && part_.marks == 0;
    if (isComment) return EndOfLine(text_, first);
    part_.rows[part_.marks].push_back({behind, part_.lines});
    return behind;
  }

  std::string_view text_;
  const CsvFormat& format_;
  Part part_;
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

  void Take(const Part& part) {
    for (const Part::Row& row : part.rows[marks_]) {
      const std::size_t number = rows_.Size();
      const std::size_t lead = line_ + row.line - number;
      if (rows_.leads_.empty() || rows_.leads_.back().lines != lead) rows_.leads_.push_back({number, lead});
      rows_.begins_.push_back(row.begin);
    }
    marks_ ^= part.marks;
    line_ += part.lines;
  }
  CsvRows Rows() { return std::move(rows_); }

 private:
  std::size_t line_;
  unsigned marks_ = 0;
  CsvRows rows_;
};

CsvRows FindRows(std::string_view text, const CsvFormat& format, const CsvPlace& end, std::size_t bytesInPart,
                 const Proceed& proceed) {
  const std::size_t bytes = text.size() - end.at;
  const std::size_t size = format.comment == '\0' ? bytesInPart : std::max<std::size_t>(bytes, 1);
  std::vector<Part> parts(bytes / size + (bytes % size > 0 ? 1 : 0));
  ShareWork(parts.size(), proceed, [&](std::size_t k) {
    const std::size_t begin = end.at + k * size;
    parts[k] = PartReader(text, format).Read(begin, std::min(begin + size, text.size()));
  });
  CsvRowMerger merger(end.line);
  for (Part& part : parts) merger.Take(std::exchange(part, {}));
  return merger.Rows();
}

}  // namespace kalmia::app
