#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "PCAValidationCase.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

namespace {

constexpr int kLimit = 200;

class NCPCAProgress : public ::testing::Test {
 protected:
  /// A model with one component, which has been taken out.
  std::unique_ptr<NCPCA> Model() const {
    auto model = std::make_unique<NCPCA>(&X_, kLimit);
    model->NextComponent(nullptr, nullptr, 0, nullptr);
    model->CalculateResiduals();
    return model;
  }

  static ProgressLog Watch(NCPCA* model) {
    ProgressLog log;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    model->NextComponent(bar.get(), nullptr, 0, nullptr);
    return log;
  }

  static ProgressLog WatchOwnBar(NCPCA* model) {
    ProgressLog log;
    const RecordOwnBars factory(&log);
    model->NextComponent(nullptr, nullptr, 0, nullptr);
    return log;
  }

  /// The number behind the operation's name.
  static float FirstNumber(const std::string& call) { return std::stof(call.substr(call.find(' '))); }

  const NCDataMatrix<float> X_ = TableOfThreeDirections(12, 6, 0.1);
};

TEST_F(NCPCAProgress, RunsACallersBarFromItsFirstMeasureAndMovesItFromTheSecondRoundOn) {
  const auto model = Model();
  const ProgressLog log = Watch(model.get());
  const int rounds = model->GetIterations();
  ASSERT_GT(rounds, 2);
  EXPECT_EQ(log.Count("SetRange"), 1);
  EXPECT_EQ(log.Count("SetValue"), rounds - 1);
  ASSERT_EQ(static_cast<int>(log.calls.size()), rounds + 1) << log.Joined();  // and the bar's end, which is ours
  EXPECT_EQ(log.calls[0].substr(0, 8), "SetRange");
  EXPECT_EQ(log.calls[0].substr(log.calls[0].rfind(' ')), " 0");
  const float first = FirstNumber(log.calls[0]);
  const float last = FirstNumber(log.calls[log.calls.size() - 2]);
  EXPECT_LT(first, 0.0F);
  EXPECT_GE(last, 0.0F) << "at or behind the end: converged";
  EXPECT_GT(FirstNumber(log.calls[1]), first) << "a converging iteration fills the bar";
}

TEST_F(NCPCAProgress, OpensABarOfItsOwnAfterTheFirstRoundAndClosesIt) {
  const auto model = Model();
  const ProgressLog log = WatchOwnBar(model.get());
  const int rounds = model->GetIterations();
  CString title;
  title.Format(LanguageString::Get(10041), 2);
  ASSERT_GT(rounds, 2);
  EXPECT_EQ(log.Count("open"), 1);
  EXPECT_EQ(log.Count("SetRange"), 0);
  EXPECT_EQ(log.Count("SetValue"), rounds - 1);
  EXPECT_EQ(log.calls.front().find("open " + std::string(title) + " -"), 0U) << log.calls.front();
  EXPECT_NE(log.calls.front().find(" 0 0 0 1 null"), std::string::npos) << log.calls.front();
  EXPECT_EQ(log.calls.back(), "~");
  EXPECT_EQ(static_cast<int>(log.calls.size()), rounds + 1);
}

TEST_F(NCPCAProgress, OpensABarOfItsOwnForASingleRoundToo) {
  const NCDataMatrix<float> column = MatrixOf<float>({{1}, {2}, {kMissing}});
  NCPCA model(&column, kLimit);
  CString title;
  title.Format(LanguageString::Get(10041), 1);
  EXPECT_EQ(WatchOwnBar(&model).Joined(), "open " + std::string(title) + " 1 0 0 0 1 null; ~");
}

TEST_F(NCPCAProgress, GivesTheSameNumbersWithAndWithoutABar) {
  const auto silent = Model();
  silent->NextComponent(nullptr, nullptr, 0, nullptr);
  const auto watched = Model();
  Watch(watched.get());
  EXPECT_TRUE(StreamOf(*watched) == StreamOf(*silent));
}

/// All that a model has but the number of components.
void ExpectUnchanged(const NCPCA& model, const NCPCA& before) {
  EXPECT_EQ(CellsOf(*model.GetPprim()), CellsOf(*before.GetPprim()));
  EXPECT_EQ(CellsOf(*model.GetTprim()), CellsOf(*before.GetTprim()));
  EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(*before.GetResiduals()));
  EXPECT_EQ(model.GetIterations(), before.GetIterations());
}

