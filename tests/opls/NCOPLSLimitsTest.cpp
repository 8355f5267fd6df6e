// Sizes of the block, passes for holes, turned components, models rebuilt from their matrices.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/support/NCError.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

namespace {

TEST(NCOPLS, RefusesTablesOfDifferentNumbersOfRows) {
  const NCDataMatrix<float> X = RandomMatrix<float>(6, 4, 0.1, 1), none;
  const std::vector<NCDataMatrix<float>> blocks;
  for (const NCDataMatrix<float>& Y : {RandomMatrix<float>(5, 2, 0.1, 2), RandomMatrix<float>(7, 2, 0.1, 2),
                                       NCDataMatrix<float>(0, 2), NCDataMatrix<float>()}) {
    SCOPED_TRACE(Y.SizeRows());
    EXPECT_THROW(NCOPLS(&X, &Y, 1, 100), NCError);
    EXPECT_THROW(NCOPLS(&Y, &X, 1, 100), NCError);
    EXPECT_THROW(NCOPLS(&X, &Y, &blocks, &blocks, &blocks, &none, &none, &none, 1, 100), NCError);
  }
}

TEST(NCOPLS, HasNoPredictiveBlockOfSeveralYWithoutXColumns) {
  const NCDataMatrix<float> X(6, 0), Y = RandomMatrix<float>(6, 2, 0.0, 2);
  for (const int predictive : {0, 1, 2}) {
    NCOPLS model(&X, &Y, predictive, 100);
    EXPECT_THROW(model.NextComponent(nullptr), NCError);
  }
}

TEST(NCOPLS, HasABlockWithoutCellsOfOneYWithoutXColumns) {
  const NCDataMatrix<float> X(6, 0), Y = RandomMatrix<float>(6, 1, 0.0, 2);
  NCOPLS model(&X, &Y, 1, 100);
  for (int a = 0; a < 2; ++a) model.NextComponent(nullptr);
  EXPECT_EQ(model.GetWprim()->SizeColumns(), 0);
  EXPECT_EQ(model.GetTprim()->GetNumMisVal(), 6);
  EXPECT_EQ(CellsOf(model.GetYResiduals()).size(), 6U);
}

/// The size that a model decides on for Y'X = diag(values), which Y = 1 and X = diag(values) have.
int SizeDecidedFor(std::initializer_list<float> values) {
  const int n = static_cast<int>(values.size());
  NCDataMatrix<float> X(n, n, 0.0F), Y(n, n, 0.0F);
  int i = 0;
  for (const float value : values) {
    ++i;
    X(i, i, value);
    Y(i, i, 1.0F);
  }
  NCOPLS model(&X, &Y, 0, 200);
  model.NextComponent(nullptr);
  return model.SizeComponents();
}

TEST(NCOPLSBlock, KeepsComponentsOfAtLeastOneHundredthOfTheFirstsSumOfSquares) {
  EXPECT_EQ(SizeDecidedFor({10.0F, 2.0F, 0.5F}), 2) << "0.25 of 100 falls short";
  EXPECT_EQ(SizeDecidedFor({10.0F, 0.5F}), 1);
  EXPECT_EQ(SizeDecidedFor({10.0F, 2.0F, 1.5F}), 3);
}

TEST(NCOPLSBlock, KeepsAComponentOfExactlyOneHundredthAndLooksNoFurther) {
  EXPECT_EQ(SizeDecidedFor({10.0F, 1.0F, 1.0F}), 2);
  EXPECT_EQ(SizeDecidedFor({10.0F, 2.0F, 1.0F}), 3);
  EXPECT_EQ(SizeDecidedFor({10.0F, 1.0F}), 2);
}

TEST(NCOPLSBlock, HasOneRowWhereTheSecondYIsNoise) {
  Tables tables = RelatedTables(30, 6, 2, 0.0, 5);
  for (int i = 1; i <= 30; ++i) tables.Y(i, 2, 0.01F * tables.Y[i][2]);
  EXPECT_EQ(FittedOPLS(tables, 0, 0).SizeComponents(), 1);
  EXPECT_EQ(FittedOPLS(RelatedTables(30, 6, 2, 0.0, 5), 0, 0).SizeComponents(), 2);
}

TEST(NCOPLSBlock, IsDecidedOnceForTheModel) {
  const NCOPLS model = FittedOPLS(RelatedTables(24, 9, 3, 0.1, 5), 0, 3);
  for (const NCDataMatrix<float>& W : *model.GetWMatrices()) EXPECT_EQ(W.SizeRows(), model.SizeComponents());
}

TEST(NCOPLSBlock, HasOneRowForOneYWhateverWasAskedFor) {
  const Tables tables = RelatedTables(24, 9, 1, 0.0, 5);
  const std::string one = Everything(FittedOPLS(tables, 1, 1));
  for (const int asked : {-1, 0, 2}) EXPECT_EQ(Everything(FittedOPLS(tables, asked, 1)), one) << asked;
}

TEST(NCOPLSBlock, IsCutToTheSmallerSideOfY) {
  EXPECT_EQ(FittedOPLS(RelatedTables(24, 9, 3, 0.0, 5), 5, 1).SizeComponents(), 3);
  const Tables few{RandomMatrix<float>(2, 6, 0.0, 1), RandomMatrix<float>(2, 4, 0.0, 2)};
  EXPECT_EQ(FittedOPLS(few, 5, 0).SizeComponents(), 2) << "two rows";
}

// ---- passes for holes: every pass but the first sets a value of the bar, and the end sets one

int ValuesSet(const Tables& tables, int maxIterations) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  NCOPLS model(&tables.X, &tables.Y, 2, maxIterations);
  model.NextComponent(bar.get());
  return log.Count("SetValue");
}

