// The Y-orthogonal model on a table of which more than half is missing.
#include <gtest/gtest.h>

#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "kalmia/o2pls/OSCPLSComponentValidator.h"
#include "kalmia/pcapls/NCComponentValidator.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPLS.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

class NCYOrthogonalPLSWithManyHoles : public ::testing::Test {
 protected:
  NCYOrthogonalPLSWithManyHoles()
      : X_(RandomMatrix<float>(15, 6, 0.55, 4)), Y_(RandomMatrix<float>(15, 2, 0, 2)), model_(&X_, &Y_, 1, 0) {
    for (int i = 1; i <= X_.SizeRows(); ++i)
      if (X_[i].GetNumMisVal() == X_.SizeColumns()) X_(i, 1, 0.5F);  // no row may be empty
    model_ = NCYOrthogonalPLS(&X_, &Y_, /*maxIterations=*/1, /*maxPLSComponents=*/0);
  }
  Table X_, Y_;
  NCYOrthogonalPLS model_;
};

/// The principal scores of Y, an observation a row.
Table ScoresOf(const Table& Y) {
  NCPCA model(&Y, 1);
  PCA_SS_ComponentValidator validator(nullptr, 0.001F);
  validator.SetPCAModel(&model);
  while (validator.IsValid()) {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    model.CalculateResiduals();
  }
  Table scores = *model.GetTprim();
  scores.Transpose();
  return scores;
}

TEST_F(NCYOrthogonalPLSWithManyHoles, FindsItsWeightsInSumsOverWhatIsThereAndNothingHeldUp) {
  NCPCA first(&X_, 1);
  first.NextComponent(nullptr, nullptr, 0, nullptr);
  const Vector w = (*first.GetPprim())[1];
  const Table scores = ScoresOf(Y_);
  Table inverse = scores;
  inverse.TransformToMprim_mul_M();
  inverse.TransformToInverse();
  const Vector scoresOfX = X_.RegressRows(w);
  ASSERT_NE(CellsOf(scoresOfX), CellsOf(X_.SpecialNipalsRegressRowsFix(w, nullptr, 0))) << "here that matters";
  const Vector t = scoresOfX - scores * (inverse * scores.PreMultiply(scoresOfX));
  NCPLS inside(&X_, &t, 1);
  OSCPLSComponentValidator validator(&inside, 0);
  while (validator.IsValid()) {
    inside.NextComponent(nullptr, nullptr, /*quiet=*/false, /*strict=*/true);
    inside.CalculateResiduals();
  }
  Vector expected = inside.GetRegressionCoefficients(-1).GetColumn(1);
  expected.Normalise();
  model_.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(CellsOf((*model_.GetWprim())[1]), CellsOf(expected));
}

TEST_F(NCYOrthogonalPLSWithManyHoles, HasScoresAndLoadingsOverWhatIsThereAndNothingHeldUp) {
  Table before = X_;
  model_.NextComponent(/*showProgress=*/false);
  const Vector& w = (*model_.GetWprim())[1];
  const Vector t = before.RegressRows(w), p = before.RegressColumns(t);
  EXPECT_EQ(CellsOf((*model_.GetTprim())[1]), CellsOf(t));
  EXPECT_EQ(CellsOf((*model_.GetPprim())[1]), CellsOf(p));
  EXPECT_NE(CellsOf(t), CellsOf(before.SpecialNipalsRegressRowsFix(w, nullptr, 0))) << "here that matters";
  EXPECT_NE(CellsOf(p), CellsOf(before.SpecialNipalsRegressColumnsFix(t))) << "here that matters";
  before.AddVprimV(t, p, -1.0F);
  EXPECT_EQ(CellsOf(*model_.GetXResiduals()), CellsOf(before));
  Table filtered = X_;
  model_.CalculateResiduals(&filtered);
  EXPECT_EQ(CellsOf(filtered), CellsOf(before));
}

}  // namespace
