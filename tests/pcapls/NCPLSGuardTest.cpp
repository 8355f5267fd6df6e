#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "RelatedTables.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

// The guard against X and Y that have nothing to do with each other.

namespace {

/// X has its only cell that is not 0 in the first row, y is (cosine, 1): the cosine of the angle between y and X, up to
/// cosine^2, is what the guard compares with 1e-6 / sqrt(K).
Tables NearlyOrthogonal(int xVariables, float cosine) {
  Tables tables{NCDataMatrix<float>(2, xVariables, 0.0F), MatrixOf<float>({{cosine}, {1.0F}})};
  tables.X(1, 1, 1.0F);
  return tables;
}

struct Relation {
  const char* what;
  Tables tables;
  bool related;
};

TEST(NCPLSGuard, FailsBelowAMillionthOverTheRootOfTheNumberOfVariables) {
  const float inf = std::numeric_limits<float>::infinity();
  const Relation relations[] = {
      {"one variable, above", NearlyOrthogonal(1, 1.1e-6F), true},
      {"one variable, below", NearlyOrthogonal(1, 0.9e-6F), false},
      {"four variables, above", NearlyOrthogonal(4, 0.55e-6F), true},
      {"four variables, below", NearlyOrthogonal(4, 0.45e-6F), false},
      {"orthogonal", NearlyOrthogonal(1, 0.0F), false},
      {"no variance in X", {NCDataMatrix<float>(2, 1, 0.0F), MatrixOf<float>({{1.0F}, {2.0F}})}, false},
      {"no variance in Y", {MatrixOf<float>({{1.0F}, {2.0F}}), NCDataMatrix<float>(2, 1, 0.0F)}, false},
      {"no data in X", {NCDataMatrix<float>(2, 1), MatrixOf<float>({{1.0F}, {2.0F}})}, false},
      {"no data in Y", {MatrixOf<float>({{1.0F}, {2.0F}}), NCDataMatrix<float>(2, 1)}, false},
      {"a NaN", {MatrixOf<float>({{std::nanf("")}, {2.0F}}), MatrixOf<float>({{1.0F}, {2.0F}})}, false},
      {"a relation beyond every float",
       {MatrixOf<float>({{1e30F}, {0.0F}}), MatrixOf<float>({{1e-14F}, {0.0F}})},
       false},
      {"several Y, above", {MatrixOf<float>({{1.0F}, {0.0F}}), MatrixOf<float>({{1.1e-6F, 0}, {1, 0.1F}})}, true},
      {"several Y, below", {MatrixOf<float>({{1.0F}, {0.0F}}), MatrixOf<float>({{0.9e-6F, 0}, {1, 0.1F}})}, false},
      {"an infinity", {MatrixOf<float>({{inf}, {2.0F}}), MatrixOf<float>({{1.0F}, {2.0F}})}, false},
  };
  for (const Relation& relation : relations) {
    SCOPED_TRACE(relation.what);
    NCPLS model(&relation.tables.X, &relation.tables.Y, 50);
    const std::string before = StreamOf(model);
    if (relation.related) {
      EXPECT_NO_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true));
      continue;
    }
    try {
      model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
      ADD_FAILURE() << "no error";
    } catch (const NCError& error) {
      EXPECT_EQ(error.GetLevel(), NCError::Level1);
      EXPECT_EQ(error.GetMessage(), LanguageString::Get(10159));
    }
    EXPECT_EQ(StreamOf(model), before);
    EXPECT_EQ(model.GetComponents(), 0);

    EXPECT_NO_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false));
    EXPECT_EQ(model.GetComponents(), 1) << "not strict, it is appended as it is";
    EXPECT_EQ(model.GetWprim()->SizeRows(), 1);
  }
}

