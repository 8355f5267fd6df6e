#include "kalmia/support/LargePages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace kalmia {

void PreferLargePages(void* begin, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = (address + page - 1) / page * page;
  const std::uintptr_t end = (address + bytes) / page * page;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#else
  static_cast<void>(begin), static_cast<void>(bytes);
#endif
}

}  // namespace kalmia
