// Rows and vectors that are not of a model's size are refused before anything is read.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;

TEST(NCYOrthogonalPLS, RefusesATableOfAnotherWidthAndAVectorOfAnotherLength) {
  const Table X = RandomMatrix<float>(12, 5, 0.0, 1), Y = RandomMatrix<float>(12, 1, 0.0, 2);
  NCYOrthogonalPLS filter(&X, &Y, 50, 0);
  Table other = RandomMatrix<float>(3, 4, 0.0, 3);
  EXPECT_EQ(MessageOf([&] { filter.CalculateResiduals(&other); }), std::nullopt) << "has no component to take out";
  filter.NextComponent(/*showProgress=*/false);
  for (const int columns : {0, 4, 6}) {
    other = RandomMatrix<float>(3, columns, 0.0, 3);
    const auto before = CellsOf(other);
    EXPECT_EQ(MessageOf([&] { filter.CalculateResiduals(&other); }),
              "The filter is for a table of another number of columns.");
    EXPECT_EQ(CellsOf(other), before);
    Table none(0, columns);
    EXPECT_EQ(MessageOf([&] { filter.CalculateResiduals(&none); }), std::nullopt);
  }
  for (const int cells : {0, 11, 13}) {
    const NCDataVector<float> vector(cells, 1.0F);
    EXPECT_EQ(MessageOf([&] { filter.GetYAngle(&vector); }), "The vector has not one cell for each observation.");
  }
}

TEST(NCO2PLS, HasNoComponentToSubtractBeforeTheFirst) {
  const Table X = RandomMatrix<float>(9, 4, 0.0, 1), Y = RandomMatrix<float>(9, 3, 0.0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/false, 100);
  const std::string text = "NCO2PLS::SubtractLastPredictiveComp: there is no component.";
  EXPECT_EQ(MessageOf([&] { model.SubtractLastPredictiveComp(); }), text);
  model.InitPredCompCalculation();
  EXPECT_EQ(MessageOf([&] { model.SubtractLastPredictiveComp(); }), text);
  model.NextPredictiveComp();
  EXPECT_EQ(MessageOf([&] { model.SubtractLastPredictiveComp(); }), std::nullopt);
}

TEST(NCO2PLSPred, RefusesRowsOfAnotherWidth) {
  const Table X = RandomMatrix<float>(9, 4, 0.0, 1), Y = RandomMatrix<float>(9, 3, 0.0, 2);
  const std::string text = "O2PLS prediction: the rows are not of the model's number of columns.";
  for (const int orthogonal : {0, 1}) {
    NCO2PLS model(X, Y, /*checkDimensions=*/false, 100);
    model.Fit(1, orthogonal, orthogonal);
    for (const int columns : {0, 2, 5}) {
      const Table rows = RandomMatrix<float>(2, columns, 0.0, 3), none(0, columns);
      EXPECT_EQ(MessageOf([&] { NCO2PLSYPred(&rows, &model); }), text);
      EXPECT_EQ(MessageOf([&] { NCO2PLSXPred(&rows, &model); }), text);
      EXPECT_EQ(NCO2PLSYPred(&none, &model).GetYPred().SizeRows(), 0);
    }
  }
}

}  // namespace
