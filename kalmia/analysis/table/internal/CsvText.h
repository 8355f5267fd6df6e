#pragma once

#include <string>

#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"

namespace kalmia::analysis {

/// Builds a CSV text line by line, in full precision. Missing cells and numbers that are not finite become empty
/// fields.
class CsvText {
 public:
  /// `comment` begins comments for readers of the text, so that fields with it are quoted; zero without comments.
  explicit CsvText(const CsvMarks& marks = {}, char comment = '\0')
      : format_(marks.separator), decimal_(marks.decimal) {
    format_.comment = comment;
  }

  /// A first line that names the separator, for readers that would not detect it.
  void NameSeparator();
  CsvText& Field(const std::string& text);
  CsvText& Number(double value);
  /// A cell of the library, where -99 is missing.
  CsvText& Cell(float cell);
  /// A number that is text already, with a decimal point.
  CsvText& Digits(std::string number);
  void EndLine();

  const std::string& Text() const { return text_; }

 private:
  CsvText& Plain(const std::string& field);

  CsvFormat format_;
  char decimal_;
  std::string text_;
  bool lineIsEmpty_ = true;
};

}  // namespace kalmia::analysis
