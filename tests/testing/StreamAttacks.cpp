#include "testing/StreamAttacks.h"

#include <utility>

PipeBuffer::PipeBuffer(std::string bytes) : bytes_(std::move(bytes)) {
  setg(&bytes_[0], &bytes_[0], &bytes_[0] + bytes_.size());
}

std::string StreamOf(const VexStreamBase& object) {
  std::ostringstream stream;
  EXPECT_TRUE(stream << object) << "the write failed";
  return stream.str();
}

std::int64_t MemoryBound(std::size_t streamLength) { return 65536 + 8 * static_cast<std::int64_t>(streamLength); }
