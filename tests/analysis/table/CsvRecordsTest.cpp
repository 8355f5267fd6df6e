#include "kalmia/analysis/table/internal/CsvRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;

TEST(CsvField, BringsEveryTextBackThroughTheReader) {
  for (const std::string text : {"plain", "a,b", "a;b", "a\tb", "say \"x\"", "two\nlines", " blank ", "\r", ""}) {
    std::vector<std::string> fields;
    ForEachCsvRecord(CsvField(text) + ",x\n", ',', "t", [&fields](const CsvRecord& record) {
      fields = record.fields;
      return true;
    });
    EXPECT_THAT(fields, ElementsAre(text, "x"));
  }
}

TEST(CsvField, QuotesTheSeparatorOfAnyFormatAndTheBeginningOfAComment) {
  CsvFormat format('|');
  format.comment = '#';
  EXPECT_EQ(CsvField("a|b", format), "\"a|b\"");
  EXPECT_EQ(CsvField("a|b"), "a|b");
  EXPECT_EQ(CsvField("#1", format), "\"#1\"");
  EXPECT_EQ(CsvField("1#", format), "1#");
  EXPECT_EQ(CsvField("#1"), "#1");
}

}  // namespace
}  // namespace kalmia::analysis
