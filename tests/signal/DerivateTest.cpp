#include "kalmia/signal/Derivate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/kernels/simd/Lanes.h"
#include "kalmia/support/Exception.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Filter = Derivate<float>;
using Signal = NCDataVector<float>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// n cells of c0 + c1 i + c2 i^2 + c3 i^3, i = 1 to n.
Signal Polynomial(int n, double c0, double c1, double c2, double c3 = 0) {
  Signal y(n);
  for (int i = 1; i <= n; ++i) y(i, static_cast<float>(c0 + i * (c1 + i * (c2 + i * c3))));
  return y;
}

Signal Smoothed(const Filter& filter, const Signal& y) {
  Signal result;
  filter.Smooth(y, result);
  return result;
}

Signal Derived(const Filter& filter, const Signal& y, int order, float spacing = 1) {
  Signal result;
  filter.DoDerivate(y, result, order, spacing);
  return result;
}

/// Whether the order is refused, with the right text, and what the output's size is then.
bool IsIllegal(const Filter& filter, const Signal& y, int order, float spacing) {
  Signal result;
  try {
    filter.DoDerivate(y, result, order, spacing);
    return false;
  } catch (const Exception& error) {
    EXPECT_STREQ(error.GetMessage(), "Illegal derivate order");
    EXPECT_EQ(result.Size(), y.Size());
    return true;
  }
}

TEST(Derivate, NumbersItsPolynomialsByTheirDegree) {
  EXPECT_EQ(Filter::Quadratic, 2);
  EXPECT_EQ(Filter::Cubic, 3);
}

TEST(Derivate, LeavesAConstantAsItIsToTheBit) {
  // The cells differ from their mean by nothing at all.
  for (const auto order : {Filter::Quadratic, Filter::Cubic}) {
    const Signal y(30, 0.7F);
    const Filter filter(order, 9);
    EXPECT_THAT(CellsOf(Smoothed(filter, y)), Each(0.7F));
    for (int derivative = 1; derivative <= 3; ++derivative)
      EXPECT_THAT(CellsOf(Derived(filter, y, derivative)), Each(0.0F));
  }
}

struct Shape {
  Filter::PolynomialOrder order;
  int window;
};

class DerivatePolynomials : public ::testing::TestWithParam<Shape> {};

TEST_P(DerivatePolynomials, AreReproducedToTheEdgesAndInHoles) {
  const auto [order, window] = GetParam();
  const double c0 = 2, c1 = -3, c2 = 0.5, c3 = order == Filter::Cubic ? -0.0625 : 0;
  const int n = window + 12;
  const Signal exact = Polynomial(n, c0, c1, c2, c3);
  Signal holes(exact);
  if (window > 6)
    for (const int hole : {1, 6, 7, n - 4, n}) holes(hole, kMissing);
  const Filter filter(order, window);
  // The largest term of a fit, cell or power of a position times coefficient, loses a few units of 2^-24, and the
  // inverse of a cubic's normal matrix, of condition below 50 with these holes, so many times more.
  double largest = 0;
  for (const float cell : exact) largest = std::max(largest, std::abs(static_cast<double>(cell)));
  const double lost = 200 * 0x1p-24 * std::max(largest, 1.0);
  for (const Signal& y : {exact, holes}) {
    const Signal smooth = Smoothed(filter, y), first = Derived(filter, y, 1), second = Derived(filter, y, 2),
                 third = Derived(filter, y, 3);
    for (int i = 1; i <= n; ++i) {
      EXPECT_NEAR(smooth[i], exact[i], lost) << i;
      EXPECT_NEAR(first[i], c1 + 2 * c2 * i + 3 * c3 * i * i, lost) << i;
      EXPECT_NEAR(second[i], 2 * c2 + 6 * c3 * i, lost) << i;
      EXPECT_NEAR(third[i], 6 * c3, lost) << i;
    }
  }
}

// From 199 on a position in the window is -99: a number like any other.
INSTANTIATE_TEST_SUITE_P(Windows, DerivatePolynomials,
                         ::testing::Values(Shape{Filter::Quadratic, 3}, Shape{Filter::Quadratic, 5},
                                           Shape{Filter::Quadratic, 15}, Shape{Filter::Quadratic, 201},
                                           Shape{Filter::Cubic, 5}, Shape{Filter::Cubic, 7}, Shape{Filter::Cubic, 15},
                                           Shape{Filter::Cubic, 201}));