TEST(NCOPLSPasses, AreOneWhereXIsCompleteEvenIfYIsNot) {
  Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  tables.X = RandomMatrix<float>(24, 9, 0.0, 6);
  ASSERT_GT(tables.Y.GetNumMisVal(), 0);
  EXPECT_EQ(ValuesSet(tables, 200), 1);
}

TEST(NCOPLSPasses, AreLimitedByTheIterations) {
  const Tables tables = RelatedTables(24, 9, 3, 0.2, 5);
  EXPECT_EQ(ValuesSet(tables, 1), 1);
  EXPECT_EQ(ValuesSet(tables, 2), 2);
  const int settled = ValuesSet(tables, 200);
  EXPECT_GT(settled, 2);
  EXPECT_LT(settled, 100) << "the cross-product of what is left falls fast";
}

// ---- rows of X without any value

TEST(NCOPLSEmptyRow, HasNoScoresAndTheOrthogonalComponentEmptiesItInY) {
  Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  tables.X.SetRow(4, kHole<float>);
  const NCOPLS model = FittedOPLS(tables, 2, 2);
  for (const auto* scores : {model.GetTprim(), model.GetTOprim(), model.GetUprim()})
    for (int a = 1; a <= scores->SizeRows(); ++a) EXPECT_EQ((*scores)[a][4], kHole<float>);
  EXPECT_EQ(model.GetXResiduals()[4].GetNumMisVal(), 9);
  EXPECT_EQ(model.GetYResiduals()[4].GetNumMisVal(), 3);
}

// ---- columns of X without any value

TEST(NCOPLSEmptyColumn, HasWeightsOfZeroAndNoLoadings) {
  for (const int predictive : {1, 2}) {
    Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
    tables.X.SetColumn(4, kHole<float>);
    const NCOPLS model = FittedOPLS(tables, predictive, 2);
    for (const auto* weights : {model.GetWprim(), model.GetWOprim()})
      for (int a = 1; a <= weights->SizeRows(); ++a) EXPECT_EQ((*weights)[a][4], 0.0F);
    for (const auto* loadings : {model.GetPprim(), model.GetPOprim()})
      for (int a = 1; a <= loadings->SizeRows(); ++a) EXPECT_EQ((*loadings)[a][4], kHole<float>);
    EXPECT_EQ(model.GetTOprim()->GetNumMisVal(), 0);
    EXPECT_EQ(model.GetXResiduals().GetColumnMisVal(4), 24);
  }
}

