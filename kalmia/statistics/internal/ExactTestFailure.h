#pragma once

namespace kalmia {

/// Throws NCError with "Error in fexact.\n" in front of `reason`.
[[noreturn]] void FailExactTest(const char* reason);

}  // namespace kalmia