TEST(Derivate, IsTheClassicalFilterInTheMiddle) {
  // Savitzky & Golay (1964), tables I, III and VII: smoothing -3 12 17 12 -3 over 35, slope -2 -1 0 1 2 over 10,
  // second derivative 2 -1 -2 -1 2 over 7, of quadratics through 5 points.
  for (int at = 1; at <= 5; ++at) {
    Signal impulse(5, 0.0F);
    impulse(at, 1);
    const Filter filter(Filter::Quadratic, 5);
    const double smooth[] = {-3, 12, 17, 12, -3}, slope[] = {-2, -1, 0, 1, 2}, bend[] = {2, -1, -2, -1, 2};
    // Filter cells below 1 in float, of which five are added up.
    EXPECT_NEAR(Smoothed(filter, impulse)[3], smooth[at - 1] / 35, 5 * 0x1p-24);
    EXPECT_NEAR(Derived(filter, impulse, 1)[3], slope[at - 1] / 10, 5 * 0x1p-24);
    EXPECT_NEAR(Derived(filter, impulse, 2)[3], bend[at - 1] / 7, 5 * 0x1p-24);
  }
}

TEST(Derivate, DividesByThePowerOfTheSpacing) {
  const Signal y = RandomVector<float>(40, 0.1, 1);
  const Filter filter(Filter::Cubic, 7);
  for (int order = 1; order <= 3; ++order) {
    const Signal plain = Derived(filter, y, order), spaced = Derived(filter, y, order, 0.25F);
    for (int i = 1; i <= 40; ++i) {
      const float expected = plain[i] == kMissing ? kMissing : std::pow(4.0F, order) * plain[i];
      EXPECT_EQ(spaced[i], expected) << order << ", " << i;
    }
  }
}

TEST(Derivate, KeepsMissingCellsMissingWhenItDividesByTheSpacing) {
  Signal y(20, kMissing);
  EXPECT_THAT(CellsOf(Derived(Filter(Filter::Quadratic, 5), y, 1, 0.5F)), Each(kMissing));
  for (int i = 1; i <= 5; ++i) y(i, static_cast<float>(i * i));
  const Signal slope = Derived(Filter(Filter::Quadratic, 5), y, 1, 0.5F);
  EXPECT_NEAR(slope[3], 12, 12 * 8 * 0x1p-24);
  EXPECT_EQ(slope[20], kMissing);
  EXPECT_TRUE(HasExactCounts(slope));
}

TEST(Derivate, DoesNotCareForTheRestOfTheSignal) {
  const Signal y = RandomVector<float>(60, 0, 3);
  const Filter filter(Filter::Quadratic, 7);
  const Signal clean = Smoothed(filter, y);
  for (const float odd : {kMissing, kInfinity, 1e30F}) {
    Signal other(y);
    other(30, odd);
    const Signal spoilt = Smoothed(filter, other);
    for (int i = 1; i <= 60; ++i) EXPECT_TRUE(spoilt[i] == clean[i] || (i >= 27 && i <= 33)) << odd << ", " << i;
    EXPECT_NE(spoilt[30], clean[30]);
    EXPECT_EQ(spoilt.GetNumMisVal(), 0) << "a hole is filled";
  }
}

TEST(Derivate, GivesTheSameBitsWithTheScalarTwins) {
  const Signal y = RandomVector<float>(700, 0.01, 4);
  for (const auto order : {Filter::Quadratic, Filter::Cubic}) {
    const Filter filter(order, 11);
    const Signal lanes = Smoothed(filter, y), slopes = Derived(filter, y, 1);
    kalmia::simd::UseScalarTwins(true);
    const Signal twins = Smoothed(filter, y), slopesOfTwins = Derived(filter, y, 1);
    kalmia::simd::UseScalarTwins(false);
    EXPECT_TRUE(lanes == twins);
    EXPECT_TRUE(slopes == slopesOfTwins);
  }
}

TEST(Derivate, FillsTheOutputWhateverItHeldAndCountsItsHoles) {
  const Signal y = RandomVector<float>(40, 0.4, 5);
  const Filter filter(Filter::Quadratic, 5);
  const Signal expected = Smoothed(filter, y);
  Signal reused(55, 3.0F), inPlace(y), sharing(y);
  filter.Smooth(y, reused);
  EXPECT_TRUE(reused == expected);
  filter.Smooth(inPlace, inPlace);
  filter.Smooth(y, sharing);
  for (int i = 1; i < 40; ++i) {
    EXPECT_EQ(inPlace[i], expected[i]) << i;
    EXPECT_EQ(sharing[i], expected[i]) << i;
  }
  EXPECT_TRUE(y == RandomVector<float>(40, 0.4, 5)) << "what shared the cells is left alone";
  for (const Signal& each : {expected, inPlace, sharing}) EXPECT_TRUE(HasExactCounts(each));
}

