#pragma once

#include <string>
#include <string_view>

namespace kalmia::analysis {

/// Throws BadData where the bytes are not a readable text; the message says what they are and what to do. Workbooks,
/// archives and packed files are known by their first bytes; UTF-16 and UTF-32 by a byte order mark or by the zero
/// bytes of the first letters; anything else with a zero byte is refused too. `name` is how messages call the bytes.
void RefuseOtherThanText(std::string_view bytes, const std::string& name);

}  // namespace kalmia::analysis
