// `kalmia pls` judged by refits: its numbers, its choice, its folds, and a model of no component.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "TestTables.h"
#include "Words.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

Words Octane(const Words& more = {}) {
  return Words{"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample"} + more;
}

/// With a further column of equal cells.
std::string WithConstant(const std::string& table, const std::string& name) {
  std::string wider;
  for (const char letter : table) {
    if (letter == '\n') wider += wider.find('\n') == std::string::npos ? "," + name : std::string(",4.5");
    wider += letter;
  }
  return wider;
}

/// RMSECV of the Y column by number of components, from 0 on, as far as figures are given: refits in double precision
/// gave them with four decimals (R pls 2.8-1 from 1 on, NumPy 1.24.2), and single cells move them by 1e-4 at most.
void ExpectRmsecv(const json& fit, const char* y, const std::vector<double>& figures) {
  const json& rows = fit["validation"]["components"];
  ASSERT_GE(rows.size(), figures.size());
  for (std::size_t a = 0; a < figures.size(); ++a) {
    EXPECT_EQ(rows[a]["components"], a);
    EXPECT_NEAR(rows[a]["rmsecv"][y].get<double>(), figures[a], 0.5e-4 + 1e-4 * figures[a]);
  }
}

TEST(PLSRefit, HasTheErrorsOfGasolineAndChoosesByOneStandardError) {
  const json uv = RunWell(Octane({"--json"})).Json();
  ExpectRmsecv(uv, "octane", {1.5481, 1.3274, 0.7458, 0.2413, 0.2396, 0.2165, 0.2220});
  EXPECT_EQ(uv["formatVersion"], 2);
  EXPECT_EQ(uv["kept"], 5);
  EXPECT_EQ(uv["validation"]["chosen"], 5);
  EXPECT_EQ(uv["validation"]["rule"], "one-se");
  EXPECT_EQ(uv["quality"][0]["rmsecv"], uv["validation"]["components"][5]["rmsecv"]["octane"]);
  EXPECT_EQ(uv["components"].size(), 5U);
  EXPECT_FALSE(uv["components"][0].contains("significant"));
  const json centre = RunWell(Octane({"--json", "--scale", "centre"})).Json();
  ExpectRmsecv(centre, "octane", {1.5481, 1.3269, 0.4087, 0.2642, 0.2450, 0.2374, 0.2288});
  EXPECT_EQ(centre["kept"], 4);
}

TEST(PLSRefit, HasTheErrorsOfOtherFoldsAndCvAnovaOfAGivenNumber) {
  const json groups = RunWell(Octane({"--components", "3", "--json"})).Json();
  EXPECT_EQ(groups["validation"]["rule"], nullptr);
  EXPECT_NEAR(groups["cvAnova"]["f"].get<double>(), 340.42, 0.005 + 340.42 * 2e-4);  // squares of errors of 1e-4
  EXPECT_EQ(groups["cvAnova"]["df1"], 6);
  EXPECT_EQ(groups["cvAnova"]["df2"], 53);
  const json rows = RunWell(Octane({"--components", "3", "--folds", "leave-one-out", "--json"})).Json();
  EXPECT_NEAR(rows["quality"][0]["rmsecv"].get<double>(), 0.2518, 1e-4);
  EXPECT_EQ(rows["validation"]["groups"], 60);
  EXPECT_EQ(rows["validation"]["folds"], "leave-one-out");
  const json blocks = RunWell(Octane({"--components", "3", "--folds", "blocks", "--groups", "5", "--json"})).Json();
  EXPECT_NEAR(blocks["quality"][0]["rmsecv"].get<double>(), 0.3033, 1e-4);
}

TEST(PLSRefit, HasTheErrorsOfAlcoholInWine) {
  const json fit =
      RunWell({"pls", ExampleTable("wine.csv"), "--y", "alcohol", "--id", "sample", "--exclude", "cultivar", "--json"})
          .Json();
  ExpectRmsecv(fit, "alcohol", {0.8105, 0.6096, 0.5626, 0.5516});
}

