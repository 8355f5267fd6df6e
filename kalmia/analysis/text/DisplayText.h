#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text on one line: control characters become escapes (\n, \t, \x1b), all other bytes stay. Names and words come
/// from files that anybody may have written; a terminal sees them through this.
KALMIA_EXPORT std::string OneLine(std::string_view text);

/// The text, or where it is longer than about 40 characters its beginning and "...".
KALMIA_EXPORT std::string Beginning(std::string_view text);

/// The beginning of the text on one line, between quotation marks.
KALMIA_EXPORT std::string Quoted(std::string_view text);

/// So many columns a message names; it counts the others.
constexpr std::size_t kColumnsNamed = 10;

/// "a, b and c", each on one line; with more than `limit` names "a, b and 7 more". A limit of 0 names all.
KALMIA_EXPORT std::string Listed(const std::vector<std::string>& names, std::size_t limit = 0);

/// "a, b or c", each on one line.
KALMIA_EXPORT std::string Either(const std::vector<std::string>& names);

/// "1 row", "2 rows".
KALMIA_EXPORT std::string Counted(std::size_t count, const std::string& noun);

/// The text, or as many whole words of its beginning as fit into so many columns of a terminal with "..." behind them;
/// where not even that fits, nothing.
KALMIA_EXPORT std::string ShortenedTo(std::size_t columns, const std::string& text);

/// Columns that the text takes on a terminal, one per code point of UTF-8.
KALMIA_EXPORT std::size_t DisplayWidth(std::string_view text);

}  // namespace kalmia::analysis
