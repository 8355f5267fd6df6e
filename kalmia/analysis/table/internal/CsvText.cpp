#include "kalmia/analysis/table/internal/CsvText.h"

#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

void CsvText::NameSeparator() { text_ += std::string("sep=") + format_.separator + '\n'; }

CsvText& CsvText::Field(const std::string& text) { return Plain(CsvField(text, format_)); }

CsvText& CsvText::Number(double value) { return Digits(Shortest(value)); }

CsvText& CsvText::Cell(float cell) {
  return Digits(cell == static_cast<float>(kMissing) ? std::string() : Shortest(cell));
}

CsvText& CsvText::Digits(std::string number) {
  const std::size_t point = number.find('.');
  if (point != std::string::npos) number[point] = decimal_;
  return Plain(number);
}

/// A field that needs no quotation marks, not even where it is empty.
CsvText& CsvText::Plain(const std::string& field) {
  if (!lineIsEmpty_) text_ += format_.separator;
  text_ += field;
  lineIsEmpty_ = false;
  return *this;
}

void CsvText::EndLine() {
  text_ += '\n';
  lineIsEmpty_ = true;
}

}  // namespace kalmia::analysis
