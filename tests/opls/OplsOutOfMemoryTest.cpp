// Assignments that lack memory: at every allocation in turn.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <type_traits>

#include "OplsCase.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

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

class OplsOutOfMemory : public ::testing::Test {
 protected:
  const Tables some_ = RelatedTables(8, 3, 2, 0.1, 1), others_ = RelatedTables(7, 4, 1, 0.0, 2);
};

TEST_F(OplsOutOfMemory, AssigningAModelChangesAllOrNothing) {
  NCOPLS from = FittedOpls(some_, 2, 1), to = FittedOpls(others_, 1, 1);
  ExpectAllOrNothing(from, to);
}

TEST_F(OplsOutOfMemory, AssigningAPredictionChangesAllOrNothing) {
  NCOPLS some = FittedOpls(some_, 2, 1), others = FittedOpls(others_, 1, 1);
  NCOPLSPred from = PredictedBy(&some, some_.X), to = PredictedBy(&others, others_.X);
  ExpectAllOrNothing(from, to);
}

TEST_F(OplsOutOfMemory, AssigningAValidationOrItsDataChangesAllOrNothing) {
  OPLSCrossValidation from(&some_.X, &some_.Y, 2, 2, nullptr, nullptr);
  OPLSCrossValidation to(&others_.X, &others_.Y, 1, 2, nullptr, nullptr);
  for (OPLSCrossValidation* either : {&from, &to}) either->NextComponent(nullptr);
  ExpectAllOrNothing(from, to);
  const OPLSCrossvalidationData dataFrom = *from.GetData(), dataTo = *to.GetData();
  ExpectAllOrNothing(dataFrom, dataTo);
}

}  // namespace
