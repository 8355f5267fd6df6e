// What lacks memory: at every allocation in turn, nothing may be left behind or half done.
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Cells = std::vector<std::vector<std::vector<float>>>;

/// Whether the call went through although allocation `which` was to fail.
bool GoesThrough(int which, const std::function<void()>& call) {
  const FailAllocation fail(which);
  try {
    call();
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

/// Makes the call with every `stride`-th of its allocations failing, up to the first that it does not reach; after each
/// `then` says whether it went through.
void FailEvery(int stride, const std::function<void()>& call, const std::function<void(bool)>& then) {
  int failures = 0;
  for (bool wentThrough = false; !wentThrough; ++failures) {
    SCOPED_TRACE("allocation " + std::to_string(1 + failures * stride));
    wentThrough = GoesThrough(1 + failures * stride, call);
    then(wentThrough);
    if (::testing::Test::HasFailure()) return;
  }
  EXPECT_GT(failures, 10);
}

/// The same for a call that leaves nothing behind, however it ends.
void ExpectNothingIsLeft(int stride, const std::function<void()>& call) {
  call();  // what the library keeps for good is there by now
  int which = 1;
  for (bool wentThrough = false; !wentThrough; which += stride) {
    const PeakBytesDuring meter;
    wentThrough = GoesThrough(which, call);
    ASSERT_EQ(meter.GetLiveBytes(), 0) << "allocation " << which;
  }
  EXPECT_GT(which, 10 * stride);
}

class O2PLSOutOfMemory : public ::testing::Test {
 protected:
  O2PLSOutOfMemory() : fitted_(blocks_.X, blocks_.Y, /*checkDimensions=*/false, 100) { fitted_.Fit(2, 1, 1); }

  /// `step` on a copy of `model` does all or nothing, where `show` is all that there is to see.
  template <class Model>
  void ExpectAllOrNothing(const Model& model, const std::function<Cells(Model*)>& show,
                          const std::function<void(Model*)>& step) {
    Model whole(model), untouched(model);
    step(&whole);
    const Cells after = show(&whole), before = show(&untouched);
    ASSERT_NE(after, before);
    Model* target = nullptr;
    std::unique_ptr<Model> copy;
    const auto renew = [&] {
      copy = std::make_unique<Model>(model);
      target = copy.get();
    };
    renew();
    FailEvery(
        1, [&] { step(target); },
        [&](bool wentThrough) {
          ASSERT_EQ(show(target), wentThrough ? after : before);
          renew();
        });
  }

  const FloatBlocks blocks_ = MakeFloatBlocks({12, 5, 4, 2, 1, 1}, 0.1, 3);
  NCO2PLS fitted_;
};

/// All matrices, and what the working blocks make of a further component where there are any.
Cells AllOf(NCO2PLS* model) {
  Cells all = Everything(*model);
  NCO2PLS further(*model);
  if (!TextOf([&] { further.NextPredictiveComp(); }))
    for (const auto& cells : Everything(further)) all.push_back(cells);
  return all;
}

TEST_F(O2PLSOutOfMemory, AStepOfTheModelDoesAllOrNothing) {
  using Step = std::function<void(NCO2PLS*)>;
  NCO2PLS extracting(blocks_.X, blocks_.Y, /*checkDimensions=*/false, 100);
  extracting.NextOrthogonalComponent(/*xSide=*/true, 2);
  extracting.NextOrthogonalComponent(/*xSide=*/false, 2);
  extracting.CalculatePredictiveComps(1);
  NCO2PLS between(extracting);
  between.SubtractLastPredictiveComp();
  NCO2PLS fitted(fitted_);
  const struct {
    const char* what;
    const NCO2PLS* model;
    Step step;
  } cases[] = {
      {"NextPredictiveComp", &between, [](NCO2PLS* m) { m->NextPredictiveComp(); }},
      {"SubtractLastPredictiveComp", &extracting, [](NCO2PLS* m) { m->SubtractLastPredictiveComp(); }},
      {"InitPredCompCalculation", &fitted, [](NCO2PLS* m) { m->InitPredCompCalculation(); }},
      {"NextOrthogonalComponent of X", &fitted, [](NCO2PLS* m) { m->NextOrthogonalComponent(true, 2); }},
      {"NextOrthogonalComponent of Y", &fitted, [](NCO2PLS* m) { m->NextOrthogonalComponent(false, 2); }},
      {"FlipPredictiveModel", &fitted, [](NCO2PLS* m) { m->FlipPredictiveModel({true, false}, {true, true}); }},
      {"assignment", &fitted, [&between](NCO2PLS* m) { *m = between; }}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ExpectAllOrNothing<NCO2PLS>(*c.model, AllOf, c.step);
  }
}

TEST_F(O2PLSOutOfMemory, AFitLeavesAModelThatCanBeFittedAgain) {
  const auto whole = Everything(fitted_);
  NCO2PLS model(blocks_.X, blocks_.Y, /*checkDimensions=*/false, 100);
  FailEvery(
      7, [&] { model.Fit(2, 1, 1); },
      [&](bool) {
        model.Fit(2, 1, 1);
        ASSERT_EQ(Everything(model), whole);
      });
}

TEST_F(O2PLSOutOfMemory, NothingIsLeftOfAPrediction) {
  ExpectNothingIsLeft(1, [&] {
    const NCO2PLSYPred y(&blocks_.X, &fitted_);
    const NCO2PLSXPred x(&blocks_.Y, &fitted_);
    const NCDataMatrix<float> copy = y.GetYPred();
  });
}

TEST_F(O2PLSOutOfMemory, NothingIsLeftOfASearch) {
  // A stride that has no factor in common with what the rounds repeat comes by every place sooner or later.
  ExpectNothingIsLeft(211, [&] {
    const O2PLSCrossValidation validation(&blocks_.X, &blocks_.Y, 3, nullptr, nullptr, 100, 2, 1, 1);
  });
}

TEST_F(O2PLSOutOfMemory, NothingIsLeftOfAnEstimate) {
  ExpectNothingIsLeft(5, [&] {
    const O2PLSPredictiveComponentEstimator estimator(&blocks_.X, &blocks_.Y, 3, nullptr, 2);
  });
}

Cells AllOfFilter(NCYOrthogonalPLS* model) {
  return {CellsOf(*model->GetPprim()), CellsOf(*model->GetWprim()), CellsOf(*model->GetTprim()),
          CellsOf(*model->GetXResiduals()), {{static_cast<float>(model->GetComponents())}}};
}

TEST_F(O2PLSOutOfMemory, AStepOfTheFilterDoesAllOrNothingAndCanBeRepeated) {
  const FloatBlocks noise{RandomMatrix<float>(8, 4, 0.05, 1), RandomMatrix<float>(8, 2, 0.05, 2)};
  NCYOrthogonalPLS fresh(&noise.X, &noise.Y, /*maxIterations=*/2, 0);
  NCYOrthogonalPLS one(fresh);
  one.NextComponent(/*showProgress=*/false);
  const auto next = [](NCYOrthogonalPLS* m) { m->NextComponent(/*showProgress=*/false); };
  ExpectAllOrNothing<NCYOrthogonalPLS>(one, AllOfFilter, next);
  ExpectAllOrNothing<NCYOrthogonalPLS>(one, AllOfFilter, [](NCYOrthogonalPLS* m) { m->RemoveComponent(); });
  ExpectAllOrNothing<NCYOrthogonalPLS>(one, AllOfFilter, [&fresh](NCYOrthogonalPLS* m) { *m = fresh; });

  const Cells whole = AllOfFilter(&one);
  NCYOrthogonalPLS model(fresh);
  FailEvery(
      3, [&] { model.NextComponent(/*showProgress=*/false); },
      [&](bool wentThrough) {
        if (!wentThrough) model.NextComponent(/*showProgress=*/false);
        ASSERT_EQ(AllOfFilter(&model), whole) << "Y, or its scores, are still there";
        model = fresh;
      });
}

TEST_F(O2PLSOutOfMemory, AReadFilterIsWholeOrEmpty) {
  NCYOrthogonalPLS written(&blocks_.X, &blocks_.Y, /*maxIterations=*/2, 0);
  written.NextComponent(/*showProgress=*/false);
  const std::string bytes = StreamOf(written);
  const Cells whole = AllOfFilter(&written);
  NCYOrthogonalPLS target(written);
  bool isRead = false;
  FailEvery(
      1,
      [&] {
        std::istringstream stream(bytes);
        isRead = static_cast<bool>(stream >> target);
      },
      [&](bool wentThrough) {
        if (wentThrough && isRead) {
          ASSERT_EQ(AllOfFilter(&target), whole);
        } else if (target.GetComponents() == 0) {
          ASSERT_EQ(target.GetXResiduals()->SizeRows(), 0);
        } else {
          ASSERT_EQ(AllOfFilter(&target), whole) << "not begun to read";
        }
      });
  EXPECT_TRUE(isRead);
}

}  // namespace
