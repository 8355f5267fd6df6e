// `kalmia filter`: what it takes out, what it carries through, stored filters for new rows.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"
#include "kalmia/analysis/table/internal/CsvFields.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "kalmia/pcapls/NCScale.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;
using ::testing::HasSubstr;
using Matrix = NCDataMatrix<float>;

/// The table x1 to x5 and y of 30 rows in t.csv.
class Filter : public ::testing::Test {
 protected:
  CommandResult Run(std::vector<std::string> options, const std::string& table = "") const {
    options.insert(options.begin(), {"filter", table.empty() ? table_ : table, "--out", out_});
    return RunKalmia(options);
  }
  CommandResult RunWell(const std::vector<std::string>& options, const std::string& table = "") const {
    CommandResult result = Run(options, table);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    return result;
  }
  static std::vector<std::string> Made(const char* components, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"--y", "y", "--id", "name", "--components", components});
    return more;
  }

  ScratchFolder folder_;
  std::string text_ = LinearTable(30, 5, 6);
  std::string table_ = folder_.Write("t.csv", text_);
  std::string out_ = folder_.Path("out.csv");
  std::string model_ = folder_.Path("m");
};

Matrix ColumnsOf(const Table& table, const std::vector<std::string>& names) {
  Matrix cells(table.Rows(), static_cast<int>(names.size()));
  for (std::size_t c = 0; c < names.size(); ++c) {
    const std::vector<double> numbers = NumbersOf(table, names[c]);
    for (int r = 1; r <= cells.SizeRows(); ++r) {
      const double cell = numbers[static_cast<std::size_t>(r) - 1];
      cells(r, static_cast<int>(c) + 1, std::isnan(cell) ? -99.0F : static_cast<float>(cell));
    }
  }
  return cells;
}

NCScale UnitVariance(Matrix* table) {
  NCScale scale(table->SizeColumns());
  for (int c = 1; c <= table->SizeColumns(); ++c) scale.SetType(c, NCScale::ScalingUnitVariance);
  scale.ScaleMatrix(table, /*newModel=*/true);
  return scale;
}

const std::vector<std::string> kX = {"x1", "x2", "x3", "x4", "x5"};

TEST_F(Filter, WritesWhatTheFilterLeavesOfXInTheUnitsOfTheTable) {
  RunWell(Made("2"));
  Matrix x = ColumnsOf(CsvAt(table_), kX), y = ColumnsOf(CsvAt(table_), {"y"});
  const NCScale scale = UnitVariance(&x);
  UnitVariance(&y);
  NCYOrthogonalPLS filter(&x, &y, /*maxIterations=*/500, /*maxPLSComponents=*/0);
  for (int a = 1; a <= 2; ++a) filter.NextComponent(/*showProgress=*/false);
  const Matrix& left = *filter.GetXResiduals();
  const Matrix filtered = ColumnsOf(CsvAt(out_), kX);
  for (int r = 1; r <= 30; ++r)
    for (int c = 1; c <= 5; ++c) {
      const auto expected = static_cast<float>(left[r][c] / static_cast<double>((*scale.GetScales())[c]) +
                                               static_cast<double>((*scale.GetCentres())[c]));
      EXPECT_EQ(filtered[r][c], expected) << r << ' ' << c;
    }
}

TEST_F(Filter, LeavesSpectraOfWhichOneComponentOfPLSTellsNearlyAllOfOctane) {
  const std::string spectra = ExampleTable("gasoline.csv");
  const json run = RunWell({"--y", "octane", "--id", "sample", "--scale", "centre", "--components", "1", "--json"},
                           spectra)
                       .Json();
  EXPECT_GT(run["removed"], 0.5);
  const auto describedOctane = [](const std::string& table) {
    return RunKalmia({"pls", table, "--y", "octane", "--id", "sample", "--scale", "centre", "--components", "1",
                      "--json"})
        .Json()["components"][0]["r2y"]
        .get<double>();
  };
  // Published models of these spectra describe some 0.97 of octane with three to five components; one alone 0.32.
  EXPECT_LT(describedOctane(spectra), 0.35);
  EXPECT_GT(describedOctane(out_), 0.95);
}

