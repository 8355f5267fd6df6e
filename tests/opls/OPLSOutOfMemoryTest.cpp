// Steps and assignments that lack memory: at every allocation in turn.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <type_traits>

#include "OPLSCase.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

/// Assigns `from` to copies of `to`, each time failing at another allocation.
template <class Object>
void ExpectAllOrNothing(Object& from, Object& to) {
  const std::string before = Everything(to), after = Everything(from);
  int failures = 0;
  for (int which = 1; which < 10000; ++which) {
    std::remove_const_t<Object> target(to);
    bool threw = false;
    {
      const FailAllocation fail(which);
      try {
        target = from;
      } catch (const std::bad_alloc&) {
        threw = true;
      }
    }
    ASSERT_EQ(Everything(target), threw ? before : after) << "allocation " << which;
    if (!threw) break;
    ++failures;
  }
  EXPECT_GT(failures, 10);
}

class OPLSOutOfMemory : public ::testing::Test {
 protected:
  const Tables some_ = RelatedTables(8, 3, 2, 0.1, 1), others_ = RelatedTables(7, 4, 1, 0.0, 2);
};

TEST_F(OPLSOutOfMemory, AssigningAModelChangesAllOrNothing) {
  NCOPLS from = FittedOPLS(some_, 2, 1), to = FittedOPLS(others_, 1, 1);
  ExpectAllOrNothing(from, to);
}

TEST_F(OPLSOutOfMemory, AssigningAPredictionChangesAllOrNothing) {
  NCOPLS some = FittedOPLS(some_, 2, 1), others = FittedOPLS(others_, 1, 1);
  NCOPLSPred from = PredictedBy(&some, some_.X), to = PredictedBy(&others, others_.X);
  ExpectAllOrNothing(from, to);
}

TEST_F(OPLSOutOfMemory, AssigningAValidationOrItsDataChangesAllOrNothing) {
  OPLSCrossValidation from(&some_.X, &some_.Y, 2, 2, nullptr, nullptr);
  OPLSCrossValidation to(&others_.X, &others_.Y, 1, 2, nullptr, nullptr);
  for (OPLSCrossValidation* either : {&from, &to}) either->NextComponent(nullptr);
  ExpectAllOrNothing(from, to);
  const OPLSCrossvalidationData dataFrom = *from.GetData(), dataTo = *to.GetData();
  ExpectAllOrNothing(dataFrom, dataTo);
}

// ---- the caller's tables, whose cells models share

/// Lets every `stride`-th allocation of `work` fail in turn; the tables keep their cells, counts and places.
void ExpectTablesLeftAlone(const Tables& tables, int stride, const std::function<void()>& work) {
  const auto x = CellsOf(tables.X), y = CellsOf(tables.Y);
  const float *const xPlace = tables.X[1].begin(), *const yPlace = tables.Y[1].begin();
  int failures = 0;
  for (int which = 1; which < 100000; which += stride) {
    bool threw = false;
    {
      const FailAllocation fail(which);
      try {
        work();
      } catch (const std::bad_alloc&) {
        threw = true;
      }
    }
    ASSERT_EQ(CellsOf(tables.X), x) << "allocation " << which;
    ASSERT_EQ(CellsOf(tables.Y), y) << "allocation " << which;
    if (!threw) break;
    ++failures;
  }
  EXPECT_GT(failures, 20);
  EXPECT_TRUE(HasExactCounts(tables.X) && HasExactCounts(tables.Y));
  EXPECT_EQ(tables.X[1].begin(), xPlace);
  EXPECT_EQ(tables.Y[1].begin(), yPlace);
}

class OPLSOutOfMemoryAtWork : public ::testing::TestWithParam<double> {};  // holes
INSTANTIATE_TEST_SUITE_P(Holes, OPLSOutOfMemoryAtWork, ::testing::Values(0.0, 0.1));

TEST_P(OPLSOutOfMemoryAtWork, AModelLeavesTheTablesAlone) {
  const Tables tables = RelatedTables(6, 4, 2, GetParam(), 1);
  const NCOPLS whole = FittedOPLS(tables, 1, 1);
  const std::string before = Everything(whole);
  ExpectTablesLeftAlone(tables, 1, [&tables] { FittedOPLS(tables, 1, 1); });
  EXPECT_EQ(Everything(whole), before) << "a model that shared the tables";
}

TEST_P(OPLSOutOfMemoryAtWork, ARebuiltModelAndItsPredictionLeaveTheTablesAlone) {
  const Tables tables = RelatedTables(6, 4, 2, GetParam(), 1);
  const NCOPLS stored = FittedOPLS(tables, 2, 1);
  ExpectTablesLeftAlone(tables, 1, [&] {
    NCOPLS model(&tables.X, &tables.Y, stored.GetWMatrices(), stored.GetPMatrices(), stored.GetCMatrices(),
                 stored.GetWOprim(), stored.GetPOprim(), stored.GetCOprim(), 2, 200);
    PredictedBy(&model, tables.X);
  });
}

TEST(OPLSOutOfMemoryInATeam, IsAnExceptionForTheCaller) {
  const Threads team(2);
  const Tables tables = RelatedTables(4, 9000, 1, 0.0, 1);  // as many cells as pay for a team, in few rows
  ASSERT_EQ(TeamReallyGot(4 * 9000), 2);
  ExpectTablesLeftAlone(tables, 5, [&tables] { FittedOPLS(tables, 1, 1); });
}

}  // namespace
