#include "kalmia/analysis/table/CsvText.h"

#include "kalmia/analysis/table/CsvRecords.h"
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

CsvFile ComponentsCsv(const std::string& file, const std::string& what, const std::vector<std::string>& names,
                      const std::vector<NamedComponents>& parts, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field(what);
  for (const NamedComponents& part : parts)
    for (int a = 1; a <= part.prim.SizeRows(); ++a) csv.Field(part.symbol + std::to_string(a));
  csv.EndLine();
  for (std::size_t i = 0; i < names.size(); ++i) {
    csv.Field(names[i]);
    for (const NamedComponents& part : parts)
      for (int a = 1; a <= part.prim.SizeRows(); ++a) csv.Cell(part.prim[a][static_cast<int>(i) + 1]);
    csv.EndLine();
  }
  return {file, csv.Text()};
}

CsvFile RowsCsv(const std::vector<std::string>& names, const std::vector<double>& t2,
                const std::vector<double>& distances, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row").Field("T2").Field("distance").EndLine();
  for (std::size_t i = 0; i < names.size(); ++i) csv.Field(names[i]).Number(t2[i]).Number(distances[i]).EndLine();
  return {"rows.csv", csv.Text()};
}

}  // namespace kalmia::analysis
