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

  /// From this row on to the next lead, the line of a row is its number plus `lines`.
  struct Lead {
    std::size_t row;
    std::size_t lines;
  };
  std::vector<std::size_t> begins_;
  std::vector<Lead> leads_;
};

/// Finds the rows of a text from the line end at `end.at` on, which ends line `end.line`, without dividing them into
/// fields. A row begins after each line end outside quotation marks, unless the next line is blank or a comment. The
/// parity of the marks before a place tells whether it lies inside quotation marks; so all threads search the text in
/// parts of `bytesInPart` bytes (below 2^32), and the rows do not depend on the parts. Comments may hold single marks:
/// with comments the parts are searched one after the other. After a row whose marks do not pair up the rows are
/// meaningless. Needs 8 bytes for each row, half as many again while it searches.
CsvRows FindRows(std::string_view text, const CsvFormat& format, const CsvPlace& end, std::size_t bytesInPart,
                 const Proceed& proceed);

}  // namespace kalmia::analysis
