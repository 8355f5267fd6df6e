// Validations that were stored and resumed, or copied, go on as if nothing had happened.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "OPLSRounds.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

class OPLSCrossValidationResume : public ::testing::TestWithParam<RoundsCase> {
 protected:
  const Tables tables_ = TablesOf(GetParam());
};

INSTANTIATE_TEST_SUITE_P(, OPLSCrossValidationResume, ::testing::ValuesIn(RoundsCases()),
                         [](const ::testing::TestParamInfo<RoundsCase>& info) { return info.param.name; });

OPLSCrossvalidationData ThroughAStream(const OPLSCrossvalidationData& data) {
  OPLSCrossvalidationData read;
  std::istringstream stream(Everything(data));
  EXPECT_TRUE(read.ReadObject(stream));
  return read;
}

/// Stores and resumes after each of three components; `groups` may be null.
void ExpectEqualWhenResumed(const Tables& tables, int predictive, Groups* groups) {
  OPLSCrossValidation uninterrupted = Validated(tables, predictive, kRounds, 0, groups);
  for (int o = 1; o <= 3; ++o) {
    const OPLSCrossvalidationData data = ThroughAStream(*uninterrupted.GetData());
    OPLSCrossValidation resumed(&tables.X, &tables.Y, &data, groups);
    EXPECT_EQ(resumed.SizeOComponents(), o - 1);
    for (OPLSCrossValidation* either : {&uninterrupted, &resumed}) either->NextComponent(nullptr);
    EXPECT_EQ(EverythingButTrainingSS(resumed), EverythingButTrainingSS(uninterrupted));
    EXPECT_EQ(resumed.GetSSYcvOriginal()->GetNumMisVal(), kRounds) << "training Y is not looked at again";
    EXPECT_EQ(uninterrupted.GetSSYcvOriginal()->GetNumMisVal(), 0);
  }
}

TEST_P(OPLSCrossValidationResume, StoredAndResumedAfterEachComponentAsTheUninterruptedOneToTheBit) {
  ExpectEqualWhenResumed(tables_, GetParam().predictive, nullptr);
}

/// Groups of neighbours; two observations are in no round.
Groups GroupsOfNeighbours(int observations) {
  std::vector<int> groups;
  for (int i = 0; i < observations; ++i) groups.push_back(i * kRounds / observations);
  groups[1] = kRounds;
  groups.back() = -1;
  return Ints(groups);
}

TEST_P(OPLSCrossValidationResume, ResumedWithGivenGroupsToTheBit) {
  Groups groups = GroupsOfNeighbours(tables_.X.SizeRows());
  ExpectEqualWhenResumed(tables_, GetParam().predictive, &groups);
  const OPLSCrossValidation other = Validated(tables_, GetParam().predictive, kRounds, 1);
  EXPECT_NE(CellsOf(*Validated(tables_, GetParam().predictive, kRounds, 1, &groups).GetYPred()),
            CellsOf(*other.GetYPred()))
      << "the groups make a difference";
}

TEST_P(OPLSCrossValidationResume, CopiedOrAssignedAsTheOriginalDoesAndOnItsOwn) {
  Groups groups = GroupsOfNeighbours(tables_.X.SizeRows());
  OPLSCrossValidation validation = Validated(tables_, GetParam().predictive, kRounds, 1, &groups);
  const std::string before = Everything(validation);
  OPLSCrossValidation copy(validation), assigned = Validated(RelatedTables(8, 3, 1, 0.0, 1), 1, 2, 0);
  assigned = validation;
  assigned = *&assigned;
  for (OPLSCrossValidation* other : {&copy, &assigned}) {
    EXPECT_EQ(Everything(*other), before);
    other->NextComponent(nullptr);
    EXPECT_EQ(Everything(validation), before);
  }
  validation.NextComponent(nullptr);
  for (OPLSCrossValidation* other : {&copy, &assigned}) EXPECT_EQ(Everything(*other), Everything(validation));
}

TEST_P(OPLSCrossValidationResume, LeavingTheTablesAlone) {
  const auto x = CellsOf(tables_.X), y = CellsOf(tables_.Y);
  Validated(tables_, GetParam().predictive, kRounds, 1);
  EXPECT_EQ(CellsOf(tables_.X), x);
  EXPECT_EQ(CellsOf(tables_.Y), y);
}

}  // namespace
