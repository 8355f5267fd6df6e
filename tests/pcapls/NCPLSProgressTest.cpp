#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

namespace {

/// Three Y variables, so that a component takes several rounds, or one.
class NCPLSProgress : public ::testing::Test {
 protected:
  NCPLSProgress()
      : X_(RandomMatrix<float>(12, 5, 0.1, 1)), Y_(RandomMatrix<float>(12, 3, 0.1, 2)), y_(Y_.GetColumn(1)) {}

  /// A model of several Y variables with one component, and one of a single Y variable without.
  std::unique_ptr<NCPLS> ModelOfSeveralY() const {
    auto model = std::make_unique<NCPLS>(&X_, &Y_, 200);
    model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model->CalculateResiduals();
    return model;
  }
  std::unique_ptr<NCPLS> ModelOfOneY() const { return std::make_unique<NCPLS>(&X_, &y_, 200); }

  /// The calls to a caller's bar while one more component is computed.
  static ProgressLog Watch(NCPLS* model, bool quiet, bool strict) {
    ProgressLog log;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    model->NextComponent(bar.get(), nullptr, quiet, strict);
    return log;
  }

  /// The calls to the bar that the model opens itself.
  static ProgressLog WatchOwnBar(NCPLS* model, bool quiet, bool strict) {
    ProgressLog log;
    const RecordOwnBars factory(&log);
    model->NextComponent(nullptr, nullptr, quiet, strict);
    return log;
  }

  static std::string Title(int component) {
    CString title;
    title.Format(LanguageString::Get(10047), component);
    return static_cast<const char*>(title);
  }

  /// The number behind the operation's name.
  static float FirstNumber(const std::string& call) { return std::stof(call.substr(call.find(' '))); }

