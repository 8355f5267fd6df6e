#include "PlainTable.h"

#include <algorithm>
#include <optional>
#include <regex>
#include <utility>

#include "kalmia/analysis/table/internal/CellNumber.h"

namespace {

using kalmia::analysis::CellKind;
using kalmia::analysis::ColumnKind;
using kalmia::analysis::ReadCell;

struct Record {
  std::vector<std::string> fields;
  std::size_t line = 0;
};

/// The records of a text up to the first one whose quotation marks do not pair up.
struct Records {
  std::vector<Record> all;
  std::optional<std::size_t> badLine;  ///< on which that one begins
};

/// A machine that takes one byte after the other.
class Machine {
 public:
  Machine(char separator, char comment, std::size_t line) : separator_(separator), comment_(comment), line_(line) {}

  Records Run(const std::string& text) {
    for (std::size_t i = 0; i < text.size() && !records_.badLine; ++i) {
      const bool isPair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
      Take(text[i]);
      if (IsEnd(text[i]) && !isPair) ++line_;
    }
    if (!records_.badLine) Finish();
    return records_;
  }

 private:
  enum class State { BeforeRecord, BeforeField, Plain, Quoted, Closed, Comment };

  static bool IsEnd(char byte) { return byte == '\n' || byte == '\r'; }
  bool IsBlank(char byte) const { return (byte == ' ' || byte == '\t') && byte != separator_; }

  void Take(char byte) {
    switch (state_) {
      case State::BeforeRecord: TakeBeforeRecord(byte); break;
      case State::BeforeField: TakeBeforeField(byte); break;
      case State::Plain: TakePlain(byte); break;
      case State::Quoted: byte == '"' ? Go(State::Closed) : Append(byte); break;
      case State::Closed: TakeClosed(byte); break;
      case State::Comment:
        if (IsEnd(byte)) Go(State::BeforeRecord);
    }
  }
  void TakeBeforeRecord(char byte) {
    if (IsBlank(byte) || IsEnd(byte)) return;
    if (comment_ != '\0' && byte == comment_) return Go(State::Comment);
    record_ = {{}, line_};
    TakeBeforeField(byte);
  }
  void TakeBeforeField(char byte) {
    blanks_.clear();
    if (IsBlank(byte)) return Go(State::BeforeField);
    if (byte == '"') return Go(State::Quoted);
    if (byte == separator_ || IsEnd(byte)) return EndField(byte);
    Append(byte);
    Go(State::Plain);
  }
  void TakePlain(char byte) {
    if (byte == '"') return Fail();
    if (byte == separator_ || IsEnd(byte)) return EndField(byte);
    if (IsBlank(byte)) {
      blanks_ += byte;
    } else {
      field_ += blanks_ + byte;
      blanks_.clear();
    }
  }
  void TakeClosed(char byte) {
    if (byte == separator_ || IsEnd(byte)) return EndField(byte);
    if (IsBlank(byte)) {
      blanks_ += byte;
    } else if (byte == '"' && blanks_.empty()) {
      Append('"');
      Go(State::Quoted);
    } else {
      Fail();
    }
  }
  void EndField(char byte) {
    record_.fields.push_back(field_);
    field_.clear();
    blanks_.clear();
    Go(State::BeforeField);
    if (byte == separator_) return;
    records_.all.push_back(record_);
    Go(State::BeforeRecord);
  }
  void Finish() {
    if (state_ == State::BeforeRecord || state_ == State::Comment) return;
    if (state_ == State::Quoted) return Fail();
    EndField('\n');
  }
  void Append(char byte) { field_ += byte; }
  void Go(State state) { state_ = state; }
  void Fail() { records_.badLine = record_.line; }

