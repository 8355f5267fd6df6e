#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "kalmia/analysis/table/TextBuffer.h"
#include "kalmia/support/AvailableMemory.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Whether the bytes begin as a gzip file does.
bool IsGzip(std::string_view bytes);

/// Bytes that come out of a gzip file at once, and the least that there has to be memory for.
constexpr std::size_t kGunzipPiece = std::size_t{1} << 18U;

/// Tells how many bytes of memory may still be taken.
using MemoryLeft = std::function<std::uint64_t()>;

/// What a gzip file of one or several members holds; zeros behind the last one are passed over. Takes memory for what
/// comes out alone, piece by piece, and never more than is left. `progress` (may be null) moves from 0 to 1 with the
/// bytes that have gone in. `name` is how messages call the file.
/// Throws BadData where the file is damaged, ends early, has anything but zeros behind its end or holds more
/// than there is memory for, Stopped on a stop of the progress.
TextBuffer Gunzip(std::string_view bytes, const std::string& name, NCProgress* progress,
                  const MemoryLeft& memoryLeft = AvailableMemory);

}  // namespace kalmia::analysis
