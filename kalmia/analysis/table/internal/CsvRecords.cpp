#include "kalmia/analysis/table/internal/CsvRecords.h"

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

/// The closing quotation mark of a field whose content begins at `at`, or npos.
std::size_t ClosingMark(std::string_view text, std::size_t at, bool* hasDoubled) {
  for (std::size_t mark = text.find('"', at); mark != std::string_view::npos; mark = text.find('"', mark + 2)) {
    if (mark + 1 == text.size() || text[mark + 1] != '"') return mark;
    *hasDoubled = true;
  }
  return std::string_view::npos;
}

bool EndsField(std::string_view text, std::size_t at, const CsvFormat& format) {
  return at == text.size() || text[at] == format.separator || IsLineEnd(text[at]);
}

std::size_t BehindBlanks(std::string_view text, std::size_t at, const CsvFormat& format) {
  while (at < text.size() && format.IsBlank(text[at])) ++at;
  return at;
}

bool FindQuoted(std::string_view text, std::size_t mark, const CsvFormat& format, FieldPlace* field) {
  field->begin = mark + 1;
  field->end = ClosingMark(text, field->begin, &field->hasDoubled);
  if (field->end == std::string_view::npos) return false;
  field->next = BehindBlanks(text, field->end + 1, format);
  return EndsField(text, field->next, format);
}

std::size_t LineEnds(std::string_view text) {
  std::size_t ends = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsLineEnd(text[i]) && BehindLineEnd(text, i) == i + 1) ++ends;
  }
  return ends;
}

}  // namespace

bool FindField(std::string_view text, std::size_t at, const CsvFormat& format, FieldPlace* field) {
  *field = {};
  at = BehindBlanks(text, at, format);
  if (at < text.size() && text[at] == '"') return FindQuoted(text, at, format, field);
  field->begin = at;
  for (; !EndsField(text, at, format); ++at) {
    if (text[at] == '"') return false;
  }
  field->next = at;
  while (at > field->begin && format.IsBlank(text[at - 1])) --at;
  field->end = at;
  return true;
}

std::string ContentOf(std::string_view text, const FieldPlace& field) {
  const std::string_view content = text.substr(field.begin, field.end - field.begin);
  if (!field.hasDoubled) return std::string(content);
  std::string single;
  for (std::size_t i = 0; i < content.size(); ++i) {
    single += content[i];
    if (content[i] == '"') ++i;
  }
  return single;
}

std::size_t BehindLineEnd(std::string_view text, std::size_t at) {
  return text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? at + 2 : at + 1;
}

std::size_t EndOfLine(std::string_view text, std::size_t at) {
  while (at < text.size() && !IsLineEnd(text[at])) ++at;
  return at;
}

bool FindRecord(std::string_view text, const CsvFormat& format, CsvPlace* place) {
  while (place->at < text.size()) {
    std::size_t at = BehindBlanks(text, place->at, format);
    if (at == text.size()) break;
    const bool isComment = format.comment != '\0' && text[at] == format.comment;
    if (!isComment && !IsLineEnd(text[at])) return true;
    at = EndOfLine(text, at);
    if (at == text.size()) break;
    *place = {BehindLineEnd(text, at), place->line + 1};
  }
  place->at = text.size();
  return false;
}

bool PassRecord(std::string_view text, const CsvFormat& format, CsvPlace* place, std::vector<FieldPlace>* fields) {
  fields->clear();
  CsvPlace end = *place;
  for (;;) {
    FieldPlace field;
    if (!FindField(text, end.at, format, &field)) return false;
    end.line += LineEnds(text.substr(field.begin, field.end - field.begin));
    fields->push_back(field);
    end.at = field.next;
    if (end.at == text.size()) break;
    const bool isLast = text[end.at] != format.separator;
    end.at = isLast ? BehindLineEnd(text, end.at) : end.at + 1;
    if (!isLast) continue;
    ++end.line;
    break;
  }
  *place = end;
  return true;
}

std::string UnpairedMarks(std::size_t line) {
  return "a quotation mark on line " + std::to_string(line) +
         " is never closed, or stands inside a field that does not begin with one";
}

void ForEachCsvRecord(std::string_view text, const CsvFormat& format, const std::string& name,
                      const std::function<bool(const CsvRecord&)>& take) {
  CsvPlace place{format.begin, format.firstLine};
  std::vector<FieldPlace> fields;
  CsvRecord record;
  while (FindRecord(text, format, &place)) {
    record.line = place.line;
    if (!PassRecord(text, format, &place, &fields)) {
      throw BadData(name + ": " + UnpairedMarks(record.line));
    }
    record.fields.clear();
    for (const FieldPlace& field : fields) record.fields.push_back(ContentOf(text, field));
    if (!take(record)) return;
  }
}

std::string CsvField(std::string_view text, const CsvFormat& format) {
  const bool plain = !text.empty() && text.find_first_of(",;\t\"\r\n") == std::string_view::npos &&
                     text.find(format.separator) == std::string_view::npos && text.front() != ' ' &&
                     text.back() != ' ' && (format.comment == '\0' || text.front() != format.comment);
  if (plain) return std::string(text);
  std::string field = "\"";
  for (const char byte : text) field.append(byte == '"' ? 2 : 1, byte);
  return field + '"';
}

}  // namespace kalmia::analysis
