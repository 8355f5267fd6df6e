#include "kalmia/pcapls/NCPCA.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

#include "PCAValidationCase.h"
#include "PlainPCA.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr int kComponents = 3;

static_assert(!std::is_copy_constructible_v<NCPCA> && !std::is_copy_assignable_v<NCPCA>);

void NextComponent(NCPCA* model) { EXPECT_TRUE(model->NextComponent(nullptr, nullptr, 0, nullptr)); }

void AddComponent(NCPCA* model) {
  NextComponent(model);
  model->CalculateResiduals();
}

struct Shape {
  const char* name;
  int rows, columns;
  double holes;
};

const Shape kShapes[] = {{"Tall", 20, 6, 0.0},          {"Wide", 7, 40, 0.0},         {"OneColumn", 9, 1, 0.0},
                         {"TallWithHoles", 30, 8, 0.1}, {"WideWithHoles", 9, 40, 0.15}};

class NCPCAOnTables : public ::testing::TestWithParam<Shape> {
 protected:
  NCPCAOnTables()
      : X_(TableOfThreeDirections(GetParam().rows, GetParam().columns, GetParam().holes)), model_(&X_, 200) {}

  int Components() const { return std::min(kComponents, X_.SizeColumns()); }

  NCDataMatrix<float> X_;
  NCPCA model_;
};

INSTANTIATE_TEST_SUITE_P(, NCPCAOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

TEST_P(NCPCAOnTables, EachComponentIsThatOfThePlainAlgorithmInDouble) {
  for (int a = 1; a <= Components(); ++a) {
    SCOPED_TRACE("component " + std::to_string(a));
    const plain::Table X = plain::TableOf(*model_.GetResiduals());
    AddComponent(&model_);
    const plain::PrincipalComponent twin = plain::FitPCA(X, {model_.GetIterations()});
    // A round rounds p and t to float, 2^-24 of their length each, and takes half or more of the error of the round
    // before away; tables with holes amplify it by at most the third below a denominator: 2 * 2 * 3, and some.
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetPprim())[a]), twin.p), 16 * 0x1p-24);
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetTprim())[a]), twin.t), 16 * 0x1p-24);
  }
}

TEST_P(NCPCAOnTables, ModelPlusResidualsGivesTheTableBack) {
  for (int a = 1; a <= Components(); ++a) AddComponent(&model_);
  double largest = 0.0;
  double largestTerm = 0.0;
  for (int i = 1; i <= X_.SizeRows(); ++i)
    for (int k = 1; k <= X_.SizeColumns(); ++k) {
      EXPECT_EQ(X_[i][k] == kMissing, (*model_.GetResiduals())[i][k] == kMissing);
      if (X_[i][k] == kMissing) continue;
      double sum = (*model_.GetResiduals())[i][k];
      for (int a = 1; a <= Components(); ++a) {
        const double term = static_cast<double>((*model_.GetTprim())[a][i]) * (*model_.GetPprim())[a][k];
        largestTerm = std::max({largestTerm, std::abs(term), static_cast<double>(std::abs(X_[i][k]))});
        sum += term;
      }
      largest = std::max(largest, std::abs(sum - X_[i][k]));
    }
  // Each component rounds a cell once, to float; a cell on the way is at most the sum of all terms.
  EXPECT_LT(largest / largestTerm, kComponents * (kComponents + 1) * 0x1p-24);
}

