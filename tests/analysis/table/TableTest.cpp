#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "FailureOf.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<std::string> RowOf(const Table& table, int row) {
  std::vector<std::string> cells;
  for (int c = 0; c < table.Columns(); ++c) cells.emplace_back(table.Cell(row, c));
  return cells;
}

/// The message with which a text is refused as bad data.
std::string Refusal(const std::string& text) {
  try {
    const Table table(text, "t.csv");
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<kalmia::analysis::BadData>(failure));
    return failure.what();
  }
  ADD_FAILURE() << "not refused: " << text;
  return "";
}

ReadOptions Skipping(int lines, const std::string& comment = "") {
  ReadOptions options;
  options.skipLines = lines;
  options.comment = comment;
  return options;
}

struct Dialect {
  const char* what;
  std::string text;
  char separator;
  bool decimalComma;
};

TEST(Table, ReadsTheSameTableInEveryDialect) {
  const Dialect dialects[] = {
      {"commas", "a,b\n1.5,2\n3,4.25\n", ',', false},
      {"no line end at the end", "a,b\n1.5,2\n3,4.25", ',', false},
      {"CRLF", "a,b\r\n1.5,2\r\n3,4.25\r\n", ',', false},
      {"CR alone", "a,b\r1.5,2\r3,4.25\r", ',', false},
      {"byte order mark",
       "\xEF\xBB\xBF"
       "a,b\n1.5,2\n3,4.25\n",
       ',', false},
      {"byte order mark before a quotation mark", "\xEF\xBB\xBF\"a\",b\n1.5,2\n3,4.25\n", ',', false},
      {"quoted fields", "\"a\",\"b\"\n\"1.5\",\"2\"\n3,\"4.25\"\n", ',', false},
      {"blanks around fields", " a , b\n 1.5,2 \n3 , 4.25\n", ',', false},
      {"blank lines", "\n  \na,b\n\n1.5,2\r\n \r\n3,4.25\n\n", ',', false},
      {"semicolons", "a;b\n1.5;2\n3;4.25\n", ';', false},
      {"tabs", "a\tb\n1.5\t2\n3\t4.25\n", '\t', false}};
  for (const Dialect& dialect : dialects) {
    SCOPED_TRACE(dialect.what);
    const Table table(dialect.text, "t.csv");
    EXPECT_EQ(table.Separator(), dialect.separator);
    EXPECT_EQ(table.DecimalComma(), dialect.decimalComma);
    EXPECT_THAT(table.ColumnNames(), ElementsAre("a", "b"));
    ASSERT_EQ(table.Rows(), 2);
    EXPECT_THAT(RowOf(table, 0), ElementsAre("1.5", "2"));
    EXPECT_THAT(RowOf(table, 1), ElementsAre("3", "4.25"));
  }
}

TEST(Table, DetectsDecimalCommasWithSemicolonsAndTabs) {
  EXPECT_TRUE(Table("a;b\n1,5;2\n3;4,25\n", "t").DecimalComma());
  EXPECT_TRUE(Table("a\tb\n1,5\t2\n", "t").DecimalComma());
  EXPECT_FALSE(Table("a;b\n1;2\n", "t").DecimalComma());
}

TEST(Table, LetsTheMajorityOfCellsDecideOnTheDecimalMark) {
  EXPECT_FALSE(Table("name;b;c\n1,2;0.5;0.25\n", "t").DecimalComma());
  EXPECT_TRUE(Table("name;b;c\n1.2;0,5;0,25\n", "t").DecimalComma());
}

TEST(Table, CountsNumbersTooLargeForAFloatAsNumbersWithTheirDecimalMark) {
  const Table table("a;b\n1,5e99;x\n-2,5e400;y\n", "t");
  EXPECT_TRUE(table.DecimalComma());
  EXPECT_EQ(table.Column(0).kind, ColumnKind::Numbers);
  EXPECT_EQ(table.Column(0).strays, 2);
  EXPECT_EQ(table.Column(1).kind, ColumnKind::Texts);
  const Table mixed("a;b\n1,5e99;0.5\n;1.5\n", "t");
  EXPECT_FALSE(mixed.DecimalComma());
  EXPECT_EQ(mixed.Column(0).kind, ColumnKind::Numbers) << "refused for the mark, not left out as text";
}

