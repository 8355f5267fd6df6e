#include "app/console/ReadTable.h"

#include <chrono>
#include <memory>
#include <utility>

#include "app/console/ConsoleProgress.h"
#include "app/console/InputFile.h"
#include "kalmia/analysis/table/TableFile.h"

namespace kalmia::app {

namespace {

constexpr std::chrono::milliseconds kShort{400};  ///< reading within this time shows no bar

constexpr float kRead = 0.2F;  ///< of the bar

}  // namespace

Table ReadTable(const std::string& file, const ReadOptions& options) {
  const std::string name = InputName(file);
  ProgressLine line(kShort);
  NCProgress progress(std::make_unique<ConsoleProgress>(&line));
  progress.SetText(("reading " + name).c_str());
  progress.PushSubRange(0.0F, kRead);
  TextBuffer bytes = ReadText(file, &progress);
  progress.PopSubRange();
  progress.PushSubRange(kRead, 1.0F);
  return TableOfBytes(std::move(bytes), name, options, &progress);
}

}  // namespace kalmia::app