// By component a centred model has a single component and an error of 2.1; least over all numbers are 0.1.
TEST(PLSRefit, PredictsYarnsThatItHasNotSeen) {
  const ScratchFolder folder;
  for (const char* scale : {"uv", "centre"}) {
    RunWell({"pls", ExampleTable("yarn_train.csv"), "--y", "density", "--id", "row", "--scale", scale, "--save",
             folder.Path(scale)});
    const json predicted = RunWell({"predict", folder.Path(scale), ExampleTable("yarn_test.csv"), "--json"}).Json();
    EXPECT_LT(predicted["errors"][0]["rmsep"].get<double>(), 0.5) << scale;
  }
}

TEST(PLSRefit, ShowsTheNumbersFromZeroOnAndMarksTheChosenOne) {
  const std::string text = RunWell(Octane()).output;
  EXPECT_THAT(text, HasSubstr("  components     R2X     R2Y      Q2   RMSECV\n"
                              "           0  0.0000  0.0000  0.0000   1.5481\n"));
  EXPECT_THAT(text, HasSubstr("0.21648  chosen\n"));
  EXPECT_THAT(text, HasSubstr("\n          15  "));  // those that are not kept, too
  EXPECT_THAT(text,
              HasSubstr("5 components kept, cross-validated by refits in 7 groups (interleaved).\nRule one-se: "));
  EXPECT_THAT(text, HasSubstr("CV-ANOVA, errors of left-out rows against octane about its mean: F 235.81 (10, 49)"));
  EXPECT_THAT(text, Not(HasSubstr("significant")));
}

TEST(PLSRefit, SaysWhatEachRuleCompared) {
  const struct {
    const char *rule, *text;
    int kept;
  } kRules[] = {{"one-se", "is at most ", 5},
                {"randomisation", "with p above 0.05000: p is ", 3},
                {"min", "the least mean squared error of scaled Y in left-out rows", 5},
                {"q2", "one more lowers the squared error of scaled Y in left-out rows by ", 3}};
  for (const auto& rule : kRules) {
    SCOPED_TRACE(rule.rule);
    EXPECT_THAT(RunWell(Octane({"--select", rule.rule})).output, HasSubstr(rule.text));
    EXPECT_EQ(RunWell(Octane({"--select", rule.rule, "--json"})).Json()["kept"], rule.kept);
  }
}

/// The first number behind a text; not a number without one.
double NumberBehind(const std::string& words, const std::string& text) {
  const std::size_t at = text.find(words);
  EXPECT_NE(at, std::string::npos) << words;
  return at == std::string::npos ? NAN : std::stod(text.substr(at + words.size()));
}

// Octane has one column, so that PRESS / 60 rows is the mean of the squared errors of scaled Y that one-se compares.
TEST(PLSRefit, NamesTheUnitsOfWhatOneStandardErrorCompares) {
  const std::string text = RunWell(Octane()).output;
  const json models = RunWell(Octane({"--json"})).Json()["validation"]["components"];
  const double own = NumberBehind("mean squared error of scaled Y in left-out rows, ", text);
  const double limit = NumberBehind("is at most ", text), least = NumberBehind(": the least, ", text);
  EXPECT_NEAR(own, models[5]["press"].get<double>() / 60, 1e-3 * own);  // four digits are printed
  EXPECT_NEAR(least, own, 1e-3 * own);                                  // 5 components have the least themselves
  EXPECT_NEAR(limit, least + NumberBehind("and its standard error, ", text), 1e-3 * limit);
}