TEST(Table, DropsBlanksAroundWordsForMissingCells) {
  ReadOptions options;
  options.missingWords = {" not known ", "\t-9"};
  const Table table("a,b\nnot known,-9\n\" not known\", -9 \n1,2\n", "t", options);
  EXPECT_EQ(table.Column(0).missing, 2);
  EXPECT_EQ(table.Column(1).missing, 2);
  EXPECT_THAT(table.MissingWords(), ElementsAre("not known", "-9"));
}

TEST(Table, NeverTakesDecimalCommasWhereCommasSeparate) {
  const Table table("a,b\n\"1,5\",2\n", "t");
  EXPECT_FALSE(table.DecimalComma());
  EXPECT_THAT(RowOf(table, 0), ElementsAre("1,5", "2"));
}

TEST(Table, FindsTheSeparatorBesideNamesThatHoldOthers) {
  EXPECT_THAT(Table("1,2-diol;2,4-D\n1;2\n", "t").ColumnNames(), ElementsAre("1,2-diol", "2,4-D"));
  EXPECT_THAT(Table("1,2-diol;2,4-D\n1,5;2,5\n", "t").ColumnNames(), ElementsAre("1,2-diol", "2,4-D"));
  EXPECT_THAT(Table("a;b,c\n1,2\n", "t").ColumnNames(), ElementsAre("a;b", "c"));
  EXPECT_THAT(Table("\"a;b\",c\n1,2\n", "t").ColumnNames(), ElementsAre("a;b", "c"));
}

TEST(Table, ReadsATableOfOneColumn) {
  const Table table("a\n1\n2\n", "t");
  EXPECT_EQ(table.Columns(), 1);
  EXPECT_EQ(table.Rows(), 2);
}

TEST(Table, ReadsALastRowOfTabsAloneWithoutALineEnd) {
  const Table table("a\tb\tc\n1\t2\t3\n\t\t", "t.csv");
  ASSERT_EQ(table.Rows(), 2);
  EXPECT_THAT(RowOf(table, 1), ElementsAre("", "", ""));
}

TEST(Table, KeepsSeparatorsLineEndsAndQuotationMarksInsideQuotedFields) {
  const Table table("\"a\nb\",\"say \"\"x\"\"\"\n\"1,2\",\"3\r\n4\"\n5,6\n", "t");
  EXPECT_THAT(table.ColumnNames(), ElementsAre("a\nb", "say \"x\""));
  EXPECT_THAT(RowOf(table, 0), ElementsAre("1,2", "3\r\n4"));
  EXPECT_THAT(RowOf(table, 1), ElementsAre("5", "6"));
  EXPECT_EQ(table.RowPlace(0), "row 1 (line 3)");
  EXPECT_EQ(table.RowPlace(1), "row 2 (line 5)");
}

TEST(Table, NamesColumnsWithoutANameAfterTheirPlace) {
  EXPECT_THAT(Table(",b,\n1,2,3\n", "t").ColumnNames(), ElementsAre("column 1", "b", "column 3"));
}

TEST(Table, TakesBytesThatAreNoUtf8AsTheyAre) {
  EXPECT_THAT(Table("\xE9t\xE9,b\n1,2\n", "t").ColumnNames(), ElementsAre("\xE9t\xE9", "b"));
}

TEST(Table, RefusesWhatIsNoTable) {
  EXPECT_EQ(Refusal(""), "t.csv is empty");
  EXPECT_EQ(Refusal("\xEF\xBB\xBF"), "t.csv is empty");
  EXPECT_EQ(Refusal(" \r\n\t\n"), "t.csv is empty");
  EXPECT_EQ(Refusal("a,b\n"), "t.csv has a header but no data rows");
  EXPECT_EQ(Refusal("a,b\n\n  \n"), "t.csv has a header but no data rows");
  EXPECT_EQ(Refusal(std::string("a,b\n1,\0\n", 8)), "t.csv is not a text file: line 2 holds a zero byte");
  EXPECT_EQ(Refusal(std::string("\xFF\xFE"
                                "a\0,\0",
                                6)),
            "t.csv is UTF-16 text: save it as UTF-8");
  const std::string little("\xFF\xFE\0\0a\0\0\0", 8), big("\0\0\xFE\xFF\0\0\0a", 8);
  for (const std::string& text : {little, big}) EXPECT_EQ(Refusal(text), "t.csv is UTF-32 text: save it as UTF-8");
  EXPECT_EQ(Refusal("sep=;"), "t.csv is empty but for the line that names the separator");
  EXPECT_EQ(Refusal("sep=;\n \n"), "t.csv is empty but for the line that names the separator");
}

