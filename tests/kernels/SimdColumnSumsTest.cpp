#include "kalmia/kernels/simd/ColumnSums.h"

#include <gtest/gtest.h>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

template <class T>
class SimdColumnSums : public ::testing::Test {};
TYPED_TEST_SUITE(SimdColumnSums, CellTypes, CellTypeNames);

/// A step of rows with what goes with them; every other column trusts its cells (its hole is NaN).
template <class T>
struct Step {
  Step(int count, int n, HolePattern pattern) : hole(n), sums(n), weights(n) {
    for (int k = 0; k < count; ++k) {
      cells.push_back(Cells<T>(n, pattern, 100 * n + k));
      rows.push_back(cells.back().data());
    }
    const auto factors = Cells<T>(count, HolePattern::None, n);
    v.assign(factors.begin(), factors.end());
    for (double x : v) w.push_back(x * x);
    for (int j = 0; j < n; ++j) {
      hole[j] = j % 2 ? std::numeric_limits<T>::quiet_NaN() : kHole<T>;
      sums[j] = 0.1 * j;
      weights[j] = 0.3 * j;
    }
  }

  std::vector<std::vector<T>> cells;
  std::vector<const T*> rows;
  std::vector<double> v, w;
  std::vector<T> hole;
  std::vector<double> sums, weights;
};

template <class T, class Check>
void ForAllSteps(const Check& check) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths())
      for (int count = 0; count <= simd::kRowsSideBySide; ++count)
        for (HolePattern pattern : {HolePattern::None, HolePattern::Random, HolePattern::EveryThird, HolePattern::All})
          check(Step<T>(count, n, pattern), count, n);
  }
}

TYPED_TEST(SimdColumnSums, AddTheRowsInTheirOrder) {
  const TypeParam row1[] = {1, -99}, row2[] = {3, 4};
  const TypeParam* rows[] = {row1, row2};
  const double v[] = {2, 5}, w[] = {4, 25};
  double sums[] = {10, 20}, weights[] = {1, 2};
  const TypeParam hole[] = {-99, -99};
  simd::scalar::AddRowsMasked(rows, v, w, 2, 2, hole, sums, weights);
  EXPECT_EQ(sums[0], 10 + 2 + 15);
  EXPECT_EQ(sums[1], 20 + 20);
  EXPECT_EQ(weights[0], 1 + 4 + 25);
  EXPECT_EQ(weights[1], 2 + 25);
  simd::scalar::AddRows(rows, v, 2, 2, sums);
  EXPECT_EQ(sums[0], 27 + 17);
  EXPECT_EQ(sums[1], 40 - 198 + 20);
  simd::scalar::AddSquaresMasked(rows, 2, 2, hole, sums);
  EXPECT_EQ(sums[0], 44 + 10);
  EXPECT_EQ(sums[1], 40 - 178 + 16);
}

TYPED_TEST(SimdColumnSums, AHoleOfNaNLetsEveryCellTakePart) {
  const TypeParam row[] = {-99};
  const TypeParam* rows[] = {row};
  const double v[] = {1}, w[] = {1};
  const TypeParam hole[] = {std::numeric_limits<TypeParam>::quiet_NaN()};
  double sums[] = {0}, weights[] = {0};
  simd::AddRowsMasked(rows, v, w, 1, 1, hole, sums, weights);
  EXPECT_EQ(sums[0], -99);
  EXPECT_EQ(weights[0], 1);
}

TYPED_TEST(SimdColumnSums, LanesGiveTheBitsOfTheScalarTwin) {
  ForAllSteps<TypeParam>([](const Step<TypeParam>& step, int count, int n) {
    auto lanes = step.sums, twins = step.sums;
    simd::AddRows(step.rows.data(), step.v.data(), count, n, lanes.data());
    simd::scalar::AddRows(step.rows.data(), step.v.data(), count, n, twins.data());
    EXPECT_TRUE(SameBits(lanes, twins)) << count << " rows of " << n;
  });
}

TYPED_TEST(SimdColumnSums, LanesGiveTheBitsOfTheScalarTwinWithHoles) {
  ForAllSteps<TypeParam>([](const Step<TypeParam>& step, int count, int n) {
    auto lanes = step.sums, twins = step.sums, laneWeights = step.weights, twinWeights = step.weights;
    simd::AddRowsMasked(step.rows.data(), step.v.data(), step.w.data(), count, n, step.hole.data(), lanes.data(),
                        laneWeights.data());
    simd::scalar::AddRowsMasked(step.rows.data(), step.v.data(), step.w.data(), count, n, step.hole.data(),
                                twins.data(), twinWeights.data());
    EXPECT_TRUE(SameBits(lanes, twins)) << count << " rows of " << n;
    EXPECT_TRUE(SameBits(laneWeights, twinWeights)) << count << " rows of " << n;
  });
}

TYPED_TEST(SimdColumnSums, LanesGiveTheBitsOfTheScalarTwinForSquares) {
  ForAllSteps<TypeParam>([](const Step<TypeParam>& step, int count, int n) {
    auto lanes = step.sums, twins = step.sums;
    simd::AddSquaresMasked(step.rows.data(), count, n, step.hole.data(), lanes.data());
    simd::scalar::AddSquaresMasked(step.rows.data(), count, n, step.hole.data(), twins.data());
    EXPECT_TRUE(SameBits(lanes, twins)) << count << " rows of " << n;
  });
}

