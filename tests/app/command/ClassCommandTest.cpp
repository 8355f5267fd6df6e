// Models of classes, as the command prints them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

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