// ---- turned components

class NCOPLSTurned : public ::testing::Test {
 protected:
  const Tables tables_ = RelatedTables(24, 9, 3, 0.1, 5);
};

NCDataMatrix<float> WithTurnedRow(NCDataMatrix<float> matrix, int row) {
  matrix.MultiplyRow(row, -1.0F);
  return matrix;
}

TEST_F(NCOPLSTurned, OrthogonalComponentKeepsItsYScores) {
  NCOPLS model = FittedOPLS(tables_, 2, 2);
  const NCOPLS before(model);
  model.NegateOComp(2);
  for (const auto get : {&NCOPLS::GetTOprim, &NCOPLS::GetPOprim, &NCOPLS::GetCOprim, &NCOPLS::GetWOprim})
    EXPECT_EQ(StreamOf(*(model.*get)()), StreamOf(WithTurnedRow(*(before.*get)(), 2)));
  EXPECT_EQ(StreamOf(*model.GetUOprim()), StreamOf(*before.GetUOprim()));
  EXPECT_EQ(StreamOf(*model.GetTprim()), StreamOf(*before.GetTprim()));
}

TEST_F(NCOPLSTurned, PredictiveComponentKeepsItsYScoresAndTheBlocksBeforeStay) {
  NCOPLS model = FittedOPLS(tables_, 2, 1);
  const NCOPLS before(model);
  model.NegatePredictiveComp(2);
  for (const auto get : {&NCOPLS::GetTprim, &NCOPLS::GetPprim, &NCOPLS::GetCprim, &NCOPLS::GetWprim})
    EXPECT_EQ(StreamOf(*(model.*get)()), StreamOf(WithTurnedRow(*(before.*get)(), 2)));
  EXPECT_EQ(StreamOf(*model.GetUprim()), StreamOf(*before.GetUprim()));
  EXPECT_EQ(StreamOf(model.GetWMatrices()->front()), StreamOf(before.GetWMatrices()->front()));
}

TEST_F(NCOPLSTurned, PredictiveComponentLeadsToTheSameOrthogonalOnesToTheBit) {
  const Tables tables = RelatedTables(24, 9, 1, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 1, 0), straight(model);
  model.NegatePredictiveComp(1);
  for (NCOPLS* either : {&model, &straight}) either->NextComponent(nullptr);
  EXPECT_EQ(StreamOf(*model.GetWOprim()), StreamOf(WithTurnedRow(*straight.GetWOprim(), 1)));
  EXPECT_EQ(StreamOf(*model.GetTOprim()), StreamOf(WithTurnedRow(*straight.GetTOprim(), 1)));
  EXPECT_EQ(StreamOf(model.GetXResiduals()), StreamOf(straight.GetXResiduals()));
}

// ---- rebuilt models

class NCOPLSRebuilt : public ::testing::TestWithParam<int> {  // Y variables
 protected:
  NCOPLS Rebuilt(const NCOPLS& model, int predictive) const {
    return NCOPLS(&tables_.X, &tables_.Y, model.GetWMatrices(), model.GetPMatrices(), model.GetCMatrices(),
                  model.GetWOprim(), model.GetPOprim(), model.GetCOprim(), predictive, 200);
  }

  const Tables tables_ = RelatedTables(24, 9, GetParam(), 0.1, 5);
};

INSTANTIATE_TEST_SUITE_P(YVariables, NCOPLSRebuilt, ::testing::Values(1, 3));

TEST_P(NCOPLSRebuilt, HasTheScoresAndResidualsToTheBitButNoPredictiveYScores) {
  for (const int orthogonal : {0, 1, 3}) {
    const NCOPLS model = FittedOPLS(tables_, 2, orthogonal);
    const NCOPLS rebuilt = Rebuilt(model, /*predictive=*/7);
    for (const auto get : {&NCOPLS::GetTprim, &NCOPLS::GetTOprim, &NCOPLS::GetWOprim, &NCOPLS::GetPOprim})
      EXPECT_EQ(StreamOf(*(rebuilt.*get)()), StreamOf(*(model.*get)()));
    EXPECT_EQ(StreamOf(rebuilt.GetXResiduals()), StreamOf(model.GetXResiduals()));
    EXPECT_EQ(StreamOf(rebuilt.GetYResiduals()), StreamOf(model.GetYResiduals()));
    EXPECT_EQ(rebuilt.GetUprim()->SizeRows(), 0);
    EXPECT_EQ(rebuilt.SizeOrthogonalComponents(), orthogonal);
  }
}

