// Feeds texts to the reader of preprocessing steps and, line by line, to the reader of distances from the names of
// channels. Steps that are read have a text of their own, which stands for the same steps; they either refuse a small
// table, or learn what can be stored and makes of the same table the same again.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "app/console/ExitCode.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/steps/Steps.h"
#include "kalmia/analysis/steps/internal/ChannelSpacing.h"
#include "kalmia/analysis/text/internal/TextParts.h"

using kalmia::app::ExitCode;
using kalmia::app::ExitCodeOf;
using kalmia::analysis::CellRows;
using kalmia::analysis::Failure;
using kalmia::analysis::Signals;
using kalmia::analysis::Step;
using kalmia::analysis::StepChain;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

std::string TextOf(const std::vector<Step>& steps) {
  std::string text;
  for (const Step& step : steps) {
    Require(IsValid(step));
    text += StepText(step) + "\n";
  }
  return text;
}

/// Whole, with a hole, falling by 99 a channel, and empty.
Signals SmallTable() {
  Signals signals{"table", {"1", "2", "3", "4"}, {}, {}, CellRows(4, 9)};
  for (int c = 1; c <= 9; ++c) {
    signals.names.push_back(std::to_string(900 + 2 * c) + "nm");
    signals.cells.Row(0)[c - 1] = 2 + c % 3;
    if (c != 4) signals.cells.Row(1)[c - 1] = 0.25 * c;
    signals.cells.Row(2)[c - 1] = 1000.0 - 99.0 * c;
  }
  return signals;
}

/// To the bit.
bool AreSame(const CellRows& a, const CellRows& b) {
  if (a.Rows() != b.Rows() || a.Columns() != b.Columns()) return false;
  for (int r = 0; r < a.Rows(); ++r) {
    if (std::memcmp(a.Row(r), b.Row(r), static_cast<std::size_t>(a.Columns()) * sizeof(double)) != 0) return false;
  }
  return true;
}

void FeedTable(const std::vector<Step>& steps) try {
  Signals learnt = SmallTable();
  kalmia::analysis::Notes notes;
  const StepChain chain = LearnChain(steps, &learnt, &notes);
  const std::string bytes = StepChainFileBytes(chain);
  const StepChain read = kalmia::analysis::ReadStepChainFile(bytes, "chain");
  Require(StepChainFileBytes(read) == bytes);
  Signals applied = SmallTable();
  ApplyChain(read, &applied);
  Require(AreSame(applied.cells, learnt.cells) && applied.names == learnt.names && applied.names == OutputNames(read));
  for (int r = 0; r < applied.cells.Rows(); ++r)
    for (int c = 0; c < applied.cells.Columns(); ++c) Require(!std::isinf(static_cast<float>(applied.cells.Row(r)[c])));
  if (EndsCompressed(read)) RestoreSignals(read, &applied);
} catch (const Failure& failure) {
  Require(ExitCodeOf(failure) == ExitCode::BadData);
}

void FeedSteps(const std::string& text) try {
  const std::vector<Step> steps = kalmia::analysis::ParseSteps(text, "text");
  const std::string canonical = TextOf(steps);
  Require(TextOf(kalmia::analysis::ParseSteps(canonical, "again")) == canonical);
  constexpr std::size_t kMostSteps = 20;  // each works through the table
  if (steps.size() <= kMostSteps) FeedTable(steps);
} catch (const Failure& failure) {
  Require(ExitCodeOf(failure) == ExitCode::Usage);
}

void FeedNames(const std::string& text) {
  const std::vector<std::string> names = kalmia::analysis::Split(text, '\n');
  const auto spacing = kalmia::analysis::ChannelSpacing(names);
  if (!spacing) return;
  const auto stored = static_cast<float>(*spacing);
  Require(names.size() > 1 && std::isfinite(stored) && stored != 0.0F);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  FeedSteps(text);
  FeedNames(text);
  return 0;
}
