// The histogram of a column of few numbers, worked by hand.

#include "kalmia/analysis/chart/HistogramResult.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;

HistogramResult HistogramOf(const std::string& csv, NCProgress* progress = nullptr) {
  return ComputeHistogram({"x"}, Table(csv, "t.csv"), progress);
}

TEST(HistogramResult, CountsTheValuesOfAColumnInBinsOfTwoAndAHalf) {
  // Nine values from 1 to 9: the width 8 / sqrt(9) = 2.67 is rounded down to 2.5.
  const HistogramResult histogram = HistogramOf("y,x\n0,1\n0,2\n0,NA\n0,3\n0,4\n0,5\n0,6\n0,7\n0,8\n0,9\n");
  EXPECT_EQ(histogram.Title(), "x of t.csv");
  EXPECT_EQ(histogram.values, 9);
  EXPECT_EQ(histogram.missing, 1);
  EXPECT_EQ(histogram.width, 2.5);
  ASSERT_EQ(histogram.Bins(), 4);
  EXPECT_EQ(histogram.First(), 1.0);
  EXPECT_EQ(histogram.From(2), 3.5);
  EXPECT_EQ(histogram.To(4), 11.0);
  EXPECT_EQ(histogram.Count(1), 3);
  EXPECT_EQ(histogram.LargestCount(), 3);
  EXPECT_THAT(histogram.bins.members[1], ElementsAre(5, 6)) << "rows, from 1";
}

TEST(HistogramResult, NamesTableAndColumnWhereTheValuesAreTooLarge) {
  EXPECT_EQ(FailureOf<BadData>([] { HistogramOf("x\n1\n3e38\n"); }),
            "t.csv: the column 'x' has values too large for a histogram");
}

TEST(HistogramResult, StopsWhereTheBarWantsTo) {
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(HistogramOf("x\n1\n2\n", bar.get()), Stopped);
}

}  // namespace
}  // namespace kalmia::analysis
