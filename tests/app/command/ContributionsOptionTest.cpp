// --contributions and --residuals of `kalmia pls`, `pca`, `opls`, `o2pls` and `predict`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;

/// A command that fits a model of two components to x1 to x8, and its options.
struct ContributingFit {
  const char* name;
  std::vector<std::string> options;
};

const ContributingFit kContributingFits[] = {
    {"pca", {"--exclude", "y", "--components", "2"}},
    {"pls", {"--y", "y", "--components", "2"}},
    {"opls", {"--y", "y", "--predictive", "1", "--orthogonal", "1"}},
};

class ContributionsOption : public ::testing::TestWithParam<ContributingFit> {
 protected:
  std::vector<std::string> WordsOf(const std::vector<std::string>& options) const {
    std::vector<std::string> words = {GetParam().name, table_, "--id", "name"};
    words.insert(words.end(), GetParam().options.begin(), GetParam().options.end());
    words.insert(words.end(), options.begin(), options.end());
    return words;
  }
  CommandResult Run(const std::vector<std::string>& options) const { return RunKalmia(WordsOf(options)); }
  CommandResult Well(const std::vector<std::string>& options) const { return RunWell(WordsOf(options)); }

  ScratchFolder folder_;
  std::string table_ = folder_.Write("t.csv", LinearTable(40, 8, 1));
};

INSTANTIATE_TEST_SUITE_P(Fits, ContributionsOption, ::testing::ValuesIn(kContributingFits),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(ContributionsOption, OfRowsComeInTheOrderInWhichTheyAreNamed) {
  const json run = Well({"--contributions", "s7", "--contributions", "3", "--json"}).Json();
  const json& list = run["contributions"];
  ASSERT_EQ(list.size(), 2);
  EXPECT_EQ(list[0]["row"], "s7");
  EXPECT_EQ(list[1]["row"], "s3");
  for (const json& row : list) {
    ASSERT_EQ(row["t2"].size(), 8);
    ASSERT_EQ(row["residual"].size(), 8);
  }
  double sum = 0.0;
  for (const json& part : list[0]["t2"]) sum += part.get<double>();
  EXPECT_NEAR(sum, run["rowStatistics"][6]["t2"].get<double>(), 1e-5);  // scores are floats
  EXPECT_EQ(Well({"--json"}).Json()["contributions"], json::array());
}

TEST_P(ContributionsOption, AreToldInTheTextTheLargestFirst) {
  const std::string text = Well({"--contributions", "s7"}).output;
  const json row = Well({"--contributions", "s7", "--json"}).Json()["contributions"][0];
  std::size_t largest = 0;
  for (std::size_t k = 1; k < 8; ++k) {
    if (std::fabs(row["t2"][k].get<double>()) > std::fabs(row["t2"][largest].get<double>())) largest = k;
  }
  EXPECT_THAT(text, HasSubstr("\nContributions of row s7\n\n  column"));
  const std::string table = text.substr(text.find("Contributions of row s7"));
  const std::string below = table.substr(table.find("residual\n") + 9);
  EXPECT_EQ(below.substr(2, 2), "x" + std::to_string(largest + 1));
  EXPECT_THAT(below, HasSubstr("T2 "));
  EXPECT_THAT(below, HasSubstr("its parts sum to"));
  EXPECT_THAT(below, HasSubstr("squared residuals sum to"));
}

TEST_P(ContributionsOption, OfARowThatIsNotThereAreRefusedBeforeTheFit) {
  ExpectFailure(Run({"--contributions", "s41", "--save", folder_.Path("m")}), 1, "there is no row 's41'");
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("m")));
}

TEST_P(ContributionsOption, OfANewRowAreThoseOfTheSameTrainingRow) {
  const json fitted =
      Well({"--contributions", "5", "--json", "--save", folder_.Path("m")}).Json()["contributions"][0];
  const json later =
      RunWell({"predict", folder_.Path("m"), table_, "--contributions", "s5", "--json"}).Json()["contributions"][0];
  EXPECT_EQ(later["row"], "s5");
  for (std::size_t k = 0; k < 8; ++k) {
    // Scores of principal components go on from a t that still moved by 1e-5 of its length.
    EXPECT_NEAR(later["t2"][k].get<double>(), fitted["t2"][k].get<double>(), 1e-4);
    EXPECT_NEAR(later["residual"][k].get<double>(), fitted["residual"][k].get<double>(), 1e-6);
  }
  const std::string text = RunWell({"predict", folder_.Path("m"), table_, "--contributions", "s5"}).output;
  EXPECT_THAT(text, HasSubstr("\nContributions of row s5\n"));
}