TEST(PLSRefit, GivesTheMeanWhereNothingIsFound) {
  const ScratchFolder folder;
  const Words line = {"pls", folder.Write("t.csv", UnrelatedTable(30, 6, 1, 5)), "--y", "y1"};
  const Words files = {"--save", folder.Path("m"), "--csv", folder.Path("d")};
  EXPECT_THAT(RunWell(line).output, HasSubstr("No component is kept, cross-validated by refits in 7 groups "
                                              "(interleaved): the model is the mean of y1.\nRule one-se: "));
  const json fit = RunWell(line + files + Words{"--json"}).Json();
  EXPECT_EQ(fit["kept"], 0);
  EXPECT_EQ(fit["csvFiles"].size(), 11U);
  EXPECT_EQ(fit["components"].size(), 0U);
  EXPECT_EQ(fit["cvAnova"], nullptr);
  EXPECT_EQ(fit["quality"][0]["rmsecv"], fit["validation"]["components"][0]["rmsecv"]["y1"]);
  const Table fitted = CsvAt(folder.Path("d/fit.csv")), coefficients = CsvAt(folder.Path("d/coefficients.csv"));
  const double mean = NumbersOf(coefficients, "y1")[0];
  EXPECT_THAT(NumbersOf(fitted, "predicted y1"), ::testing::Each(mean));
  EXPECT_EQ(NumbersOf(coefficients, "y1")[1], 0.0);
  EXPECT_EQ(NumbersOf(coefficients, "standard error")[1], 0.0);
  EXPECT_TRUE(std::isnan(NumbersOf(coefficients, "p")[1]));
  EXPECT_EQ(RunWell({"info", folder.Path("m"), "--json"}).Json()["components"].size(), 0U);
  const json predicted = RunWell({"predict", folder.Path("m"), line[1], "--json"}).Json();
  EXPECT_EQ(predicted["rows"].size(), 30U);
  EXPECT_NEAR(predicted["errors"][0]["rmsep"].get<double>(),
              fit["quality"][0]["rmsee"].get<double>() * std::sqrt(29.0 / 30), 1e-7);  // which is of single cells
  const json asked = RunWell(line + Words{"--components", "0", "--validation", "none", "--json"}).Json();
  EXPECT_EQ(asked["kept"], 0);
  EXPECT_EQ(asked["quality"][0]["rmsee"], fit["quality"][0]["rmsee"]);
}

TEST(PLSRefit, WritesWhatLeftOutRowsWerePredictedAs) {
  const ScratchFolder folder;
  const json fit = RunWell(Octane({"--csv", folder.Path("d"), "--json"})).Json();
  const Table csv = CsvAt(folder.Path("d/fit.csv"));
  const std::vector<double> measured = NumbersOf(csv, "measured octane"), leftOut = NumbersOf(csv, "cv octane");
  double squares = 0.0;
  for (std::size_t i = 0; i < measured.size(); ++i) squares += std::pow(measured[i] - leftOut[i], 2);
  EXPECT_NEAR(std::sqrt(squares / 60), fit["quality"][0]["rmsecv"].get<double>(), 1e-12);
  EXPECT_EQ(fit["crossValidated"]["octane"].get<std::vector<double>>(), leftOut);
}

TEST(PLSRefit, WritesTheJackKnifeOfEachYColumnUnderItsName) {
  const ScratchFolder folder;
  RunWell({"pls", ExampleTable("oliveoil.csv"), "--id", "sample", "--x", "Acidity..DK", "--y", "yellow,green",
           "--components", "1", "--csv", folder.Path("d")});
  const Table csv = CsvAt(folder.Path("d/coefficients.csv"));
  EXPECT_THAT(csv.ColumnNames(),
              ElementsAre("column", "yellow", "green", "standard error yellow", "lower yellow", "upper yellow",
                          "p yellow", "standard error green", "lower green", "upper green", "p green"));
  const std::vector<double> b = NumbersOf(csv, "green"), lower = NumbersOf(csv, "lower green"),
                            upper = NumbersOf(csv, "upper green"), error = NumbersOf(csv, "standard error green");
  constexpr double kQuantile = 2.4469118511449692;  // of Student's t with 6 degrees, 97.5 %
  for (std::size_t k = 0; k < b.size(); ++k) {
    EXPECT_NEAR(upper[k] - lower[k], 2 * kQuantile * error[k], 1e-9 * error[k]);
    EXPECT_NEAR((upper[k] + lower[k]) / 2, b[k], 1e-5 * std::abs(b[k]));  // the coefficients come from float cells
  }
}