TEST(NCPLSGuard, LetsTheLimitItselfPass) {
  // w and u are 1 and the squares of X add up to 10^12, so that the relation is 1 / 10^6 to the bit.
  NCDataMatrix<float> X = MatrixOf<float>({{1}, {999999}, {1411}, {89}, {34}});
  ASSERT_EQ(X.GetSS(), 1e12L);
  const NCDataMatrix<float> y = MatrixOf<float>({{1}, {0}, {0}, {0}, {0}});
  EXPECT_NO_THROW(NCPLS(&X, &y, 50).NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true));
  X(5, 1, 35.0F);
  EXPECT_THROW(NCPLS(&X, &y, 50).NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true), NCError);
}

TEST(NCPLSGuard, LetsTheModelGoOnAfterAFailure) {
  // One component explains all of y; the second one finds nothing and leaves the model as it is.
  const NCDataMatrix<float> X = MatrixOf<float>({{1, 0}, {-1, 0}, {0, 1}, {0, -1}});
  const NCDataMatrix<float> Y = MatrixOf<float>({{1.0F}, {-1.0F}, {0.0F}, {0.0F}});
  NCPLS model(&X, &Y, 50);
  AddComponent(&model);
  const std::string before = StreamOf(model);
  EXPECT_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true), NCError);
  EXPECT_EQ(StreamOf(model), before);
  EXPECT_EQ(model.GetComponents(), 1);
  EXPECT_NO_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false));
  EXPECT_EQ(model.GetComponents(), 2);
}

TEST(NCPLSGuard, MeasuresXAsTheDeflationsLeftIt) {
  // The first component takes the long column out. The second one has nearly all of what is left of X, whose length
  // is below 1e-7 of what it was, which the guard would not let pass.
  const NCDataMatrix<float> X = MatrixOf<float>({{1e8F, 0}, {-1e8F, 0}, {0, 1}, {0, -1}});
  const NCDataMatrix<float> Y = MatrixOf<float>({{1.0F}, {-1.0F}, {1.0F}, {-1.0F}});
  NCPLS model(&X, &Y, 50);
  AddComponent(&model);
  ASSERT_LT(model.GetXResiduals()->GetSS(), 1e-14L * X.GetSS());
  EXPECT_NO_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true));
}

TEST(NCPLSGuard, MeasuresXAsDeflationsThatWereRepeatedMadeItLonger) {
  // Nearly orthogonal, with a cosine of 3e-8: X and u both grow by 1 - n along the first row with n deflations. After 11
  // their cosine is 3e-7, which is too small still; only beside the X of the beginning, a tenth as long, it would pass.
  const Tables tables = NearlyOrthogonal(1, 3e-8F);
  NCPLS model(&tables.X, &tables.Y, 50);
  EXPECT_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true), NCError);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
  for (int i = 0; i < 11; ++i) model.CalculateResiduals();
  ASSERT_EQ((*model.GetXResiduals())[1][1], -10.0F);
  EXPECT_THROW(model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true), NCError);
}

TEST(NCPLSGuard, MeasuresXAsItWasReadAndNotTheOneBefore) {
  const NCDataMatrix<float> shortX = MatrixOf<float>({{1.0F}, {2.0F}, {-1.0F}});
  const NCDataMatrix<float> y = MatrixOf<float>({{1.0F}, {1.0F}, {-3.0F}});
  const NCDataMatrix<float> longX = MatrixOf<float>({{1e7F}, {0.0F}, {0.0F}});
  const NCDataMatrix<float> unrelated = MatrixOf<float>({{0.9e-6F}, {1.0F}, {0.0F}});
  const auto read = [](NCPLS* used, const NCPLS& fresh) {
    AddComponent(used);
    std::istringstream stream(StreamOf(fresh));
    EXPECT_TRUE(stream >> *used);
  };
  NCPLS ofShort(&shortX, &y, 50);
  read(&ofShort, NCPLS(&longX, &unrelated, 50));
  EXPECT_THROW(ofShort.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true), NCError);
  NCPLS ofLong(&longX, &y, 50);
  read(&ofLong, NCPLS(&shortX, &y, 50));
  EXPECT_NO_THROW(ofLong.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true));
}

}  // namespace