TEST_P(ContributionsOption, ResidualsAreAFileOfRowsAndColumns) {
  const std::string holes = folder_.Write("h.csv", WithHoles(LinearTable(40, 8, 1), 9));
  std::vector<std::string> words = WordsOf({"--residuals", "--csv", folder_.Path("d"), "--save", folder_.Path("m")});
  words[1] = holes;
  const CommandResult run = RunWell(words);
  EXPECT_THAT(run.output, HasSubstr("residuals.csv"));
  const Table residuals = CsvAt(folder_.Path("d/residuals.csv")), rows = CsvAt(folder_.Path("d/rows.csv"));
  const Table table = CsvAt(holes);
  EXPECT_EQ(residuals.ColumnNames(),
            (std::vector<std::string>{"row", "x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8"}));
  ASSERT_EQ(residuals.Rows(), 40);
  const std::vector<double> distances = NumbersOf(rows, "absolute distance");
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(residuals.Cell(i, 0), rows.Cell(i, 0));
    double squares = 0.0;
    int cells = 0;
    for (int k = 1; k <= 8; ++k) {
      const std::string cell = residuals.Cell(i, k);
      EXPECT_EQ(cell.empty(), table.Cell(i, k).empty()) << i << ' ' << k;
      if (cell.empty()) continue;
      squares += std::pow(std::stod(cell), 2);
      ++cells;
    }
    const double s = distances[static_cast<std::size_t>(i)];
    EXPECT_NEAR(squares, (cells - 2) * s * s, 1e-6 * (1.0 + squares));  // cells are floats, in their shortest digits
  }
  RunWell({"predict", folder_.Path("m"), holes, "--residuals", "--csv", folder_.Path("p")});
  EXPECT_EQ(ReadWholeFile(folder_.Path("p/residuals.csv")), ReadWholeFile(folder_.Path("d/residuals.csv")));
  EXPECT_EQ(CsvAt(folder_.Path("p/predictions.csv")).Rows(), 40);
}

TEST_P(ContributionsOption, ResidualsWithoutCSVAreWrongUsage) {
  ExpectFailure(Run({"--residuals"}), 2, "--residuals is for CSV that is written: give --csv too");
}

TEST_P(ContributionsOption, ResidualsDoNotReplaceTheTable) {
  std::filesystem::create_directory(folder_.Path("d"));
  std::vector<std::string> words = WordsOf({"--csv", folder_.Path("d")});
  words[1] = folder_.Write("d/residuals.csv", LinearTable(40, 8, 1));
  RunWell(words);
  words.emplace_back("--residuals");
  EXPECT_EQ(RunKalmia(words).exitCode, 2);
  EXPECT_EQ(ReadWholeFile(words[1]), LinearTable(40, 8, 1));
}

TEST(ContributionsOfNames, ThatAreNumbersAreOfTheRowOfThatName) {
  const std::string table = "id,a,b,y\n3,1,2,1\n1,2,3,2\n2,4,3,3\n7,4,6,4\n";
  const auto rowOf = [&](const std::string& word) {
    const std::vector<std::string> words = {"pls", "-", "--y", "y", "--id", "id", "--components", "1",
                                            "--validation", "none", "--contributions", word, "--json"};
    return RunWell(words, table).Json()["contributions"][0]["row"].get<std::string>();
  };
  EXPECT_EQ(rowOf("3"), "3");
  EXPECT_EQ(rowOf("4"), "7");
}