TEST(PLSRefit, LeavesTheFieldsEmptyWithoutRefits) {
  const ScratchFolder folder;
  for (const char* method : {"component", "none"}) {
    SCOPED_TRACE(method);
    const json fit =
        RunWell(Octane({"--validation", method, "--components", "2", "--csv", folder.Path(method), "--json"})).Json();
    EXPECT_EQ(fit["validation"]["method"], method);
    EXPECT_EQ(fit["validation"]["chosen"], 2);
    EXPECT_EQ(fit["validation"]["components"].size(), 0U);
    EXPECT_EQ(fit["crossValidated"], nullptr);
    EXPECT_EQ(fit["cvAnova"], nullptr);
    EXPECT_EQ(fit["quality"][0]["rmsecv"].is_null(), std::string(method) == "none");
    EXPECT_EQ(fit["components"][0].contains("significant"), std::string(method) == "component");
    const std::string path = folder.Path(method);
    EXPECT_TRUE(std::isnan(NumbersOf(CsvAt(path + "/coefficients.csv"), "standard error")[0]));
    EXPECT_TRUE(std::isnan(NumbersOf(CsvAt(path + "/fit.csv"), "cv octane")[0]));
  }
}

TEST(PLSRefit, TellsHowManyModelsOfYInRandomOrderAreAsGood) {
  const json fit = RunWell(Octane({"--components", "2", "--permutations", "19", "--json"})).Json();
  const json& test = fit["permutation"];
  EXPECT_EQ(test["n"], 19);
  EXPECT_EQ(test["runs"].size(), 19U);
  EXPECT_EQ(test["pQ2"], 1.0 / 20);  // none of them is: Q2 is 0.77
  for (const json& run : test["runs"]) EXPECT_LT(run["q2"], fit["validation"]["components"][2]["q2"]);
  const json again = RunWell(Octane({"--components", "2", "--permutations", "19", "--json"})).Json();
  EXPECT_EQ(test["runs"], again["permutation"]["runs"]);
  EXPECT_THAT(RunWell(Octane({"--components", "2", "--permutations", "19"})).output,
              HasSubstr("Permutation test, against 19 models of Y in random order: p "));
  EXPECT_EQ(RunWell(Octane({"--components", "0", "--permutations", "19", "--json"})).Json()["permutation"], nullptr);
  EXPECT_EQ(RunWell(Octane({"--json"})).Json()["permutation"], nullptr);
}

TEST(PLSRefit, ValidatesTheChoiceToo) {
  const json fit = RunWell(Octane({"--nested", "--json"})).Json();
  EXPECT_EQ(fit["nested"]["chosen"].size(), 7U);
  const double rmsecv = fit["nested"]["rmsecv"]["octane"];
  EXPECT_GT(rmsecv, 0.2165);  // of 5 components, the least
  EXPECT_LT(rmsecv, 0.30);    // of 3, the least number that any rule would take, it is 0.24
  EXPECT_THAT(RunWell(Octane({"--nested"})).output,
              HasSubstr("Double cross-validation, where each round chooses its own number: RMSECV 0.2"));
}

TEST(PLSRefit, DealsRandomGroupsBySeedAndRepeat) {
  const auto press = [](const Words& more) {
    return RunWell(Octane(Words{"--folds", "random", "--components", "2", "--json"} + more))
        .Json()["validation"]["components"][2]["press"]
        .get<double>();
  };
  EXPECT_EQ(press({}), press({"--seed", "1"}));
  EXPECT_NE(press({}), press({"--seed", "2"}));
  EXPECT_NE(press({}), press({"--repeats", "3"}));
  EXPECT_EQ(RunWell(Octane({"--folds", "random", "--repeats", "3", "--json"})).Json()["validation"]["repeats"], 3);
}