TEST(Table, TellsWhatThereIsInATableWithoutAHeader) {
  const auto refusal = [](const std::string& text) {
    try {
      const Table table(text, "t.csv", Skipping(1, "#"));
    } catch (const Failure& failure) {
      return std::string(failure.what());
    }
    return std::string();
  };
  EXPECT_EQ(refusal("title\n"), "t.csv is empty but for the 1 line skipped");
  EXPECT_EQ(refusal("title\n#\n"), "t.csv is empty but for the 1 line skipped and comments");
  EXPECT_EQ(refusal("title\n#\nsep=;\n"),
            "t.csv is empty but for the 1 line skipped, the line that names the separator and comments");
}

TEST(Table, CallsAWorkbookAndAnArchiveWhatTheyAreAndSaysWhatToDo) {
  const std::string zip("PK\x03\x04\0\0", 6);
  EXPECT_EQ(Refusal(zip + "xl/workbook.xml"),
            "t.csv is an Excel workbook: open it and save the sheet as CSV (UTF-8)");
  EXPECT_EQ(Refusal("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(8, '\0')),
            "t.csv is an Excel workbook of the old form: open it and save the sheet as CSV (UTF-8)");
  EXPECT_EQ(Refusal(zip + "mimetypeapplication/vnd.oasis.opendocument.spreadsheet"),
            "t.csv is an OpenDocument spreadsheet: open it and save the sheet as CSV (UTF-8)");
  EXPECT_EQ(Refusal(zip + "table.csv"), "t.csv is a zip archive: unpack it, and give the table that is in it");
  EXPECT_EQ(Refusal("PK\x05\x06" + std::string(18, '\0')), "t.csv is an empty zip archive");
  const std::string unpack = ": unpack it, and give the table that is in it";
  EXPECT_EQ(Refusal("BZh91AY&SY\x12"), "t.csv is packed by bzip2" + unpack);
  EXPECT_EQ(Refusal(std::string("\xFD" "7zXZ\0\0", 7)), "t.csv is packed by xz" + unpack);
  EXPECT_EQ(Refusal("\x28\xB5\x2F\xFD\x04"), "t.csv is packed by zstd" + unpack);
  EXPECT_EQ(Refusal("7z\xBC\xAF\x27\x1C\x04"), "t.csv is a 7z archive" + unpack);
}

TEST(Table, TakesATableThatBeginsWithTheLettersOfAPacker) {
  for (const std::string name : {"BZh", "BZh9", "BZh91AY", "PK", "7z"}) {
    EXPECT_THAT(Table(name + ",b\n1,2\n", "t").ColumnNames(), ElementsAre(name, "b"));
  }
}

/// The text with zeros before or behind each letter.
std::string Widened(const std::string& text, std::size_t before, std::size_t behind) {
  std::string wide;
  for (const char letter : text) wide += std::string(before, '\0') + letter + std::string(behind, '\0');
  return wide;
}

TEST(Table, NamesTheEncodingOfAsciiInTwoOrFourBytesWithoutAByteOrderMark) {
  const std::string text = "a,b\n1,2\n";
  EXPECT_EQ(Refusal(Widened(text, 0, 1)), "t.csv is UTF-16 text: save it as UTF-8");
  EXPECT_EQ(Refusal(Widened(text, 1, 0)), "t.csv is UTF-16 text: save it as UTF-8");
  EXPECT_EQ(Refusal(Widened(text, 0, 3)), "t.csv is UTF-32 text: save it as UTF-8");
  EXPECT_EQ(Refusal(Widened(text, 3, 0)), "t.csv is UTF-32 text: save it as UTF-8");
}

TEST(Table, TakesTheSeparatorThatAFirstLineNames) {
  for (const std::string first : {"sep=|\n", "sep=|\r\n", "\"sep=|\"\n", "\xEF\xBB\xBFsep=|\n"}) {
    const Table table(first + "a,b|c\n1,5|2\n3|4\n", "t");
    EXPECT_EQ(table.Separator(), '|');
    EXPECT_TRUE(table.DecimalComma());
    EXPECT_THAT(table.ColumnNames(), ElementsAre("a,b", "c"));
    EXPECT_EQ(table.RowPlace(0), "row 1 (line 3)");
  }
}

TEST(Table, TakesTheLineThatNamesTheSeparatorBehindBlankLinesAndCommentsAndInItsOtherForms) {
  for (const std::string first : {"\n \nsep=|\n", "# made by\nsep=|\n", "\xEF\xBB\xBF\n#\n\nsep=|\n", "SEP=|\n",
                                  "Sep=|\r", "sep=|||\r\n", "\"sep=|\"|\n"}) {
    const Table table(first + "a,b|c\n1,5|2\n3|4\n", "t", Skipping(0, "#"));
    EXPECT_EQ(table.Separator(), '|') << first;
    EXPECT_THAT(table.ColumnNames(), ElementsAre("a,b", "c"));
    const auto lines = static_cast<std::size_t>(std::count(first.begin(), first.end(), '\n'));
    EXPECT_EQ(table.Line(0), std::max<std::size_t>(lines, 1) + 2) << first;
  }
}

TEST(Table, RefusesASeparatorThatBeginsComments) {
  try {
    const Table table("sep=|\na|b\n1|2\n", "t.csv", Skipping(0, "|"));
    ADD_FAILURE() << "rows would be left out";
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<kalmia::analysis::BadData>(failure));
    EXPECT_STREQ(failure.what(),
                 "t.csv: line 1 says that '|' separates the columns, but it is to begin comments");
  }
}