TEST_P(NCPCAOnTables, LoadingsHaveUnitLengthAndThoseOfCompleteTablesAreOrthogonalAsScoresAre) {
  for (int a = 1; a <= Components(); ++a) AddComponent(&model_);
  for (int a = 1; a <= Components(); ++a)
    for (int b = 1; b <= a; ++b) {
      const plain::Vector ta = plain::VectorOf((*model_.GetTprim())[a]);
      const plain::Vector tb = plain::VectorOf((*model_.GetTprim())[b]);
      const plain::Vector pa = plain::VectorOf((*model_.GetPprim())[a]);
      const plain::Vector pb = plain::VectorOf((*model_.GetPprim())[b]);
      if (a == b) {
        EXPECT_NEAR(plain::SquaresOf(pa), 1.0, 4 * 0x1p-24);
      }
      if (a == b || GetParam().holes > 0.0) continue;
      // t = Xp is taken out exactly, so that later loadings are orthogonal to p but for rounding, 2^-24 of |X| in what
      // is left, |t_a|. Later scores are orthogonal to t only as far as p has converged: it moves by less than 1e-5 of
      // |t_b| a round, which is more than half of what is to go; that is so much of |t_a|.
      const double rounding = 0x1p-24 * std::sqrt(static_cast<double>(X_.GetSS()) / plain::SquaresOf(ta));
      EXPECT_NEAR(plain::Dot(pa, pb), 0.0, 4 * rounding) << a << ", " << b;
      const double lengths = std::sqrt(plain::SquaresOf(ta) * plain::SquaresOf(tb));
      EXPECT_NEAR(plain::Dot(ta, tb) / lengths, 0.0, 2e-5 * std::sqrt(plain::SquaresOf(tb) / plain::SquaresOf(ta)));
    }
}

TEST_P(NCPCAOnTables, LeavesTheCallersTableAlone) {
  const auto before = CellsOf(X_);
  for (int a = 1; a <= Components(); ++a) AddComponent(&model_);
  EXPECT_EQ(CellsOf(X_), before);
}

TEST_P(NCPCAOnTables, ItsCountsOfHolesStayExact) {
  for (int a = 1; a <= Components(); ++a) AddComponent(&model_);
  for (const NCDataMatrix<float>* matrix : {model_.GetPprim(), model_.GetTprim(), model_.GetResiduals()})
    EXPECT_TRUE(HasExactCounts(*matrix));
}

TEST_P(NCPCAOnTables, RestoredFromItsMatricesItGoesOnToTheUninterruptedNumbers) {
  for (int a = 0; a < Components(); ++a) {
    NCPCA restored(model_.GetResiduals(), model_.GetPprim(), model_.GetTprim(), 200);
    EXPECT_EQ(restored.GetComponents(), a);
    EXPECT_EQ(restored.GetIterations(), 0);
    AddComponent(&model_);
    AddComponent(&restored);
    EXPECT_EQ(restored.GetComponents(), a + 1);
    EXPECT_TRUE(StreamOf(restored) == StreamOf(model_));
  }
}

TEST(NCPCA, StartsWithoutComponents) {
  const NCDataMatrix<float> X = RandomMatrix<float>(4, 3, 0.2, 1);
  const NCPCA model(&X, 50);
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(model.GetIterations(), 0);
  EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(X));
  EXPECT_EQ(model.GetPprim()->SizeRows(), 0);
  EXPECT_EQ(model.GetPprim()->SizeColumns(), 3);
  EXPECT_EQ(model.GetTprim()->SizeRows(), 0);
  EXPECT_EQ(model.GetTprim()->SizeColumns(), 4);

  const NCPCA empty;
  for (const NCDataMatrix<float>* matrix : {empty.GetPprim(), empty.GetTprim(), empty.GetResiduals()})
    EXPECT_EQ(matrix->SizeRows() + matrix->SizeColumns(), 0);
}

TEST(NCPCA, TakesATableOfRankOneApartInOneComponent) {
  const NCDataMatrix<float> X = MatrixOf<float>({{6, 8}, {-12, -16}, {12, 16}});
  NCPCA model(&X, 50);
  NextComponent(&model);
  EXPECT_THAT(CellsOf((*model.GetPprim())[1]), ElementsAre(0.6F, 0.8F));
  EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(10, -20, 20));
  EXPECT_EQ(model.GetComponents(), 1);
  model.CalculateResiduals();
  // 0.6F is 0.6 but for 2^-25 of it at most, and so are the products: squared, times the 900 of the table.
  EXPECT_LT(static_cast<double>(model.GetResiduals()->GetSS()), 900 * 0x1p-48);
}

