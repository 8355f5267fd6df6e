// Models, rebuilt ones and predictions against the steps taken one by one: to the bit.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "SteppedOPLS.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"
#include "testing/Threads.h"

namespace {

std::string StreamsOf(const std::vector<const NCDataMatrix<float>*>& matrices) {
  std::string all;
  for (const NCDataMatrix<float>* matrix : matrices) all += StreamOf(*matrix);
  return all;
}

/// What Everything tells of a model.
std::string Everything(const SteppedOPLS& model) {
  std::vector<const NCDataMatrix<float>*> matrices = {&model.T,  &model.U,  &model.TO, &model.PO,
                                                      &model.CO, &model.WO, &model.UO};
  for (const auto* blocks : {&model.W, &model.P, &model.C})
    for (const NCDataMatrix<float>& block : *blocks) matrices.push_back(&block);
  const NCDataMatrix<float> X = model.XResiduals(), Y = model.YResiduals();
  matrices.insert(matrices.end(), {&X, &Y});
  return StreamsOf(matrices);
}

/// What Everything tells of the prediction of X, after `orthogonal` components one by one.
std::string PredictionBySteps(const SteppedOPLS& model, const NCDataMatrix<float>& X, int orthogonal) {
  NCDataMatrix<float> left, Y, T, TO;
  left.CopyContent(X);
  const auto scores = [](NCDataMatrix<float>* table, const NCDataVector<float>& along,
                         const NCDataVector<float>& away) {
    const NCDataVector<float> t = table->SpecialNipalsRegressRowsFix(along, nullptr, 0);
    table->AddVprimV(t, away, -1.0F);
    return t;
  };
  for (int o = 0; o <= orthogonal; ++o) {
    const auto block = static_cast<std::size_t>(o);
    Y = NCDataMatrix<float>(X.SizeRows(), model.C[0].SizeColumns(), 0.0F);
    if (o > 0) {
      const NCDataMatrix<float>& W = model.W[block - 1];
      NCDataMatrix<float> E;
      E.CopyContent(left);
      for (int a = 1; a <= W.SizeRows(); ++a) scores(&E, W[a], W[a]);
      TO.InsertRow(o, E.SpecialNipalsRegressRowsFix(model.WO[o], nullptr, 0));
      left.AddVprimV(TO[o], model.PO[o], -1.0F);
      for (int i = 1; i <= o; ++i) Y.AddVprimV(TO[i], model.CO[i], 1.0F);
    }
    NCDataMatrix<float> E;
    E.CopyContent(left);
    T.Clear();
    for (int a = 1; a <= model.W[block].SizeRows(); ++a) {
      T.InsertRow(a, scores(&E, model.W[block][a], model.P[block][a]));
      Y.AddVprimV(T[a], model.C[block][a], 1.0F);
    }
  }
  return StreamsOf({&left, &Y, &T, &TO});
}

struct Case {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;
  std::function<void(Tables*)> change = [](Tables*) {};
};

class NCOPLSStepByStep : public ::testing::TestWithParam<Case> {
 protected:
  NCOPLSStepByStep() { GetParam().change(&tables_); }

  Tables tables_ = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables, GetParam().holes, 3);
};

const Case kCases[] = {
    {"OneY", 24, 9, 1, 0.0, 1},
    {"ThreeY", 24, 9, 3, 0.0, 2},
    {"AsManyComponentsAsY", 24, 9, 3, 0.0, 3},
    {"SizeDecidedByTheModel", 24, 9, 3, 0.0, 0},
    {"WideOfOneY", 9, 4100, 1, 0.0, 1},
    {"WideOfThreeY", 9, 4100, 3, 0.0, 3},
    {"LongOfOneY", 1000, 33, 1, 0.0, 1},
    {"LongOfThreeY", 1000, 33, 3, 0.0, 2},
    {"Holes", 24, 9, 3, 0.1, 2},
    {"HolesOfOneY", 24, 9, 1, 0.1, 1},
    {"HolesAndSizeDecidedByTheModel", 24, 9, 3, 0.1, 0},
    {"HolesOfYAlone", 24, 9, 3, 0.0, 2, [](Tables* tables) { tables->Y(3, 1, kHole<float>); }},
    {"ARowOfXWithoutAnyValue", 24, 9, 3, 0.0, 2, [](Tables* tables) { tables->X.SetRow(5, kHole<float>); }},
    {"AColumnOfXWithoutAnyValue", 24, 9, 3, 0.0, 2, [](Tables* tables) { tables->X.SetColumn(5, kHole<float>); }},
    {"AColumnOfYWithoutAnyValue", 24, 9, 3, 0.0, 1, [](Tables* tables) { tables->Y.SetColumn(2, kHole<float>); }},
    {"TwoRows", 2, 9, 1, 0.0, 1},
    {"OneVariable", 24, 1, 1, 0.0, 1},
    // The single variable has the weight 1 or -1, and so this cell, or minus it, is a score.
    {"AScoreLikeTheMissingValue", 24, 1, 1, 0.0, 1, [](Tables* tables) { tables->X(3, 1, 99.0F); }},
    {"AScoreLikeTheMissingValueTurned", 24, 1, 1, 0.0, 1,
     [](Tables* tables) {
       tables->X(3, 1, 99.0F);
       for (int i = 1; i <= 24; ++i) tables->Y(i, 1, -tables->Y[i][1]);
     }},
    {"ACellLikeTheMissingValueThatNoCountKnows", 24, 9, 2, 0.0, 1,
     [](Tables* tables) {
       tables->X(3, 3, 1.0F);
       tables->X.MultiplyRow(3, -99.0F);
     }},
};

