// Tables, vectors and numbers of variables that are not of a model's size are refused before anything is read.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPCAPred.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/pcapls/NCScale.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Matrix = NCDataMatrix<float>;

TEST(NCScale, RefusesAVariableThatItHasNot) {
  NCScale scale(3);
  scale.SetType(2, NCScale::ScalingCentre);
  const std::string before = StreamOf(scale);
  for (const int variable : {-1, 0, 4, std::numeric_limits<int>::max()}) {
    const std::string text = "Scaling: there is no such variable.";
    EXPECT_EQ(MessageOf([&] { scale.SetType(variable, NCScale::ScalingCentre); }), text);
    EXPECT_EQ(MessageOf([&] { scale.GetScaleType(variable); }), text);
  }
  EXPECT_TRUE(StreamOf(scale) == before);
  EXPECT_EQ(scale.GetScaleType(2), NCScale::ScalingCentre);
}

TEST(NCPCAPred, RefusesRowsOfAnotherWidth) {
  const Matrix P = RandomMatrix<float>(2, 4, 0.0, 1);
  for (const int columns : {0, 3, 5}) {
    const Matrix X = RandomMatrix<float>(3, columns, 0.1, 2), none(0, columns), noModel(0, 4);
    EXPECT_EQ(MessageOf([&] { NCPCAPred(&X, &P, 50, 0.9F); }),
              "PCA prediction: the table has not the variables of the model.");
    EXPECT_EQ(NCPCAPred(&none, &P, 50, 0.9F).SizeObservations(), 0) << "no rows, no width";
    EXPECT_EQ(NCPCAPred(&X, &noModel, 50, 0.9F).GetMaxComp(), 0);
  }
}

TEST(NCPLSPred, RefusesRowsOfAnotherWidth) {
  const Matrix four = RandomMatrix<float>(2, 4, 0.0, 1), five = RandomMatrix<float>(2, 5, 0.0, 2);
  const Matrix C = RandomMatrix<float>(2, 3, 0.0, 3);
  const auto refusal = [&](const Matrix& X, const Matrix& W, const Matrix& P) {
    return MessageOf([&] { NCPLSPred(X, W, P, C, 0.9F); });
  };
  const std::string text = "PLS prediction: the table has not the variables of the model.";
  const Matrix X = RandomMatrix<float>(3, 4, 0.1, 4);
  EXPECT_EQ(refusal(X, four, four), std::nullopt);
  EXPECT_EQ(refusal(X, five, four), text);
  EXPECT_EQ(refusal(X, four, five), text);
  for (const int columns : {0, 3, 5}) {
    EXPECT_EQ(refusal(RandomMatrix<float>(3, columns, 0.1, 4), four, four), text);
    EXPECT_EQ(refusal(Matrix(0, columns), four, four), std::nullopt) << "no rows, no width";
  }
}

TEST(NCPCA, RefusesGroupsAndStartsThatAreNotOfTheTablesSize) {
  const Matrix X = RandomMatrix<float>(6, 4, 0.1, 1);
  const std::string text = "PCA: groups or start are not of the table's size.";
  for (const int cells : {0, 3, 5, 7}) {
    NCPCA model(&X, 50);
    const NCIntegralVector<int, -99> groups(cells, 1);
    const NCDataVector<float> start(cells, 1.0F);
    EXPECT_EQ(MessageOf([&] { model.NextComponent(nullptr, &groups, 0, nullptr); }), text);
    EXPECT_EQ(MessageOf([&] { model.NextComponent(nullptr, nullptr, 0, &start); }), text);
    EXPECT_EQ(model.GetPprim()->SizeRows(), 0);
    EXPECT_EQ(model.GetComponents(), 2) << "counts what failed";
  }
}

}  // namespace
