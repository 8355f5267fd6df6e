// What is told of the columns of a small table, worked by hand.

#include "kalmia/analysis/table/Description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;

Description DescriptionOf(const std::string& csv, NCProgress* progress = nullptr) {
  return Describe(Table(csv, "t.csv"), progress);
}

TEST(Description, TellsNumbersTextsConstantsHolesAndWordsApart) {
  const Description description =
      DescriptionOf("name,x,one,none,words\na,1,1,,1\nb,,1,,low\nc,3,1,,2\nd,8,1,NA,3\n");
  EXPECT_EQ(description.table, "t.csv");
  EXPECT_EQ(description.rows, 4);
  EXPECT_EQ(description.allColumns, 5U);
  EXPECT_THAT(description.textColumns, ElementsAre("name"));
  EXPECT_THAT(description.Constant(), ElementsAre("one"));
  EXPECT_THAT(description.Empty(), ElementsAre("none"));
  ASSERT_EQ(description.columns.size(), 4U);
  const ColumnDescription& x = description.columns[0];
  EXPECT_EQ(x.name, "x");
  EXPECT_EQ(x.missing, 1);
  EXPECT_EQ(x.moments.n, 3);
  EXPECT_EQ(x.moments.mean, 4.0);
  EXPECT_DOUBLE_EQ(x.moments.standardDeviation, std::sqrt(13.0));  // ((-3)^2 + (-1)^2 + 4^2) / 2
  ASSERT_TRUE(description.HasWords());
  ASSERT_EQ(description.columns[3].firstWords.size(), 1U);
  EXPECT_EQ(description.columns[3].firstWords[0].text, "low");
  EXPECT_EQ(description.columns[3].firstWords[0].row, 2);
  EXPECT_EQ(description.columns[3].firstWords[0].line, 3U);
}

TEST(Description, RefusesATableWithoutACell) {
  EXPECT_EQ(FailureOf<BadData>([] { DescriptionOf("a,b\n,NA\n"); }), "t.csv: every cell is missing");
}

TEST(Description, StopsAmongTheWordsAndAmongTheColumns) {
  const std::string csv = "x,y\n1,1\n2,2\nlow,3\n4,low\n";
  ProgressLog whole;
  DescriptionOf(csv, RecordingBar(&whole).get());
  EXPECT_GE(whole.Count("IsBreakPressed"), 2) << "rows with words";
  EXPECT_GE(whole.Count("SetValue"), 2) << "columns";
  for (int stop = 1; stop < static_cast<int>(whole.calls.size()); ++stop) {  // the last call closes the bar
    ProgressLog log;
    log.stopAt = stop;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    EXPECT_TRUE(FailureOf<Stopped>([&] { DescriptionOf(csv, bar.get()); })) << stop << ": " << log.Joined();
  }
}

}  // namespace
}  // namespace kalmia::analysis
