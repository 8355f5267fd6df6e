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

/// Bytes that are unpacked at once; there must be memory for so many.
constexpr std::size_t kGunzipPiece = std::size_t{1} << 18U;

/// Tells how many bytes of memory may still be taken.
using MemoryLeft = std::function<std::uint64_t()>;

/// Unpacks a gzip file of one or several members; zeros after the last member are ignored. Takes memory piece by piece
/// as bytes come out, and never more than is left. `progress` (may be null) moves from 0 to 1 with the bytes read.
/// `name` is how messages call the file.
/// Throws BadData where the file is damaged, ends early, has other bytes than zeros after its end or needs more memory
/// than there is, Stopped on a stop of the progress.
TextBuffer Gunzip(std::string_view bytes, const std::string& name, NCProgress* progress,
                  const MemoryLeft& memoryLeft = AvailableMemory);

}  // namespace kalmia::analysis
