#include "app/options/TableOptions.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "app/options/CommandOptions.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::app {

namespace {

/// Characters that tell lines and fields apart cannot open a comment, and those that numbers begin with must not: rows
/// would be left out.
bool MayOpenComments(const std::string& text) {
  return text.size() == 1 && static_cast<unsigned char>(text.front()) < 0x80 &&
         std::string_view("\"\r\n \t,;+-.0123456789").find(text) == std::string_view::npos;
}

std::optional<char> SeparatorOf(const std::string& word) {
  if (word == "comma" || word == ",") return ',';
  if (word == "semicolon" || word == ";") return ';';
  if (word == "tab" || word == "\t") return '\t';
  return std::nullopt;
}

std::optional<char> DecimalOf(const std::string& word) {
  if (word == "point" || word == ".") return '.';
  if (word == "comma" || word == ",") return ',';
  return std::nullopt;
}

/// What is wrong with the options; empty if nothing is.
std::string Fault(const CsvMarkOptions& options) {
  const std::optional<char> separator = SeparatorOf(options.separator), decimal = DecimalOf(options.decimal);
  if (!options.separator.empty() && !separator) {
    return "--separator takes comma, semicolon or tab, not " + Quoted(options.separator);
  }
  if (!options.decimal.empty() && !decimal) return "--decimal takes point or comma, not " + Quoted(options.decimal);
  if (separator == ',' && decimal == ',') {
    return "--separator comma and --decimal comma would cut numbers in two: give one of them another mark";
  }
  return "";
}

/// Why the marks have nothing to shape; empty where they have.
std::string WithoutUse(const CsvMarkOptions& options, const std::vector<CsvOption>& csv) {
  const auto isGiven = [](const CsvOption& option) { return !option.place->empty(); };
  if (!options.Given() || csv.empty() || std::any_of(csv.begin(), csv.end(), isGiven)) return "";
  std::string names;
  for (const CsvOption& option : csv) names += (names.empty() ? "" : " or ") + std::string(option.name);
  return std::string(options.separator.empty() ? "--decimal" : "--separator") + " is for CSV that is written: give " +
         names + " too";
}

}  // namespace

void DeclareReading(CommandOptions* command, ReadOptions* options) {
  command->Names("--na", &options->missingWords,
                 "another word for a missing cell, beside NA, NaN, nan and an empty cell; may be repeated", "WORD");
  command->Number(
      "--skip-lines", 0, &options->skipLines,
      "skip the first N lines of the table; a line sep=; after them names the separator");
  command->Text("--comment", "CHAR", &options->comment, "skip lines of the table that begin with this character");
  command->Check([options] {
    if (options->comment.empty() || MayOpenComments(options->comment)) return std::string();
    return "--comment takes one ASCII character, and no blank, comma, semicolon, quotation mark, digit, sign or point, "
           "not " +
           Quoted(options->comment);
  });
}

AskedMarks CsvMarkOptions::Asked() const { return {SeparatorOf(separator), DecimalOf(decimal)}; }

void DeclareCsvMarks(CommandOptions* command, CsvMarkOptions* options, const std::vector<CsvOption>& csv) {
  command->Text("--separator", "MARK", &options->separator,
                "separator of columns in the CSV that is written: comma, semicolon or tab");
  command->Text("--decimal", "MARK", &options->decimal,
                "decimal mark in the CSV that is written: point or comma; a comma needs another separator");
  command->Check([options] { return Fault(*options); });
  command->Check([options, csv] { return WithoutUse(*options, csv); });
}

}  // namespace kalmia::app
