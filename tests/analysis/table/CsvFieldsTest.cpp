// Replacing fields of a CSV text with every other byte left alone.

#include "kalmia/analysis/table/internal/CsvFields.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;

using Records = std::vector<std::vector<std::string>>;

Records RecordsOf(const std::string& text, char separator) {
  Records records;
  ForEachCsvRecord(text, separator, "t", [&records](const CsvRecord& record) {
    records.push_back(record.fields);
    return true;
  });
  return records;
}

std::string WithFieldReplaced(const std::string& text, std::size_t record, std::size_t field,
                              const std::string& value, char separator = ',') {
  return WithFieldsReplaced(text, separator, [&](std::size_t r, std::size_t f) -> std::optional<std::string> {
    if (r == record && f == field) return value;
    return std::nullopt;
  });
}

TEST(CsvFields, ReplacesAFieldAndNothingElse) {
  const std::string text = "a,b,c\r\n1,,3\r\n\r\n  \"x\"\"y\" , NA ,\"\"\r\n";
  EXPECT_EQ(WithFieldReplaced(text, 1, 1, "2"), "a,b,c\r\n1,2,3\r\n\r\n  \"x\"\"y\" , NA ,\"\"\r\n");
  EXPECT_EQ(WithFieldReplaced(text, 2, 1, "2"), "a,b,c\r\n1,,3\r\n\r\n  \"x\"\"y\" ,2,\"\"\r\n");
  EXPECT_EQ(WithFieldReplaced(text, 2, 2, "2"), "a,b,c\r\n1,,3\r\n\r\n  \"x\"\"y\" , NA ,2\r\n");
  EXPECT_EQ(WithFieldReplaced(text, 0, 0, "z"), "z,b,c\r\n1,,3\r\n\r\n  \"x\"\"y\" , NA ,\"\"\r\n");
}

TEST(CsvFields, KnowsALastFieldWithoutAnythingInItOrBehindIt) {
  EXPECT_EQ(WithFieldReplaced("a,b\n1,", 1, 1, "2"), "a,b\n1,2");
  EXPECT_EQ(WithFieldReplaced("a,b\n1,\n", 1, 1, "2"), "a,b\n1,2\n");
  EXPECT_EQ(WithFieldReplaced("a,b\n1,  ", 1, 1, "2"), "a,b\n1,2");
  EXPECT_EQ(WithFieldReplaced("a\n\"\"\n", 1, 0, "2"), "a\n2\n");
}

TEST(CsvFields, TakesATabForASeparatorOrForABlank) {
  EXPECT_EQ(WithFieldReplaced("a\tb\n\t\t\n", 1, 1, "2", '\t'), "a\tb\n\t2\t\n");
  EXPECT_EQ(WithFieldReplaced("a,b\n\t,1\n", 1, 0, "2"), "a,b\n\t2,1\n") << "blanks that begin a line stay";
}

TEST(CsvFields, LeavesAByteOrderMarkInFront) {
  EXPECT_EQ(WithFieldReplaced("\xEF\xBB\xBF" "a,b\n,1\n", 1, 0, "2"), "\xEF\xBB\xBF" "a,b\n2,1\n");
}

TEST(CsvFields, CountsNoBlankLineAsARecord) {
  std::vector<std::string> seen;
  const std::string text = "\n \n\na,b\r\r\n\n1,2\n\n \t \n3,4\n\n";
  EXPECT_EQ(WithFieldsReplaced(text, ',',
                               [&seen](std::size_t record, std::size_t field) -> std::optional<std::string> {
                                 seen.push_back(std::to_string(record) + "." + std::to_string(field));
                                 return std::nullopt;
                               }),
            text);
  EXPECT_THAT(seen, ElementsAre("0.0", "0.1", "1.0", "1.1", "2.0", "2.1"));
}

/// Texts of the bytes that mean something, in any order; most of them the parser refuses.
TEST(CsvFields, DividesEveryTextAsTheParserDoes) {
  const std::string alphabet = "a1,,;\t \"\"\n\r\n";
  std::mt19937 random(7);
  int accepted = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (std::size_t length = random() % 24; length > 0; --length) text += alphabet[random() % alphabet.size()];
    const char separator = ",;\t"[random() % 3];
    Records records;
    try {
      records = RecordsOf(text, separator);
    } catch (const Failure&) {
      continue;
    }
    ++accepted;
    SCOPED_TRACE(::testing::PrintToString(text) + " at " + std::string(1, separator));
    Records replaced = records;
    const std::size_t every = 1 + random() % 3;
    std::size_t count = 0;
    const auto replacement = [&](std::size_t r, std::size_t f) -> std::optional<std::string> {
      if (r >= records.size() || f >= records[r].size()) {
        ADD_FAILURE() << "there is no field " << r << "." << f;
        return std::nullopt;
      }
      if (++count % every != 0) return std::nullopt;
      replaced[r][f] = "new";
      return "new";
    };
    const std::string result = WithFieldsReplaced(text, separator, replacement);
    ASSERT_EQ(RecordsOf(result, separator), replaced) << ::testing::PrintToString(result);
    std::size_t fields = 0;
    for (const auto& record : records) fields += record.size();
    ASSERT_EQ(count, fields);
    const auto nothing = [](std::size_t, std::size_t) { return std::optional<std::string>(); };
    ASSERT_EQ(WithFieldsReplaced(text, separator, nothing), text);
  }
  EXPECT_GT(accepted, 2000);
}

}  // namespace
}  // namespace kalmia::analysis