TEST_P(NCOPLSRebuilt, GoesOnAsTheUninterruptedModelToTheBit) {
  for (const int predictive : {0, 3}) {  // of no account: the size is that of the blocks
    NCOPLS model = FittedOPLS(tables_, 2, 2);
    NCOPLS rebuilt = Rebuilt(model, predictive);
    for (NCOPLS* either : {&model, &rebuilt}) either->NextComponent(nullptr);
    for (const auto get : {&NCOPLS::GetTprim, &NCOPLS::GetUprim, &NCOPLS::GetTOprim, &NCOPLS::GetPOprim,
                           &NCOPLS::GetCOprim, &NCOPLS::GetWOprim, &NCOPLS::GetWprim, &NCOPLS::GetPprim,
                           &NCOPLS::GetCprim})
      EXPECT_EQ(StreamOf(*(rebuilt.*get)()), StreamOf(*(model.*get)()));
    EXPECT_EQ(StreamOf(rebuilt.GetXResiduals()), StreamOf(model.GetXResiduals()));
  }
}

// ---- matrices that are not those of a model

/// What a model is rebuilt from, and predicts with.
struct Matrices {
  explicit Matrices(const NCOPLS& model)
      : W(*model.GetWMatrices()),
        P(*model.GetPMatrices()),
        C(*model.GetCMatrices()),
        WO(*model.GetWOprim()),
        PO(*model.GetPOprim()),
        CO(*model.GetCOprim()) {}

  std::vector<NCDataMatrix<float>> W, P, C;
  NCDataMatrix<float> WO, PO, CO;
};

constexpr const char* kNoBlock = "OPLS: the model has not a block after each of its orthogonal components.";
constexpr const char* kNoMatch = "OPLS: weights, loadings and tables of the model do not belong together.";

struct Lack {
  const char* what;
  std::function<void(Matrices*)> make;
  const char* text;
};

void CutLastRow(NCDataMatrix<float>* matrix) { *matrix = matrix->GetRowSubMatrix(1, matrix->SizeRows() - 1); }
NCDataMatrix<float> Wider(NCDataMatrix<float> matrix) {
  matrix.InsertColumn(1, NCDataVector<float>(matrix.SizeRows(), 1.0F));
  return matrix;
}

const Lack kLacks[] = {
    {"a block of W", [](Matrices* m) { m->W.pop_back(); }, kNoBlock},
    {"a block of P", [](Matrices* m) { m->P.pop_back(); }, kNoBlock},
    {"a block of C", [](Matrices* m) { m->C.pop_back(); }, kNoBlock},
    {"a row of the first P", [](Matrices* m) { CutLastRow(&m->P.front()); }, kNoMatch},
    {"a row of the last C", [](Matrices* m) { CutLastRow(&m->C.back()); }, kNoMatch},
    {"a row of PO", [](Matrices* m) { CutLastRow(&m->PO); }, kNoMatch},
    {"a row of CO", [](Matrices* m) { CutLastRow(&m->CO); }, kNoMatch},
    {"the width of the second W", [](Matrices* m) { m->W[1] = Wider(m->W[1]); }, kNoMatch},
    {"the width of the last P", [](Matrices* m) { m->P.back() = Wider(m->P.back()); }, kNoMatch},
    {"the width of the last C", [](Matrices* m) { m->C.back() = Wider(m->C.back()); }, kNoMatch},
    {"the width of WO", [](Matrices* m) { m->WO = Wider(m->WO); }, kNoMatch},
    {"the width of PO", [](Matrices* m) { m->PO = Wider(m->PO); }, kNoMatch},
    {"the width of CO", [](Matrices* m) { m->CO = Wider(m->CO); }, kNoMatch}};