TEST(Table, TakesAFirstLineThatOnlyLooksSimilarForAHeader) {
  for (const std::string first : {"sep=x", "sep=", "sep", "set=|", "sep=|x", "sep=-"}) {
    EXPECT_EQ(Table(first + "\n1\n2\n", "t").Rows(), 2) << first;
  }
}

TEST(Table, LeavesOutLinesBeforeTheHeaderAndCountsThem) {
  const std::string text = "made by \"them\nand, them\n\na,b\n1,2\n";
  const Table table(text, "t", Skipping(2));
  EXPECT_THAT(table.ColumnNames(), ElementsAre("a", "b"));
  EXPECT_EQ(table.RowPlace(0), "row 1 (line 5)");
  EXPECT_THROW(Table(text, "t", Skipping(9)), Failure);
}

TEST(Table, PassesOverCommentsWhateverTheyHold) {
  const std::string text = "# it's 5\" wide\na,b\n1,2\n # \"\n#\n3,# 4\n\"#\n#\",5\n#";
  const Table table(text, "t", Skipping(0, "#"));
  EXPECT_EQ(table.Rows(), 3);
  EXPECT_THAT(RowOf(table, 1), ElementsAre("3", "# 4"));
  EXPECT_THAT(RowOf(table, 2), ElementsAre("#\n#", "5"));
  EXPECT_EQ(table.RowPlace(2), "row 3 (line 7)");
}

TEST(Table, SetsAsideNoMoreMemoryThanTheTextWarrants) {
  // 20,000 columns and 500,000 short rows: were they good, their cells would take 80 GB.
  std::string text = "c0";
  for (int c = 1; c < 20000; ++c) text += ",c" + std::to_string(c);
  text += '\n';
  for (int r = 0; r < 500000; ++r) text += "1\n";
  EXPECT_EQ(Refusal(text), "t.csv: row 1 (line 2) has 1 field, the header has 20000");
}

TEST(Table, KeepsNumbersByColumnAndHolesAsNaN) {
  const Table table("a,b,c\n1.5,x,\nNA,7,\n", "t");
  const CsvColumn& a = table.Column(0);
  EXPECT_EQ(a.kind, ColumnKind::Numbers);
  EXPECT_EQ(a.numbers[0], 1.5);
  EXPECT_TRUE(std::isnan(a.numbers[1]));
  EXPECT_EQ(a.missing, 1);
  EXPECT_EQ(table.Column(1).strays, 1);
  EXPECT_THAT(table.Column(1).firstStrays, ElementsAre(0));
  EXPECT_EQ(table.Column(2).kind, ColumnKind::Empty);
}

