#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kalmia/containers/Missing.h"
#include "kalmia/support/NCError.h"
#include "signal/WaveletCase.h"

using ::testing::Each;
using ::testing::ElementsAre;

namespace {

int LevelsOf(int n) { return n == 1 ? 0 : 1 + LevelsOf(n / 2); }

/// Cell by cell, one point in time after the other.
std::vector<std::vector<float>> PlainSpectrum(const NCDataVector<float>& in, int columns) {
  const int n = in.Size(), levels = LevelsOf(n);
  NCDataVector<float> x(n, 0.0F);
  for (int i = 2; i <= n; ++i) {
    int l = 0;
    while ((1 << l) < i) ++l;
    x(i, static_cast<float>(in[i] / std::pow(std::sqrt(2.0), levels - l + 1)));
  }
  x.Normalise();
  std::vector<std::vector<float>> spectrum(2 * levels + 1, std::vector<float>(columns, 0.0F));
  for (int level = 1; level <= levels; ++level)
    for (int c = 1; c <= columns; ++c)
      for (int t = (c - 1) * n / columns; t <= c * n / columns - 1; ++t) {
        const int first = 1 << (level - 1);
        const double cell = x[first + t / (n / first) + 1];
        float& largest = spectrum[2 * levels - 2 * (level - 1) - 1][c - 1];
        largest = std::max(largest, static_cast<float>(100 * cell * cell));
      }
  return spectrum;
}

std::vector<std::vector<float>> RowsOf(const NCDataMatrix<float>& m) {
  std::vector<std::vector<float>> rows;
  for (int r = 1; r <= m.SizeRows(); ++r) rows.push_back(CellsOf(m[r]));
  return rows;
}

TEST(WaveletPowerSpectrum, ShowsTheCoarsestLevelInTheLastRowButOneAndTheFinestInTheSecond) {
  // Scales 2 sqrt 2, 2 and 2, then sqrt 2: four of the coefficients become 1, with a quarter of the power each, three
  // are 0, and the first is left out.
  const float coarse = static_cast<float>(2 * std::sqrt(2)), fine = static_cast<float>(std::sqrt(2));
  const OwnedMatrix spectrum(
      Wavelet::PowerSpectrum(std::make_unique<NCDataVector<float>>(Signal({9, coarse, 2, 0, fine, 0, 0, fine})).get(),
                             false, nullptr));
  ASSERT_EQ(spectrum->SizeRows(), 7);
  ASSERT_EQ(spectrum->SizeColumns(), 8);
  const float quarter = 25;
  const std::vector<float> expected[] = {{0, 0, 0, 0, 0, 0, 0, 0},
                                         {quarter, quarter, 0, 0, 0, 0, quarter, quarter},  // the finest
                                         {0, 0, 0, 0, 0, 0, 0, 0},
                                         {quarter, quarter, quarter, quarter, 0, 0, 0, 0},
                                         {0, 0, 0, 0, 0, 0, 0, 0},
                                         {quarter, quarter, quarter, quarter, quarter, quarter, quarter, quarter},
                                         {0, 0, 0, 0, 0, 0, 0, 0}};
  for (int r = 1; r <= 7; ++r)
    for (int c = 1; c <= 8; ++c) EXPECT_FLOAT_EQ((*spectrum)[r][c], expected[r - 1][c - 1]) << r << ' ' << c;
}

TEST(WaveletPowerSpectrum, AgreesWithOneThatGoesThroughEveryPointInTime) {
  for (int n : {1, 2, 4, 64, 256, 512, 2048})
    for (bool limit : {false, true}) {
      const auto in = RandomSignal(n, n);
      const OwnedMatrix spectrum(Wavelet::PowerSpectrum(&in, limit, nullptr));
      ASSERT_EQ(spectrum->SizeColumns(), limit ? std::min(n, 256) : n);
      ASSERT_EQ(spectrum->SizeRows(), 2 * LevelsOf(n) + 1);
      EXPECT_EQ(RowsOf(*spectrum), PlainSpectrum(in, spectrum->SizeColumns())) << n << " cells, limit " << limit;
    }
}

TEST(WaveletPowerSpectrum, ShowsTheLargestOfTheCoefficientsOfAColumnNotTheirSum) {
  NCDataVector<float> in(512, 0.0F);
  in(257, 3.0F);  // the first two of the finest level, four points in time, two columns of two points
  in(258, 4.0F);
  const OwnedMatrix spectrum(Wavelet::PowerSpectrum(&in, true, nullptr));
  EXPECT_FLOAT_EQ((*spectrum)[2][1], 36);
  EXPECT_FLOAT_EQ((*spectrum)[2][2], 64);
  NCDataVector<float> longer(1024, 0.0F);
  longer(513, 3.0F);  // now four points share a column
  longer(514, 4.0F);
  const OwnedMatrix shared(Wavelet::PowerSpectrum(&longer, true, nullptr));
  EXPECT_FLOAT_EQ((*shared)[2][1], 64);
}

TEST(WaveletPowerSpectrum, LeavesTheInputAloneAndFillsAGivenMatrix) {
  const auto in = RandomSignal(8, 1);
  const auto before = CellsOf(in);
  NCDataMatrix<float> out(3, 3, 7.0F), right(7, 8, 7.0F);
  const OwnedMatrix expected(Wavelet::PowerSpectrum(&in, false, nullptr));
  EXPECT_EQ(Wavelet::PowerSpectrum(&in, false, &out), &out);
  EXPECT_EQ(out, *expected);
  EXPECT_EQ(Wavelet::PowerSpectrum(&in, false, &right), &right);
  EXPECT_EQ(right, *expected);
  EXPECT_EQ(right.GetNumMisVal(), 0);
  EXPECT_EQ(CellsOf(in), before);
}

TEST(WaveletPowerSpectrum, OfZerosIsZero) {
  const NCDataVector<float> zeros(8, 0.0F);
  for (const auto& row : RowsOf(*OwnedMatrix(Wavelet::PowerSpectrum(&zeros, false, nullptr))))
    EXPECT_THAT(row, Each(0.0F));
}

TEST(WaveletPowerSpectrum, TakesAHoleForTheNumberMinus99) {
  const float hole = kalmia::kMissing;  // of scale 2, thus -49.5, beside 0.5, of scale sqrt 2
  const float fine = static_cast<float>(0.5 * std::sqrt(2));
  const auto in = Signal({0, 0, hole, 0, fine, 0, 0, 0});
  const OwnedMatrix spectrum(Wavelet::PowerSpectrum(&in, false, nullptr));
  const float power = 49.5F * 49.5F, small = 0.25F;
  for (int c = 1; c <= 8; ++c) {
    EXPECT_FLOAT_EQ((*spectrum)[4][c], c <= 4 ? 100 * power / (power + small) : 0) << c;
    EXPECT_FLOAT_EQ((*spectrum)[2][c], c <= 2 ? 100 * small / (power + small) : 0) << c;
  }
}

TEST(WaveletPowerSpectrum, LeavesACoefficientThatIsMinus99WithoutItsScaleAsItIs) {
  const float fine = static_cast<float>(std::sqrt(2));
  const auto in = Signal({0, 0, -198, 0, fine, 0, 0, 0});  // of scale 2: a hole, beside 1, which is all the power then
  const OwnedMatrix spectrum(Wavelet::PowerSpectrum(&in, false, nullptr));
  EXPECT_THAT(CellsOf((*spectrum)[4]), ElementsAre(980100, 980100, 980100, 980100, 0, 0, 0, 0));
  for (int c = 1; c <= 8; ++c) EXPECT_FLOAT_EQ((*spectrum)[2][c], c <= 2 ? 100 : 0) << c;
}

TEST(WaveletPowerSpectrum, RefusesLengthsThatAreNoPowerOfTwo) {
  NCDataMatrix<float> out(2, 2, 7.0F);
  for (int n : {0, 3, 5, 6, 7, 100}) {
    const auto in = RandomSignal(n, 1);
    EXPECT_EQ(Wavelet::PowerSpectrum(&in, false, nullptr), nullptr) << n;
    EXPECT_EQ(Wavelet::PowerSpectrum(&in, true, &out), nullptr) << n;
  }
  EXPECT_EQ(Wavelet::PowerSpectrum(nullptr, false, &out), nullptr);
  EXPECT_EQ(out, NCDataMatrix<float>(2, 2, 7.0F));
}

NCDataMatrix<float> OneRow(const std::vector<float>& cells) {
  NCDataMatrix<float> m(1, static_cast<int>(cells.size()));
  m.SetRow(1, Signal(cells));
  return m;
}

std::vector<float> EnergyOf(const NCDataMatrix<float>& coefficients) {
  return CellsOf(Wavelet::CalcWCEnergy(&coefficients));
}

std::string ErrorOf(const NCDataMatrix<float>* coefficients) {
  try {
    Wavelet::CalcWCEnergy(coefficients);
  } catch (const NCError& error) {
    return static_cast<const char*>(error.GetMessage());
  }
  return "";
}

TEST(WaveletEnergy, IsTheShareOfEachLevelTheFinestFirst) {
  // Levels: cells 5 to 8 hold 4, cells 3 and 4 hold 8, cell 2 holds 4; cell 1 does not count.
  EXPECT_THAT(EnergyOf(OneRow({99, 2, 2, 2, 1, 1, 1, 1})), ElementsAre(0.25F, 0.5F, 0.25F));
}

TEST(WaveletEnergy, AddsTheRows) {
  NCDataMatrix<float> m(2, 4, 0.0F);
  m(1, 3, 1.0F);
  m(2, 4, 1.0F);
  m(1, 2, 1.0F);
  m(2, 2, 1.0F);
  m(1, 1, 50.0F);
  EXPECT_THAT(EnergyOf(m), ElementsAre(0.5F, 0.5F));
}

TEST(WaveletEnergy, CountsACellThatWasSetAsideWithTheLevelThatLeftIt) {
  // 7 cells: 7 itself is left out; 3 details and the third approximation; then the last detail and the approximation.
  EXPECT_THAT(EnergyOf(OneRow({1, 1, 1, 1, 1, 1, 9})), ElementsAre(4 / 6.0F, 2 / 6.0F));
  // 12 cells: 6 details; 3 and the third approximation; the last detail and the approximation.
  EXPECT_THAT(EnergyOf(OneRow(std::vector<float>(12, 1.0F))), ElementsAre(0.5F, 4 / 12.0F, 2 / 12.0F));
  // 11 cells: 5 details and the fifth approximation; 2 and no rest; the last detail and the approximation.
  EXPECT_THAT(EnergyOf(OneRow(std::vector<float>(11, 1.0F))), ElementsAre(0.6F, 0.2F, 0.2F));
  EXPECT_THAT(EnergyOf(OneRow({1, 1, 9})), ElementsAre(1));
}

TEST(WaveletEnergy, CountsTheApproximationWithTheCoarsestLevelButForPowersOfTwo) {
  for (int columns = 2; columns <= 130; ++columns) {
    std::vector<float> cells(columns, 0.0F);
    cells[0] = 3;
    std::vector<float> energy = EnergyOf(OneRow(cells));
    EXPECT_EQ(energy.back(), (columns & (columns - 1)) == 0 ? 0 : 1) << columns;
    energy.pop_back();
    EXPECT_THAT(energy, Each(0.0F)) << columns;
  }
}

TEST(WaveletEnergy, OfZerosIsZeroWithoutADivision) {
  EXPECT_THAT(EnergyOf(NCDataMatrix<float>(3, 8, 0.0F)), ElementsAre(0, 0, 0));
  EXPECT_THAT(EnergyOf(NCDataMatrix<float>(0, 4, 0.0F)), ElementsAre(0, 0));
}

TEST(WaveletEnergy, LeavesHolesOutButTakesAColumnOfHolesForItsSum) {
  const float hole = kalmia::kMissing;
  NCDataMatrix<float> m(2, 4, 10.0F);
  m(1, 4, hole);
  EXPECT_THAT(EnergyOf(m), ElementsAre(300 / 500.0F, 200 / 500.0F));
  m(2, 4, hole);  // 200 + GetSS() of nothing
  EXPECT_THAT(EnergyOf(m), ElementsAre(101 / 301.0F, 200 / 301.0F));
}

TEST(WaveletEnergy, LeavesTheTableAloneEvenItsResultTarget) {
  const NCDataMatrix<float> m(3, 4, 2.0F);
  NCDataVector<float> target(3, 0.0F);
  m.Result(&target);
  EnergyOf(m);
  EXPECT_THAT(CellsOf(target), Each(0.0F));
  m.GetColumn(1);
  EXPECT_THAT(CellsOf(target), Each(2.0F));
}

TEST(WaveletEnergy, OfOneElementIsAnError) {
  const char* const kText = "Wavelet energy can not be calculated because the vector only contains one element";
  const NCDataMatrix<float> one(3, 1, 1.0F), none(3, 0);
  EXPECT_EQ(ErrorOf(&one), kText);
  EXPECT_EQ(ErrorOf(&none), kText);
  EXPECT_EQ(ErrorOf(nullptr), kText);
}

TEST(WaveletEnergy, ThatIsNoNormalFloatIsAnError) {
  const char* const kText = "Wavelet energy calculations overflowed.";
  using Limits = std::numeric_limits<float>;
  for (const float bad : {Limits::quiet_NaN(), Limits::infinity(), 1e20F, 1e-20F, Limits::denorm_min()}) {
    const NCDataMatrix<float> m = OneRow({0, 1, bad, 0});
    // 1e20 squared is beyond a float, 1e-20 squared a denormal one; the square of a denormal is 0 as a float.
    EXPECT_EQ(ErrorOf(&m), bad == Limits::denorm_min() ? "" : kText) << bad;
  }
}

}  // namespace
