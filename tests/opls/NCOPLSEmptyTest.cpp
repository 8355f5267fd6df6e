// Tables that carry nothing, or fewer components than are asked for.
#include <gtest/gtest.h>

#include <vector>

#include "OPLSCase.h"
#include "OPLSIdentities.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

constexpr int kSteps = 4;

struct Nothing {
  const char* what;
  Tables tables;
};

/// Tables of this many Y variables of which one side carries nothing.
std::vector<Nothing> Nothings(int yVariables) {
  const NCDataMatrix<float> X = RandomMatrix<float>(6, 4, 0.0, 1), Y = RandomMatrix<float>(6, yVariables, 0.0, 2);
  return {{"Y of zeros", {X, NCDataMatrix<float>(6, yVariables, 0.0F)}},
          {"Y without any value", {X, NCDataMatrix<float>(6, yVariables)}},
          {"X of zeros", {NCDataMatrix<float>(6, 4, 0.0F), Y}},
          {"X without any value", {NCDataMatrix<float>(6, 4), Y}},
          {"X without variables", {NCDataMatrix<float>(6, 0), Y}},
          {"no observations", {NCDataMatrix<float>(0, 4), NCDataMatrix<float>(0, yVariables)}}};
}

TEST(NCOPLSEmpty, IsAnErrorForSeveralYWhoseProductWithXHasNoPrincipalComponent) {
  for (const int predictive : {0, 1, 2})
    for (const Nothing& nothing : Nothings(2)) {
      SCOPED_TRACE(nothing.what);
      NCOPLS model(&nothing.tables.X, &nothing.tables.Y, predictive, 20);
      try {
        model.NextComponent(nullptr);
        ADD_FAILURE() << "computed a block";
      } catch (const NCError& error) {
        EXPECT_STREQ(error.GetMessage(), "PCA component could not be computed.");
      }
      EXPECT_EQ(model.SizeComponents(), 0);
    }
}

void ExpectAllMissing(const NCDataMatrix<float>& matrix, const char* what) {
  for (int i = 1; i <= matrix.SizeRows(); ++i)
    EXPECT_EQ(matrix[i].GetNumMisVal(), matrix[i].Size()) << what << ' ' << i;
}

TEST(NCOPLSEmpty, HasWeightsOfZeroAndNothingElseForOneY) {
  for (const int predictive : {0, 1, 2})
    for (const Nothing& nothing : Nothings(1)) {
      SCOPED_TRACE(nothing.what);
      const NCOPLS model = FittedOPLS(nothing.tables, predictive, kSteps);
      EXPECT_EQ(model.SizeComponents(), 1);
      EXPECT_EQ(model.SizeOrthogonalComponents(), kSteps);
      for (const NCDataMatrix<float>& W : *model.GetWMatrices()) EXPECT_EQ(W.GetSS(), 0.0L);
      for (const auto get : {&NCOPLS::GetTprim, &NCOPLS::GetUprim, &NCOPLS::GetPprim, &NCOPLS::GetCprim,
                             &NCOPLS::GetTOprim, &NCOPLS::GetUOprim, &NCOPLS::GetPOprim, &NCOPLS::GetCOprim})
        ExpectAllMissing(*(model.*get)(), "result");
      ExpectAllMissing(model.GetXResiduals(), "X");
      ExpectAllMissing(model.GetYResiduals(), "Y");
    }
}

TEST(NCOPLSEmpty, HasNoComponentsWithoutYVariables) {
  const Tables tables{RandomMatrix<float>(6, 4, 0.0, 1), NCDataMatrix<float>(6, 0)};
  const NCOPLS model = FittedOPLS(tables, 2, kSteps);
  EXPECT_EQ(model.SizeComponents(), 0);
  EXPECT_EQ(model.SizeOrthogonalComponents(), 0);
  EXPECT_EQ(StreamOf(model.GetXResiduals()), StreamOf(tables.X));
}

TEST(NCOPLSBeyondTheRank, GoesOnAndKeepsItsIdentities) {
  const int orthogonal = 7;
  for (const int yVariables : {1, 2}) {
    const Tables tables = RelatedTables(5, 3, yVariables, 0.0, 5);
    const NCOPLS model = FittedOPLS(tables, 2, orthogonal);
    EXPECT_EQ(model.SizeOrthogonalComponents(), orthogonal);
    ExpectOPLSIdentities(model, tables);
  }
}

}  // namespace