TEST(Derivate, CopiesAreFiltersOfTheirOwn) {
  const Signal y = RandomVector<float>(30, 0.1, 6);
  const Filter original(Filter::Cubic, 9);
  const Filter copy(original);
  Filter assigned(Filter::Quadratic, 5);
  assigned = original;
  EXPECT_TRUE(Smoothed(copy, y) == Smoothed(original, y));
  EXPECT_TRUE(Smoothed(assigned, y) == Smoothed(original, y));
}

TEST(Derivate, NeedsMoreCellsThanItsOrder) {
  // The constant is not counted in the order: three cells make a parabola, four a cubic.
  for (const auto order : {Filter::Quadratic, Filter::Cubic}) {
    const Filter filter(order, 7);
    Signal enough(7, kMissing), tooFew(7, kMissing);
    for (int i = 1; i <= order + 1; ++i) enough(2 * i - 1, static_cast<float>(i));
    for (int i = 1; i <= order; ++i) tooFew(2 * i - 1, static_cast<float>(i));
    for (int derivative = 0; derivative <= 2; ++derivative) {
      const Signal fitted = derivative == 0 ? Smoothed(filter, enough) : Derived(filter, enough, derivative);
      const Signal failed = derivative == 0 ? Smoothed(filter, tooFew) : Derived(filter, tooFew, derivative);
      EXPECT_EQ(fitted.GetNumMisVal(), 0);
      EXPECT_THAT(CellsOf(failed), Each(kMissing));
    }
    EXPECT_NEAR(Smoothed(filter, enough)[3], 2, 2 * 20 * 0x1p-24);
  }
}

TEST(Derivate, MarksTheLeftEdgeWhereTheFirstWindowFails) {
  Signal y = Polynomial(20, 0, 1, 0);
  for (int i = 1; i <= 5; ++i) y(i, kMissing);  // windows of 7: the first has cells 6 and 7 alone, the second three
  const Signal smooth = Smoothed(Filter(Filter::Quadratic, 7), y);
  for (int i = 1; i <= 20; ++i)
    EXPECT_NEAR(smooth[i], i <= 4 ? kMissing : static_cast<float>(i), 20 * 30 * 0x1p-24) << i;
}

TEST(Derivate, MarksTheRightEdgeOneCellFurtherInAndLeavesTheLastCell) {
  Signal y = Polynomial(20, 0, 1, 0);
  for (int i = 16; i <= 20; ++i) y(i, kMissing);
  const Filter filter(Filter::Quadratic, 7);
  for (const int order : {0, 1}) {
    Signal fresh, reused(20, 5.0F);
    for (Signal* output : {&fresh, &reused}) {
      if (order == 0)
        filter.Smooth(y, *output);
      else
        filter.DoDerivate(y, *output, 1, 1);
    }
    for (int i = 1; i <= 16; ++i) {
      EXPECT_NEAR(fresh[i], order == 0 ? i : 1, 20 * 30 * 0x1p-24) << i;
      EXPECT_EQ(reused[i], fresh[i]) << i;
    }
    for (int i = 17; i <= 19; ++i) {
      EXPECT_EQ(fresh[i], kMissing) << i;
      EXPECT_EQ(reused[i], kMissing) << i;
    }
    EXPECT_EQ(fresh[20], kMissing) << "as a new cell is";
    EXPECT_EQ(reused[20], 5.0F) << "what stood there";
    EXPECT_TRUE(HasExactCounts(fresh));
    EXPECT_TRUE(HasExactCounts(reused));
  }
}

TEST(Derivate, MarksOnlyTheMiddleWhereAWindowBetweenFails) {
  Signal y = Polynomial(20, 0, 1, 0);
  for (int i = 8; i <= 11; ++i) y(i, kMissing);
  const Signal smooth = Smoothed(Filter(Filter::Quadratic, 5), y);
  for (int i = 1; i <= 20; ++i) EXPECT_EQ(smooth[i] == kMissing, i >= 8 && i <= 11) << i;
}

TEST(Derivate, TakesASlopeOfMinusNinetyNineForAFailure) {
  const Filter filter(Filter::Quadratic, 3);
  const Signal y = Polynomial(10, 5000, -99, 0);
  EXPECT_THAT(CellsOf(Derived(filter, y, 1)), Each(kMissing));
  EXPECT_THAT(CellsOf(Derived(filter, y, 2)), Each(kMissing));
  EXPECT_THAT(CellsOf(Smoothed(filter, y)), Each(kMissing));
}