  char separator_;
  char comment_;
  State state_ = State::BeforeRecord;
  std::size_t line_;
  Record record_;
  std::string field_;
  std::string blanks_;  ///< that belong to the field if anything follows them
  Records records_;
};

std::string Count(std::size_t fields) { return std::to_string(fields) + (fields == 1 ? " field" : " fields"); }

bool IsDigits(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

char SeparatorOf(const std::string& text, char comment) {
  char best = ',';
  std::size_t most = 1;
  for (const char candidate : {'\t', ';', ','}) {
    const Records records = Machine(candidate, comment, 1).Run(text);
    if (records.all.empty() || (records.all.size() < 2 && records.badLine)) continue;
    const std::size_t header = records.all[0].fields.size();
    const std::size_t first = records.all.size() > 1 ? records.all[1].fields.size() : 0;
    if (header > 1 && header == first) return candidate;
    if (header > most) {
      most = header;
      best = candidate;
    }
  }
  return best;
}

std::string RefusalOfNames(const std::vector<std::string>& names) {
  for (std::size_t b = 0; b < names.size(); ++b) {
    for (std::size_t a = 0; a < b; ++a) {
      if (names[a] != names[b]) continue;
      return ": columns " + std::to_string(a + 1) + " and " + std::to_string(b + 1) + " have the same name";
    }
  }
  return "";
}

std::string RefusalOfRow(const PlainTable& table, const Record& row) {
  const std::size_t fields = row.fields.size();
  if (fields == table.names.size()) return "";
  std::string refusal = ": row " + std::to_string(table.rows.size() + 1) + " (line " + std::to_string(row.line) +
                        ") has " + Count(fields) + ", the header has " + std::to_string(table.names.size());
  if (fields < table.names.size()) return refusal;
  std::string before = row.fields[fields - 2];
  if (!before.empty() && (before[0] == '-' || before[0] == '+')) before.erase(0, 1);
  if (table.separator == ',' && IsDigits(row.fields.back()) && IsDigits(before))
    return refusal + "; if the numbers have decimal commas, separate the columns by ; or tabs";
  if (table.names.size() > 1) return refusal;
  return refusal + "; if there are lines above the header";
}

std::string BadMarks(std::size_t line) {
  return ": a quotation mark on line " + std::to_string(line) +
         " is never closed, or stands inside a field that does not begin with one";
}

bool HasDecimalCommas(const PlainTable& table) {
  int commas = 0, points = 0;
  for (const auto& row : table.rows) {
    for (const std::string& cell : row) {
      const bool hasComma = cell.find(',') != std::string::npos;
      const bool hasPoint = !hasComma && cell.find('.') != std::string::npos;
      commas +=
          hasComma && IsNumber(ReadCell(cell, kalmia::analysis::CellFormat{true, table.missingWords}).kind) ? 1 : 0;
      points +=
          hasPoint && IsNumber(ReadCell(cell, kalmia::analysis::CellFormat{false, table.missingWords}).kind) ? 1 : 0;
    }
  }
  return table.separator != ',' && commas > points;
}

bool IsBlank(const std::string& text) { return text.find_first_not_of(" \t\r\n") == std::string::npos; }

/// The lines of a text, one after the other.
class Lines {
 public:
  explicit Lines(std::string text) : rest_(std::move(text)) {}

  const std::string& Rest() const { return rest_; }
  std::size_t Number() const { return number_; }
  std::string Next() const { return rest_.substr(0, rest_.find_first_of("\r\n")); }
  std::string Take() {
    const std::string line = Next();
    const std::size_t pair = rest_.compare(line.size(), 2, "\r\n") == 0 ? 2 : 1;
    rest_.erase(0, line.size() + pair);
    ++number_;
    return line;
  }

 private:
  std::string rest_;
  std::size_t number_ = 1;
};

bool IsPassedOver(const std::string& line, char comment) {
  return IsBlank(line) || (comment != '\0' && line[line.find_first_not_of(" \t")] == comment);
}

std::optional<char> SeparatorNamedBy(const std::string& line) {
  static const std::string kMark = R"(([!#$%&()*,/:;<=>?@\[\\\]^`{|}~\t]))";
  static const std::regex kPlain("sep=" + kMark + R"(\1*)", std::regex::icase);
  static const std::regex kQuoted("\"sep=" + kMark + R"("\1*)", std::regex::icase);
  std::smatch match;
  if (!std::regex_match(line, match, kPlain) && !std::regex_match(line, match, kQuoted)) return std::nullopt;
  return match.str(1)[0];
}

std::string WhatIsThere(int skipLines, bool namesSeparator, bool hasComments) {
  std::vector<std::string> parts;
  if (skipLines > 0)
    parts.push_back("the " + std::to_string(skipLines) + (skipLines == 1 ? " line" : " lines") + " skipped");
  if (namesSeparator) parts.push_back("the line that names the separator");
  if (hasComments) parts.push_back("comments");
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  }
  return text;
}

/// Makes the header and the rows of the records, or a refusal.
void ReadRecords(const Records& records, PlainTable* table) {
  table->names = records.all[0].fields;
  for (std::size_t c = 0; c < table->names.size(); ++c) {
    if (table->names[c].empty()) table->names[c] = "column " + std::to_string(c + 1);
  }
  table->refusal = RefusalOfNames(table->names);
  for (std::size_t r = 1; r < records.all.size() && table->refusal.empty(); ++r) {
    table->refusal = RefusalOfRow(*table, records.all[r]);
    table->rows.push_back(records.all[r].fields);
    table->lines.push_back(records.all[r].line);
  }
  if (table->refusal.empty() && records.badLine) table->refusal = BadMarks(*records.badLine);
  if (table->refusal.empty() && table->rows.empty()) table->refusal = " has a header but no data rows";
  if (table->refusal.empty()) table->decimalComma = HasDecimalCommas(*table);
}

PlainTable Refused(const std::string& refusal) {
  PlainTable table;
  table.refusal = refusal;
  return table;
}

}  // namespace

