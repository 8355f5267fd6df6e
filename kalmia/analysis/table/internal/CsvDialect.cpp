#include "kalmia/analysis/table/internal/CsvDialect.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <vector>

#include "kalmia/analysis/table/internal/RefuseOtherThanText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kDetected = "\t;,";  ///< separators, the most telling first

[[noreturn]] void Refuse(const std::string& message) { throw BadData(message); }

bool BeginsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

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

/// The separator that a line names: "sep=;" as spreadsheets write it, in any case, quoted or not, and with separators
/// behind it, as a program puts them there that takes the line for a row.
std::optional<char> SeparatorNamedBy(std::string_view line) {
  const bool isQuoted = BeginsWith(line, "\"");
  if (isQuoted) line.remove_prefix(1);
  constexpr std::string_view kWord = "sep=";
  if (line.size() <= kWord.size() || !MaySeparate(line[kWord.size()])) return std::nullopt;
  for (std::size_t i = 0; i < kWord.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(line[i])) != kWord[i]) return std::nullopt;
  }
  const char separator = line[kWord.size()];
  line.remove_prefix(kWord.size() + 1);
  if (isQuoted) {
    if (!BeginsWith(line, "\"")) return std::nullopt;
    line.remove_prefix(1);
  }
  if (line.find_first_not_of(separator) != std::string_view::npos) return std::nullopt;
  return separator;
}

/// Finds out how a text is to be read, from its beginning on.
class FormatFinder {
 public:
  FormatFinder(std::string_view text, const std::string& name, const ReadOptions& options)
      : text_(text), name_(name), options_(options) {}

  CsvFormat Find() {
    if (!options_.comment.empty()) format_.comment = options_.comment.front();
    if (BeginsWith(text_, kByteOrderMark)) format_.begin = kByteOrderMark.size();
    if (IsBlank(text_.substr(format_.begin))) Refuse(name_ + " is empty");
    for (int i = 0; i < options_.skipLines && format_.begin < text_.size(); ++i) PassLine(text_, &format_);
    TakeSeparatorLine();
    if (!namesSeparator_) DetectSeparator();
    CsvPlace place{format_.begin, format_.firstLine};
    if (!FindRecord(text_, format_, &place)) RefuseEmpty();
    return format_;
  }

 private:
  /// Takes the first line that is neither blank nor a comment if it names the separator.
  void TakeSeparatorLine() {
    CsvPlace place{format_.begin, format_.firstLine};
    if (!FindRecord(text_, format_, &place)) return;
    const std::string_view line = text_.substr(place.at, EndOfLine(text_, place.at) - place.at);
    const std::optional<char> separator = SeparatorNamedBy(line);
    if (!separator) return;
    if (*separator == format_.comment) {
      Refuse(name_ + ": line " + std::to_string(place.line) + " says that " + Quoted(std::string(1, *separator)) +
             " separates the columns, but it is to begin comments");
    }
    hasComments_ = !IsBlank(text_.substr(format_.begin, place.at - format_.begin));
    namesSeparator_ = true;
    format_.separator = *separator;
    format_.begin = place.at;
    format_.firstLine = place.line;
    PassLine(text_, &format_);
  }

  /// Fields of the header and of the first row, as one separator divides them; 0 where there is none.
  struct Division {
    std::size_t header = 0;
    std::size_t firstRow = 0;
  };

  Division Divide(const CsvFormat& format) const {
    Division division;
    CsvPlace place{format.begin, format.firstLine};
    std::vector<FieldPlace> fields;
    for (std::size_t* const count : {&division.header, &division.firstRow}) {
      if (!FindRecord(text_, format, &place)) return division;
      if (!PassRecord(text_, format, &place, &fields)) return {};  // no marks that pair up with this separator
      *count = fields.size();
    }
    return division;
  }

  void DetectSeparator() {
    std::size_t most = 1;
    CsvFormat format = format_;
    for (const char candidate : kDetected) {
      format.separator = candidate;
      const Division division = Divide(format);
      const bool agree = division.header > 1 && division.header == division.firstRow;
      if (agree || division.header > most) format_.separator = candidate;
      if (agree) return;
      most = std::max(most, division.header);
    }
  }

  [[noreturn]] void RefuseEmpty() const {
    std::vector<std::string> parts;
    if (options_.skipLines > 0) {
      parts.push_back("the " + Counted(static_cast<std::size_t>(options_.skipLines), "line") + " skipped");
    }
    if (namesSeparator_) parts.push_back("the line that names the separator");
    if (hasComments_ || !IsBlank(text_.substr(format_.begin))) parts.push_back("comments");
    Refuse(name_ + " is empty but for " + Listed(parts));
  }

  std::string_view text_;
  const std::string& name_;
  const ReadOptions& options_;
  CsvFormat format_;
  bool namesSeparator_ = false;
  bool hasComments_ = false;  ///< before the line that names the separator
};

}  // namespace

bool IsDetected(char separator) { return kDetected.find(separator) != std::string_view::npos; }

CsvFormat DetectFormat(std::string_view text, const std::string& name, const ReadOptions& options) {
  RefuseOtherThanText(text, name);
  return FormatFinder(text, name, options).Find();
}

}  // namespace kalmia::analysis