// Rounds of 12 rows end with 11 components, which leave nothing of X: by its roundings a distance would be some 1e7.
TEST(Refits, GiveNoLimitOfTheDistanceWhereTheyLeaveNothingOfX) {
  const Words kFits[] = {{"pls", "--y", "y", "--components", "11"},
                         {"opls", "--y", "y", "--predictive", "1", "--orthogonal", "10"},
                         {"pca", "--exclude", "y", "--components", "11"}};
  const std::string table = LinearTable(14, 100, 3);
  for (const Words& words : kFits) {
    for (const std::string& of : {table, WithHoles(table, 97)}) {
      SCOPED_TRACE(words.front() + (&of == &table ? "" : ", with or without holes"));
      const ScratchFolder folder;
      const CommandResult fit =
          RunWell(Words{words.front(), "-", "--id", "name", "--json", "--save", folder.Path("m")} +
                      Words(words.begin() + 1, words.end()),
                  of);
      EXPECT_THAT(fit.error, HasSubstr("there is no limit of the distance for new rows"));
      const json limits = fit.Json()["limits"];
      EXPECT_TRUE(limits["new"]["distance"]["0.95"].is_null()) << limits;
      EXPECT_FALSE(limits["new"]["t2"]["0.95"].is_null());
      const json stored = RunWell({"predict", folder.Path("m"), "-", "--json"}, of).Json()["limits"];
      EXPECT_EQ(stored["new"]["distance"], limits["new"]["distance"]) << "as the file has it";
    }
  }
  const json fewer = RunWell({"pls", "-", "--id", "name", "--json", "--y", "y", "--components", "3"}, table).Json();
  EXPECT_LT(fewer["limits"]["new"]["distance"]["0.95"], 10.0);
}

std::string BodyOf(const std::string& table) { return table.substr(table.find('\n') + 1); }

TEST(PLSRefit, NotesRowsThatAreCopiesOfOthersInOtherGroups) {
  const Words line = {"pls", "-", "--y", "y", "--id", "name", "--components", "1"};
  const std::string once = LinearTable(15, 6, 2), twice = once + BodyOf(once);
  EXPECT_THAT(RunWell(line, once).error, Not(HasSubstr("of another group")));
  EXPECT_THAT(RunWell(line, twice).error,
              HasSubstr("30 rows of 30 have the same cells of X and Y as a row of another group"));
  const Words together = line + Words{"--group-column", "name"};
  EXPECT_THAT(RunWell(together, twice).error, Not(HasSubstr("of another group")));
}

TEST(PLSRefit, NamesRowsWhoseErrorIsFarBeyondAllOthers) {
  const Words line = {"pls", "-", "--y", "y", "--id", "name", "--components", "2"};
  const std::string table = LinearTable(30, 4, 2), row = "\ns9,";
  EXPECT_THAT(RunWell(line, table).error, Not(HasSubstr("far beyond")));
  const std::size_t begin = table.find(row) + 1, end = table.find('\n', begin);
  const std::string wrong = table.substr(0, table.rfind(',', end) + 1) + "1e4" + table.substr(end);
  EXPECT_THAT(RunWell(line, wrong).error, HasSubstr("while left out, in y: row s9\n"));
}

TEST(PLSRefit, CountsARowOnceHoweverOftenItWasLeftOut) {
  const Words random = {"pls", "-", "--id", "name", "--y", "y", "--components", "1", "--folds", "random", "--groups",
                        "6"};
  for (const char* repeats : {"1", "5"}) {
    EXPECT_THAT(RunWell(random + Words{"--repeats", repeats}, LinearTable(6, 4, 2)).error,
                HasSubstr("note: the limits of the distance rest on 6 rows: they are a guess\n"))
        << repeats;
  }
  EXPECT_THAT(RunWell(random + Words{"--repeats", "2"}, LinearTable(10, 4, 2)).error, Not(HasSubstr("a guess")));
}