TEST(NCOPLSOfMatrices, IsRefusedWhereTheyLackWhatTheFilterReads) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  const Matrices whole(FittedOPLS(tables, 2, 2));
  const auto rebuild = [&](const Matrices& m) {
    NCOPLS(&tables.X, &tables.Y, &m.W, &m.P, &m.C, &m.WO, &m.PO, &m.CO, 2, 200);
  };
  const auto predict = [&](const Matrices& m) { NCOPLSPred(&tables.X, &m.W, &m.P, &m.C, &m.WO, &m.PO, &m.CO); };
  EXPECT_EQ(MessageOf([&] { rebuild(whole); }), std::nullopt);
  EXPECT_EQ(MessageOf([&] { predict(whole); }), std::nullopt);
  for (const Lack& lack : kLacks) {
    SCOPED_TRACE(lack.what);
    Matrices matrices = whole;
    lack.make(&matrices);
    EXPECT_EQ(MessageOf([&] { rebuild(matrices); }), lack.text);
    EXPECT_EQ(MessageOf([&] { predict(matrices); }), lack.text);
  }
}

TEST(NCOPLSOfMatrices, IsRefusedWithABlockOfWAlone) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  const Matrices whole(FittedOPLS(tables, 2, 0));
  const std::vector<NCDataMatrix<float>> none;
  EXPECT_EQ(MessageOf([&] {
              NCOPLS(&tables.X, &tables.Y, &whole.W, &none, &whole.C, &whole.WO, &whole.PO, &whole.CO, 2, 200);
            }),
            kNoBlock);
}

TEST(NCOPLSOfMatrices, PredictsRowsOfTheModelsWidthAlone) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 2, 1);
  for (const int columns : {0, 8, 10}) {
    const NCDataMatrix<float> X(3, columns, 1.0F), none(0, columns);
    EXPECT_EQ(MessageOf([&] { NCOPLSPred(&X, &model); }), kNoMatch);
    EXPECT_EQ(NCOPLSPred(&none, &model).GetYPred()->SizeRows(), 0);
  }
}

TEST(NCOPLSStopped, DoesNotPredictWithAComponentThatHasNoBlock) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 2, 0);
  ProgressLog log;
  log.stopAt = 3;  // the range for the block, after the component itself
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(model.NextComponent(bar.get()), NCError);
  ASSERT_EQ(model.SizeOrthogonalComponents(), 1);
  ASSERT_EQ(model.GetWMatrices()->size(), 1U);
  EXPECT_EQ(MessageOf([&] { NCOPLSPred(&tables.X, &model); }), kNoBlock);
}

TEST_F(NCOPLSTurned, IsRefusedOfAComponentThatIsNotThere) {
  const std::string text = "OPLS: the model has no such component.";
  NCOPLS model(&tables_.X, &tables_.Y, 2, 100);
  EXPECT_EQ(MessageOf([&] { model.NegatePredictiveComp(1); }), text) << "before the first component";
  model = FittedOPLS(tables_, 2, 1);
  const std::string before = Everything(model);
  for (const int component : {-1, 0, 3}) EXPECT_EQ(MessageOf([&] { model.NegatePredictiveComp(component); }), text);
  for (const int component : {-1, 0, 2}) EXPECT_EQ(MessageOf([&] { model.NegateOComp(component); }), text);
  EXPECT_EQ(Everything(model), before);
}

TEST(NCOPLSRebuiltFromNothing, IsANewModelWithTheSizeOfItsArgument) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  const std::vector<NCDataMatrix<float>> none;
  const NCDataMatrix<float> empty;
  NCOPLS model(&tables.X, &tables.Y, &none, &none, &none, &empty, &empty, &empty, 2, 200);
  EXPECT_EQ(model.SizeComponents(), 0);
  model.NextComponent(nullptr);
  EXPECT_EQ(Everything(model), Everything(FittedOPLS(tables, 2, 0)));
}

}  // namespace