TEST(Derivate, LeavesTheOutputAloneWhereTheSignalIsShorterThanTheWindow) {
  const Filter filter(Filter::Quadratic, 7);
  const Signal y = Polynomial(6, 0, 1, 0);
  Signal fresh(2, 1.0F), rightSized = Polynomial(6, 9, 0, 0);
  filter.Smooth(y, fresh);
  EXPECT_THAT(CellsOf(fresh), ElementsAre(kMissing, kMissing, kMissing, kMissing, kMissing, kMissing));
  filter.Smooth(y, rightSized);
  EXPECT_THAT(CellsOf(rightSized), Each(9.0F));
  filter.DoDerivate(y, rightSized, 1, 1);
  EXPECT_THAT(CellsOf(rightSized), Each(9.0F));
  filter.DoDerivate(y, rightSized, 2, 0.5F);
  EXPECT_THAT(CellsOf(rightSized), Each(36.0F)) << "the spacing applies to whatever stands in the output";
  EXPECT_EQ(Smoothed(filter, Signal()).Size(), 0);
}

TEST(Derivate, TakesOneFullWindow) {
  const Signal y = Polynomial(7, 1, 2, 3);
  const Signal smooth = Smoothed(Filter(Filter::Quadratic, 7), y);
  for (int i = 1; i <= 7; ++i) EXPECT_NEAR(smooth[i], y[i], y[7] * 8 * 0x1p-24) << i;
}

TEST(Derivate, SeesAnIllegalOrderWhereAWindowIsFittedOrASpacingApplied) {
  const Filter filter(Filter::Cubic, 5);
  const Signal y = Polynomial(9, 0, 1, 0), tooShort(4, 1.0F), empty(9, kMissing);
  for (const int order : {-1, 0, 4}) {
    EXPECT_TRUE(IsIllegal(filter, y, order, 1));
    EXPECT_FALSE(IsIllegal(filter, tooShort, order, 1));
    EXPECT_FALSE(IsIllegal(filter, empty, order, 1)) << "no window could be fitted";
    EXPECT_TRUE(IsIllegal(filter, y, order, 2));
    EXPECT_TRUE(IsIllegal(filter, tooShort, order, 2));
    EXPECT_TRUE(IsIllegal(filter, empty, order, 2));
  }
  for (int order = 1; order <= 3; ++order) EXPECT_FALSE(IsIllegal(filter, y, order, 2));
}

TEST(Derivate, WritesNoCellWhereAFittedWindowMeetsAnIllegalOrder) {
  const Filter filter(Filter::Quadratic, 3);
  Signal y = Polynomial(8, 0, 1, 0);
  for (int i = 1; i <= 3; ++i) y(i, kMissing);  // the first windows fail
  for (const float spacing : {1.0F, 2.0F}) {
    Signal kept(8, 5.0F), resized(2, 5.0F);
    EXPECT_THROW(filter.DoDerivate(y, kept, 4, spacing), Exception);
    EXPECT_THROW(filter.DoDerivate(y, resized, 4, spacing), Exception);
    EXPECT_THAT(CellsOf(kept), Each(5.0F));
    EXPECT_THAT(CellsOf(resized), Each(kMissing));
    EXPECT_EQ(resized.Size(), 8);
  }
}

TEST(Derivate, GivesNoThirdDerivativeOfAQuadratic) {
  EXPECT_THAT(CellsOf(Derived(Filter(Filter::Quadratic, 5), RandomVector<float>(20, 0, 7), 3)), Each(0.0F));
}

TEST(Derivate, ComesThroughWindowsThatMeanNothing) {
  const auto quintic = static_cast<Filter::PolynomialOrder>(5);
  for (const auto order : {Filter::Quadratic, Filter::Cubic, quintic})
    for (int window = -2; window <= 4; ++window)
      for (int n = 0; n <= 6; ++n) {
        const Filter filter(order, window);
        const Signal smooth = Smoothed(filter, RandomVector<float>(n, 0.3, 8));
        EXPECT_EQ(smooth.Size(), n);
        if (window < 1 || n < window) {
          EXPECT_THAT(CellsOf(smooth), Each(kMissing));
        }
        float height = 0;
        filter.GetOptima(smooth, 1, true, true, height);
      }
}

TEST(Derivate, SmoothsNothingWithAWindowOfOne) {
  const Signal y = RandomVector<float>(20, 0, 9);
  EXPECT_TRUE(Smoothed(Filter(Filter::Quadratic, 1), y) == y);
}

}  // namespace