INSTANTIATE_TEST_SUITE_P(, NCOPLSStepByStep, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) { return info.param.name; });

TEST_P(NCOPLSStepByStep, GivesTheBitsOfTheModel) {
  for (const int threads : {1, 2}) {
    const Threads team(threads);
    NCOPLS model(&tables_.X, &tables_.Y, GetParam().predictive, 200);
    SteppedOPLS stepped(tables_.X, tables_.Y, GetParam().predictive, 200);
    for (int o = 0; o <= 3; ++o) {
      model.NextComponent(nullptr);
      stepped.NextComponent();
      EXPECT_TRUE(Everything(model) == Everything(stepped)) << o << " orthogonal components, " << threads << " threads";
    }
  }
}

TEST_P(NCOPLSStepByStep, GivesTheBitsOfARebuiltModelThatGoesOnAndOfThePrediction) {
  SteppedOPLS stepped(tables_.X, tables_.Y, GetParam().predictive, 200);
  for (int o = 0; o <= 2; ++o) stepped.NextComponent();
  const Tables others = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables, 0.0, 4);
  for (const int threads : {1, 2})
    for (const Tables& tables : {tables_, others}) {
      const Threads team(threads);
      NCOPLS model(&tables.X, &tables.Y, &stepped.W, &stepped.P, &stepped.C, &stepped.WO, &stepped.PO, &stepped.CO,
                   7, 200);
      SteppedOPLS rebuilt(tables.X, tables.Y, 7, 200);
      rebuilt.CatchUp(stepped);
      EXPECT_TRUE(Everything(model) == Everything(rebuilt)) << threads << " threads";
      model.NextComponent(nullptr);
      rebuilt.NextComponent();
      EXPECT_TRUE(Everything(model) == Everything(rebuilt)) << threads << " threads";

      NCOPLSPred prediction(&tables.X, &stepped.W, &stepped.P, &stepped.C, &stepped.WO, &stepped.PO, &stepped.CO);
      for (int o = 0; o <= 2; ++o) {
        if (o > 0) prediction.CalcNextComponent();
        EXPECT_TRUE(Everything(prediction) == PredictionBySteps(stepped, tables.X, o)) << o;
      }
    }
}

/// The cells' bits; all NaN are one, as nothing settles their sign.
std::string BitsOf(const NCDataMatrix<float>& matrix) {
  NCDataMatrix<float> settled = matrix;
  for (int i = 1; i <= settled.SizeRows(); ++i)
    for (int j = 1; j <= settled.SizeColumns(); ++j)
      if (std::isnan(settled[i][j])) settled(i, j, std::numeric_limits<float>::quiet_NaN());
  return StreamOf(settled);
}

TEST(NCOPLSOfAnInfinity, HasNumbersWhereTheStepsHaveThem) {
  Tables tables = RelatedTables(24, 9, 1, 0.0, 3);
  tables.X(3, 3, std::numeric_limits<float>::infinity());
  NCOPLS model = FittedOPLS(tables, 1, 1);
  SteppedOPLS stepped(tables.X, tables.Y, 1, 200);
  for (int o = 0; o <= 1; ++o) stepped.NextComponent();
  EXPECT_EQ(BitsOf(*model.GetTprim()), BitsOf(stepped.T));
  EXPECT_EQ(BitsOf(*model.GetTOprim()), BitsOf(stepped.TO));
  EXPECT_EQ(BitsOf(*model.GetPOprim()), BitsOf(stepped.PO));
  EXPECT_EQ(BitsOf(model.GetXResiduals()), BitsOf(stepped.XResiduals()));
}

TEST(NCOPLSOfOneRow, EndsWhereTheStepsEnd) {
  for (const int yVariables : {1, 2}) {
    const Tables tables = RelatedTables(1, 9, yVariables, 0.0, 3);
    NCOPLS model(&tables.X, &tables.Y, 1, 200);
    SteppedOPLS stepped(tables.X, tables.Y, 1, 200);
    const auto stepsUntilTheEnd = [](const std::function<void()>& next) {
      for (int step = 0; step < 3; ++step) {
        try {
          next();
        } catch (const NCError&) {
          return step;
        }
      }
      return 3;
    };
    const int steps = stepsUntilTheEnd([&model] { model.NextComponent(nullptr); });
    EXPECT_GT(steps, 0);
    EXPECT_EQ(stepsUntilTheEnd([&stepped] { stepped.NextComponent(); }), steps);
    if (steps == 3) {
      EXPECT_EQ(BitsOf(*model.GetTOprim()), BitsOf(stepped.TO));
    }
  }
}

}  // namespace