TYPED_TEST(SimdColumnSums, AnInfiniteFactorDoesNotReachAColumnThroughItsHole) {
  for (int64_t target : TargetsOfThisMachine()) {
    const OneTarget only(target);
    const std::vector<TypeParam> row(40, kHole<TypeParam>), hole(40, kHole<TypeParam>);
    const TypeParam* rows[] = {row.data()};
    const double v[] = {std::numeric_limits<double>::infinity()}, w[] = {std::numeric_limits<double>::quiet_NaN()};
    std::vector<double> sums(40, 1.5), weights(40, 2.5);
    simd::AddRowsMasked(rows, v, w, 1, 40, hole.data(), sums.data(), weights.data());
    EXPECT_EQ(sums, std::vector<double>(40, 1.5)) << hwy::TargetName(target);
    EXPECT_EQ(weights, std::vector<double>(40, 2.5)) << hwy::TargetName(target);
  }
}

TYPED_TEST(SimdColumnSums, SpecialValuesComeOutAsTheyDoFromTheScalarTwin) {
  using T = TypeParam;
  ForAllSteps<T>([](const Step<T>& ordinary, int count, int n) {
    std::vector<std::vector<T>> cells;
    std::vector<const T*> rows;
    for (int k = 0; k < count; ++k) {
      cells.push_back(SpecialCells<T>(n, 7 * n + k));
      rows.push_back(cells.back().data());
    }
    const auto factors = SpecialCells<T>(count, n);
    const std::vector<double> v(factors.begin(), factors.end()), &w = ordinary.w;
    const std::vector<T>& hole = ordinary.hole;
    auto lanes = ordinary.sums, twins = lanes, laneWeights = ordinary.weights, twinWeights = laneWeights;
    simd::AddRowsMasked(rows.data(), v.data(), w.data(), count, n, hole.data(), lanes.data(), laneWeights.data());
    simd::scalar::AddRowsMasked(rows.data(), v.data(), w.data(), count, n, hole.data(), twins.data(),
                                twinWeights.data());
    EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << count << " rows of " << n;
    EXPECT_TRUE(SameBitsOrNaNs(laneWeights, twinWeights)) << count << " rows of " << n;
    lanes = twins = ordinary.sums;
    simd::AddRows(rows.data(), v.data(), count, n, lanes.data());
    simd::scalar::AddRows(rows.data(), v.data(), count, n, twins.data());
    EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << count << " rows of " << n;
    lanes = twins = ordinary.sums;
    simd::AddSquaresMasked(rows.data(), count, n, hole.data(), lanes.data());
    simd::scalar::AddSquaresMasked(rows.data(), count, n, hole.data(), twins.data());
    EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << count << " rows of " << n;
  });
}

TYPED_TEST(SimdColumnSums, ANaNTakesPartAlsoWhereTheHoleIsTheSameNaN) {
  using T = TypeParam;
  const std::vector<T> row(40, std::numeric_limits<T>::quiet_NaN());
  const T* rows[] = {row.data()};
  const double v[] = {1}, w[] = {1};
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (const T hole : {kHole<T>, row[0]}) {
      std::vector<double> sums(40, 0.0), weights(40, 0.0), squares(40, 0.0);
      const std::vector<T> holes(40, hole);
      simd::AddRowsMasked(rows, v, w, 1, 40, holes.data(), sums.data(), weights.data());
      simd::AddSquaresMasked(rows, 1, 40, holes.data(), squares.data());
      for (int j = 0; j < 40; ++j) EXPECT_TRUE(std::isnan(sums[j]) && std::isnan(squares[j])) << j;
      EXPECT_EQ(weights, std::vector<double>(40, 1.0));
    }
  }
}

TYPED_TEST(SimdColumnSums, StartAtAnyAlignment) {
  using T = TypeParam;
  const auto cells = Cells<T>(80, HolePattern::Random, 1);
  const std::vector<T> hole(80, kHole<T>);
  const double v[] = {static_cast<double>(T(0.7))}, w[] = {0.49};  // v is a cell of the table
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int offset = 0; offset < 8; ++offset)
      for (int n : {5, 16, 37}) {
        const T* rows[] = {cells.data() + offset};
        std::vector<double> lanes(80, 0.1), twins(lanes), laneWeights(lanes), twinWeights(lanes);
        simd::AddRowsMasked(rows, v, w, 1, n, hole.data() + 7 - offset, lanes.data() + offset,
                            laneWeights.data() + offset);
        simd::scalar::AddRowsMasked(rows, v, w, 1, n, hole.data() + 7 - offset, twins.data() + offset,
                                    twinWeights.data() + offset);
        simd::AddRows(rows, v, 1, n, lanes.data() + offset);
        simd::scalar::AddRows(rows, v, 1, n, twins.data() + offset);
        simd::AddSquaresMasked(rows, 1, n, hole.data() + offset, lanes.data() + 7 - offset);
        simd::scalar::AddSquaresMasked(rows, 1, n, hole.data() + offset, twins.data() + 7 - offset);
        EXPECT_TRUE(SameBits(lanes, twins)) << offset << ", " << n;
        EXPECT_TRUE(SameBits(laneWeights, twinWeights)) << offset << ", " << n;
      }
  }
}

TYPED_TEST(SimdColumnSums, NothingIsReadWithoutCells) {  // reading would end the program
  const TypeParam* rows[] = {nullptr};
  const double v[] = {1}, w[] = {1};
  for (int64_t target : TargetsOfThisMachine()) {
    const OneTarget only(target);
    simd::AddRows(rows, v, 1, 0, nullptr);
    simd::AddRowsMasked(rows, v, w, 1, 0, nullptr, nullptr, nullptr);
    simd::AddSquaresMasked(rows, 1, 0, nullptr, nullptr);
  }
}

}  // namespace
