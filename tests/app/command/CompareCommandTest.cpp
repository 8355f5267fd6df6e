// What `kalmia compare` prints, and every way in which it fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

CommandResult RunCompare(std::vector<std::string> words, const std::string& input = "") {
  words.insert(words.begin(), "compare");
  return RunKalmia(words, input);
}

TEST(Compare, PutsRecipesSideBySide) {
  const CommandResult run = RunCompare({ExampleTable("gasoline.csv"), "pls", "pls --scale centre --components 1",
                                        "opls --orthogonal 2", "--y", "octane", "--id", "sample"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("compared by 60 rows, left out in 7 groups\n"));
  EXPECT_THAT(run.output, HasSubstr("1 + 2"));
  EXPECT_THAT(run.output, HasSubstr("best"));
  EXPECT_THAT(run.output, HasSubstr("p 0.001"));
}

TEST(Compare, HasTheErrorsOfAnIndependentProgram) {
  const json result = RunCompare({ExampleTable("gasoline.csv"), "pls", "pls --scale centre", "--y", "octane", "--id",
                                  "sample", "--json"})
                          .Json();
  // Refits in double precision, to four decimals; one standard error chooses 5 and 4 components.
  EXPECT_NEAR(result["models"][0]["rmsecv"]["octane"], 0.2165, 1e-4);
  EXPECT_NEAR(result["models"][1]["rmsecv"]["octane"], 0.2450, 1e-4);
  EXPECT_EQ(result["models"][0]["components"], 5);
  EXPECT_EQ(result["models"][1]["components"], 4);
  EXPECT_EQ(result["best"], "pls");
}

TEST(Compare, TakesStoredModelsWithTheirColumnsStepsAndComponents) {
  const ScratchFolder folder;
  const std::string model = folder.Path("octane.model");
  ASSERT_EQ(RunKalmia({"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--steps", "snv",
                       "--components", "3", "--save", model})
                .exitCode,
            0);
  const json result =
      RunCompare({ExampleTable("gasoline.csv"), model, "pls --steps snv --components 3", "--json"}).Json();
  ASSERT_EQ(result["models"].size(), 2U);
  EXPECT_EQ(result["models"][0]["name"], model);
  EXPECT_EQ(result["models"][0]["components"], 3);
  EXPECT_EQ(result["models"][0]["rmsecv"], result["models"][1]["rmsecv"]);
  EXPECT_EQ(result["models"][0]["p"]["pls --steps snv --components 3"], 1.0);
  EXPECT_THAT(result["y"], ElementsAre("octane"));
}

TEST(Compare, ReadsQuotedWordsInsideARecipe) {
  const std::string table = "an x,b,y\n1,2,1\n2,1,3\n3,5,2\n4,4,5\n5,7,4\n6,3,7\n";
  const json result =
      RunCompare({"-", "pls --x 'an x'", "pls  --x \"an x\" --components 1", "--y", "y", "--json"}, table).Json();
  EXPECT_EQ(result["models"][1]["components"], 1);
}

TEST(Compare, TakesStoredModelsOfClasses) {
  const ScratchFolder folder;
  const std::string model = folder.Path("wine.model"), wine = ExampleTable("wine.csv");
  ASSERT_EQ(RunKalmia({"pls", wine, "--classes", "cultivar", "--id", "sample", "--components", "2", "--save", model})
                .exitCode,
            0);
  const json alone = RunCompare({wine, model, "pls --components 2", "opls --predictive 2 --orthogonal 1", "--json"}).Json();
  ASSERT_EQ(alone["models"].size(), 3U);
  EXPECT_THAT(alone["y"], ElementsAre("1", "2", "3"));
  EXPECT_EQ(alone["models"][0]["rmsecv"], alone["models"][1]["rmsecv"]);
  for (const char* option : {"--y", "--classes"}) {
    const json named = RunCompare({wine, model, "pls --components 2", option, "cultivar", "--json"}).Json();
    EXPECT_EQ(named["models"][0]["rmsecv"], alone["models"][0]["rmsecv"]) << option;
  }
  std::string other = ReadWholeFile(wine);
  other.replace(other.find("\n2,1,") + 1, 3, "2,9");
  const CommandResult unknown = RunCompare({"-", model, "pls"}, other);
  EXPECT_EQ(unknown.exitCode, 1);
  EXPECT_THAT(unknown.error, HasSubstr("row 2 (line 3) is of the class '9' in column 'cultivar', which is none of those "
                                       "that the model knows: 1, 2 and 3"));
  EXPECT_THAT(RunCompare({wine, model, "pls", "--y", "alcohol"}).error, HasSubstr("models another Y than"));
}

struct BadComparison {
  std::vector<std::string> words;
  int exitCode;
  const char* message;
};

TEST(Compare, RefusesWhatMakesNoSense) {
  const ScratchFolder folder;
  const std::string pca = folder.Path("pca.model");
  const CommandResult saved =
      RunKalmia({"pca", "-", "--id", "name", "--components", "1", "--save", pca}, LinearTable(20, 4, 1));
  ASSERT_EQ(saved.exitCode, 0) << saved.error;
  const std::vector<BadComparison> cases = {
      {{"-", "pls", "--y", "y"}, 2, "compare takes two models or more"},
      {{"-", "pls", "opls"}, 2, "compare needs --y NAME"},
      {{"-", "pls", "pls", "--y", "y"}, 2, "two of the models are called 'pls'"},
      {{"-", "pls", "pls --json", "--y", "y"}, 2, "in the recipe 'pls --json': pls has no option '--json'"},
      {{"-", "pls", "pls --components many", "--y", "y"}, 2, "--components takes auto or a whole number"},
      {{"-", "pls", "pls --scale", "--y", "y"}, 2, "--scale needs a value"},
      {{"-", "pls", "opls --components 2", "--y", "y"}, 2, "opls has no option '--components'"},
      {{"-", "pls", "pls 2", "--y", "y"}, 2, "in the recipe 'pls 2'"},
      {{"-", "pls", "opls", "--y", "y", "--validation", "component"}, 2, "compare has no option '--validation'"},
      {{"-", "pls", folder.Path("none.model"), "--y", "y"}, 3, "none.model"},
      {{"-", "pls", pca, "--y", "y"}, 2, "holds no PLS or OPLS model"},
      {{"-", "pls", "pls --x nothing", "--y", "y"}, 1, "there is no column 'nothing'"},
  };
  for (const BadComparison& bad : cases) {
    SCOPED_TRACE(bad.message);
    const CommandResult run = RunCompare(bad.words, LinearTable(20, 4, 1));
    EXPECT_EQ(run.exitCode, bad.exitCode);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.error, HasSubstr(bad.message));
  }
}

