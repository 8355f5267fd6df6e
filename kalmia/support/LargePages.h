#pragma once

#include <cstddef>

#include "kalmia/support/Export.h"

namespace kalmia {

/// Asks the system to back these bytes, which nobody has written yet, by large pages as they are touched: hundreds of
/// megabytes then cost a fraction of the faults. A wish: what the system makes of it changes no content, and nothing is
/// reported. Worth it from some megabytes on.
KALMIA_EXPORT void PreferLargePages(void* begin, std::size_t bytes);

}  // namespace kalmia
