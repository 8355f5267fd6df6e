#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kalmia::analysis {

/// How a CSV text is divided into records.
struct CsvFormat {
  CsvFormat(char separatorOfFields = ',') : separator(separatorOfFields) {}  // a separator alone is a format

  /// Blanks around a field; a tab that separates is none.
  bool IsBlank(char byte) const { return byte == ' ' || (byte == '\t' && separator != '\t'); }

  char separator;
  char comment = '\0';    ///< lines that begin with it, or with blanks and it, are skipped; zero: no comments
  std::size_t begin = 0;  ///< bytes before the first line that counts
  std::size_t firstLine = 1;      ///< number of that line
};

/// Where one field of a text stands.
struct FieldPlace {
  std::size_t begin = 0;  ///< of the content, without blanks and quotation marks around it
  std::size_t end = 0;
  std::size_t next = 0;     ///< place of the separator or line end after the field, or the size of the text
  bool hasDoubled = false;  ///< the content holds "" for each of its quotation marks
};

/// Finds the field that begins at `at`, blanks before it included. Fields may be quoted ("" inside stands for a
/// quotation mark) and then hold separators and line ends. False where a quotation mark stands inside an unquoted
/// field, something follows a closing one, or one is never closed.
bool FindField(std::string_view text, std::size_t at, const CsvFormat& format, FieldPlace* field);

/// The content of a field, with single quotation marks.
std::string ContentOf(std::string_view text, const FieldPlace& field);

inline bool IsLineEnd(char byte) { return byte == '\n' || byte == '\r'; }
/// The place after the line end at `at`: LF, CRLF or CR.
std::size_t BehindLineEnd(std::string_view text, std::size_t at);
/// Where the line from `at` on ends: the place of its line end, or the size of the text.
std::size_t EndOfLine(std::string_view text, std::size_t at);

/// A place at the beginning of a line, or at the end of the text.
struct CsvPlace {
  std::size_t at = 0;
  std::size_t line = 1;
};

/// Skips blank lines and comments. False at the end of the text; otherwise a record begins in this line, perhaps after
/// blanks.
bool FindRecord(std::string_view text, const CsvFormat& format, CsvPlace* place);
/// Reads the fields of the record that begins here, and moves on to the next line. False, without moving, if its
/// quotation marks do not pair up.
bool PassRecord(std::string_view text, const CsvFormat& format, CsvPlace* place, std::vector<FieldPlace>* fields);

/// The message about a record that PassRecord refuses, which begins in this line.
std::string UnpairedMarks(std::size_t line);

/// One record of a CSV text: its fields without quotes, and the line of the text on which it begins.
struct CsvRecord {
  std::vector<std::string> fields;
  std::size_t line = 0;
};

/// Hands the records of a CSV text to `take` one after the other, until that returns false. The same object is used
/// for all of them. Lines end with LF, CRLF or CR; blanks around unquoted fields are dropped, blank lines and comments
/// passed over. Throws BadData with the line where quotation marks do not pair up; `name` is how messages
/// call the text.
void ForEachCsvRecord(std::string_view text, const CsvFormat& format, const std::string& name,
                      const std::function<bool(const CsvRecord&)>& take);

/// The text as one field of a CSV line, quoted where a reader of the format, or one that detects the separator, could
/// take it for anything else: also at the beginning of a line, where it could be a comment.
std::string CsvField(std::string_view text, const CsvFormat& format = {});

}  // namespace kalmia::analysis