/// What is left of a model when `addComponent` failed: one component is counted and nothing else has changed, nothing
/// is taken out for it, and a model that is restored from the matrices goes on to the numbers of `whole`.
void ExpectOnlyCounted(NCPCA* model, const NCPCA& before, const NCPCA& whole) {
  EXPECT_EQ(model->GetComponents(), before.GetComponents() + 1);
  ExpectUnchanged(*model, before);
  model->CalculateResiduals();
  ExpectUnchanged(*model, before);
  NCPCA restored(model->GetResiduals(), model->GetPprim(), model->GetTprim(), kLimit);
  restored.NextComponent(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(restored.GetComponents(), whole.GetComponents());
  EXPECT_TRUE(StreamOf(restored) == StreamOf(whole));
}

TEST_F(NCPCAProgress, LeavesTheModelAsItWasButForTheCountWheneverACallersBarSaysStop) {
  const auto before = Model();
  const auto whole = Model();
  const int calls = static_cast<int>(Watch(whole.get()).calls.size()) - 1;
  for (int stopAt = 1; stopAt <= calls; ++stopAt) {
    SCOPED_TRACE("stopped at call " + std::to_string(stopAt) + " of " + std::to_string(calls));
    const auto model = Model();
    ProgressLog log;
    log.stopAt = stopAt;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    try {
      model->NextComponent(bar.get(), nullptr, 0, nullptr);
      ADD_FAILURE() << "no error";
    } catch (const NCError& error) {
      EXPECT_EQ(error.GetMessage(), LanguageString::Get(10147));
      EXPECT_EQ(error.GetLevel(), NCError::Level0);
    }
    // The range asks nothing: a wish to stop from the first call on is heard with the first value.
    EXPECT_EQ(static_cast<int>(log.calls.size()), std::max(stopAt, 2));
    ExpectOnlyCounted(model.get(), *before, *whole);
  }
}

TEST_F(NCPCAProgress, LeavesTheModelAsItWasButForTheCountWheneverItsOwnBarSaysStop) {
  const auto before = Model();
  const auto whole = Model();
  const int calls = static_cast<int>(WatchOwnBar(whole.get()).calls.size()) - 1;
  for (int stopAt = 1; stopAt <= calls; ++stopAt) {
    SCOPED_TRACE("stopped at call " + std::to_string(stopAt) + " of " + std::to_string(calls));
    const auto model = Model();
    ProgressLog log;
    log.stopAt = stopAt;
    {
      const RecordOwnBars factory(&log);
      EXPECT_THROW(model->NextComponent(nullptr, nullptr, 0, nullptr), NCError);
    }
    EXPECT_EQ(static_cast<int>(log.calls.size()), std::max(stopAt, 2) + 1);
    EXPECT_EQ(log.calls.back(), "~") << "the bar closes on the way out";
    ExpectOnlyCounted(model.get(), *before, *whole);
  }
}

TEST_F(NCPCAProgress, LeavesTheModelAsItWasButForTheCountWhereNoComponentCanBeComputed) {
  const auto whole = Model();
  whole->NextComponent(nullptr, nullptr, 0, nullptr);
  const auto before = Model();
  const auto model = Model();
  const NCDataVector<float> nothing(X_.SizeRows());
  try {
    model->NextComponent(nullptr, nullptr, 0, &nothing);
    ADD_FAILURE() << "no error";
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetMessage(), "PCA component could not be computed.");
    EXPECT_EQ(error.GetLevel(), NCError::Level0);
  }
  ExpectOnlyCounted(model.get(), *before, *whole);
}

TEST_F(NCPCAProgress, LeavesTheModelAsItWasButForTheCountWhereTheScoresAreNotFinite) {
  const auto whole = Model();
  whole->NextComponent(nullptr, nullptr, 0, nullptr);
  const auto before = Model();
  for (const float wrong : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
    const auto model = Model();
    NCDataVector<float> start = X_.GetNIPALSStartColumn();
    start(3, wrong);
    EXPECT_THROW(model->NextComponent(nullptr, nullptr, 0, &start), NCError);
    ExpectOnlyCounted(model.get(), *before, *whole);
  }
}

TEST_F(NCPCAProgress, LeavesTheModelAsItWasButForTheCountWheneverMemoryRunsOut) {
  const auto before = Model();
  const auto whole = Model();
  whole->NextComponent(nullptr, nullptr, 0, nullptr);
  bool failed = true;
  for (int which = 1; failed; ++which) {
    SCOPED_TRACE("allocation " + std::to_string(which));
    const auto model = Model();
    {
      const FailAllocation failure(which);
      try {
        model->NextComponent(nullptr, nullptr, 0, nullptr);
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    ASSERT_TRUE(failed || which > 10) << "there is more to allocate than that";
    if (failed) {
      ExpectOnlyCounted(model.get(), *before, *whole);
    } else {
      EXPECT_TRUE(StreamOf(*model) == StreamOf(*whole));
    }
  }
}

}  // namespace
