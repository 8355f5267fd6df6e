#include "app/CsvMarks.h"

#include <algorithm>
#include <optional>

#include "app/CommandOptions.h"
#include "app/CsvTable.h"
#include "app/DisplayText.h"

namespace kalmia::app {

namespace {

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

void DeclareCsvMarks(CommandOptions* command, CsvMarkOptions* options, const std::vector<CsvOption>& csv) {
  command->Text("--separator", "MARK", &options->separator,
                "what separates the columns of all CSV that is written: comma, semicolon or tab");
  command->Text("--decimal", "MARK", &options->decimal,
                "decimal mark of the numbers in it: point or comma, which takes another separator");
  command->Check([options] { return Fault(*options); });
  command->Check([options, csv] { return WithoutUse(*options, csv); });
}

CsvMarks MarksOf(const CsvMarkOptions& options, const CsvMarks& otherwise) {
  CsvMarks marks = {SeparatorOf(options.separator).value_or(otherwise.separator),
                    DecimalOf(options.decimal).value_or(otherwise.decimal)};
  if (marks.separator != ',' || marks.decimal != ',') return marks;
  if (options.separator.empty()) {
    marks.separator = ';';
  } else {
    marks.decimal = '.';
  }
  return marks;
}

void NoteDecimalsThatGiveWay(const CsvMarkOptions& options, const CsvTable& table, Notes* notes) {
  if (!table.DecimalComma() || !options.decimal.empty()) return;
  if (MarksOf(options, {table.Separator(), ','}).decimal == ',') return;
  notes->Add("the decimal commas of the table are written as points, as commas separate its columns now");
}

}  // namespace kalmia::app
