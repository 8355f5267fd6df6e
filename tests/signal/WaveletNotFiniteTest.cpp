#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "signal/WaveletCase.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsNan;

// NaN and infinity are cells like others: nothing is refused, and nothing that they reach looks like a number.

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kBad[] = {kNaN, kInfinity, -kInfinity};

/// Haar's two taps, where it is easy to tell what a cell reaches.
struct Haar : Filters {
  Haar() : Filters(Wavelet::FunctionBiorthogonal1, 1) {}
};

NCDataVector<float> WithCell(int i, float value) {
  NCDataVector<float> signal = RandomSignal(8, 1);
  signal(i, value);
  return signal;
}

/// That the positions listed, and no others, are not finite in `found`, which else has the cells of `ofZero`.
void ExpectReached(const std::vector<int>& reached, const NCDataVector<float>& found,
                   const NCDataVector<float>& ofZero) {
  ASSERT_EQ(found.Size(), ofZero.Size());
  for (int i = 1; i <= found.Size(); ++i) {
    if (std::count(reached.begin(), reached.end(), i) > 0)
      EXPECT_FALSE(std::isfinite(found[i])) << i;
    else
      EXPECT_EQ(found[i], ofZero[i]) << i;
  }
}

OwnedVector Back(const NCDataVector<float>& coefficients, const Wavelet::WaveletFilters& filters) {
  return OwnedVector(Wavelet::BackwardTransform(&coefficients, filters, Wavelet::DetrendNone, coefficients.Size(), 0,
                                                0, nullptr));
}

TEST(WaveletOfWhatIsNotFinite, ReachesTheCoefficientsWhoseWindowsHaveTheCell) {
  const Haar haar;
  const OwnedVector ofZero = Transformed(WithCell(3, 0), haar.decomposition, false);
  for (const float bad : kBad) {
    SCOPED_TRACE(bad);
    ExpectReached({1, 2, 3, 6}, *Transformed(WithCell(3, bad), haar.decomposition, false), *ofZero);
  }
}

TEST(WaveletOfWhatIsNotFinite, ReachesTheCellsOfACoefficientOnTheWayBack) {
  const Haar haar;
  for (const float bad : kBad) {
    SCOPED_TRACE(bad);
    ExpectReached({3, 4}, *Back(WithCell(6, bad), haar.reconstruction), *Back(WithCell(6, 0), haar.reconstruction));
    ExpectReached({5, 6, 7, 8}, *Back(WithCell(4, bad), haar.reconstruction),
                  *Back(WithCell(4, 0), haar.reconstruction));
  }
}

TEST(WaveletOfWhatIsNotFinite, ReachesEveryCoefficientThroughATrend) {
  const Haar haar;
  for (const auto mode : {Wavelet::DetrendMean, Wavelet::DetrendLinear})
    for (const float bad : kBad) {
      SCOPED_TRACE(testing::Message() << bad << ", mode " << mode);
      const auto signal = WithCell(3, bad);
      long double mean = 0, slope = 0;
      const OwnedVector found(
          Wavelet::ForwardTransform(&signal, haar.decomposition, mode, mean, slope, nullptr, false));
      for (const float cell : CellsOf(*found)) EXPECT_FALSE(std::isfinite(cell));
      EXPECT_FALSE(std::isfinite(mean));
    }
}

TEST(WaveletOfWhatIsNotFinite, ReachesOnlyItsOwnRowOfATable) {
  const Haar haar;
  NCDataMatrix<float> table(2, 8, 1.0F);
  table.SetRow(1, WithCell(3, kNaN));
  table.SetRow(2, WithCell(3, 0));
  NCDataVector<float>*means = nullptr, *slopes = nullptr;
  const OwnedMatrix found(Wavelet::ForwardTransformObswise(&table, haar.decomposition, Wavelet::DetrendNone, means,
                                                           slopes, nullptr, false));
  const OwnedVector ofZero = Transformed(WithCell(3, 0), haar.decomposition, false);
  ExpectReached({1, 2, 3, 6}, (*found)[1], *ofZero);
  EXPECT_EQ(CellsOf((*found)[2]), CellsOf(*ofZero));
}

OwnedMatrix PowerOf(const NCDataVector<float>& coefficients, bool limit = false) {
  return OwnedMatrix(Wavelet::PowerSpectrum(&coefficients, limit, nullptr));
}

TEST(WaveletPowerOfWhatIsNotFinite, IsNaNInAllLevelsForANaN) {
  for (int i = 2; i <= 4; ++i) {
    NCDataVector<float> in(4, 1.0F);
    in(i, kNaN);
    const OwnedMatrix spectrum = PowerOf(in);
    for (int r : {2, 4}) EXPECT_THAT(CellsOf((*spectrum)[r]), Each(IsNan())) << r;
    for (int r : {1, 3, 5}) EXPECT_THAT(CellsOf((*spectrum)[r]), Each(0.0F)) << r;
  }
}

TEST(WaveletPowerOfWhatIsNotFinite, IsNaNForAnInfinityAnd0BesideIt) {
  for (const float bad : {kInfinity, -kInfinity}) {
    const OwnedMatrix spectrum = PowerOf(Signal({1, 2, 3, bad}));
    EXPECT_THAT(CellsOf((*spectrum)[4]), Each(0.0F));
    EXPECT_THAT(CellsOf((*spectrum)[2]), ElementsAre(0, 0, IsNan(), IsNan()));
  }
}

TEST(WaveletPowerOfWhatIsNotFinite, ShowsANaNWhereverItStandsAmongTheCellsOfAColumn) {
  for (int at : {513, 514, 515, 516}) {  // of the finest level, of which a column has two cells: 513 and 514, ...
    NCDataVector<float> in(1024, 0.0F);
    in(at, kInfinity);
    const OwnedMatrix spectrum = PowerOf(in, /*limit=*/true);
    for (int c = 1; c <= 256; ++c) EXPECT_EQ(std::isnan((*spectrum)[2][c]), c == (at - 511) / 2) << at << ' ' << c;
  }
}

TEST(WaveletPowerOfWhatIsNotFinite, DoesNotDependOnTheFirstCoefficient) {
  for (const float bad : kBad) EXPECT_EQ(*PowerOf(Signal({bad, 2, 3, 4})), *PowerOf(Signal({1, 2, 3, 4})));
}

}  // namespace