TEST_F(Filter, TellsWhatEachComponentTakesOutAndItsAngleToY) {
  const json run = RunWell(Made("2", {"--json"})).Json();
  ASSERT_EQ(run["components"].size(), 2);
  double cumulated = 0.0;
  for (const json& component : run["components"]) {
    cumulated += component["r2x"].get<double>();
    EXPECT_NEAR(component["r2xCum"], cumulated, 1e-12);  // sums of doubles near 1
    // The scores are those of X, and tell little of y; 90 says nothing.
    EXPECT_GT(component["angle"], 80.0);
    EXPECT_LE(component["angle"], 90.0);
  }
  EXPECT_NEAR(run["removed"], cumulated, 1e-6);  // the same rows, deflated again in floats
}

TEST_F(Filter, CarriesAllOtherFieldsThroughByteForByte) {
  const std::string text = "\xEF\xBB\xBF"
                           "word ; \"id\";a;b;c;y;same\r\nu;\"r;1\";1,5; 2 ;NA;1;7\r\n\r\n"
                           "v;r2;2,5;;4;2,5;7\r\nw;r3;\"4\";1;3;3;7\r\nx;r4;3;5;1,5;5,25;7\r\nz;r5;6;3;2;4;7";
  const std::string table = folder_.Write("de.csv", text);
  RunWell({"--y", "y", "--id", "id", "--components", "1"}, table);
  const std::string filtered = ReadWholeFile(out_);
  // The cells of a, b and c, those that are there, are fields 2 to 4; with x in their place both texts are the same.
  const auto masked = [](const std::string& bytes) {
    return kalmia::analysis::WithFieldsReplaced(bytes, ';', [](std::size_t record, std::size_t field) {
      const bool isX = record > 0 && field >= 2 && field <= 4;
      const bool isHole = (record == 1 && field == 4) || (record == 2 && field == 3);
      return isX && !isHole ? std::optional<std::string>("x") : std::nullopt;
    });
  };
  EXPECT_NE(filtered, text);
  EXPECT_EQ(masked(filtered), masked(text));
  EXPECT_TRUE(CsvAt(out_).DecimalComma());
}

TEST_F(Filter, AStoredFilterMakesTheSameOfItsTableToTheByte) {
  for (const std::string& text : {text_, WithHoles(text_, 7)}) {
    folder_.Write("t.csv", text);
    RunWell(Made("2", {"--save", model_}));
    const std::string made = ReadWholeFile(out_);
    RunWell({"--model", model_});
    EXPECT_EQ(ReadWholeFile(out_), made);
  }
}

TEST_F(Filter, AStoredFilterTakesNewRowsWithoutYByTheNamesOfTheirColumns) {
  RunWell(Made("1", {"--save", model_}));
  const std::string straight = folder_.Write("n.csv", "x1,x2,x3,x4,x5\n5.1,10.2,15.3,19.8,25.5\n4,,15,20,25\n");
  const json run = RunWell({"--model", model_, "--json"}, straight).Json();
  EXPECT_EQ(run["model"], model_);
  const Table expected = CsvAt(out_);
  RunWell({"--model", model_},
          folder_.Write("n.csv", "x5,zeal,x2,x4,x1,x3\n25.5,high,10.2,19.8,5.1,15.3\n25,low,,20,4,15\n"));
  const Table turned = CsvAt(out_);
  for (const std::string& name : kX) {
    EXPECT_EQ(expected.Cell(0, expected.Find(name)), turned.Cell(0, turned.Find(name)));
    EXPECT_EQ(expected.Cell(1, expected.Find(name)), turned.Cell(1, turned.Find(name)));
  }
  EXPECT_EQ(turned.Cell(1, turned.Find("x2")), "");
  EXPECT_EQ(turned.Cell(1, turned.Find("zeal")), "low");
}

TEST_F(Filter, FiltersRowsThatTakeNoPartInTheFit) {
  folder_.Write("t.csv", text_ + "s31,5,10,15,20,26,\ns32,,,,,,12\n");
  const CommandResult run = RunWell(Made("1", {"--json"}));
  EXPECT_THAT(run.error, HasSubstr("no part of the fit, without any Y cell: row s31"));
  EXPECT_THAT(run.error, HasSubstr("left out, without any X cell: row s32"));
  const Table out = CsvAt(out_);
  ASSERT_EQ(out.Rows(), 32);
  EXPECT_NE(out.Cell(30, out.Find("x1")), "5");
  EXPECT_EQ(out.Cell(31, out.Find("x1")), "");
}

TEST_F(Filter, EndsEarlyWhereNothingIsLeft) {
  const std::string table = folder_.Write("two.csv", "a,b,y\n1,2,1\n2,1,3\n3,5,2\n4,3,5\n5,4,4\n6,7,6\n");
  const json run = RunWell({"--y", "y", "--components", "9", "--json"}, table).Json();
  EXPECT_LE(run["components"].size(), 2U);
  EXPECT_THAT(run["notes"][0], HasSubstr("9 components are cut to 2"));
}

