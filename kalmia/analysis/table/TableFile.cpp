#include "kalmia/analysis/table/TableFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <system_error>
#include <utility>

#include "kalmia/analysis/table/TextBuffer.h"
#include "kalmia/analysis/table/internal/Gunzip.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20U;
constexpr float kUnpacked = 0.4F;  ///< of the bar

[[noreturn]] void FailToRead(const std::string& path) {
  throw BadFile("cannot read " + OneLine(path) + ": " + std::generic_category().message(errno));
}

TextBuffer BytesOf(const std::string& path, WorkProgress* work) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) FailToRead(path);
  TextBuffer text;
  for (;;) {
    work->Ask();
    if (text.FreeRoom() == 0) text.Reserve(std::max(kBlock, 2 * text.Size()));
    file.read(text.Free(), static_cast<std::streamsize>(std::min(text.FreeRoom(), kBlock)));
    text.Grow(static_cast<std::size_t>(file.gcount()));
    if (file.bad() || (file.fail() && !file.eof())) FailToRead(path);
    if (file.eof()) return text;
  }
}

}  // namespace

Table TableOfBytes(TextBuffer bytes, const std::string& name, const ReadOptions& options, NCProgress* progress) {
  if (!IsGzip(bytes.View())) return Table(std::move(bytes), name, options, progress);
  WorkProgress work(progress);
  work.Bar()->PushSubRange(0.0F, kUnpacked);
  TextBuffer text = Gunzip(bytes.View(), name, work.Bar());
  work.Bar()->PopSubRange();
  bytes = TextBuffer();
  work.Bar()->PushSubRange(kUnpacked, 1.0F);
  return Table(std::move(text), name, options, work.Bar());
}

Table ReadTableFile(const std::string& path, const ReadOptions& options, NCProgress* progress) {
  const std::string name = OneLine(path);
  WorkProgress work(progress);
  work.Begin("reading " + name);
  return TableOfBytes(BytesOf(path, &work), name, options, work.Bar());
}

}  // namespace kalmia::analysis