TEST(PLSRefit, ShowsAGivenModelThatTheRoundsCannotHave) {
  const ScratchFolder folder;
  const Words line = {"pls", folder.Write("t.csv", LinearTable(5, 8, 4)), "--id", "name", "--y", "y",
                      "--components", "4"};
  const json fit = RunWell(line + Words{"--json", "--csv", folder.Path("d"), "--save", folder.Path("m")}).Json();
  const json& rows = fit["validation"]["components"];
  ASSERT_EQ(rows.size(), 5U) << "four rows of a round carry 3 components";
  EXPECT_EQ(fit["validation"]["chosen"], 4);
  EXPECT_EQ(rows[4]["components"], 4);
  EXPECT_EQ(rows[4]["r2x"], fit["components"][3]["r2xCum"]);
  EXPECT_EQ(rows[4]["r2y"], fit["components"][3]["r2yCum"]);
  EXPECT_EQ(rows[3]["r2x"], fit["components"][2]["r2xCum"]);
  for (const char* field : {"press", "q2"}) EXPECT_EQ(rows[4][field], nullptr);
  for (const char* field : {"rmsecv", "q2PerY"}) EXPECT_EQ(rows[4][field]["y"], nullptr);
  const Table csv = CsvAt(folder.Path("d/components.csv"));
  EXPECT_EQ(csv.Rows(), 10) << "all Y together and y";
  EXPECT_EQ(NumbersOf(csv, "components")[8], 4.0);
  EXPECT_EQ(NumbersOf(csv, "R2X cum")[8], rows[4]["r2x"].get<double>());
  EXPECT_TRUE(std::isnan(NumbersOf(csv, "PRESS")[8]));
  EXPECT_THAT(ReadWholeFile(folder.Path("d/components.csv")), HasSubstr(",yes\n4,y,"));
  const std::string text = RunWell(line).output, stored = RunWell({"info", folder.Path("m")}).output;
  EXPECT_THAT(text, HasSubstr("4 components kept, not judged: cross-validated by refits in 5 groups (interleaved) up "
                              "to 3 components.\n"));
  for (const std::string& shown : {text, stored}) EXPECT_THAT(shown, HasSubstr("        -       -  given\n"));
  EXPECT_EQ(RunWell({"info", folder.Path("m"), "--json"}).Json()["validation"], fit["validation"]);
}

TEST(PLSRefit, LeavesAConstantYOutBesideOthers) {
  const std::string table = WithConstant(LinearTable(20, 5, 7), "z");
  for (const char* command : {"pls", "opls"}) {
    SCOPED_TRACE(command);
    const ScratchFolder folder;
    const Words line = {command, "-", "--id", "name", "--x", "x1..x5", "--json", "--permutations", "9"};
    const CommandResult both = RunWell(line + Words{"--y", "z,y", "--save", folder.Path("m")}, table);
    const json alone = RunWell(line + Words{"--y", "y"}, table).Json();
    EXPECT_THAT(both.error, HasSubstr("note: left out of Y, constant columns: z\n"));
    for (const char* field : {"x", "y", "components", "validation", "quality", "crossValidated", "permutation"}) {
      EXPECT_EQ(both.Json()[field], alone[field]) << field;
    }
    EXPECT_THAT(RunWell({"predict", folder.Path("m"), "-", "--json"}, table).Json()["y"], ElementsAre("y"));
  }
  const CommandResult constant = RunKalmia({"pls", "-", "--id", "name", "--y", "z"}, table);
  EXPECT_EQ(constant.exitCode, 1);
  EXPECT_THAT(constant.error, HasSubstr("the Y column 'z' has no variance"));
}

TEST(PLSRefit, ByComponentLeavesAConstantYOutToo) {
  const std::string table = WithConstant(LinearTable(20, 5, 7), "z");
  const ScratchFolder folder;
  const Words line = {"opls", "-", "--id", "name", "--y", "y,z", "--x", "x1..x5", "--predictive", "2", "--json"};
  const json first = RunWell(line + Words{"--orthogonal", "1", "--save-cv", folder.Path("v")}, table).Json();
  EXPECT_EQ(first["predictive"], 1) << "of two columns one is left";
  const json further = RunWell(line + Words{"--orthogonal", "2", "--resume", folder.Path("v")}, table).Json();
  const json whole = RunWell(line + Words{"--orthogonal", "2", "--validation", "component"}, table).Json();
  EXPECT_EQ(further["components"], whole["components"]);
  const json refitted = RunWell(line + Words{"--orthogonal", "2"}, table).Json();
  EXPECT_EQ(refitted["validation"]["components"].size(), 4U);
  EXPECT_EQ(refitted["predictive"], 1);
}

