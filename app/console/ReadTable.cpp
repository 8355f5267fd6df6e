#include "app/console/ReadTable.h"

#include <chrono>
#include <memory>
#include <utility>

#include "app/console/ConsoleProgress.h"
#include "app/console/InputFile.h"
#include "kalmia/analysis/table/Gunzip.h"

namespace kalmia::app {

using namespace analysis;

namespace {

constexpr std::chrono::milliseconds kShort{400};  ///< reading within this time shows no bar

// Shares of the bar.
constexpr float kRead = 0.2F;
constexpr float kUnpacked = 0.5F;

}  // namespace

CsvTable ReadTable(const std::string& file, const ReadOptions& options) {
  const std::string name = InputName(file);
  ProgressLine line(kShort);
  NCProgress progress(std::make_unique<ConsoleProgress>(&line));
  progress.SetText(("reading " + name).c_str());
  progress.PushSubRange(0.0F, kRead);
  TextBuffer text = ReadText(file, &progress);
  progress.PopSubRange();
  const bool isGzip = IsGzip(text.View());
  if (isGzip) {
    progress.PushSubRange(kRead, kUnpacked);
    text = Gunzip(text.View(), name, &progress);
    progress.PopSubRange();
  }
  progress.PushSubRange(isGzip ? kUnpacked : kRead, 1.0F);
  return CsvTable(std::move(text), name, options, &progress);
}

}  // namespace kalmia::app
