#include "app/CsvRecords.h"

#include <csv.h>

#include <new>

#include "app/Failure.h"

namespace kalmia::app {

namespace {

/// The parser of the CSV library with the record that it is filling.
class RecordParser {
 public:
  RecordParser(char separator, const std::string& name) : name_(name) {
    if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
    csv_set_delim(&parser_, static_cast<unsigned char>(separator));
  }
  ~RecordParser() { csv_free(&parser_); }
  RecordParser(const RecordParser&) = delete;
  RecordParser& operator=(const RecordParser&) = delete;

  /// Reads one line with its end. True if the record is complete with it.
  bool Feed(std::string_view line, int number) {
    if (!begun_) Begin(number);
    if (csv_parse(&parser_, line.data(), line.size(), TakeField, TakeEnd, this) != line.size()) Fail(number);
    Check(number);
    const bool hasContent = !record_.fields.empty() || line.find_first_not_of(" \t\r\n") != std::string_view::npos;
    begun_ = !complete_ && (begun_ || hasContent);
    return complete_;
  }

  /// Ends the text. True if that completes a record.
  bool Finish(int lastLine) {
    if (!begun_) Begin(lastLine);
    if (csv_fini(&parser_, TakeField, TakeEnd, this) != 0) Fail(lastLine);
    Check(lastLine);
    return complete_;
  }

  const CsvRecord& Record() const { return record_; }

 private:
  void Begin(int line) {
    record_.fields.clear();
    record_.line = line;
    complete_ = false;
  }

  // Called from C: no exception may leave these.
  static void TakeField(void* bytes, std::size_t length, void* self) {
    auto* parser = static_cast<RecordParser*>(self);
    try {
      parser->record_.fields.emplace_back(static_cast<const char*>(bytes), length);
    } catch (const std::bad_alloc&) {
      parser->outOfMemory_ = true;
    }
  }
  static void TakeEnd(int /*character*/, void* self) { static_cast<RecordParser*>(self)->complete_ = true; }

  void Check(int line) {
    if (outOfMemory_) throw std::bad_alloc();
    if (csv_error(&parser_) != CSV_SUCCESS) Fail(line);
  }

  [[noreturn]] void Fail(int line) {
    if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
    throw Failure(ExitCode::BadData, name_ + ": a quotation mark on line " +
                                         std::to_string(begun_ ? record_.line : line) +
                                         " is never closed, or stands inside a field that does not begin with one");
  }

  csv_parser parser_ = {};
  const std::string& name_;
  CsvRecord record_;
  bool begun_ = false;  ///< inside a record that the lines so far do not complete
  bool complete_ = false;
  bool outOfMemory_ = false;
};

/// The length of the first line of the text, its end included.
std::size_t LineLength(std::string_view text) {
  const std::size_t end = text.find_first_of("\r\n");
  if (end == std::string_view::npos) return text.size();
  return text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? end + 2 : end + 1;
}

}  // namespace

void ForEachCsvRecord(std::string_view text, char separator, const std::string& name,
                      const std::function<bool(const CsvRecord&)>& take) {
  RecordParser parser(separator, name);
  int line = 0;
  while (!text.empty()) {
    ++line;
    const std::size_t length = LineLength(text);
    if (parser.Feed(text.substr(0, length), line) && !take(parser.Record())) return;
    text.remove_prefix(length);
  }
  if (parser.Finish(line)) take(parser.Record());
}

std::string CsvField(std::string_view text) {
  const bool plain = !text.empty() && text.find_first_of(",;\t\"\r\n") == std::string_view::npos &&
                     text.front() != ' ' && text.back() != ' ';
  if (plain) return std::string(text);
  std::string field(csv_write(nullptr, 0, text.data(), text.size()), '\0');
  csv_write(field.data(), field.size(), text.data(), text.size());
  return field;
}

}  // namespace kalmia::app
