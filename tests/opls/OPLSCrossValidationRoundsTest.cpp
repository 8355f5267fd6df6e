// The rounds of cross-validations against models and predictions made by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "OPLSRounds.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

constexpr int kOrthogonal = 2;

/// A division for each round with default groups.
std::vector<Division> DivisionsOf(const Tables& tables) {
  const auto groups = GetDeafultCVGroupsVector(tables.X.SizeRows(), kRounds);
  std::vector<Division> divisions;
  for (int group = 0; group < kRounds; ++group) divisions.push_back(Divide(tables, groups, group));
  return divisions;
}

class OPLSCrossValidationRounds : public ::testing::TestWithParam<RoundsCase> {
 protected:
  const NCDataMatrix<float>& SetOf(int component) const {
    return validation_.GetTSets()->at(static_cast<std::size_t>(component - 1));
  }
  int LargestBlock() const {
    int largest = 0;
    for (const NCOPLS& model : models_) largest = std::max(largest, model.SizeComponents());
    return largest;
  }

  const Tables tables_ = TablesOf(GetParam());
  OPLSCrossValidation validation_ = Validated(tables_, GetParam().predictive, kRounds, kOrthogonal);
  const std::vector<Division> divisions_ = DivisionsOf(tables_);
  std::vector<NCOPLS> models_ = ModelsOf(divisions_, GetParam().predictive, kOrthogonal);
};

INSTANTIATE_TEST_SUITE_P(, OPLSCrossValidationRounds, ::testing::ValuesIn(RoundsCases()),
                         [](const ::testing::TestParamInfo<RoundsCase>& info) { return info.param.name; });

TEST_P(OPLSCrossValidationRounds, StoreTheModelsOfTheRestToTheBit) {
  const OPLSCrossvalidationData& data = *validation_.GetData();
  for (std::size_t g = 0; g < kRounds; ++g) {
    SCOPED_TRACE("group " + std::to_string(g));
    const NCOPLS& model = models_[g];
    EXPECT_EQ(StreamOfEach(data.WMatricesPerRound[g]), StreamOfEach(*model.GetWMatrices()));
    EXPECT_EQ(StreamOfEach(data.PMatricesPerRound[g]), StreamOfEach(*model.GetPMatrices()));
    EXPECT_EQ(StreamOfEach(data.CMatricesPerRound[g]), StreamOfEach(*model.GetCMatrices()));
    EXPECT_EQ(StreamOf(data.WOPerRound[g]), StreamOf(*model.GetWOprim()));
    EXPECT_EQ(StreamOf(data.POPerRound[g]), StreamOf(*model.GetPOprim()));
    EXPECT_EQ(StreamOf(data.COPerRound[g]), StreamOf(*model.GetCOprim()));
    const int row = static_cast<int>(g) + 1;
    EXPECT_EQ((*validation_.GetSSYcv())[row], static_cast<float>(model.GetYResiduals().GetSS()));
    EXPECT_EQ((*validation_.GetSSYcvOriginal())[row], static_cast<float>(divisions_[g].kept.Y.GetSS()));
  }
}

TEST_P(OPLSCrossValidationRounds, KeepTheScoresOfTheRestToTheBit) {
  for (std::size_t g = 0; g < kRounds; ++g) {
    const NCOPLS& model = models_[g];
    const int row = static_cast<int>(g) + 1;
    int at = 0;
    for (const int i : divisions_[g].keptRows) {
      SCOPED_TRACE("observation " + std::to_string(i) + " in round " + std::to_string(row));
      ++at;
      for (int a = 1; a <= model.SizeComponents(); ++a) EXPECT_EQ(SetOf(a)[row][i], (*model.GetTprim())[a][at]);
      EXPECT_EQ((*validation_.GetToSet())[row][i], (*model.GetTOprim())[kOrthogonal][at]);
    }
  }
}

TEST_P(OPLSCrossValidationRounds, PredictTheGroupToTheBit) {
  for (std::size_t g = 0; g < kRounds; ++g) {
    NCOPLSPred prediction = PredictedBy(&models_[g], divisions_[g].leftOut);
    const int row = static_cast<int>(g) + 1;
    int at = 0;
    for (const int i : divisions_[g].leftOutRows) {
      SCOPED_TRACE("observation " + std::to_string(i) + " in round " + std::to_string(row));
      ++at;
      for (int a = 1; a <= prediction.SizePComps(); ++a) {
        EXPECT_EQ(SetOf(a)[row][i], (*prediction.GetTPred())[a][at]);
        EXPECT_EQ((*validation_.GetTPred())[a][i], (*prediction.GetTPred())[a][at]);
      }
      EXPECT_EQ((*validation_.GetToSet())[row][i], (*prediction.GetTOPred())[kOrthogonal][at]);
      EXPECT_EQ((*validation_.GetToPred())[i], (*prediction.GetTOPred())[kOrthogonal][at]);
      EXPECT_EQ(CellsOf((*validation_.GetYPred())[i]), CellsOf((*prediction.GetYPred())[at]));
    }
  }
  EXPECT_EQ(StreamOf(validation_.GetYPredResiduals()), StreamOf(tables_.Y - *validation_.GetYPred()));
}

TEST_P(OPLSCrossValidationRounds, HaveNoScoresOfAComponentThatTheirBlockHasNot) {
  ASSERT_EQ(static_cast<int>(validation_.GetTSets()->size()), LargestBlock());
  ASSERT_EQ(validation_.GetTPred()->SizeRows(), LargestBlock());
  for (std::size_t g = 0; g < kRounds; ++g)
    for (int a = models_[g].SizeComponents() + 1; a <= LargestBlock(); ++a) {
      const NCDataVector<float> ofRound = SetOf(a)[static_cast<int>(g) + 1];
      EXPECT_EQ(ofRound.GetNumMisVal(), ofRound.Size()) << "group " << g;
      for (const int i : divisions_[g].leftOutRows) EXPECT_EQ((*validation_.GetTPred())[a][i], kHole<float>) << i;
    }
}

TEST_P(OPLSCrossValidationRounds, HaveASmallerBlockWhereTheSecondYIsFaint) {
  const int strongGroup = GetParam().strongGroup;
  for (int group = 0; group < kRounds; ++group) {
    const int whereDecided = group == strongGroup ? 1 : 2;
    const auto& blocks = validation_.GetData()->WMatricesPerRound[static_cast<std::size_t>(group)];
    for (const NCDataMatrix<float>& W : blocks)
      EXPECT_EQ(W.SizeRows(), strongGroup < 0 ? GetParam().predictive : whereDecided) << group;
  }
}

TEST(OPLSCrossValidationSigns, AreTurnedInTheseTables) {
  // Or else a validation that turns nothing would pass for one that does.
  Turns all;
  for (const RoundsCase& which : RoundsCases()) {
    Turns turns;
    ModelsOf(DivisionsOf(TablesOf(which)), which.predictive, kOrthogonal, &turns);
    if (which.strongGroup >= 0) {
      EXPECT_GT(turns.amongDifferentSizes, 0) << which.name;
    }
    all.predictive += turns.predictive;
    all.orthogonal += turns.orthogonal;
  }
  EXPECT_GT(all.predictive, 0);
  EXPECT_GT(all.orthogonal, 0);
}

}  // namespace
