#pragma once

#include <cstddef>

#include "kalmia/support/Export.h"

namespace kalmia {

/// Asks the system to back these bytes, not yet written, by large pages: touching hundreds of megabytes then causes far
/// fewer page faults. The system may ignore the request; contents never change, and nothing is reported. It pays from
/// some megabytes on.
KALMIA_EXPORT void PreferLargePages(void* begin, std::size_t bytes);

}  // namespace kalmia