kalmia::analysis::CellValue PlainTable::ValueOf(const std::string& cell) const {
  return ReadCell(cell, kalmia::analysis::CellFormat{decimalComma, missingWords});
}

ColumnKind PlainTable::KindOf(std::size_t column) const {
  bool words = false, infinities = false;
  for (const auto& row : rows) {
    const CellKind kind = ValueOf(row[column]).kind;
    const bool isOther = IsNumber(ReadCell(row[column], !decimalComma).kind);
    if (IsNumber(kind) || (kind == CellKind::Word && isOther)) {
      return ColumnKind::Numbers;
    }
    words = words || kind == CellKind::Word;
    infinities = infinities || kind == CellKind::Infinite;
  }
  if (words) return ColumnKind::Texts;
  return infinities ? ColumnKind::Numbers : ColumnKind::Empty;
}

PlainTable ReadPlainTable(const std::string& text, const kalmia::analysis::ReadOptions& options) {
  PlainTable table;
  const char comment = options.comment.empty() ? '\0' : options.comment[0];
  for (const std::string& word : options.missingWords) {
    table.missingWords.push_back(std::regex_replace(word, std::regex("^[ \t]+|[ \t]+$"), ""));
  }
  const std::string mark = "\xEF\xBB\xBF";
  Lines lines(text.compare(0, mark.size(), mark) == 0 ? text.substr(mark.size()) : text);
  if (IsBlank(lines.Rest())) return Refused(" is empty");
  for (int i = 0; i < options.skipLines && !lines.Rest().empty(); ++i) lines.Take();
  Lines ahead = lines;
  bool hasComments = false;
  while (IsPassedOver(ahead.Next(), comment) && !ahead.Rest().empty())
    hasComments = !IsBlank(ahead.Take()) || hasComments;
  const std::optional<char> named = SeparatorNamedBy(ahead.Next());
  if (named && *named == comment) {
    return Refused(": line " + std::to_string(ahead.Number()) + " says that '" + *named +
                   "' separates the columns, but it is to begin comments");
  }
  if (named) {
    ahead.Take();
    lines = ahead;
  }
  table.separator = named ? *named : SeparatorOf(lines.Rest(), comment);
  const Records records = Machine(table.separator, comment, lines.Number()).Run(lines.Rest());
  if (records.all.empty() && records.badLine) return Refused(BadMarks(*records.badLine));
  if (records.all.empty()) {
    hasComments = (named && hasComments) || !IsBlank(lines.Rest());
    return Refused(" is empty but for " + WhatIsThere(options.skipLines, named.has_value(), hasComments));
  }
  ReadRecords(records, &table);
  return table;
}
