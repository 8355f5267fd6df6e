#include <gtest/gtest.h>

#include "signal/PlainFourier.h"
#include "testing/RandomTables.h"

namespace {

struct Preparation : FFT {
  using FFT::DetrendVecMeanStd;
  using FFT::DetrendVector;
  using FFT::PadVectorLinearly;
  using FFT::PadVectorZeros;
  using FFT::ReorderFromVec;
};

TEST(FFTPreparation, DetrendsAsTheModeSaysAndTellsWhatItRemoved) {
  const NCDataVector<float> signal = VectorOfCells({1.0F, 3.0F, 5.0F, 7.0F});
  NCDataVector<float> none = signal, mean = signal, line = signal;
  long double intercept = 11, slope = 12;
  Preparation::DetrendVector(&none, FFT::DetrendNone, intercept, slope);
  EXPECT_TRUE(none == signal);
  EXPECT_EQ(intercept, 11);
  EXPECT_EQ(slope, 12);
  Preparation::DetrendVector(&mean, FFT::DetrendMean, intercept, slope);
  EXPECT_EQ(CellsOf(mean), (std::vector<float>{-3.0F, -1.0F, 1.0F, 3.0F}));
  EXPECT_EQ(intercept, 4);
  EXPECT_EQ(slope, 12);
  Preparation::DetrendVector(&line, FFT::DetrendLinear, intercept, slope);
  EXPECT_EQ(CellsOf(line), std::vector<float>(4, 0.0F));
  EXPECT_EQ(intercept, -1);
  EXPECT_EQ(slope, 2);
  Preparation::DetrendVector(&mean, static_cast<FFT::DetrendMode>(3), intercept, slope);
  EXPECT_EQ(CellsOf(mean), (std::vector<float>{-3.0F, -1.0F, 1.0F, 3.0F}));
}

TEST(FFTPreparation, FindsNoLineInASingleCell) {
  NCDataVector<float> one = VectorOfCells({5.0F});
  long double intercept = 11, slope = 12;
  Preparation::DetrendVector(&one, FFT::DetrendLinear, intercept, slope);
  EXPECT_EQ(CellsOf(one), std::vector<float>{5.0F});
  EXPECT_EQ(intercept, 11);
  EXPECT_EQ(slope, 12);
}

TEST(FFTPreparation, CentresAndDividesByTheRootOfTheSumOfSquares) {
  NCDataVector<float> x = VectorOfCells({1.0F, 1.0F, 5.0F, 5.0F});
  Preparation::DetrendVecMeanStd(&x);  // -2, -2, 2, 2: a sum of squares of 16, where the standard deviation is 2.3
  EXPECT_EQ(CellsOf(x), (std::vector<float>{-0.5F, -0.5F, 0.5F, 0.5F}));
  NCDataVector<float> constant = VectorOfCells({7.0F, 7.0F, 7.0F});
  Preparation::DetrendVecMeanStd(&constant);
  EXPECT_EQ(CellsOf(constant), std::vector<float>(3, 0.0F));
  NCDataVector<float> empty;
  Preparation::DetrendVecMeanStd(&empty);
  EXPECT_EQ(empty.Size(), 0);
}

TEST(FFTPreparation, TakesHolesForMinus99WhereItCentres) {
  NCDataVector<float> x = VectorOfCells({kHole<float>, -97.0F});
  Preparation::DetrendVecMeanStd(&x);
  EXPECT_LT(x[1], 0);
  EXPECT_EQ(x[1], -x[2]);
  EXPECT_TRUE(HasExactCounts(x));
}

TEST(FFTPreparation, AppendsZerosUpToTheSize) {
  NCDataVector<float> x = VectorOfCells({1.0F, 2.0F});
  Preparation::PadVectorZeros(&x, 2);
  EXPECT_EQ(CellsOf(x), (std::vector<float>{1.0F, 2.0F}));
  Preparation::PadVectorZeros(&x, 5);
  EXPECT_EQ(CellsOf(x), (std::vector<float>{1.0F, 2.0F, 0.0F, 0.0F, 0.0F}));
  Preparation::PadVectorZeros(&x, 3);
  EXPECT_EQ(x.Size(), 5);
  EXPECT_TRUE(HasExactCounts(x));
}

TEST(FFTPreparation, AppendsARampFromTheLastCellBackToTheFirst) {
  const NCDataVector<float> signal = VectorOfCells({1.0F, 9.0F, 5.0F});
  struct Ramp {
    int size;
    std::vector<float> cells;
  };
  const Ramp ramps[] = {{3, {1, 9, 5}},
                        {2, {1, 9, 5}},
                        {4, {1, 9, 5, 2}},  // a single cell is half the difference, no ramp
                        {5, {1, 9, 5, 5, 1}},
                        {8, {1, 9, 5, 5, 4, 3, 2, 1}}};
  for (const Ramp& ramp : ramps) {
    NCDataVector<float> x = signal;
    Preparation::PadVectorLinearly(&x, ramp.size);
    EXPECT_EQ(CellsOf(x), ramp.cells) << ramp.size;
    EXPECT_TRUE(HasExactCounts(x));
  }
  EXPECT_EQ(CellsOf(signal), (std::vector<float>{1, 9, 5}));
  NCDataVector<float> empty;
  Preparation::PadVectorLinearly(&empty, 2);
  EXPECT_EQ(CellsOf(empty), std::vector<float>(2, 0.0F));
}

TEST(FFTPreparation, CountsARampThatLandsOnMinus99) {
  NCDataVector<float> x = VectorOfCells({-99.5F, -98.5F});
  Preparation::PadVectorLinearly(&x, 5);
  EXPECT_EQ(x[4], -99.0F);
  EXPECT_TRUE(HasExactCounts(x));
}

TEST(FFTPreparation, ReordersFromWrapAroundOrderToThatOfLags) {
  const float input[] = {-1, 0, 1, 2, 3, -4, -3, -2, -1};  // cell 0, then eight lags
  struct Order {
    int count;
    std::vector<float> cells;
  };
  const Order orders[] = {{0, {}}, {1, {0}}, {2, {-1, 0}}, {5, {-2, -1, 0, 1, 2}}, {4, {-2, -1, 0, 1}},
                          {8, {-4, -3, -2, -1, 0, 1, 2, 3}}};
  for (const Order& order : orders) {
    std::vector<float> output(10, 55.0F);
    Preparation::ReorderFromVec(input, output.data(), 8, order.count);
    EXPECT_EQ(output[0], 55.0F);
    EXPECT_EQ(std::vector<float>(output.begin() + 1, output.begin() + 1 + order.count), order.cells);
    EXPECT_EQ(output[order.count + 1], 55.0F);
  }
}

}  // namespace