TEST(ContributionsOfNoComponent, AreRefusedAndNothingIsWritten) {
  const ScratchFolder folder;
  const std::vector<std::vector<std::string>> kinds = {{"pls", "--y", "y1", "--components", "0"},
                                                       {"pls", "--y", "y1"},
                                                       {"opls", "--y", "y1"},
                                                       {"pls", "--y", "y1", "--validation", "component"},
                                                       {"pca", "--components", "0"}};
  for (std::vector<std::string> words : kinds) {
    words.insert(words.begin() + 1, "-");
    words.insert(words.end(), {"--contributions", "1", "--save", folder.Path("m")});
    ExpectFailure(RunKalmia(words, UnrelatedTable(30, 6, 1, 5)), 1, "the model has no component");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("m")));
  }
}

/// Two blocks and their model.
class ContributionsOfO2PLS : public ::testing::Test {
 protected:
  ContributionsOfO2PLS() {
    const TwoBlocks blocks = SharedBlocks(30, 1);
    x_ = folder_.Write("x.csv", blocks.x);
    y_ = folder_.Write("y.csv", blocks.y);
    RunWell({"o2pls", x_, y_, "--id", "name", "--save", folder_.Path("m")});
  }

  ScratchFolder folder_;
  std::string x_, y_;
};

TEST_F(ContributionsOfO2PLS, AreRefused) {
  ExpectFailure(RunKalmia({"predict", folder_.Path("m"), x_, "--contributions", "1"}), 2,
                "holds an O2PLS model, which has no T2");
  EXPECT_FALSE(RunWell({"predict", folder_.Path("m"), x_, "--json"}).Json().contains("contributions"));
}

TEST_F(ContributionsOfO2PLS, LeaveResidualsOfTheBlockThatIsPredictedFrom) {
  RunWell({"predict", folder_.Path("m"), x_, "--residuals", "--csv", folder_.Path("x")});
  RunWell({"predict", folder_.Path("m"), y_, "--from", "y", "--residuals", "--csv", folder_.Path("y")});
  EXPECT_EQ(CsvAt(folder_.Path("x/residuals.csv")).Columns(), 7);
  EXPECT_EQ(CsvAt(folder_.Path("y/residuals.csv")).Columns(), 5);
}

TEST_F(ContributionsOfO2PLS, LeaveResidualsOfBothBlocks) {
  RunWell({"o2pls", x_, y_, "--id", "name", "--residuals", "--csv", folder_.Path("d")});
  RunWell({"predict", folder_.Path("m"), x_, "--residuals", "--csv", folder_.Path("x")});
  RunWell({"predict", folder_.Path("m"), y_, "--from", "y", "--residuals", "--csv", folder_.Path("y")});
  EXPECT_EQ(ReadWholeFile(folder_.Path("d/x-residuals.csv")), ReadWholeFile(folder_.Path("x/residuals.csv")));
  EXPECT_EQ(ReadWholeFile(folder_.Path("d/y-residuals.csv")), ReadWholeFile(folder_.Path("y/residuals.csv")));
  ExpectFailure(RunKalmia({"o2pls", x_, y_, "--id", "name", "--residuals"}), 2, "give --csv too");
}

TEST(ContributionsInPrediction, OfRowsThatCannotBePredictedSayWhy) {
  const ScratchFolder folder;
  const std::string model = folder.Path("m");
  RunWell({"pls", "-", "--y", "y", "--id", "name", "--components", "2", "--save", model}, LinearTable(40, 4, 1));
  const CommandResult run = RunWell({"predict", model, "-", "--contributions", "2", "--json"},
                                    "x1,x2,x3,x4\n1,2,3,4\nNA,NA,NA,NA\n");
  EXPECT_THAT(run.error, HasSubstr("row '2' has no contributions: none of its 4 X cells is present"));
  EXPECT_EQ(run.Json()["contributions"][0]["t2"], json({nullptr, nullptr, nullptr, nullptr}));
  const CommandResult holes =
      RunWell({"predict", model, "-", "--contributions", "1", "--json"}, "x1,x2,x3,x4\n5,9,,21\n");
  EXPECT_THAT(holes.error, HasSubstr("the row has missing cells"));
  EXPECT_TRUE(holes.Json()["contributions"][0]["t2"][2].is_null());
  ExpectFailure(RunKalmia({"predict", model, "-", "--residuals"}, "x1\n1\n"), 2, "give --csv too");
  ExpectFailure(RunKalmia({"predict", model, "-", "--contributions", "2"}, "x1\n1\n"), 1, "there is no row '2'");
}

}  // namespace
