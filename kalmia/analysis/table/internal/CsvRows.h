#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"

namespace kalmia::analysis {

/// Where the rows of a text begin. Rows count from 0.
class CsvRows {
 public:
  std::size_t Size() const { return begins_.size(); }
  std::size_t Begin(std::size_t row) const { return begins_[row]; }
  /// The line of the text on which the row begins.
  std::size_t Line(std::size_t row) const;

 private:
  friend class CsvRowMerger;

  /// From this row on the line is the number of the row and so many more, until the next lead.
  struct Lead {
    std::size_t row;
    std::size_t lines;
  };
  std::vector<std::size_t> begins_;
  std::vector<Lead> leads_;
};

/// Finds the rows of a text from a line end at `end.at` on, that of line `end.line`, without dividing them into fields:
/// a row begins with each line behind a line end outside quotation marks that is neither blank nor a comment. Whether a
/// place lies inside quotation marks is the parity of the marks before it, so the text is searched in parts of so many
/// bytes (below 2^32), on all threads, and the rows do not depend on the parts. (Comments may hold single marks: with
/// comments the parts are searched one behind the other.) From a row on whose marks do not pair up, rows are not where
/// a reader would see them. Needs 8 bytes for each row, half as many again while it searches.
CsvRows FindRows(std::string_view text, const CsvFormat& format, const CsvPlace& end,
                               std::size_t bytesInPart, const Proceed& proceed);

}  // namespace kalmia::analysis