TEST(NCPCA, AppendsTheSameComponentTwiceWhenNothingIsTakenOut) {
  const NCDataMatrix<float> X = RandomMatrix<float>(12, 5, 0.1, 2);
  const NCDataVector<float> start = RandomVector<float>(12, 0.0, 3);
  for (const NCDataVector<float>* given : {static_cast<const NCDataVector<float>*>(nullptr), &start}) {
    NCPCA model(&X, 50);
    for (int a = 1; a <= 2; ++a) model.NextComponent(nullptr, nullptr, 0, given);
    EXPECT_EQ(model.GetComponents(), 2);
    EXPECT_EQ(CellsOf((*model.GetPprim())[1]), CellsOf((*model.GetPprim())[2]));
    EXPECT_EQ(CellsOf((*model.GetTprim())[1]), CellsOf((*model.GetTprim())[2]));
    EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(X));
  }
}

TEST(NCPCA, TakesTheComponentOutTwiceWhenAskedTwice) {
  const NCDataMatrix<float> X = MatrixOf<float>({{3, 0}, {0, 1}});
  NCPCA model(&X, 50);
  AddComponent(&model);
  ASSERT_THAT(CellsOf(*model.GetResiduals()), ElementsAre(ElementsAre(0, 0), ElementsAre(0, 1)));
  model.CalculateResiduals();
  EXPECT_THAT(CellsOf(*model.GetResiduals()), ElementsAre(ElementsAre(-3, 0), ElementsAre(0, 1)));
}

TEST(NCPCA, TakesNothingOutWithoutAComponent) {
  const NCDataMatrix<float> X = RandomMatrix<float>(4, 3, 0.2, 1);
  NCPCA model(&X, 50);
  model.CalculateResiduals();
  EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(X));
  NCPCA().CalculateResiduals();
}

TEST(NCPCA, StartsFromTheScoresThatAreGiven) {
  const NCDataMatrix<float> X = TableOfThreeDirections(15, 6, 0.1);
  const NCDataVector<float> start = RandomVector<float>(15, 0.0, 5);
  const auto before = CellsOf(start);
  NCPCA model(&X, 2);
  model.NextComponent(nullptr, nullptr, 0, &start);
  const plain::Vector cells = plain::VectorOf(start);
  const plain::PrincipalComponent twin = plain::FitPCA(plain::TableOf(X), {2, &cells});
  // As against the plain algorithm above: two rounds.
  EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model.GetTprim())[1]), twin.t), 16 * 0x1p-24);
  EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model.GetPprim())[1]), twin.p), 16 * 0x1p-24);
  EXPECT_EQ(CellsOf(start), before);
}

TEST(NCPCA, StartsFromAScoreOfItsOwn) {
  const NCDataMatrix<float> X = TableOfThreeDirections(15, 6, 0.1);
  NCPCA model(&X, 3);
  NCPCA twin(&X, 3);
  for (NCPCA* each : {&model, &twin}) NextComponent(each);
  NCDataVector<float> copy(15);
  for (int i = 1; i <= 15; ++i) copy(i, (*twin.GetTprim())[1][i]);
  model.NextComponent(nullptr, nullptr, 0, &(*model.GetTprim())[1]);
  twin.NextComponent(nullptr, nullptr, 0, &copy);
  EXPECT_TRUE(StreamOf(model) == StreamOf(twin));
}

TEST(NCPCA, LetsADerivedModelTakeOutWhatItWants) {
  struct Keeping : NCPCA {
    using NCPCA::NCPCA;
    void CalculateResiduals() override {}
  };
  const NCDataMatrix<float> X = TableOfThreeDirections(15, 6, 0.1);
  Keeping model(&X, 50);
  AddComponent(&model);
  EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(X));
}

