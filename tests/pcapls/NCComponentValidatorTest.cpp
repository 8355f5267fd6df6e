#include "kalmia/pcapls/NCComponentValidator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "PCAValidationCase.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"

namespace {

static_assert(std::is_abstract_v<NCComponentValidator> && std::is_abstract_v<PCAComponentValidator>);
static_assert(std::has_virtual_destructor_v<NCComponentValidator>);

/// Its first component is the first column: then the square of s is left.
NCDataMatrix<float> TableWithSecondValue(float s) { return MatrixOf<float>({{1, 0}, {0, s}}); }

void TakeOutOne(NCPCA* model) {
  model->NextComponent(nullptr, nullptr, 0, nullptr);
  model->CalculateResiduals();
}

TEST(PCA_SS_ComponentValidator, IsAskedBeforeTheComponent) {
  EXPECT_TRUE(PCA_SS_ComponentValidator().IsPreComponentValidator());
}

TEST(PCA_SS_ComponentValidator, AcceptsComponentsWhileMoreThanTheFractionIsLeft) {
  const NCDataMatrix<float> X = TableWithSecondValue(0.5F);  // of 1.25 first all, then a fifth, then nothing
  for (const float fraction : {0.1F, 0.19F, 0.21F, 0.9F}) {
    NCPCA model(&X, 50);
    PCA_SS_ComponentValidator validator(&model, fraction);
    EXPECT_TRUE(validator.IsValid());
    TakeOutOne(&model);
    EXPECT_EQ(validator.IsValid(), fraction < 0.2F);
    TakeOutOne(&model);
    EXPECT_FALSE(validator.IsValid());
  }
}

TEST(PCA_SS_ComponentValidator, RefusesTheFractionItself) {
  const NCDataMatrix<float> X = TableWithSecondValue(0.5F);
  NCPCA model(&X, 50);
  const float share = 0.25F / 1.25F;  // as float
  PCA_SS_ComponentValidator equal(&model, share);
  PCA_SS_ComponentValidator below(&model, std::nextafter(share, 0.0F));
  TakeOutOne(&model);
  ASSERT_EQ(static_cast<double>(model.GetResiduals()->GetSS()), 0.25);
  EXPECT_FALSE(equal.IsValid());
  EXPECT_TRUE(below.IsValid());
}

TEST(PCA_SS_ComponentValidator, RefusesAThousandthByDefault) {
  // Columns that are orthogonal, of 999000 = 998^2 + 54^2 + 8^2 + 4^2 and 1000 = 30^2 + 10^2.
  const NCDataMatrix<float> X = MatrixOf<float>({{998, 0}, {54, 0}, {8, 0}, {4, 0}, {0, 30}, {0, 10}});
  NCPCA model(&X, 50);
  PCA_SS_ComponentValidator validator(&model);
  PCA_SS_ComponentValidator less(&model, 0.000999F);
  ASSERT_EQ(static_cast<double>(X.GetSS()), 1000000.0);
  TakeOutOne(&model);
  ASSERT_EQ(static_cast<double>(model.GetResiduals()->GetSS()), 1000.0);
  EXPECT_FALSE(validator.IsValid());
  EXPECT_TRUE(less.IsValid());
}

TEST(PCA_SS_ComponentValidator, RefusesATableOfZerosAtOnce) {
  const NCDataMatrix<float> X(3, 2, 0.0F);
  NCPCA model(&X, 50);
  EXPECT_FALSE(PCA_SS_ComponentValidator(&model, 0.001F).IsValid());
  EXPECT_FALSE(PCA_SS_ComponentValidator(&model, -1.0F).IsValid()) << "whatever the fraction";
}

TEST(PCA_SS_ComponentValidator, RefusesATableWithAsGoodAsNothingInIt) {
  // The limit lies at a sum of squares of 1e-30.
  const auto isValidFor = [](float cell) {
    const NCDataMatrix<float> X(1, 1, cell);
    NCPCA model(&X, 50);
    return PCA_SS_ComponentValidator(&model, 0.001F).IsValid();
  };
  EXPECT_FALSE(isValidFor(0.999999e-15F));
  EXPECT_TRUE(isValidFor(1.000001e-15F));
}

TEST(PCA_SS_ComponentValidator, RefusesATableWithoutCells) {
  for (const int rows : {0, 3}) {
    const NCDataMatrix<float> X(rows, 2);
    NCPCA model(&X, 50);
    EXPECT_FALSE(PCA_SS_ComponentValidator(&model, -1.0F).IsValid());
    PCA_SS_ComponentValidator later(nullptr, -1.0F);
    later.SetPCAModel(&model);
    EXPECT_FALSE(later.IsValid());
  }
}

TEST(PCA_SS_ComponentValidator, IsNotValidWithoutAModel) {
  PCA_SS_ComponentValidator validator;
  EXPECT_FALSE(validator.IsValid());
  const NCDataMatrix<float> X = TableWithSecondValue(0.5F);
  NCPCA model(&X, 50);
  validator.SetPCAModel(&model);
  EXPECT_TRUE(validator.IsValid());
  validator.SetPCAModel(nullptr);
  EXPECT_FALSE(validator.IsValid());
}

TEST(PCA_SS_ComponentValidator, StartsFromWhatIsLeftWhenTheModelIsGiven) {
  const NCDataMatrix<float> X = TableWithSecondValue(0.01F);
  NCPCA model(&X, 50);
  PCA_SS_ComponentValidator fromTheTable(&model);
  TakeOutOne(&model);
  EXPECT_FALSE(fromTheTable.IsValid()) << "a ten-thousandth is left";
  PCA_SS_ComponentValidator later;
  later.SetPCAModel(&model);
  EXPECT_TRUE(later.IsValid());
  PCAComponentValidator* base = &fromTheTable;
  base->SetPCAModel(&model);
  EXPECT_TRUE(fromTheTable.IsValid()) << "through the base too";
}

TEST(PCA_SS_ComponentValidator, RefusesAModelWhoseSumOfSquaresIsNoFiniteFloatAndForgetsTheFormerOne) {
  const NCDataMatrix<float> X = TableWithSecondValue(0.5F);
  NCPCA model(&X, 50);
  const float inf = std::numeric_limits<float>::infinity();
  for (const float cell : {1e30F, inf, -inf, std::numeric_limits<float>::quiet_NaN()}) {
    const NCDataMatrix<float> wrong = TableWithSecondValue(cell);
    NCPCA wrongModel(&wrong, 50);
    PCA_SS_ComponentValidator validator(&model, 0.001F);
    try {
      validator.SetPCAModel(&wrongModel);
      ADD_FAILURE() << "no error";
    } catch (const NCError& error) {
      EXPECT_EQ(error.GetMessage(), LanguageString::Get(10374));
      EXPECT_EQ(error.GetLevel(), NCError::Level0);
    }
    EXPECT_FALSE(validator.IsValid()) << "it would be, if it still judged the former model";
    validator.SetPCAModel(&model);
    EXPECT_TRUE(validator.IsValid());
    EXPECT_FALSE(PCA_SS_ComponentValidator(&wrongModel).IsValid()) << "the constructor does not look";
  }
}

TEST(PCA_SS_ComponentValidator, IsNoneTheWiserForBeingDone) {
  const NCDataMatrix<float> X = TableWithSecondValue(0.5F);
  NCPCA model(&X, 50);
  PCA_SS_ComponentValidator validator(&model);
  for (int i = 0; i < 3; ++i) {
    validator.Done();
    EXPECT_TRUE(validator.IsValid());
  }
}

TEST(PCA_SS_ComponentValidator, CopiesHaveTheirModelFractionAndStart) {
  const NCDataMatrix<float> X = TableWithSecondValue(0.5F);
  NCPCA model(&X, 50);
  PCA_SS_ComponentValidator strict(&model, 0.9F);
  PCA_SS_ComponentValidator copy(strict);
  PCA_SS_ComponentValidator assigned;
  assigned = strict;
  EXPECT_TRUE(copy.IsValid() && assigned.IsValid());
  TakeOutOne(&model);
  EXPECT_FALSE(copy.IsValid() || assigned.IsValid());
}

TEST(PCA_SS_ComponentValidator, EndsALoopThatDoesNotKnowTheRule) {
  const NCDataMatrix<float> X = TableOfThreeDirections(20, 8, 0.1);
  NCPCA model(&X, 100);
  PCA_SS_ComponentValidator rule;
  rule.SetPCAModel(&model);
  NCComponentValidator& validator = rule;
  while (validator.IsValid()) TakeOutOne(&model);
  validator.Done();
  const double share = static_cast<double>(model.GetResiduals()->GetSS() / X.GetSS());
  EXPECT_LE(share, 0.001F);
  EXPECT_GE(model.GetComponents(), 3);
}

/// A rule of a user's own: so many components.
class Count : public PCAComponentValidator {
 public:
  explicit Count(int most) : PCAComponentValidator(nullptr), most_(most) {}
  bool IsPreComponentValidator() override { return false; }
  bool IsValid() override { return model_->GetComponents() < most_; }

 private:
  int most_;
};

TEST(PCAComponentValidator, LooksAtTheModelThatWasGivenLast) {
  const NCDataMatrix<float> X = TableOfThreeDirections(20, 8, 0.1);
  NCPCA first(&X, 100);
  NCPCA second(&X, 100);
  Count validator(1);
  validator.SetPCAModel(&first);
  EXPECT_TRUE(validator.IsValid());
  TakeOutOne(&first);
  EXPECT_FALSE(validator.IsValid());
  validator.SetPCAModel(&second);
  EXPECT_TRUE(validator.IsValid());
  validator.Done();
}

}  // namespace