TEST(PLSRefit, SaysWhyThereIsNoPermutationTest) {
  const Words line = {"pls", "-", "--id", "name", "--y", "y", "--permutations", "9", "--components"};
  EXPECT_THAT(RunWell(line + Words{"0"}, LinearTable(12, 4, 1)).error,
              HasSubstr("note: no permutation test: the model has no component\n"));
  EXPECT_THAT(RunWell(line + Words{"4"}, LinearTable(5, 8, 4)).error,
              HasSubstr("note: no permutation test: the validation does not judge so many components\n"));
  EXPECT_THAT(RunWell(line + Words{"1"}, LinearTable(12, 4, 1)).error, Not(HasSubstr("no permutation test")));
}

TEST(PLSRefit, SaysThatCvAnovaIsOfRefits) {
  for (const char* command : {"pls", "opls"}) {
    const Words line = {command, "-", "--id", "name", "--y", "y"};
    EXPECT_THAT(RunWell(line + Words{"--validation", "component"}, LinearTable(20, 4, 1)).error,
                HasSubstr("note: validation by component makes no full refits: there is no CV-ANOVA"));
    EXPECT_THAT(RunWell(line, LinearTable(20, 4, 1)).error, Not(HasSubstr("CV-ANOVA")));
  }
  const std::string notes = RunWell(Octane({"--validation", "component"})).error;
  EXPECT_THAT(notes, HasSubstr("note: validation by component makes no full refits: there is no CV-ANOVA, and the limits "
                               "of the distance for new rows are those of the training rows, widened\n"));
  EXPECT_THAT(notes, Not(HasSubstr("no row was left out")));
}

TEST(PLSRefit, NamesWhatANestedValidationTakes) {
  const std::string two = "y,g,a,b\n1,u,1,2\n2,u,3,1\n3,v,2,5\n4,v,4,4\n5,v,6,3\n";
  for (const char* command : {"pls", "opls"}) {
    const Words line = {command, "-", "--y", "y", "--nested"};
    CommandResult run = RunKalmia(line + Words{"--group-column", "g"}, two);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.error, HasSubstr("a nested validation, where the rows that stay in choose the number of "
                                     "components, takes three groups or more, and column 'g' makes two"));
    const std::string three = "y,a,b\n1,1,2\n2,3,1\n3,2,5\n";
    run = RunKalmia(line + Words{"--groups", "2"}, three);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.error, HasSubstr("takes two of them or more in each round: there are 3 rows in 2 groups"));
    EXPECT_EQ(RunKalmia(line + Words{"--groups", "2"}, three + "5,4,4\n").exitCode, 0) << command;
    EXPECT_EQ(RunKalmia(line + Words{"--group-column", "g"}, two + "3,w,1,1\n").exitCode, 0) << command;
  }
}

TEST(PLSRefit, TakesSeedsOf64Bits) {
  const Words line = Octane({"--folds", "random", "--components", "1", "--json", "--seed"});
  const std::string largest = "18446744073709551615";  // 2^64 - 1
  EXPECT_EQ(RunWell(line + Words{largest}).Json()["validation"]["seed"], 18446744073709551615U);
  EXPECT_EQ(RunWell(line + Words{"0"}).Json()["validation"]["seed"], 0U);
  for (const char* none : {"18446744073709551616", "-1", "1.5", "one"}) {
    const CommandResult run = RunKalmia(line + Words{none});
    EXPECT_EQ(run.exitCode, 2) << none;
    EXPECT_THAT(run.error, HasSubstr("--seed takes a whole number from 0 to " + largest + ", not '" + none + "'"));
  }
}

TEST(PLSRefit, RefusesARuleBesideAGivenNumber) {
  for (const char* method : {"refit", "component"}) {
    for (const Words& line : {Octane({"--components", "3"}), Words{"pca", "-", "--components", "3"},
                              Words{"opls", "-", "--y", "y", "--orthogonal", "3"}}) {
      const CommandResult run = RunKalmia(line + Words{"--select", "q2", "--validation", method});
      EXPECT_EQ(run.exitCode, 2) << line.front() << " " << method;
      EXPECT_THAT(run.error, HasSubstr("--select has nothing to choose where "));
    }
  }
}

}  // namespace
