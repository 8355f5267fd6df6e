#include "app/CsvDialect.h"

#include <algorithm>
#include <cctype>

#include "app/DisplayText.h"
#include "app/Failure.h"

namespace kalmia::app {

namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kHowToExport = ": open it and save the sheet as CSV (UTF-8)";

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitCode::BadData, message); }

bool BeginsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

/// What a file is that begins as a zip archive does.
std::string KindOfArchive(std::string_view bytes) {
  const auto holds = [bytes](std::string_view name) { return bytes.find(name) != std::string_view::npos; };
  if (holds("xl/workbook"sv)) return " is an Excel workbook" + std::string(kHowToExport);
  if (holds("opendocument.spreadsheet"sv)) return " is an OpenDocument spreadsheet" + std::string(kHowToExport);
  return " is a zip archive: unpack it, and give the table that is in it";
}

void RefuseOtherThanText(std::string_view text, const std::string& name) {
  if (BeginsWith(text, "PK\x03\x04"sv)) Refuse(name + KindOfArchive(text));
  if (BeginsWith(text, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv)) {
    Refuse(name + " is an Excel workbook of the old form" + std::string(kHowToExport));
  }
  if (BeginsWith(text, "\xFF\xFE\0\0"sv) || BeginsWith(text, "\0\0\xFE\xFF"sv)) {
    Refuse(name + " is UTF-32 text: save it as UTF-8");
  }
  if (BeginsWith(text, "\xFF\xFE"sv) || BeginsWith(text, "\xFE\xFF"sv)) {
    Refuse(name + " is UTF-16 text: save it as UTF-8");
  }
  const std::size_t zero = text.find('\0');
  if (zero == std::string_view::npos) return;
  const auto before = text.substr(0, zero);
  Refuse(name + " is not a text file: line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
         " holds a zero byte");
}

bool IsBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

/// Passes over the next line, if there is one.
void PassLine(std::string_view text, CsvFormat* format) {
  const std::size_t end = EndOfLine(text, format->begin);
  format->begin = end == text.size() ? end : BehindLineEnd(text, end);
  ++format->firstLine;
}

/// Whether the byte may separate fields where a first line says so: no part of numbers and words, no quotation mark.
bool MaySeparate(char byte) {
  const bool isPunctuation = std::ispunct(static_cast<unsigned char>(byte)) != 0;
  return byte == '\t' || (isPunctuation && std::string_view("\"'.+-_").find(byte) == std::string_view::npos);
}

/// Takes a line "sep=;", as spreadsheets write it, if that is the next one.
bool TakeSeparatorLine(std::string_view text, CsvFormat* format) {
  std::string_view line = text.substr(format->begin, EndOfLine(text, format->begin) - format->begin);
  if (line.size() == 7 && line.front() == '"' && line.back() == '"') line = line.substr(1, 5);
  if (line.size() != 5 || !BeginsWith(line, "sep=") || !MaySeparate(line.back())) return false;
  format->separator = line.back();
  PassLine(text, format);
  return true;
}

/// Fields of the header and of the first row, as one separator divides them; 0 where there is none.
struct Division {
  std::size_t header = 0;
  std::size_t firstRow = 0;
};

Division Divide(std::string_view text, const CsvFormat& format) {
  Division division;
  CsvPlace place{format.begin, format.firstLine};
  std::vector<FieldPlace> fields;
  for (std::size_t* const count : {&division.header, &division.firstRow}) {
    if (!FindRecord(text, format, &place)) return division;
    if (!PassRecord(text, format, &place, &fields)) return {};  // no marks that pair up with this separator
    *count = fields.size();
  }
  return division;
}

char DetectSeparator(std::string_view text, CsvFormat format) {
  std::size_t most = 1;
  char separator = ',';
  for (const char candidate : {'\t', ';', ','}) {
    format.separator = candidate;
    const Division division = Divide(text, format);
    if (division.header > 1 && division.header == division.firstRow) return candidate;
    if (division.header > most) {
      most = division.header;
      separator = candidate;
    }
  }
  return separator;
}

}  // namespace

CsvFormat DetectFormat(std::string_view text, const std::string& name, const ReadOptions& options) {
  RefuseOtherThanText(text, name);
  CsvFormat format;
  if (!options.comment.empty()) format.comment = options.comment.front();
  if (BeginsWith(text, kByteOrderMark)) format.begin = kByteOrderMark.size();
  if (IsBlank(text.substr(format.begin))) Refuse(name + " is empty");
  for (int i = 0; i < options.skipLines && format.begin < text.size(); ++i) PassLine(text, &format);
  if (!TakeSeparatorLine(text, &format)) format.separator = DetectSeparator(text, format);
  CsvPlace place{format.begin, format.firstLine};
  if (FindRecord(text, format, &place)) return format;
  std::string what;
  if (options.skipLines > 0) what = " but for the " + Counted(static_cast<std::size_t>(options.skipLines), "line") + " skipped";
  Refuse(name + " is empty" + (what.empty() ? " but for comments" : what));
}

}  // namespace kalmia::app
