#include "app/ReadOptions.h"

#include <string_view>

#include "app/CommandOptions.h"
#include "app/DisplayText.h"

namespace kalmia::app {

namespace {

/// Characters that tell lines and fields apart cannot open a comment, and those that numbers begin with must not: rows
/// would be left out.
bool MayOpenComments(const std::string& text) {
  return text.size() == 1 && static_cast<unsigned char>(text.front()) < 0x80 &&
         std::string_view("\"\r\n \t,;+-.0123456789").find(text) == std::string_view::npos;
}

}  // namespace

void DeclareReading(CommandOptions* command, ReadOptions* options) {
  command->Names("--na", &options->missingWords,
                 "further word for a missing cell, beside NA, NaN, nan and an empty cell; may be repeated", "WORD");
  command->Number(
      "--skip-lines", 0, &options->skipLines,
      "leave out so many lines at the beginning of the table; a line sep=; behind them names the separator");
  command->Text("--comment", "CHAR", &options->comment, "leave out lines of the table that begin with this character");
  command->Check([options] {
    if (options->comment.empty() || MayOpenComments(options->comment)) return std::string();
    return "--comment takes one ASCII character, and no blank, comma, semicolon, quotation mark, digit, sign or point, "
           "not " +
           Quoted(options->comment);
  });
}

}  // namespace kalmia::app