TEST(Compare, SaysOnceWhatIsNotedOfAllModels) {
  std::string table = "name,x1,x2,twin,y\n";
  for (int i = 0; i < 24; ++i) {
    const int y = i * 5 % 13 + i * i % 7;
    table += "r" + std::to_string(i / 2) + "," + std::to_string(i * 5 % 13) + "," + std::to_string(i * i % 7) + "," +
             std::to_string(3 * y + 1) + "," + std::to_string(y) + "\n";
  }
  const std::string copy = "column 'twin' of X is a copy of y, but for shift and scale, so that any model of it "
                           "predicts well: --exclude leaves it out\n";
  const std::string replicates = "note: names of several rows: r0, r1, r2 and 9 more.";
  const CommandResult both = RunCompare({"-", "pls", "opls", "--y", "y", "--id", "name"}, table);
  ASSERT_EQ(both.exitCode, 0) << both.error;
  for (const std::string& note : {"note: " + copy, replicates}) {
    EXPECT_THAT(both.error, HasSubstr(note));
    EXPECT_EQ(both.error.find(note), both.error.rfind(note));
  }
  EXPECT_EQ(both.error.find("pls: "), std::string::npos);
  const CommandResult one = RunCompare({"-", "pls", "opls --x x1,x2", "--y", "y", "--id", "name"}, table);
  EXPECT_THAT(one.error, HasSubstr("note: pls: " + copy));
  EXPECT_EQ(one.error.find("opls"), std::string::npos);
  EXPECT_THAT(one.error, HasSubstr(replicates));
}

TEST(Compare, SaysNothingOfIntervalsThatItDoesNotShow) {
  const CommandResult run = RunCompare({"-", "pls", "opls", "--y", "y", "--id", "name", "--groups", "2"},
                                       LinearTable(20, 4, 1));
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_EQ(run.error, "");
  EXPECT_THAT(RunKalmia({"pls", "-", "--y", "y", "--id", "name", "--groups", "2"}, LinearTable(20, 4, 1)).error,
              HasSubstr("note: the jack-knife has "));
}

}  // namespace