TEST(Table, ReadsDecimalCommasThatBeginBelowManyRowsWithoutThem) {
  std::string text = "a;b\n";
  for (int r = 0; r < 100; ++r) text += "1;1.5\n";
  for (int r = 0; r < 101; ++r) text += "2;2,5\n";
  const Table table(text, "t");
  EXPECT_TRUE(table.DecimalComma());
  EXPECT_EQ(table.Column(1).strays, 100);
  EXPECT_EQ(table.Column(1).numbers[150], 2.5);
}

TEST(Table, TellsItsShareAndStopsAtEveryQuestion) {
  const Threads oneThread(1);  // the calling thread, which runs every task
  std::string text = "a,b\n";
  for (int r = 0; r < 50; ++r) text += "1,2\n";
  const auto read = [&text](ProgressLog* log) {
    const auto progress = RecordingBar(log);
    return Table(text, "t", {}, progress.get(), /*bytesAtOnce=*/16).Rows();
  };
  ProgressLog all;
  EXPECT_EQ(read(&all), 50);
  const int questions = all.Count("SetValue");
  EXPECT_GT(questions, 20);
  std::vector<double> shares;
  for (const std::string& call : all.calls) {
    if (call.rfind("SetValue ", 0) == 0) shares.push_back(std::stod(call.substr(9)));
  }
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
  EXPECT_EQ(shares.front(), 0.0);
  EXPECT_EQ(shares.back(), 1.0);
  for (int stopAt = 1; stopAt <= questions; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    try {
      read(&log);
      ADD_FAILURE() << "goes on behind question " << stopAt;
    } catch (const Failure& failure) {
      EXPECT_TRUE(Is<kalmia::analysis::Stopped>(failure));
    }
    EXPECT_EQ(log.Count("SetValue"), stopAt);
  }
}

/// What the bar of a text is told, read in small parts by one thread; stopped at one of the questions, or at none.
ProgressLog LogOfReading(const std::string& text, const ReadOptions& options = {}, int stopAt = 0) {
  const Threads oneThread(1);
  ProgressLog log;
  log.stopAt = stopAt;
  const auto progress = RecordingBar(&log);
  try {
    const Table table(text, "t", options, progress.get(), /*bytesAtOnce=*/64);
    EXPECT_EQ(stopAt, 0);
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<kalmia::analysis::Stopped>(failure));
  }
  return log;
}

std::vector<double> SharesIn(const ProgressLog& log) {
  std::vector<double> shares;
  for (const std::string& call : log.calls) {
    if (call.rfind("SetValue ", 0) == 0) shares.push_back(std::stod(call.substr(9)));
  }
  return shares;
}

TEST(Table, ReadsAShortTableOnceWhateverItsSeparator) {
  std::string text = "a,b\n";
  for (int r = 0; r < 60; ++r) text += "1.5,2\n";
  const std::size_t commas = SharesIn(LogOfReading(text)).size();
  std::replace(text.begin(), text.end(), ',', ';');
  EXPECT_EQ(SharesIn(LogOfReading(text)).size(), commas + 1) << "one more tells that it was the sample";
}

TEST(Table, NeverTakesTheBarBackAndStopsAtEveryQuestionWhereRowsAreReadAgain) {
  std::string text = "a;b\n";
  for (int r = 0; r < 70; ++r) text += "1;1.5\n";
  for (int r = 0; r < 90; ++r) text += "2;2,5\n";
  const std::vector<double> shares = SharesIn(LogOfReading(text));
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
  EXPECT_EQ(shares.back(), 1.0);
  EXPECT_GT(std::count_if(shares.begin(), shares.end(), [](double share) { return share > 0.92 && share < 1.0; }), 5);
  for (std::size_t stopAt = 1; stopAt <= shares.size(); ++stopAt) {
    EXPECT_EQ(SharesIn(LogOfReading(text, {}, static_cast<int>(stopAt))).size(), stopAt);
  }
}

TEST(Table, TellsItsShareWhileItLooksForRowsAmongComments) {
  std::string text = "a,b\n";
  for (int r = 0; r < 100; ++r) text += "1,2\n# comment\n";
  const std::vector<double> shares = SharesIn(LogOfReading(text, Skipping(0, "#")));
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
  EXPECT_GT(std::count_if(shares.begin(), shares.end(), [](double share) { return share > 0.0 && share < 0.1; }), 10);
}

