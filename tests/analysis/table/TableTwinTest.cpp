// Table beside a plain reader, on texts of every kind, cut into parts everywhere.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "FailureOf.h"
#include "PlainTable.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/Threads.h"

namespace kalmia::analysis {
namespace {

constexpr std::size_t kParts[] = {1, 2, 3, 5, 8, 13, 64, 1000, Table::kBytesAtOnce};

/// Makes texts from a seed.
class TextMaker {
 public:
  explicit TextMaker(unsigned seed) : random_(seed) {}

  std::size_t Below(std::size_t count) { return random_() % count; }
  template <std::size_t Count>
  std::string OneOf(const char* const (&words)[Count]) {
    return words[Below(Count)];
  }

  /// Bytes that mean something, in any order.
  std::string Soup() {
    static const char* const kPieces[] = {"1",  "2.5", "3,5", "a",   "NA", "inf", "\"", "\"\"", "\n",   "\n",
                                          "\r", "\r\n", ",",  ",",   ";",  "\t",  " ",  "#",    "-1e9", "1e99"};
    std::string text = Below(8) == 0 ? "\xEF\xBB\xBF" : "";
    if (Below(4) == 0) text += OneOf(kSeparatorLines);
    for (std::size_t length = Below(40); length > 0; --length) text += OneOf(kPieces);
    return text;
  }

  /// A table, most of the time a good one, of cells in every form. One in twenty has so many rows that the first ones
  /// do not tell the decimal mark, which may change on the way.
  std::string Table() {
    static const char* const kSeparators[] = {",", ";", "\t", ",", ";", "\t", "|"};
    static const char* const kEnds[] = {"\n", "\n", "\r\n", "\r"};
    const std::string separator = OneOf(kSeparators), end = OneOf(kEnds);
    const std::size_t columns = 1 + Below(5), rows = Below(20) == 0 ? 50 + Below(200) : Below(12);
    const std::size_t commasFrom = Below(2) == 0 ? Below(rows + 1) : rows + 1, commasTo = commasFrom + Below(rows + 1);
    std::string text = Below(8) == 0 ? "\xEF\xBB\xBF" : "";
    if (separator == "|") text += "sep=|" + end;
    for (std::size_t row = 0; row <= rows; ++row) {
      hasCommas_ = row >= commasFrom && row < commasTo;
      if (Below(6) == 0) text += Between() + end;
      const std::size_t fields = Below(60) == 0 ? columns + Below(3) : columns;
      for (std::size_t c = 0; c < fields; ++c) {
        text += (c == 0 ? "" : separator) + (row == 0 ? "c" + std::to_string(c) : Cell(separator, c % 3 == 0));
      }
      if (row < rows || Below(2) == 0) text += end;
    }
    return text;
  }

 private:
  std::string Between() {
    static const char* const kLines[] = {"", " ", "# a \" mark", " \t", "  # \"two\" marks"};
    return OneOf(kLines);
  }
  static constexpr const char* kSeparatorLines[] = {"sep=;\n",   "sep=,\r\n", "SEP=|\r", "\"sep=\t\"\n", "sep=#\n",
                                                    "\n#\nsep=;", "sep=;;\n",  "sep=-\n", " sep=;\n",    "\"sep=;\n"};

  std::string Cell(const std::string& separator, bool mayBeWord) {
    static const char* const kNumbers[] = {"1",     "-2.5", "3.25e2", "0,5", "",     " 7 ", "NA", "+.5",
                                           "1e-60", "007",  "1e400",  "nan", "-inf", "5.",  "16777217"};
    static const char* const kWords[] = {"a",           "b c",   "\"x\ny\"", "\"say \"\"x\"\"\"",
                                         "\"a\r\nb\" ", "1.2.3", "\"\"",     "#"};
    std::string cell = mayBeWord && Below(2) == 0 ? OneOf(kWords) : OneOf(kNumbers);
    if (hasCommas_ && cell.find('.') == cell.rfind('.')) std::replace(cell.begin(), cell.end(), '.', ',');
    if (Below(400) == 0) cell += "\"";
    const bool isQuoted = cell.find('"') != std::string::npos;
    if (!isQuoted && (cell.find(separator) != std::string::npos || Below(5) == 0)) cell = '"' + cell + '"';
    return cell;
  }