TEST_F(Filter, ShowsAStoredFilter) {
  RunWell(Made("2", {"--save", model_}));
  const CommandResult run = RunKalmia({"info", model_});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  for (const char* word : {"filter", "angle to Y", "x1, x2, x3, x4, x5", "30, named by column name"}) {
    EXPECT_THAT(run.output, HasSubstr(word));
  }
}

TEST_F(Filter, IsNoModelThatPredictsNorIsAnotherModelAFilter) {
  RunWell(Made("1", {"--save", model_}));
  ExpectFailure(RunKalmia({"predict", model_, table_}), 1, "holds a filter: kalmia filter TABLE --model ");
  const std::string pca = folder_.Path("pca");
  ASSERT_EQ(RunKalmia({"pca", table_, "--id", "name", "--components", "1", "--save", pca}).exitCode, 0);
  ExpectFailure(Run({"--model", pca}), 1, "holds no filter");
}

TEST_F(Filter, FailsInOneLineAndLeavesNoFile) {
  const struct {
    const char* table;
    std::vector<std::string> options;
    const char* message;
  } all[] = {{"a,b,y\n1,2,1\n2,1,1\n", {"--y", "y", "--components", "1"}, "the Y column 'y' has no variance"},
             {"a,y\n1,1\n1,2\n", {"--y", "y", "--components", "1"}, "every X column is constant or empty"},
             {"a,b,y\n1,2,1\n2,1,3\n", {"--y", "z", "--components", "1"}, "there is no column 'z'"},
             {"a,b,y\n1,x,1\n2,1,3\n", {"--y", "y", "--components", "1"}, "'x' is not a number"},
             {"a,b,y\n1,2,1\n", {"--y", "y", "--components", "1"}, "there is only one row with X cells"}};
  for (const auto& bad : all) {
    SCOPED_TRACE(bad.message);
    const ScratchFolder folder;
    std::vector<std::string> arguments = {"filter", folder.Write("t.csv", bad.table), "--out", folder.Path("o"),
                                          "--save", folder.Path("m")};
    arguments.insert(arguments.end(), bad.options.begin(), bad.options.end());
    ExpectFailure(RunKalmia(arguments), 1, bad.message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST_F(Filter, TakesEitherYAndComponentsOrAModel) {
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{"--out", "o"}, "filter needs --y and --components to make a filter, or --model to apply one"},
      {{"--out", "o", "--y", "y"}, "filter needs --y and --components to make a filter, or --model to apply one"},
      {{"--out", "o", "--model", "m", "--y", "y"}, "--model 'm' and --y 'y' do not go together"},
      {{"--out", "o", "--model", "m", "--save", "n"}, "--model 'm' and --save 'n' do not go together"},
      {{"--y", "y", "--components", "1"}, "filter needs --out FILE"},
      {{"--out", "o", "--y", "y", "--components", "0"}, "--components takes a whole number from 1 on, not '0'"}};
  for (const auto& [options, message] : lines) {
    std::vector<std::string> arguments = {"filter", "t.csv"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ExpectFailure(RunKalmia(arguments), 2, message);
  }
}

TEST_F(Filter, NeverWritesOverItsInputs) {
  ExpectFailure(RunKalmia({"filter", table_, "--y", "y", "--components", "1", "--out", folder_.Path("./t.csv")}), 2,
                "--out would overwrite the table");
  RunWell(Made("1", {"--save", model_}));
  const std::string bytes = ReadWholeFile(model_);
  ExpectFailure(RunKalmia({"filter", table_, "--model", model_, "--out", model_}), 2,
                "--out would overwrite the model");
  ExpectFailure(RunKalmia({"filter", table_, "--y", "y", "--components", "1", "--out", folder_.Path("n"), "--save",
                           folder_.Path("n")}),
                2, "--out and --save would both write");
  EXPECT_EQ(ReadWholeFile(model_), bytes);
  EXPECT_EQ(ReadWholeFile(table_), text_);
}

TEST(FilterOnATerminal, StopsAtCtrlCAndLeavesNothingBehind) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(400, 60, 12, 11));
  const CommandResult run =
      RunOnTerminal({"filter", table, "--y", "y1,y2,y3", "--components", "50", "--out", folder.Path("o"), "--save",
                     folder.Path("m")},
                    "component 2");
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

}  // namespace