TEST(NCPCA, HasTheSignThatItsStartGives) {
  const NCDataMatrix<float> X = TableOfThreeDirections(15, 6, 0.1);
  NCDataVector<float> start = X.GetNIPALSStartColumn();
  NCPCA usual(&X, 50);
  NCPCA turned(&X, 50);
  NextComponent(&usual);
  start *= -1.0L;
  turned.NextComponent(nullptr, nullptr, 0, &start);
  for (int i = 1; i <= 15; ++i) EXPECT_EQ((*turned.GetTprim())[1][i], -(*usual.GetTprim())[1][i]);
  for (int k = 1; k <= 6; ++k) EXPECT_EQ((*turned.GetPprim())[1][k], -(*usual.GetPprim())[1][k]);
}

TEST(NCPCA, TakesTheFirstOfColumnsThatAreAllAsLong) {
  // Both columns have a sum of squares of 4; the component goes with the sum or the difference of the two, and its
  // scores keep the sign of the column it started from.
  const NCDataMatrix<float> X = MatrixOf<float>({{1, -1}, {1, -1}, {1, -1}, {-1, -1}});
  NCPCA model(&X, 50);
  NextComponent(&model);
  EXPECT_GT((*model.GetTprim())[1][1], 0.0F);
  EXPECT_GT((*model.GetPprim())[1][1], 0.0F);
  EXPECT_LT((*model.GetPprim())[1][2], 0.0F);
}

TEST(NCPCA, LeavesOutTheVariablesOfAGroupAndEmptiesTheirColumnsAfterwards) {
  const NCDataMatrix<float> X = TableOfThreeDirections(12, 6, 0.1);
  const NCIntegralVector<int, -99> groups = Ints({0, 1, 2, 0, 1, 2});
  NCPCA model(&X, 100);
  model.NextComponent(nullptr, &groups, 1, nullptr);
  const NCDataVector<float>& p = (*model.GetPprim())[1];
  for (int k = 1; k <= 6; ++k) EXPECT_EQ(p[k] == kMissing, groups[k] == 1);
  EXPECT_EQ(p.GetNumMisVal(), 2);

  // The same from a table in which these columns are empty, and from the start column of the whole one.
  NCDataMatrix<float> without = X;
  for (const int k : {2, 5}) without.SetColumn(k, kMissing);
  const plain::Vector start = plain::VectorOf(X.GetNIPALSStartColumn());
  const plain::PrincipalComponent twin = plain::FitPCA(plain::TableOf(without), {model.GetIterations(), &start});
  EXPECT_LT(plain::RelativeGap(plain::VectorOf(p), twin.p), 16 * 0x1p-24);
  EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model.GetTprim())[1]), twin.t), 16 * 0x1p-24);

  model.CalculateResiduals();
  for (int k = 1; k <= 6; ++k)
    EXPECT_EQ(model.GetResiduals()->GetColumnMisVal(k), groups[k] == 1 ? 12 : X.GetColumnMisVal(k));
  EXPECT_TRUE(HasExactCounts(*model.GetResiduals()));
}

TEST(NCPCA, UsesAllVariablesWhereNoneIsInTheGroup) {
  const NCDataMatrix<float> X = TableOfThreeDirections(12, 6, 0.1);
  const NCIntegralVector<int, -99> groups = Ints({0, 1, 2, 0, 1, 2});
  NCPCA some(&X, 100);
  NCPCA all(&X, 100);
  some.NextComponent(nullptr, &groups, 3, nullptr);
  NextComponent(&all);
  EXPECT_TRUE(StreamOf(some) == StreamOf(all));
}

TEST(NCPCA, LeavesCopiesOfItsResultsAlone) {
  const NCDataMatrix<float> X = RandomMatrix<float>(8, 4, 0.1, 4);
  NCPCA model(&X, 50);
  AddComponent(&model);
  const NCDataMatrix<float> copies[] = {*model.GetPprim(), *model.GetTprim(), *model.GetResiduals()};
  const std::vector<std::vector<std::vector<float>>> before = {CellsOf(copies[0]), CellsOf(copies[1]),
                                                               CellsOf(copies[2])};
  AddComponent(&model);
  EXPECT_EQ(model.GetPprim()->SizeRows(), 2);
  for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(CellsOf(copies[i]), before[i]);
}

}  // namespace
