#pragma once

#include <iosfwd>

namespace kalmia {

/// The numeric containers had no directory before version 4: their fields stood straight behind each other, in version
/// 2 behind a text that means nothing. Passes over that text; false where it does not read, and for any version but 1
/// to 3.
bool BeginOldLayout(std::istream& stream, short version);

}  // namespace kalmia
