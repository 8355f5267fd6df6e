// Models and predictions against a twin in double.
#include <gtest/gtest.h>

#include <string>

#include "OPLSCase.h"
#include "PlainOPLS.h"
#include "testing/RandomTables.h"

namespace {

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;
  int emptyRow = 0;  ///< of X; 0: none
};

class NCOPLSBesideItsTwin : public ::testing::TestWithParam<Shape> {};

const Shape kShapes[] = {{"OneY", 24, 9, 1, 0.0, 1},
                         {"ThreeY", 24, 9, 3, 0.0, 2},
                         {"ThreeYOneComponent", 24, 9, 3, 0.0, 1},
                         {"Wide", 12, 40, 3, 0.0, 3},
                         {"OneYWithHoles", 24, 9, 1, 0.1, 1},
                         {"ThreeYWithHoles", 24, 9, 3, 0.1, 2},
                         {"WideWithHoles", 15, 40, 2, 0.1, 2},
                         {"ARowWithoutAnyX", 24, 9, 3, 0.1, 2, 5}};

INSTANTIATE_TEST_SUITE_P(, NCOPLSBesideItsTwin, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

void ExpectNear(const NCDataMatrix<float>& found, const plain::Table& expected, double tolerance, const char* what) {
  ASSERT_EQ(static_cast<std::size_t>(found.SizeRows()), expected.size()) << what;
  for (int a = 1; a <= found.SizeRows(); ++a)
    EXPECT_LT(plain::RelativeGap(plain::VectorOf(found[a]), expected[static_cast<std::size_t>(a - 1)]), tolerance)
        << what << ' ' << a;
}

TEST_P(NCOPLSBesideItsTwin, HasItsBlocksAndOrthogonalComponentsAndPredictsAlike) {
  const Shape& shape = GetParam();
  Tables tables = RelatedTables(shape.rows, shape.xVariables, shape.yVariables, shape.holes, 17);
  if (shape.emptyRow > 0) tables.X.SetRow(shape.emptyRow, kHole<float>);
  // Two rounds of principal components that need more, and two passes, so that both sides do the same number.
  const int limit = 2;
  const int orthogonal = 2;
  NCOPLS model = FittedOPLS(tables, shape.predictive, orthogonal, limit);
  const plain::OPLS twin(plain::TableOf(tables.X), plain::TableOf(tables.Y), shape.predictive, orthogonal, limit,
                         limit);
  // Some ten roundings to float in a row, 2^-24 each, in what a component stands on; a component takes up to 90 % of
  // what is left, which makes an error ten times as large in relation, once for each of the components before it.
  const double tolerance = 2e-4;
  for (std::size_t o = 0; o <= orthogonal; ++o) {
    SCOPED_TRACE("block " + std::to_string(o));
    ExpectNear((*model.GetWMatrices())[o], twin.W[o], tolerance, "W");
    ExpectNear((*model.GetPMatrices())[o], twin.P[o], tolerance, "P");
    ExpectNear((*model.GetCMatrices())[o], twin.C[o], tolerance, "C");
  }
  ExpectNear(*model.GetTprim(), twin.T, tolerance, "T");
  ExpectNear(*model.GetTOprim(), twin.TO, tolerance, "TO");
  ExpectNear(*model.GetWOprim(), twin.WO, tolerance, "WO");
  ExpectNear(*model.GetPOprim(), twin.PO, tolerance, "PO");
  // Where the block spans all of a complete Y, what the orthogonal components have of it is the noise of rounding.
  if (shape.predictive < shape.yVariables) ExpectNear(*model.GetCOprim(), twin.CO, 10 * tolerance, "CO");

  const NCDataMatrix<float> fresh = RelatedTables(10, shape.xVariables, 1, shape.holes, 18).X;
  ExpectNear(*PredictedBy(&model, fresh).GetYPred(), twin.Predict(plain::TableOf(fresh)), 10 * tolerance, "Y");
}

TEST_P(NCOPLSBesideItsTwin, LetsItsHolesSettleInAsManyPasses) {
  const Shape& shape = GetParam();
  const Tables tables = RelatedTables(shape.rows, shape.xVariables, shape.yVariables, shape.holes, 17);
  const NCOPLS model = FittedOPLS(tables, shape.predictive, /*orthogonal=*/1);
  const plain::OPLS twin(plain::TableOf(tables.X), plain::TableOf(tables.Y), shape.predictive, /*orthogonal=*/1,
                         /*rounds=*/200, /*passes=*/200);
  // A principal component of the model ends once it moves by 1e-5 of its length, and has some ten times that to go
  // where singular values are 10 % apart; passes that end at 5 % instead of 1 % fail here.
  const double tolerance = 1e-3;
  for (std::size_t o = 0; o <= 1; ++o) ExpectNear((*model.GetWMatrices())[o], twin.W[o], tolerance, "W");
}

}  // namespace