TEST(Table, KnowsTheFirstThreeStraysOfAColumnInTheirOrderWhateverTheParts) {
  std::string text = "a,b\n";
  for (int r = 0; r < 500; ++r) text += std::string(r % 100 == 77 ? "x" : r % 2 == 0 ? "" : "1") + ",1\n";
  for (const int count : {1, 3}) {
    const Threads threads(count);
    const Table table(text, "t", {}, nullptr, /*bytesAtOnce=*/16);
    EXPECT_EQ(table.Column(0).strays, 5);
    EXPECT_THAT(table.Column(0).firstStrays, ElementsAre(77, 177, 277));
    EXPECT_THAT(table.Column(1).firstStrays, ElementsAre());
  }
}

TEST(Table, RefusesARowOfAnotherLengthWithItsNumber) {
  EXPECT_EQ(Refusal("a,b,c\n1,2,3\n\n1,2\n"), "t.csv: row 2 (line 4) has 2 fields, the header has 3");
  EXPECT_EQ(Refusal("a,b,c\n1,2\n"), "t.csv: row 1 (line 2) has 2 fields, the header has 3");
  EXPECT_EQ(Refusal("Instrument X\nexported; 2024\nid,a,b\n"),
            "t.csv: row 2 (line 3) has 3 fields, the header has 1; if there are lines above the header");
  EXPECT_EQ(Refusal("a,b,c\n1\n"), "t.csv: row 1 (line 2) has 1 field, the header has 3");
  EXPECT_EQ(Refusal("a,b\n-1,5,2,5\n"),
            "t.csv: row 1 (line 2) has 4 fields, the header has 2; if the numbers have "
            "decimal commas, separate the columns by ; or tabs");
  EXPECT_EQ(Refusal("a;b\n1;5;2\n"), "t.csv: row 1 (line 2) has 3 fields, the header has 2");
  EXPECT_EQ(Refusal("a,b\n1,2\n1,2,\n"), "t.csv: row 2 (line 3) has 3 fields, the header has 2");
}

TEST(Table, RefusesTwoColumnsOfOneName) {
  EXPECT_EQ(Refusal("a,b,a\n1,2,3\n"), "t.csv: columns 1 and 3 have the same name, 'a'");
  EXPECT_EQ(Refusal("column 2,\n1,2\n"), "t.csv: columns 1 and 2 have the same name, 'column 2'");
}

TEST(Table, RefusesQuotationMarksThatDoNotPairUp) {
  EXPECT_THAT(Refusal("a,b\n1,\"2\n3,4\n"), HasSubstr("a quotation mark on line 2 is never closed"));
  EXPECT_THAT(Refusal("a,b\n1,2\n3,4\"5\n"), HasSubstr("a quotation mark on line 3"));
  EXPECT_THAT(Refusal("a,b\n1,\"2\"3\n"), HasSubstr("a quotation mark on line 2"));
}

TEST(Table, EndsInAWholeTableOrARefusalWhateverTheBytes) {
  const std::string seed = "\xEF\xBB\xBFname;\"a;\"\"b\";c\r\ns1;1,5;-2e3\r\n\"s\n2\";NA;+7\r\n";
  const std::string bytes("\0\t\n\r \",;.-9eNx\x80\xFF", 16);
  int tables = 0;
  for (std::size_t at = 0; at < seed.size(); ++at) {
    for (const char byte : bytes) {
      for (const bool insert : {false, true}) {
        std::string text = seed;
        text.replace(at, insert ? 0 : 1, 1, byte);
        try {
          const Table table(text, "t");
          ++tables;
          ASSERT_GT(table.Rows(), 0);
          for (int row = 0; row < table.Rows(); ++row) {
            for (int c = 0; c < table.Columns(); ++c) EXPECT_EQ(table.Cell(row, c).find('\0'), std::string_view::npos);
          }
        } catch (const Failure& failure) {
          EXPECT_TRUE(Is<kalmia::analysis::BadData>(failure));
        }
      }
    }
  }
  EXPECT_GT(tables, 100);
}

}  // namespace
}  // namespace kalmia::analysis
