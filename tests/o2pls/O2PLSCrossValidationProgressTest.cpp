// Refusals, stops and what the user is shown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/support/CString.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Table = NCDataMatrix<float>;

FloatBlocks SmallBlocks() { return MakeFloatBlocks({20, 5, 4, 1, 1, 1}, 0.1, 3); }

std::optional<std::string> TextOfValidation(const Table& X, const Table& Y, NCIntegralVector<int, -99>* groups,
                                            NCProgress* progress, int predictive, int xOrthogonal, int yOrthogonal) {
  return TextOf([&] {
    O2PLSCrossValidation(&X, &Y, 4, progress, groups, 200, predictive, xOrthogonal, yOrthogonal);
  });
}

TEST(O2PLSCrossValidationRefusals, AskForAllOrNoneOfTheNumbersThenForWholeBlocksThenForTheGroups) {
  const FloatBlocks blocks = SmallBlocks();
  Table holedX = blocks.X, holedY = blocks.Y;
  holedX(3, 3, kHole<float>);
  holedY(3, 3, kHole<float>);
  NCIntegralVector<int, -99> few(19, 0);
  const char* const numbers = "O2PLSCrossValidation, all or none of the number of components must be fixed";
  const char* const holes =
      "X and Y can not contain missing values in O2PLSCrossValidation::O2PLSCrossValidation";
  const char* const groups = "Internal error in O2PLSCrossValidation::O2PLSCrossValidation";
  for (const auto& [p, x, y] : {std::tuple{1, -1, 0}, {1, 0, -1}, {1, -1, -1}, {-1, 0, -1}, {-1, -1, 0}, {-1, 0, 0}})
    EXPECT_EQ(TextOfValidation(holedX, holedY, &few, nullptr, p, x, y), numbers);
  for (const int n : {1, -1}) {
    EXPECT_EQ(TextOfValidation(holedX, blocks.Y, &few, nullptr, n, n, n), holes);
    EXPECT_EQ(TextOfValidation(blocks.X, holedY, nullptr, nullptr, n, n, n), holes);
    EXPECT_EQ(TextOfValidation(blocks.X, blocks.Y, &few, nullptr, n, n, n), groups);
  }
}

TEST(O2PLSCrossValidationProgress, NamesItsStagesOnABarFromZeroToSeven) {
  const FloatBlocks blocks = SmallBlocks();
  ProgressLog log;
  const auto bar = RecordingBar(&log);
  ASSERT_EQ(TextOfValidation(blocks.X, blocks.Y, nullptr, bar.get(), 1, 1, 1), std::nullopt);
  std::vector<std::string> stages;
  for (const std::string& call : log.calls)
    if (call.rfind("SetText", 0) == 0 || call.rfind("PushSubRange", 0) == 0 || call == "PopSubRange" ||
        call == "SetRange 0 7")
      stages.push_back(call);
  EXPECT_THAT(stages,
              ::testing::ElementsAre(
                  "SetRange 0 7", "SetText Estimating predictive components", "SetText Calculating initial Q2",
                  "PushSubRange 2 3", "SetText Estimating Y-orthogonal components", "PopSubRange", "PushSubRange 3 4",
                  "SetText Estimating X-orthogonal components", "PopSubRange", "SetText Final estimation of components",
                  "PushSubRange 4 5", "PopSubRange", "SetText Calculating CV results", "SetText Saving CV results"));
  EXPECT_EQ(log.Count("SetRange"), 4) << "the whole, and three searches of four rounds";
  EXPECT_THAT(log.calls, ::testing::Contains("SetRange 0 3"));
  EXPECT_THAT(log.calls, ::testing::Contains("SetValue 7"));
}

TEST(O2PLSCrossValidationProgress, StopsWhereverTheUserIsAskedAndNowhereElse) {
  const FloatBlocks blocks = SmallBlocks();
  std::set<std::string> texts;
  int stops = 0;
  for (int stopAt = 1;; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const auto bar = RecordingBar(&log);
    const auto text = TextOfValidation(blocks.X, blocks.Y, nullptr, bar.get(), 1, 1, 1);
    if (!text) break;  // the last question was over
    EXPECT_EQ(log.calls.back(), "IsBreakPressed");
    texts.insert(*text);
    ++stops;
  }
  EXPECT_EQ(texts, (std::set<std::string>{"Computations aborted.", "Computations aborted"}));
  EXPECT_GT(stops, 12) << "three searches ask in each of their rounds";
}

/// A bar that fails itself, with this error, when it is given a range for that time.
template <class Error>
class FailingSink : public NCProgress::Sink {
 public:
  FailingSink(int which, const Error& error) : which_(which), error_(error) {}
  void SetRange(float, float) override {
    if (++ranges_ == which_) throw error_;
  }
  bool SetValue(float) override { return true; }
  void SetText(const char*) override {}
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool IsBreakPressed() override { return false; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}

 private:
  int which_;
  Error error_;
  int ranges_ = 0;
};

/// What comes of an error in range `which` of the bar: 1 is that of the whole, 2 to 4 are those of the searches.
template <class Error>
std::optional<std::string> TextOfFailure(int which, const Error& error) {
  const FloatBlocks blocks = SmallBlocks();
  NCProgress bar(std::make_unique<FailingSink<Error>>(which, error));
  return TextOfValidation(blocks.X, blocks.Y, nullptr, &bar, 1, 1, 1);
}

TEST(O2PLSCrossValidationProgress, SaysThatItCouldNotBeComputedWhereASearchFails) {
  for (const int which : {2, 3, 4})
    EXPECT_EQ(TextOfFailure(which, NCError("the bar is broken")),
              "Cross validation could not be computed.\nThis can be due to low variance/missing values in the X and/or "
              "Y matrices.");
  EXPECT_EQ(TextOfFailure(1, NCError("the bar is broken")), "the bar is broken") << "that is not in a search";
}

TEST(O2PLSCrossValidationProgress, MakesAnErrorOfABareTextInASearch) {
  for (const int which : {2, 3, 4}) EXPECT_EQ(TextOfFailure(which, CString("out of paper")), "out of paper");
  EXPECT_THROW(TextOfFailure(1, CString("out of paper")), CString) << "elsewhere it stays what it is";
}

TEST(O2PLSCrossValidation, KeepsTheComponentsSoFarWhereARoundCannotHaveAnother) {
  // X has nothing beside what it has in common with Y, so the principal component of nothing fails: no component on
  // X's side, and no trial in the series, although two were asked for.
  Table X(16, 2, 0.0F), Y(16, 2, 0.0F);
  for (int i = 1; i <= 16; ++i) {
    const float common = i % 2 == 0 ? 1.0F : -1.0F;
    X(i, 1, common);
    Y(i, 1, common);
  }
  NCIntegralVector<int, -99> groups(16);
  for (int i = 1; i <= 16; ++i) groups(i) = (i - 1) / 4;
  const O2PLSCVResults r = O2PLSCrossValidation(&X, &Y, -1, nullptr, &groups, 200, 1, 2, 2).GetResults();
  EXPECT_EQ(r.PredictiveComponents, 1);
  EXPECT_EQ(r.XSideComponents, 0);
  EXPECT_EQ(r.YSideComponents, 0);
  EXPECT_EQ(r.Q2XSide.Size(), 0);
  EXPECT_EQ(r.XSideSignificance.Size(), 0);
  EXPECT_EQ(r.Q2Cum[1], 1.0F) << "the models are what they were before the trial";
}

}  // namespace
