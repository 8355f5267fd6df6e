#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>

#include "CrossValidationCase.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/simd/Lanes.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/NCScale.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"
#include "testing/Threads.h"

namespace {

/// A fit, of PLS or without Y of PCA, and the tables it is done on: X has cells enough for a team to pay, in
/// LargeWithHoles also for the threads that columns with holes are regressed on.
struct Fit {
  const char* what;
  int rows, columns, yVariables;
  double holes;
};

void PrintTo(const Fit& fit, std::ostream* out) { *out << fit.what; }

constexpr int kComponents = 3;

/// Small noise around three directions that X and Y have in common, so that every component is well determined.
NCDataMatrix<float> TableWithStructure(const NCDataMatrix<float>& scores, int columns, double holes, unsigned seed) {
  NCDataMatrix<float> table = scores.MatrixMultiply(RandomMatrix<float>(3, columns, 0, seed), true, false);
  table += RandomMatrix<float>(table.SizeRows(), columns, 0, seed + 1) * 0.125L;
  table += RandomMatrix<float>(table.SizeRows(), columns, holes, seed + 2) * 0.125L;  // a sum with a hole is one
  return table;
}

class SameBits : public testing::TestWithParam<Fit> {
 protected:
  /// The stored model after three components.
  std::string StoredModel() const { return GetParam().yVariables == 0 ? StoredPCA() : StoredPLS(); }

  std::string StoredPCA() const {
    NCPCA model(&x_, /*maxIterations=*/4);
    for (int a = 1; a <= kComponents; ++a) {
      model.NextComponent(nullptr, nullptr, 0, nullptr);
      model.CalculateResiduals();
    }
    return StreamOf(model);
  }

  std::string StoredPLS() const {
    NCPLS model(&x_, &y_, /*maxIterations=*/20);
    for (int a = 1; a <= kComponents; ++a) {
      model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
      model.CalculateResiduals();
    }
    return StreamOf(model);
  }

  std::string StoredModelOfTeam(int threads) {
    const Threads some(threads);
    const int team = TeamReallyGot(std::int64_t{GetParam().rows} * GetParam().columns);
    RecordProperty("team_of_" + std::to_string(threads), team);
    EXPECT_EQ(team, threads);
    return StoredModel();
  }

  const NCDataMatrix<float> scores_ = RandomMatrix<float>(3, GetParam().rows, 0, 1);
  const NCDataMatrix<float> x_ = TableWithStructure(scores_, GetParam().columns, GetParam().holes, 2);
  const NCDataMatrix<float> y_ = TableWithStructure(scores_, GetParam().yVariables, GetParam().holes, 5);
};

TEST_P(SameBits, OfAModelComeFromOneTwoAndThreeThreads) {
  const std::string one = StoredModelOfTeam(1);
  EXPECT_TRUE(one == StoredModelOfTeam(2));
  EXPECT_TRUE(one == StoredModelOfTeam(3));
}

TEST_P(SameBits, OfAModelComeWithThreadingSwitchedOff) {
  const std::string two = StoredModelOfTeam(2);
  const Threads some(2);
  NCMultiThreading::ThreadingControl::SetThreadingIsOn(false);
  EXPECT_TRUE(two == StoredModel());
}

TEST_P(SameBits, OfAModelComeFromTheLanesAndFromTheirScalarTwins) {
  const bool before = kalmia::simd::UsesScalarTwins();
  kalmia::simd::UseScalarTwins(false);
  const std::string lanes = StoredModelOfTeam(2);
  kalmia::simd::UseScalarTwins(true);
  const std::string twins = StoredModelOfTeam(2);
  kalmia::simd::UseScalarTwins(before);
  EXPECT_TRUE(lanes == twins);
}

/// A table scaled, the scaling, and the cross-validation of a first component of the scaled table.
std::string ScaledAndValidated(int threads, double holes) {
  constexpr int kRows = 300;
  constexpr int kColumns = 250;
  constexpr int kIterations = 20;
  const Threads some(threads);
  EXPECT_EQ(TeamReallyGot(std::int64_t{kRows} * kColumns), threads);
  const NCDataMatrix<float> scores = RandomMatrix<float>(3, kRows, 0, 1);
  NCDataMatrix<float> X = TableWithStructure(scores, kColumns, holes, 2);
  const NCDataMatrix<float> Y = TableWithStructure(scores, /*columns=*/2, holes, 5);
  NCScale scale(kColumns);
  for (int j = 1; j <= kColumns; ++j) scale.SetType(j, NCScale::ScalingUnitVariance);
  scale.ScaleMatrix(&X, /*newModel=*/true);
  NCPLS model(&X, &Y, kIterations);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  PLSCrossValidation validation(&model, /*rounds=*/3, nullptr);
  const NCDataVector<float> ssY(2, 1.0F);
  validation.NextComponent(&(*model.GetWprim())[1], kIterations, ssY, nullptr, /*quiet=*/true);
  return StreamOf(X) + StreamOf(scale) + Everything(validation);
}

TEST(SameBitsOfTasks, OfAScalingAndACrossValidationComeFromOneTwoAndThreeThreads) {
  for (const double holes : {0.0, 0.1}) {
    SCOPED_TRACE(holes);
    const std::string one = ScaledAndValidated(1, holes);
    EXPECT_TRUE(one == ScaledAndValidated(2, holes));
    EXPECT_TRUE(one == ScaledAndValidated(3, holes));
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, SameBits,
                         testing::Values(Fit{"OneYComplete", 400, 301, 1, 0}, Fit{"OneYWithHoles", 400, 301, 1, 0.1},
                                         Fit{"SixYComplete", 301, 400, 6, 0}, Fit{"SixYWithHoles", 301, 400, 6, 0.1},
                                         Fit{"ManyYWithHoles", 500, 100, 90, 0.3},
                                         Fit{"LargeWithHoles", 800, 600, 1, 0.05},
                                         Fit{"PCATallComplete", 1501, 80, 0, 0},
                                         Fit{"PCATallWithHoles", 1501, 80, 0, 0.1},
                                         Fit{"PCAWideComplete", 80, 1501, 0, 0},
                                         Fit{"PCAWideWithHoles", 80, 1501, 0, 0.1},
                                         Fit{"PCALargeWithHoles", 800, 600, 0, 0.05}),
                         [](const auto& info) { return info.param.what; });

}  // namespace