  std::mt19937 random_;
  bool hasCommas_ = false;
};

void ExpectSameCells(const Table& table, const PlainTable& plain) {
  for (std::size_t c = 0; c < plain.names.size(); ++c) {
    const auto column = static_cast<int>(c);
    const CsvColumn& cells = table.Column(column);
    ASSERT_EQ(cells.kind, plain.KindOf(c));
    const std::vector<std::string> texts = table.ColumnTexts(column);
    int missing = 0, strays = 0;
    std::vector<int> firstStrays;
    for (std::size_t r = 0; r < plain.rows.size(); ++r) {
      const std::string& text = plain.rows[r][c];
      ASSERT_EQ(texts[r], text);
      ASSERT_EQ(table.Cell(static_cast<int>(r), column), text);
      const CellValue cell = plain.ValueOf(text);
      const bool isNumber = cell.kind == CellKind::Number;
      missing += cell.kind == CellKind::Missing ? 1 : 0;
      if (cell.kind != CellKind::Missing && !isNumber && strays++ < 3) firstStrays.push_back(static_cast<int>(r));
      if (cells.kind == ColumnKind::Texts) continue;
      if (isNumber) {
        ASSERT_EQ(cells.numbers[r], cell.value);
        ASSERT_EQ(std::signbit(cells.numbers[r]), std::signbit(cell.value));
      } else {
        ASSERT_TRUE(std::isnan(cells.numbers[r]));
      }
    }
    ASSERT_EQ(cells.missing, missing);
    ASSERT_EQ(cells.strays, strays);
    ASSERT_EQ(cells.firstStrays, firstStrays);
  }
}

/// Whether both readers took the text; the test fails where they do not agree.
bool ExpectSameTable(const std::string& text, const ReadOptions& options, std::size_t bytesAtOnce) {
  const PlainTable plain = ReadPlainTable(text, options);
  try {
    const Table table(text, "t", options, nullptr, bytesAtOnce);
    EXPECT_EQ(plain.refusal, "");
    if (!plain.refusal.empty()) return false;
    EXPECT_EQ(table.Separator(), plain.separator);
    EXPECT_EQ(table.DecimalComma(), plain.decimalComma);
    EXPECT_EQ(table.ColumnNames(), plain.names);
    EXPECT_EQ(static_cast<std::size_t>(table.Rows()), plain.rows.size());
    if (::testing::Test::HasFailure()) return false;
    for (std::size_t r = 0; r < plain.rows.size(); ++r) {
      EXPECT_EQ(table.Line(static_cast<int>(r)), plain.lines[r]);
      EXPECT_EQ(table.RowTexts(static_cast<int>(r)), plain.rows[r]);
    }
    ExpectSameCells(table, plain);
    return true;
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<kalmia::analysis::BadData>(failure));
    const std::string message = failure.what();
    if (plain.refusal.find("have the same name") == std::string::npos) {
      EXPECT_EQ(message, "t" + plain.refusal);
    } else {  // the name follows
      EXPECT_EQ(message.substr(0, plain.refusal.size() + 1), "t" + plain.refusal);
    }
    return false;
  }
}

/// Reads so many texts in both ways and stops at the first difference. How many are tables.
template <class Make>
int CountTables(int texts, const Make& make) {
  int tables = 0;
  TextMaker maker(20240101);
  for (int i = 0; i < texts && !::testing::Test::HasFailure(); ++i) {
    const std::string text = make(&maker);
    ReadOptions options;
    if (maker.Below(3) == 0) options.comment = "#";
    if (maker.Below(6) == 0) options.skipLines = static_cast<int>(maker.Below(3));
    if (maker.Below(4) == 0) options.missingWords = {" a", "-2.5", "1,5"};
    const std::size_t part = kParts[maker.Below(std::size(kParts))];
    const Threads threads(1 + static_cast<int>(maker.Below(3)));
    SCOPED_TRACE(::testing::PrintToString(text) + (options.comment.empty() ? "" : " with comments") +
                 (options.missingWords.empty() ? "" : " with words for missing cells") + " behind " +
                 std::to_string(options.skipLines) + " lines, in parts of " + std::to_string(part));
    tables += ExpectSameTable(text, options, part) ? 1 : 0;
  }
  return tables;
}

TEST(TableTwin, ReadsTablesAsThePlainReaderDoes) {
  EXPECT_GT(CountTables(20000, [](TextMaker* maker) { return maker->Table(); }), 8000);
}

TEST(TableTwin, ReadsAnyTextAsThePlainReaderDoes) {
  EXPECT_GT(CountTables(40000, [](TextMaker* maker) { return maker->Soup(); }), 500);
}

TEST(TableTwin, AgreesAtEveryCutOfOneText) {
  const std::string text =
      "name;\"a;\"\"b\";c\r\n\"s\n\"\"1\";1,5;-2e3\r\n\r\n \t\"s\r\n2\" ; "
      "NA;+7\r\n\"\";\"0,25\";16777217,0000000001\r\rx;;\n";
  for (std::size_t part = 1; part <= text.size(); ++part) EXPECT_TRUE(ExpectSameTable(text, {}, part)) << part;
}

TEST(TableTwin, ReadsLongTablesAgainWhoseFirstRowsMisleadAsThePlainReaderDoes) {
  for (const bool commasFirst : {false, true}) {
    std::string text = "a;b\n";
    for (int row = 0; row < 200; ++row)
      text += ((row < 70) == commasFirst ? "1,5;2," : "1.5;2.") + std::to_string(row) + "\n";
    for (const std::size_t part : kParts) EXPECT_TRUE(ExpectSameTable(text, {}, part)) << part;
    EXPECT_EQ(Table(text, "t").DecimalComma(), !commasFirst);
  }
}

}  // namespace
}  // namespace kalmia::analysis
