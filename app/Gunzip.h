#pragma once

#include <string>
#include <string_view>

#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// Whether the bytes begin as a gzip file does.
bool IsGzip(std::string_view bytes);

/// What a gzip file of one or several members holds; zeros behind the last one are passed over. Takes memory for what
/// comes out alone, piece by piece, and never more than the machine has available. `progress` (may be null) moves from
/// 0 to 1 with the bytes that have gone in. `name` is how messages call the file.
/// Throws Failure (BadData) where the file is damaged, ends early or holds more than there is memory for, (Stopped) on
/// a stop of the progress.
std::string Gunzip(std::string_view bytes, const std::string& name, NCProgress* progress);

}  // namespace kalmia::app
