// Models of classes, as the command prints them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "TestTables.h"
#include "kalmia/analysis/table/Table.h"

namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(ClassModel, TellsHowWellWinesAreFoundThatWereLeftOut) {
  for (const char* command : {"pls", "opls"}) {
    const json result =
        RunKalmia({command, ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample", "--json"}).Json();
    const json& classes = result["classes"];
    EXPECT_THAT(classes["names"], ElementsAre("1", "2", "3"));
    int found = 0, all = 0;
    for (std::size_t g = 0; g < 3; ++g) {
      for (std::size_t h = 0; h < 3; ++h) all += classes["confusionCv"][g][h].get<int>();
      found += classes["confusionCv"][g][g].get<int>();
    }
    EXPECT_EQ(all, 178);
    EXPECT_GE(found, 173) << command;
    EXPECT_EQ(classes["accuracyCv"], found / 178.0);
    EXPECT_GT(classes["auc"]["2"], 0.99);
    EXPECT_TRUE(result["cvAnova"].is_null());
  }
}

TEST(ClassModel, IsWhatATextColumnAsYGives) {
  std::string table = "name,kind,x1,x2\n";
  for (int i = 0; i < 24; ++i) {
    table += "r" + std::to_string(i) + (i % 2 == 0 ? ",oak," : ",elm,") + std::to_string(i % 5 + 4 * (i % 2)) + "," +
             std::to_string(i * 5 % 11) + "\n";
  }
  const CommandResult run = RunKalmia({"pls", "-", "--y", "kind", "--id", "name", "--components", "1"}, table);
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("as elm"));
  EXPECT_THAT(run.output, HasSubstr("left-out rows"));
  EXPECT_THAT(run.output, HasSubstr("sensitivity"));
  const CommandResult numbers =
      RunKalmia({"pls", "-", "--y", "x1", "--exclude", "kind", "--id", "name", "--json"}, table);
  EXPECT_TRUE(numbers.Json()["classes"].is_null());
}

TEST(ClassModel, ThatIsStoredAssignsNewRowsButForThoseUnlikeAll) {
  const ScratchFolder folder;
  const std::string model = folder.Path("m"), csv = folder.Path("d");
  const json fit = RunKalmia({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample",
                              "--components", "3", "--save", model, "--json"})
                       .Json();
  const json same = RunKalmia({"predict", model, ExampleTable("wine.csv"), "--json"}).Json();
  EXPECT_EQ(same["digest"], fit["digest"]);
  EXPECT_EQ(same["classes"]["rows"], 178);
  EXPECT_THAT(same["errors"], IsEmpty());
  std::vector<std::vector<int>> nearest(3, std::vector<int>(3, 0));
  for (const json& row : same["rows"]) {
    const auto number = [&row](const char* field) { return std::stoul(row[field].get<std::string>()) - 1; };
    ++nearest[number("measuredClass")][number("nearest")];
    EXPECT_GT(row["logOdds"][row["nearest"].get<std::string>()], 0.0) << "as likely as all others, at least";
    if (!row["class"].is_null()) {
      EXPECT_EQ(row["class"], row["nearest"]);
    }
    EXPECT_TRUE(row["lower"][0].is_null());
  }
  EXPECT_EQ(json(nearest), fit["classes"]["confusion"]);
  std::string far = ReadWholeFile(ExampleTable("wine.csv"));
  far = far.substr(0, far.find('\n', far.find('\n') + 1) + 1);
  const std::size_t cell = far.find(',', far.find(',', far.find('\n')) + 1) + 1;  // of alcohol
  far.insert(cell, "9");
  const CommandResult text = RunKalmia({"predict", model, "-", "--csv", csv}, far);
  ASSERT_EQ(text.exitCode, 0) << text.error;
  EXPECT_THAT(text.output, HasSubstr("nearest"));
  EXPECT_THAT(text.output, HasSubstr("0 of 1 row right"));
  EXPECT_THAT(text.error, HasSubstr("beyond the 99 % limit"));
  EXPECT_THAT(ReadWholeFile(csv + "/predictions.csv"), HasSubstr("measured cultivar,class,nearest,log odds 1"));
}

TEST(ClassModel, RefusesClassesBesideY) {
  const std::string table = "k,x,y\na,1,2\nb,2,3\na,3,1\nb,5,4\n";
  EXPECT_THAT(RunKalmia({"pls", "-", "--y", "k,y"}, table).error, HasSubstr("classes are modelled alone"));
  EXPECT_EQ(RunKalmia({"pls", "-", "--y", "k,y"}, table).exitCode, 2);
  EXPECT_EQ(RunKalmia({"pls", "-", "--y", "y", "--classes", "k"}, table).exitCode, 2);
  EXPECT_EQ(RunKalmia({"pls", "-"}, table).exitCode, 2);
}

TEST(ClassModel, IsTestedByHowOftenChanceFindsAsManyRows) {
  const json result = RunKalmia({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample",
                                 "--components", "2", "--permutations", "19", "--json"})
                          .Json();
  EXPECT_EQ(result["permutation"]["pAccuracy"], 0.05);
  EXPECT_LT(result["permutation"]["runs"][0]["accuracy"], 0.7);
}

TEST(ClassModel, WithoutComponentsSaysWhichClassAllRowsGoTo) {
  std::string table = "kind,x1,x2\n";
  for (int i = 0; i < 12; ++i) {
    table += std::string(i % 3 == 0 ? "big" : "small") + "," + std::to_string(i * 5 % 7) + "," +
             std::to_string(i * i % 11) + "\n";
  }
  for (const char* command : {"pls", "opls"}) {
    const std::vector<std::string> line = {command, "-", "--y", "kind"};  // one standard error chooses none
    const CommandResult equal = RunWell(line, table), data = RunWell({command, "-", "--y", "kind", "--priors", "data"},
                                                                     table);
    EXPECT_THAT(equal.output, HasSubstr(": all rows go to big, the first class of the largest prior.\n")) << command;
    EXPECT_THAT(data.output, HasSubstr(": all rows go to small, the class of the largest prior.\n")) << command;
    EXPECT_THAT(data.output, HasSubstr("small             0         8\n"));
  }
}

/// Two classes that x1 tells apart, or, with a `gap` of 0, does not.
std::string OakAndElm(int rows, int gap) {
  std::string table = "name,kind,x1,x2\n";
  for (int i = 0; i < rows; ++i) {
    table += "r" + std::to_string(i) + (i % 2 == 0 ? ",oak," : ",elm,") + std::to_string(i * 3 % 5 + gap * (i % 2)) +
             "," + std::to_string(i * 5 % 11) + "\n";
  }
  return table;
}

TEST(ClassModel, TellsTheClassOfEachRowFittedAndLeftOut) {
  for (const char* command : {"pls", "opls"}) {
    const ScratchFolder folder;
    const json classes = RunWell({command, ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample", "--csv",
                                  folder.Path("d"), "--json"})
                             .Json()["classes"];
    const kalmia::analysis::Table csv = CsvAt(folder.Path("d/fit.csv"));
    const int measured = csv.Find("measured cultivar"), fitted = csv.Find("class"), leftOut = csv.Find("cv class");
    ASSERT_TRUE(measured >= 0 && fitted >= 0 && leftOut >= 0);
    std::vector<std::vector<int>> confusion(3, std::vector<int>(3, 0)), confusionCv = confusion;
    for (int row = 0; row < csv.Rows(); ++row) {
      const auto i = static_cast<std::size_t>(row);
      EXPECT_EQ(csv.Cell(row, measured), classes["measured"][i]);
      EXPECT_EQ(csv.Cell(row, fitted), classes["assigned"][i]);
      EXPECT_EQ(csv.Cell(row, leftOut), classes["assignedCv"][i]);
      const std::size_t own = std::stoul(csv.Cell(row, measured)) - 1;
      ++confusion[own][std::stoul(csv.Cell(row, fitted)) - 1];
      ++confusionCv[own][std::stoul(csv.Cell(row, leftOut)) - 1];
    }
    EXPECT_EQ(json(confusion), classes["confusion"]);
    EXPECT_EQ(json(confusionCv), classes["confusionCv"]);
  }
}

TEST(ClassModel, HasDifferentColumnsInFitCsvWhateverItsClassesAreCalled) {
  const ScratchFolder folder;
  std::string table = "kind,x1,x2\n";
  for (int i = 0; i < 24; ++i) {
    table += std::string(i % 2 == 0 ? "class," : "kind,") + std::to_string(i % 5 + 4 * (i % 2)) + "," +
             std::to_string(i * 5 % 11) + "\n";
  }
  RunWell({"pls", "-", "--y", "kind", "--components", "1", "--csv", folder.Path("d")}, table);
  EXPECT_THAT(ReadWholeFile(folder.Path("d/fit.csv")),
              ::testing::StartsWith("row,measured kind,class,cv class,measured class,predicted class,cv class (2),"
                                    "measured kind (2),predicted kind,cv kind\n"));
  const kalmia::analysis::Table csv = CsvAt(folder.Path("d/fit.csv"));  // a table of the program's own
  EXPECT_EQ(csv.Cell(0, csv.Find("measured kind")), "class");
  EXPECT_EQ(csv.Cell(0, csv.Find("measured kind (2)")), "0");
}

TEST(ClassModel, HasNoClassForRowsThatHaveNone) {
  std::string table = OakAndElm(24, 6);
  table.replace(table.find("r3,elm"), 6, "r3,");
  const json fit = RunWell({"pls", "-", "--y", "kind", "--id", "name", "--json"}, table).Json();
  EXPECT_TRUE(fit["classes"]["measured"][3].is_null());
  EXPECT_EQ(fit["classes"]["assigned"][3], "elm");
  const json unjudged =
      RunWell({"pls", "-", "--y", "kind", "--id", "name", "--components", "1", "--validation", "none", "--json"}, table)
          .Json();
  EXPECT_EQ(unjudged["classes"]["assigned"], fit["classes"]["assigned"]);
  EXPECT_TRUE(unjudged["classes"]["assignedCv"].is_null());
}

TEST(ClassModel, TellsHowManyRowsEachNumberOfComponentsFinds) {
  const std::vector<std::string> line = {"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample"};
  std::vector<std::string> asJson = line;
  asJson.emplace_back("--json");
  const json fit = RunWell(asJson).Json(), models = fit["validation"]["components"];
  const std::size_t kept = fit["kept"];
  EXPECT_EQ(models[kept]["accuracy"], fit["classes"]["accuracyCv"]);
  EXPECT_EQ(models[kept]["balancedAccuracy"], fit["classes"]["balancedAccuracyCv"]);
  EXPECT_LT(models[0]["accuracy"], models[1]["accuracy"]);
  EXPECT_LT(models[1]["accuracy"], models[2]["accuracy"]);
  EXPECT_THAT(RunWell(line).output, HasSubstr("Q2  accuracy  balanced"));
  const ScratchFolder folder;
  asJson.insert(asJson.end(), {"--save", folder.Path("m")});
  RunWell(asJson);
  EXPECT_EQ(RunWell({"info", folder.Path("m"), "--json"}).Json()["validation"]["components"], models);
  for (const char* command : {"pls", "opls"}) {
    const json fitted = RunWell({command, ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample", "--csv",
                                 folder.Path("d"), "--json"})
                            .Json()["validation"]["components"];
    const kalmia::analysis::Table csv = CsvAt(folder.Path("d/components.csv"));
    const std::vector<double> accuracy = NumbersOf(csv, "accuracy"), balanced = NumbersOf(csv, "balanced accuracy");
    ASSERT_EQ(accuracy.size(), 4 * fitted.size()) << "all classes, then each";
    for (std::size_t a = 0; a < fitted.size(); ++a) {
      EXPECT_EQ(accuracy[4 * a], fitted[a]["accuracy"]);
      EXPECT_EQ(balanced[4 * a], fitted[a]["balancedAccuracy"]);
      EXPECT_TRUE(std::isnan(accuracy[4 * a + 1]));
    }
  }
  const json numbers = RunWell({"pls", ExampleTable("wine.csv"), "--y", "alcohol", "--id", "sample", "--json"}).Json();
  EXPECT_FALSE(numbers["validation"]["components"][1].contains("accuracy"));
}

TEST(ClassModel, TellsHowManyRowsAChoiceOfItsOwnFinds) {
  std::vector<std::string> line = {"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample"};
  line.emplace_back("--nested");
  EXPECT_THAT(RunWell(line).output, HasSubstr(" of 3;\naccuracy 0.9"));
  line.emplace_back("--json");
  const json nested = RunWell(line).Json()["nested"];
  EXPECT_GT(nested["accuracy"], 0.95);
  EXPECT_GT(nested["balancedAccuracy"], 0.95);
}

TEST(ClassModel, IsComparedByTheRowsThatItFinds) {
  const std::vector<std::string> line = {"compare",   ExampleTable("wine.csv"), "pls --components 1", "opls", "--classes",
                                         "cultivar", "--id",                   "sample"};
  std::vector<std::string> asJson = line;
  asJson.emplace_back("--json");
  const json models = RunWell(asJson).Json()["models"];
  const json fit = RunWell({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample", "--components",
                            "1", "--json"})
                       .Json()["classes"];
  EXPECT_EQ(models[0]["accuracy"], fit["accuracyCv"]);
  EXPECT_EQ(models[0]["balancedAccuracy"], fit["balancedAccuracyCv"]);
  EXPECT_GT(models[1]["accuracy"], models[0]["accuracy"]);
  EXPECT_THAT(RunWell(line).output, HasSubstr("RMSECV 3  accuracy  balanced  against the best"));
  const CommandResult two = RunWell({"compare", "-", "pls", "opls", "--classes", "kind", "--id", "name"}, OakAndElm(24, 6));
  EXPECT_THAT(two.output, HasSubstr("   RMSECV  accuracy")) << "of two classes once";
}

TEST(ClassModel, SaysWhereTheRuleKeepsNothingAndWhatDoes) {
  const std::vector<std::string> line = {"pls", "-", "--y", "kind", "--id", "name"};
  const CommandResult run = RunWell(line, OakAndElm(20, 0));
  EXPECT_THAT(run.error, HasSubstr("note: the rule keeps no component, so that all rows go to one class."));
  EXPECT_THAT(run.error, HasSubstr(": --select min, q2 or randomisation may keep some, --components N"));
  EXPECT_THAT(run.output, HasSubstr("elm          1.000        0.000    -\n")) << "no rows are ordered";
  for (const char* rule : {"min", "q2", "randomisation"}) {
    std::vector<std::string> other = line;
    other.insert(other.end(), {"--select", rule});
    const CommandResult ofRule = RunWell(other, OakAndElm(20, 0));
    EXPECT_THAT(ofRule.error, HasSubstr("note: the rule keeps no component")) << rule;
    EXPECT_THAT(ofRule.error, Not(HasSubstr("--select"))) << rule;
  }
  std::vector<std::string> given = line;
  given.insert(given.end(), {"--components", "0", "--json"});
  const CommandResult asked = RunWell(given, OakAndElm(20, 0));
  EXPECT_THAT(asked.error, Not(HasSubstr("the rule keeps no component")));
  EXPECT_TRUE(asked.Json()["classes"]["auc"]["oak"].is_null());
  EXPECT_THAT(RunWell(line, OakAndElm(24, 6)).error, Not(HasSubstr("the rule keeps no component")));
}

TEST(ClassModel, OfTwoClassesPrintsWhatIsTheSameOnce) {
  const std::vector<std::string> line = {"pls", "-", "--y", "kind", "--id", "name", "--components", "1"};
  const std::string text = RunWell(line, OakAndElm(24, 6)).output;
  EXPECT_THAT(text, HasSubstr("R2Y      Q2   RMSECV  accuracy"));
  EXPECT_THAT(text, HasSubstr("\n  elm and oak    24  "));
  EXPECT_THAT(text, Not(HasSubstr("components  Y")));
  for (const char* method : {"none", "component"}) {
    std::vector<std::string> other = line;
    other.insert(other.end(), {"--validation", method});
    EXPECT_THAT(RunWell(other, OakAndElm(24, 6)).output, Not(HasSubstr("component  Y"))) << method;
    other.emplace_back("--json");
    EXPECT_EQ(RunWell(other, OakAndElm(24, 6)).Json()["quality"].size(), 2U);
  }
}

TEST(ClassModel, HasPriorsAlone) {
  const std::string table = "k,x,y\na,1,2\nb,2,3\na,3,1\nb,5,4\n";
  for (const char* command : {"pls", "opls"}) {
    const CommandResult run = RunKalmia({command, "-", "--y", "y", "--x", "x", "--priors", "data"}, table);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.error, HasSubstr("priors are of classes, and Y holds numbers"));
    EXPECT_THAT(run.error, HasSubstr("(--priors)"));
    EXPECT_EQ(RunKalmia({command, "-", "--y", "y", "--x", "x", "--priors", "equal"}, table).exitCode, 0);
  }
  EXPECT_EQ(RunKalmia({"pls", "-", "--y", "k", "--x", "x,y", "--priors", "data"}, table).exitCode, 0);
}

}  // namespace
