#include "kalmia/analysis/chart/ExactTestResult.h"

#include <algorithm>
#include <utility>

#include "kalmia/analysis/chart/internal/FourfoldTest.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/statistics/Sta.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

constexpr int kNoLimit = 0;  ///< of the memory, but for the library's own cap
constexpr Sta::SidedNess kSides[] = {Sta::LeftSided, Sta::RightSided, Sta::TwoSided};  // in the order of the words

Sta::SidedNess SideOf(const std::string& alternative) {
  const std::vector<std::string>& words = AlternativeWords();
  const auto place = std::find(words.begin(), words.end(), alternative);
  if (place == words.end()) {
    throw BadRequest("the alternative of an exact test is " + Either(words) + ", not " + Quoted(alternative),
                     InSetting("alternative"));
  }
  return kSides[place - words.begin()];
}

/// The library's message without its own heading, on one line.
std::string ReasonOf(const NCError& error) {
  std::string text = static_cast<const char*>(error.GetMessage());
  text.erase(0, text.find('\n') + 1);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return OneLine(text);
}

double ProbabilityOf(const CountTable& counts, Sta::SidedNess side, bool hybrid, NCProgress* progress) {
  WorkProgress(progress).Begin("exact test");
  const std::vector<int>& n = counts.counts;
  if (counts.IsFourfold()) return FourfoldProbability(n[0], n[1], n[2], n[3], side);
  try {
    return ShortestDouble(
        Sta::GetFisherExactProbability(n.data(), counts.rows, counts.columns, hybrid, Sta::TwoSided, kNoLimit));
  } catch (const NCError& error) {
    throw BadData(counts.name + ": too large a table for the exact test: " + ReasonOf(error) +
                  " Here: merge rows or columns of small counts.");
  }
}

}  // namespace

const std::vector<std::string>& AlternativeWords() {
  static const std::vector<std::string> words = {"less", "greater", "two-sided"};
  return words;
}

ExactTestResult ComputeExactTest(const ExactTestRecipe& recipe, const Table& table, NCProgress* progress) {
  Notes notes;
  const CountTable counts = ReadCounts(table, &notes, progress);
  ExactTestResult result = ComputeExactTest(recipe, counts, progress);
  notes.Add(result.notes);
  result.notes = std::move(notes);
  return result;
}

ExactTestResult ComputeExactTest(const ExactTestRecipe& recipe, const CountTable& counts, NCProgress* progress) {
  const Sta::SidedNess side = SideOf(recipe.alternative);
  const bool isFourfold = counts.IsFourfold();
  if (!isFourfold && side != Sta::TwoSided) {
    throw BadData(counts.name + ": the alternative " + recipe.alternative + " goes with a table of 2 x 2, not of " +
                      std::to_string(counts.rows) + " x " + std::to_string(counts.columns),
                  InSetting("alternative"));
  }
  Notes notes;
  if (isFourfold && recipe.hybrid) notes.Add("hybrid plays no part in a table of 2 x 2");
  return {counts, recipe.alternative, recipe.hybrid && !isFourfold,
          ProbabilityOf(counts, side, recipe.hybrid, progress), std::move(notes)};
}

}  // namespace kalmia::analysis