  NCDataMatrix<float> X_;
  NCDataMatrix<float> Y_;
  NCDataVector<float> y_;
};

TEST_F(NCPLSProgress, RunsACallersBarFromItsFirstMeasureAndPollsAtTheEnd) {
  const auto model = ModelOfSeveralY();
  const ProgressLog log = Watch(model.get(), /*quiet=*/false, /*strict=*/true);
  const int rounds = model->GetIterations();
  ASSERT_GT(rounds, 2);
  ASSERT_EQ(static_cast<int>(log.calls.size()), rounds + 3) << log.Joined();  // and the bar's end
  EXPECT_EQ(log.Count("SetRange"), 1);
  EXPECT_EQ(log.Count("SetValue"), rounds) << "in the first round too";
  EXPECT_EQ(log.calls[0].substr(0, 8), "SetRange");
  EXPECT_EQ(FirstNumber(log.calls[0]), FirstNumber(log.calls[1]));
  EXPECT_GE(FirstNumber(log.calls[static_cast<std::size_t>(rounds)]), 0.0F) << "converged: the bar is full";
  EXPECT_LT(FirstNumber(log.calls[static_cast<std::size_t>(rounds) - 1]), 0.0F);
  EXPECT_EQ(log.calls[static_cast<std::size_t>(rounds) + 1], "IsBreakPressed");
}

TEST_F(NCPLSProgress, MeasuresTheLogarithmOfTheRelativeSquaredChange) {
  NCPLS model(&X_, &Y_, /*maxIterations=*/1);
  const ProgressLog log = Watch(&model, /*quiet=*/false, /*strict=*/false);
  const double d = static_cast<double>((*model.GetUprim())[1].Difference(Y_.GetNIPALSStartColumn()));
  std::ostringstream expected;
  expected << "SetRange " << static_cast<float>(-(std::log10(d) + 10.0) * 10.0) << " 0";
  EXPECT_EQ(log.calls[0], expected.str());
}

TEST_F(NCPLSProgress, MeasuresMinusOneWhereNothingChangesOrNoChangeCanBeMeasured) {
  const NCDataMatrix<float> X = MatrixOf<float>({{1}, {2}});
  const NCDataMatrix<float> Y = MatrixOf<float>({{1, 0}, {2, 0}});  // w = 1, t = x, c = (1, 0) and u = x again
  NCPLS unchanged(&X, &Y, 200);
  EXPECT_EQ(Watch(&unchanged, /*quiet=*/false, /*strict=*/true).Joined(),
            "SetRange 1 0; SetValue 1; IsBreakPressed; ~");
  EXPECT_EQ(unchanged.GetIterations(), 1);
  const NCDataMatrix<float> none(2, 2);
  NCPLS unknown(&X, &none, 200);
  EXPECT_EQ(Watch(&unknown, /*quiet=*/false, /*strict=*/false).Joined(), "SetRange 1 0; ~");
  EXPECT_EQ(unknown.GetIterations(), 1);
}

TEST_F(NCPLSProgress, GivesACallersBarARangeOfItsOwnWhereOneRoundIsAll) {
  const auto model = ModelOfOneY();
  EXPECT_EQ(Watch(model.get(), /*quiet=*/false, /*strict=*/true).Joined(),
            "SetRange 1 0; SetValue -0; IsBreakPressed; ~");
}

TEST_F(NCPLSProgress, OnlySetsTheRangeWhenNotStrict) {
  const auto several = ModelOfSeveralY();
  const ProgressLog log = Watch(several.get(), /*quiet=*/false, /*strict=*/false);
  ASSERT_GT(several->GetIterations(), 1);
  EXPECT_EQ(log.calls.size(), 2U) << log.Joined();
  EXPECT_EQ(log.Count("SetRange"), 1);
  const auto one = ModelOfOneY();
  EXPECT_EQ(Watch(one.get(), /*quiet=*/false, /*strict=*/false).Joined(), "SetRange 1 0; ~");
}

TEST_F(NCPLSProgress, OpensABarOfItsOwnAfterTheFirstRoundAndMovesItFromTheSecondOn) {
  const auto model = ModelOfSeveralY();
  const ProgressLog log = WatchOwnBar(model.get(), /*quiet=*/false, /*strict=*/true);
  const int rounds = model->GetIterations();
  ASSERT_GT(rounds, 2);
  EXPECT_EQ(log.Count("SetRange"), 0);
  EXPECT_EQ(log.Count("SetValue"), rounds - 1);
  EXPECT_EQ(log.calls.front().find("open " + Title(2) + " -"), 0U) << log.calls.front();
  EXPECT_NE(log.calls.front().find(" 0 0 0 1 null"), std::string::npos) << log.calls.front();
  EXPECT_EQ(log.calls[log.calls.size() - 2], "IsBreakPressed");
  EXPECT_EQ(log.calls.back(), "~");
}

TEST_F(NCPLSProgress, OpensABarOfItsOwnForASingleRoundToo) {
  const auto model = ModelOfOneY();
  EXPECT_EQ(WatchOwnBar(model.get(), /*quiet=*/false, /*strict=*/true).Joined(),
            "open " + Title(1) + " -0 0 0 0 1 null; IsBreakPressed; ~");
  EXPECT_EQ(WatchOwnBar(model.get(), /*quiet=*/false, /*strict=*/false).Joined(),
            "open " + Title(2) + " -0 0 0 0 1 null; ~");
}

TEST_F(NCPLSProgress, OpensABarOfItsOwnOnceAndNeverMovesItWhenNotStrict) {
  const auto model = ModelOfSeveralY();
  const ProgressLog log = WatchOwnBar(model.get(), /*quiet=*/false, /*strict=*/false);
  ASSERT_GT(model->GetIterations(), 2);
  ASSERT_EQ(log.calls.size(), 2U) << log.Joined();
  EXPECT_EQ(log.calls[0].find("open " + Title(2) + " -"), 0U) << log.calls[0];
  EXPECT_EQ(log.calls[1], "~");
}

TEST_F(NCPLSProgress, OpensNoBarWhenQuiet) {
  const auto model = ModelOfSeveralY();
  EXPECT_EQ(WatchOwnBar(model.get(), /*quiet=*/true, /*strict=*/true).Joined(), "");
}

TEST_F(NCPLSProgress, PollsAQuietCallersBarAtTheEndButDoesNotMoveIt) {
  const auto model = ModelOfSeveralY();
  EXPECT_EQ(Watch(model.get(), /*quiet=*/true, /*strict=*/true).Joined(), "IsBreakPressed; ~");
  EXPECT_EQ(Watch(model.get(), /*quiet=*/true, /*strict=*/false).Joined(), "~");
}

TEST_F(NCPLSProgress, GivesTheSameNumbersWithAndWithoutABar) {
  const auto silent = ModelOfSeveralY();
  silent->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  for (const bool strict : {true, false})
    for (const bool quiet : {true, false}) {
      const auto watched = ModelOfSeveralY();
      Watch(watched.get(), quiet, strict);
      EXPECT_EQ(StreamOf(*watched), StreamOf(*silent));
    }
}

/// Stops a strict component at each call in turn. Up to call `lastValue` a value of the bar is the next question,
/// behind it the poll after the loop, which is the last call.
void ExpectEveryStopLeavesTheModelAsItWas(const std::function<std::unique_ptr<NCPLS>()>& make, int lastValue, int calls,
                                          const std::function<void(NCPLS*, ProgressLog*)>& addComponent) {
  for (int stopAt = 1; stopAt <= calls; ++stopAt) {
    SCOPED_TRACE("stopped at call " + std::to_string(stopAt) + " of " + std::to_string(calls));
    const auto model = make();
    const std::string before = StreamOf(*model);
    const int components = model->GetComponents();
    ProgressLog log;
    log.stopAt = stopAt;
    try {
      addComponent(model.get(), &log);
      ADD_FAILURE() << "no error";
    } catch (const NCError& error) {
      const bool atTheEnd = stopAt > lastValue;
      EXPECT_EQ(error.GetLevel(), atTheEnd ? NCError::Level0 : NCError::Level2);
      EXPECT_EQ(error.GetMessage(), LanguageString::Get(atTheEnd ? 10161 : 10160));
    }
    EXPECT_EQ(StreamOf(*model), before);
    EXPECT_EQ(model->GetComponents(), components);

    const auto untouched = make();
    for (NCPLS* either : {model.get(), untouched.get()}) either->NextComponent(nullptr, nullptr, true, true);
    EXPECT_EQ(StreamOf(*model), StreamOf(*untouched)) << "it goes on as if nobody had stopped it";
  }
}

TEST_F(NCPLSProgress, LeavesTheModelAsItWasWheneverACallersBarSaysStop) {
  const auto stop = [](bool quiet) {
    return [quiet](NCPLS* model, ProgressLog* log) {
      const std::unique_ptr<NCProgress> bar = RecordingBar(log);
      model->NextComponent(bar.get(), nullptr, quiet, /*strict=*/true);
    };
  };
  const auto several = [this] { return ModelOfSeveralY(); };
  const auto one = [this] { return ModelOfOneY(); };
  const auto model = several();
  Watch(model.get(), /*quiet=*/false, /*strict=*/true);
  const int rounds = model->GetIterations();
  ExpectEveryStopLeavesTheModelAsItWas(several, /*lastValue=*/rounds + 1, /*calls=*/rounds + 2, stop(false));
  ExpectEveryStopLeavesTheModelAsItWas(several, /*lastValue=*/0, /*calls=*/1, stop(true));
  ExpectEveryStopLeavesTheModelAsItWas(one, /*lastValue=*/2, /*calls=*/3, stop(false));
}

TEST_F(NCPLSProgress, LeavesTheModelAsItWasWheneverItsOwnBarSaysStop) {
  const auto stop = [](NCPLS* model, ProgressLog* log) {
    const RecordOwnBars factory(log);
    model->NextComponent(nullptr, nullptr, /*quiet=*/false, /*strict=*/true);
  };
  const auto several = [this] { return ModelOfSeveralY(); };
  const auto one = [this] { return ModelOfOneY(); };
  const auto model = several();
  WatchOwnBar(model.get(), /*quiet=*/false, /*strict=*/true);
  // The opening is a call too; then a value for each round but the first, and the poll.
  const int rounds = model->GetIterations();
  ExpectEveryStopLeavesTheModelAsItWas(several, /*lastValue=*/rounds, /*calls=*/rounds + 1, stop);
  ExpectEveryStopLeavesTheModelAsItWas(one, /*lastValue=*/0, /*calls=*/2, stop);
}

TEST_F(NCPLSProgress, NeitherStopsNorAsksWhenNotStrict) {
  const auto stopped = ModelOfSeveralY();
  const auto silent = ModelOfSeveralY();
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_NO_THROW(stopped->NextComponent(bar.get(), nullptr, /*quiet=*/false, /*strict=*/false));
  silent->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  EXPECT_EQ(StreamOf(*stopped), StreamOf(*silent));
  EXPECT_EQ(log.Count("IsBreakPressed"), 0);
}

}  // namespace
