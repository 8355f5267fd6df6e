// Every way in which the command fails: one line on standard error, the right exit code, no output, no file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

struct BadTable {
  const char* what;
  std::string table;
  std::vector<std::string> options;
  const char* message;
};

const BadTable kBadTables[] = {
    {"empty file", "", {"--y", "y"}, "t.csv is empty"},
    {"no data rows", "x,y\n", {"--y", "y"}, "t.csv has a header but no data rows"},
    {"ragged row", "x,y\n1,2\n3\n4,5\n", {"--y", "y"}, "row 2 (line 3) has 1 field, the header has 2"},
    {"word among numbers",
     "x,y\n1,2\n3,oops\n4,5\n",
     {"--y", "y"},
     "row 2 (line 3), column 'y': 'oops' is not a number"},
    {"word in X", "x,y\n1,2\nn/a,3\n4,5\n", {"--y", "y"}, "row 2 (line 3), column 'x': 'n/a' is not a number"},
    {"infinity", "x,y\n1,2\n-inf,3\n4,5\n", {"--y", "y"}, "row 2 (line 3), column 'x': '-inf' is infinite"},
    {"too large",
     "x,y\n1,2\n1e39,3\n4,5\n",
     {"--y", "y"},
     "row 2 (line 3), column 'x': '1e39' is too large for single precision"},
    {"decimal point among commas",
     "x;y\n1,5;2\n2.5;3,5\n4;5,5\n",
     {"--y", "y"},
     "'2.5' is no number in a table with decimal commas"},
    {"duplicate names", "x,x,y\n1,2,3\n", {"--y", "y"}, "columns 1 and 2 have the same name, 'x'"},
    {"no such Y", "x,y\n1,2\n3,4\n", {"--y", "z"}, "there is no column 'z'"},
    {"one Y of two missing", "x,y\n1,2\n3,4\n", {"--y", "y,z"}, "there is no column 'z'"},
    {"the same Y twice", "x,y\n1,2\n3,4\n", {"--y", "y,y"}, "column 'y' is named twice"},
    {"Y of text", "x,y\n1,a\n3,b\n", {"--y", "y"},
     "t.csv: the values of column 'y' are no classes: the class 'a' has a single row"},
    {"Y without variance", "x,y\n1,2\n3,2\n4,NA\n", {"--y", "y"}, "the Y column 'y' has no variance"},
    {"Y with one value", "x,y\n1,2\n3,NA\n4,\n", {"--y", "y"}, "the Y column 'y' has no variance"},
    {"Y without value", "x,y\n1,\n3,NA\n", {"--y", "y"}, "the Y column 'y' has no value"},
    {"every cell missing", "x,y\n,\nNA,nan\n", {"--y", "y"}, "the Y column 'y' has no value"},
    {"every X cell missing", "x,y\n,1\nNA,2\n", {"--y", "y"}, "every cell of X is missing"},
    {"X all text", "x,y\na,1\nb,2\n", {"--y", "y"}, "no column of numbers is left for X; text columns: x"},
    {"X all empty", "x,z,y\n,NA,1\n,,2\n", {"--y", "y"}, "every cell of X is missing; empty columns: x and z"},
    {"X all constant",
     "x,z,w,y\n1,,3,1\n1,,3,2\n",
     {"--y", "y"},
     "every X column is constant or empty; constant columns: x and w; empty columns: z"},
    {"one row", "x,y\n1,2\n", {"--y", "y"}, "there is only one row with X cells: a model takes two or more"},
    {"one row with X", "x,y\n1,2\n,3\n", {"--y", "y"}, "there is only one row with X cells"},
    {"Y constant where there is X",
     "x,y\n1,2\n3,2\n,5\n",
     {"--y", "y"},
     "the Y column 'y' has no variance in the rows that have X cells"},
    {"no such id", "x,y\n1,2\n3,4\n", {"--y", "y", "--id", "name"}, "there is no column 'name'"},
    {"Y as id", "x,y\n1,2\n3,4\n", {"--y", "y", "--id", "y"}, "column 'y' cannot be Y and name rows or groups"},
    {"no such excluded column", "x,y\n1,2\n3,4\n", {"--y", "y", "--exclude", "w"}, "there is no column 'w'"},
    {"no such range", "x,y\n1,2\n3,4\n", {"--y", "y", "--x", "x..w"}, "there is no column 'w'"},
    {"range backwards",
     "a,b,y\n1,2,3\n3,4,5\n",
     {"--y", "y", "--x", "b..a"},
     "the last column stands before the first"},
    {"no such group column", "x,y\n1,2\n3,4\n", {"--y", "y", "--group-column", "g"}, "there is no column 'g'"},
    {"one group", "x,y,g\n1,2,a\n3,4,a\n5,7,a\n", {"--y", "y", "--group-column", "g"}, "all rows have the same group"},
    {"a row without group",
     "x,y,g\n1,2,a\n3,4,\n5,7,b\n",
     {"--y", "y", "--group-column", "g"},
     "row 2 (line 3) has no group"},
    {"quotation mark left open", "x,y\n1,\"2\n3,4\n", {"--y", "y"}, "a quotation mark on line 2"},
    {"X without room for a factor", "x,y\n1e-38,1\n2e-38,2\n4e-38,4\n", {"--y", "y"}, "column 'x' cannot be scaled: "},
    {"X beyond any factor", "x,y\n-1e38,1\n2e38,2\n1e38,4\n", {"--y", "y"}, "column 'x' cannot be scaled: "},
    {"Y without room for a factor", "x,y\n1,1e-38\n2,2e-38\n3,4e-38\n", {"--y", "y"}, "column 'y' cannot be scaled: "},
    {"X and Y unrelated",
     "x,y\n1,1\n1.5,2\n1,3\n1.5,2\n",
     {"--y", "y", "--components", "1"},
     "no component can be computed"},
    {"X and Y unrelated, some columns left out",
     "x,c,e,y\n1,7,,1\n1.5,7,,2\n1,7,,3\n1.5,7,,2\n",
     {"--y", "y", "--components", "1"},
     "; left out of X: constant columns: c; empty columns: e"},
    {"X so small that nothing can be regressed on its scores",
     "x,z,y\n1e-16,3e-16,1\n2e-16,2e-16,2\n3e-16,5e-16,2.5\n5e-16,4e-16,4\n",
     {"--y", "y", "--components", "1", "--scale", "centre"},
     "nothing is left of X (or its numbers are too small; try scaling to unit variance)"},
    {"separated by blanks",
     "x y\n1 2\n3 4\n",
     {"--y", "y"},
     "there is no column 'y'; the table has one column only, 'x y' (columns are separated by commas, ; or tabs)"},
    {"decimal commas, columns separated by commas",
     "x,y\n1,5,2,5\n3,5,4,5\n",
     {"--y", "y"},
     "row 1 (line 2) has 4 fields, the header has 2; if the numbers have decimal commas, separate the columns by ; or "
     "tabs"},
    {"quoted decimal commas, columns separated by commas",
     "x,y\n\"1,5\",2\n\"3,5\",4\n",
     {"--y", "y"},
     "'1,5' is no number in a table with decimal points (decimal commas take ; or tabs between the columns)"},
    {"X unrelated, or too small to tell",
     "x,y\n1,1\n1.5,2\n1,3\n1.5,2\n",
     {"--y", "y", "--components", "1", "--scale", "centre"},
     "(or their numbers are too small; try scaling to unit variance)"}};

TEST(FailureOfPLS, IsOneLineWithExitCode1ForBadData) {
  for (const BadTable& bad : kBadTables) {
    SCOPED_TRACE(bad.what);
    const ScratchFolder folder;
    std::vector<std::string> arguments = {"pls", folder.Write("t.csv", bad.table)};
    arguments.insert(arguments.end(), bad.options.begin(), bad.options.end());
    for (const std::string& more : {std::string("--save"), folder.Path("m"), std::string("--csv"), folder.Path("d")}) {
      arguments.push_back(more);
    }
    ExpectFailure(RunKalmia(arguments), 1, bad.message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST(FailureOfPCA, IsOneLineWithExitCode1ForBadData) {
  const BadTable tables[] = {
      {"one column",
       "x,c\n1,7\n2,7\n",
       {},
       "there is only one column for X, 'x': principal components take two or more; left out of X: constant columns: "
       "c"},
      {"no column of numbers", "a,b\nu,v\nw,x\n", {}, "no column of numbers is left for X; text columns: a and b"},
      {"one row", "a,b\n1,2\n", {}, "there is only one row with X cells"},
      {"every cell missing", "a,b\n,NA\nnan,\n", {}, "every cell of X is missing; empty columns: a and b"},
      {"all constant", "a,b\n1,2\n1,2\n", {}, "every X column is constant or empty; constant columns: a and b"},
      {"a word among numbers", "a,b\n1,2\n3,oops\n", {}, "row 2 (line 3), column 'b': 'oops' is not a number"},
      {"infinity", "a,b\n1,2\n3,inf\n", {}, "'inf' is infinite"},
      {"no such id", "a,b\n1,2\n3,5\n", {"--id", "name"}, "there is no column 'name'"},
      {"one group", "a,b,g\n1,2,u\n3,5,u\n", {"--group-column", "g"}, "all rows have the same group"},
      {"numbers too small",
       "a,b\n1e-17,2e-17\n3e-17,5e-17\n4e-17,1e-17\n",
       {"--scale", "centre", "--components", "1"},
       "no component can be computed: PCA component could not be computed. (or its numbers are too small; try scaling "
       "to unit variance)"},
      {"numbers too large", "a,b\n1e30,2\n-3e30,5\n2e30,1\n", {"--scale", "none"}, "sum of squares"}};
  for (const BadTable& bad : tables) {
    SCOPED_TRACE(bad.what);
    const ScratchFolder folder;
    std::vector<std::string> arguments = {"pca", folder.Write("t.csv", bad.table)};
    arguments.insert(arguments.end(), bad.options.begin(), bad.options.end());
    for (const std::string& more : {std::string("--save"), folder.Path("m"), std::string("--csv"), folder.Path("d")}) {
      arguments.push_back(more);
    }
    ExpectFailure(RunKalmia(arguments), 1, bad.message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST(FailureOfPCA, NeverWritesOverItsTableNorLeavesHalfOfItsFiles) {
  const ScratchFolder folder;
  const std::string text = LinearTable(20, 4, 1);
  const std::string table = folder.Write("loadings.csv", text);
  ExpectFailure(RunKalmia({"pca", table, "--id", "name", "--csv", folder.Path("")}), 2, "--csv would overwrite");
  ExpectFailure(RunKalmia({"pca", table, "--id", "name", "--save", table}), 2, "--save would overwrite the table");
  ExpectFailure(
      RunKalmia({"pca", table, "--id", "name", "--components", "1", "--save", folder.Path("m"), "--csv", table}), 3,
      "Not a directory");
  ExpectFailure(RunKalmia({"pca", table, "--id", "name", "--components", "1", "--save", "/dev/full"}), 3,
                "No space left on device");
  EXPECT_EQ(ReadWholeFile(table), text);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"loadings.csv"});
}

TEST(FailureOfDescribe, IsOneLineWithExitCode1ForBadData) {
  const ScratchFolder folder;
  const std::pair<const char*, const char*> tables[] = {{"", "is empty"},
                                                        {"a,b\n", "no data rows"},
                                                        {"a,b\n1,2,3\n", "row 1 (line 2) has 3 fields"},
                                                        {"a,b\nNA,\n,nan\n", "every cell is missing"}};
  for (const auto& [table, message] : tables) {
    SCOPED_TRACE(message);
    ExpectFailure(RunKalmia({"describe", folder.Write("t.csv", table)}), 1, message);
  }
}

TEST(Failure, NamesTheColumnThatWasProbablyMeant) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "octane,x\n1,2\n3,4\n");
  ExpectFailure(RunKalmia({"pls", table, "--y", "Octane"}), 1,
                "t.csv: there is no column 'Octane', did you mean 'octane'?");
  ExpectFailure(RunKalmia({"histogram", table, "--column", "octan"}), 1, "did you mean 'octane'?");
  ExpectFailure(RunKalmia({"pca", table, "--x", "octane..X"}), 1, "there is no column 'X', did you mean 'x'?");
  EXPECT_EQ(RunKalmia({"pls", table, "--y", "octaen"}).error,
            "kalmia: " + table + ": there is no column 'octaen', did you mean 'octane'?\n");
  EXPECT_EQ(RunKalmia({"pls", table, "--y", "ash"}).error, "kalmia: " + table + ": there is no column 'ash'\n");
}

TEST(Failure, TellsWhatCountsAsMissingWhereAWordIsRefused) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "x,y\n1,2\nn/a,3\n4,5\n?,7\n8,8\n");
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--na", "?"}), 1,
                "'n/a' is not a number; missing cells are empty or NA, NaN, nan or ? (--na WORD adds to these)");
  EXPECT_EQ(RunKalmia({"pls", table, "--y", "y", "--na", "?", "--na", "n/a", "--groups", "2"}).exitCode, 0);
}

TEST(Failure, NamesAFileThatCannotBeRead) {
  const ScratchFolder folder;
  const std::string gone = folder.Path("gone.csv");
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  ExpectFailure(RunKalmia({"pls", gone, "--y", "y"}), 3, "cannot read " + gone + ": No such file or directory");
  ExpectFailure(RunKalmia({"describe", gone}), 3, gone);
  ExpectFailure(RunKalmia({"info", gone}), 3, gone);
  ExpectFailure(RunKalmia({"predict", gone, table}), 3, gone);
  ExpectFailure(RunKalmia({"describe", folder.Path("")}), 3, "Is a directory");
}

struct BadLine {
  std::vector<std::string> words;
  const char* message;
};

const BadLine kBadLines[] = {
    {{}, "kalmia needs one of the commands pls, "},
    {{"fit", "t.csv"}, "there is no command 'fit'; kalmia takes one of the commands pls, "},
    {{""}, "there is no command ''"},
    {{"--frobnicate"}, "there is no option '--frobnicate'; kalmia takes one of the commands pls, "},
    {{"--json", "describe", "t.csv"}, "there is no option '--json'; kalmia takes one of the commands"},
    {{"pls", "--y", "y"},
     "pls needs a TABLE: CSV table with a header, also as .gz; - reads standard input; see kalmia pls --help"},
    {{"predict", "m"}, "predict needs a TABLE: CSV table with columns named as the model's"},
    {{"predict"}, "predict needs a MODEL: file that --save has written"},
    {{"describe", ""}, "TABLE needs the name of a file, not an empty text; see kalmia describe --help"},
    {{"predict", "-", "-"}, "only one of MODEL and TABLE can be -, standard input; see kalmia predict --help"},
    {{"o2pls", "-", "-"}, "only one of X and Y can be -, standard input; see kalmia o2pls --help"},
    {{"filter", "-", "--model", "-", "--out", "o"}, "only one of TABLE and --model can be -, standard input"},
    {{"preprocess", "--steps-file", "-", "-", "--out", "o"},
     "only one of TABLE and --steps-file can be -, standard input; see kalmia preprocess --help"},
    {{"pls", "-", "--steps-file", "-", "--y", "y"}, "only one of TABLE and --steps-file can be -, standard input"},
    {{"pca", "-", "--steps-file", "-"}, "only one of TABLE and --steps-file can be -, standard input"},
    {{"opls", "-", "--steps-file", "-", "--resume", "-", "--y", "y"},
     "only one of TABLE, --steps-file and --resume can be -, standard input"},
    {{"opls", "t.csv", "--steps-file", "-", "--resume", "-", "--y", "y"},
     "only one of --steps-file and --resume can be -, standard input"},
    {{"preprocess", "t.csv", "--out", "o"}, "preprocess needs --steps or --steps-file; see kalmia preprocess --help"},
    {{"pca"}, "pca needs a TABLE: CSV table with a header, also as .gz; - reads standard input; see kalmia pca --help"},
    {{"pca", "t.csv", "--y", "y"}, "pca has no option '--y'; it takes --id, --x, "},
    {{"pca", "t.csv", "--components", "none"}, "--components takes auto or a whole number from 0 on, not 'none'"},
    {{"pls", "t.csv"}, "pls needs --y NAME, or --classes NAME"},
    {{"pls", "t.csv", "--y"}, "--y needs a value, NAME, behind it; see kalmia pls --help"},
    {{"pls", "t.csv", "--y="}, "--y needs a value, NAME, behind the ="},
    {{"pls", "t.csv", "--y", "y", "--save", "--json"},
     "--save needs a value, FILE, not the option --json (if that is the value: --save=--json)"},
    {{"pls", "t.csv", "u.csv", "--y", "y"}, "pls takes 1 file, TABLE; 'u.csv' is one too many"},
    {{"predict", "m", "t.csv", "u.csv"}, "predict takes 2 files, MODEL and TABLE; 'u.csv' is one too many"},
    {{"pls", "t.csv", "--y", "y", "--frob", "3"},
     "pls has no option '--frob'; it takes --y, --classes, --priors, --id, "},
    {{"describe", "-j", "t.csv"},
     "describe has no option '-j'; it takes --json, --na, --skip-lines, --comment and --help"},
    {{"pls", "t.csv", "--y", "y", "--json=yes"}, "--json takes no value, not 'yes'"},
    {{"pls", "t.csv", "--y", "y", "--id", "a", "--id", "b"},
     "--id comes more than once, with 'a' and 'b'; it takes one NAME"},
    {{"pls", "t.csv", "--y", "y", "--x", "a..b", "--exclude", "c"},
     "--x 'a..b' and --exclude 'c' do not go together: give one of them"},
    {{"pls", "t.csv", "--y", "y", "--groups", "5", "--group-column", "c"},
     "--groups '5' and --group-column 'c' do not go together: give one of them"},
    {{"pls", "t.csv", "--y", "y", "--scale", "loud"}, "--scale takes one of uv, pareto, centre and none, not 'loud'"},
    {{"pls", "t.csv", "--y", "y", "--groups", "1"}, "--groups takes a whole number from 2 on, not '1'"},
    {{"pls", "t.csv", "--y", "y", "--groups", "99999999999999999999"},
     "--groups takes a whole number from 2 to 2147483647, not '99999999999999999999'"},
    {{"pls", "t.csv", "--y", "y", "--components", "-3"},
     "--components takes auto or a whole number from 0 on, not '-3'"},
    {{"pls", "t.csv", "--y", "y", "--validation", "loo"},
     "--validation takes one of refit, component and none, not 'loo'"},
    {{"pls", "t.csv", "--y", "y", "--validation", "component", "--select", "one-se"},
     "--select one-se chooses among refitted models"},
    {{"pls", "t.csv", "--y", "y", "--validation", "component", "--folds", "blocks"}, "--folds is for refits"},
    {{"pls", "t.csv", "--y", "y", "--validation", "none"},
     "--validation none cannot choose the number of components: give --components N with it"},
    {{"pls", "t.csv", "--y", "y", "--validation", "none", "--components", "auto"},
     "--validation none cannot choose the number of components"},
    {{"pls", "t.csv", "--y", "y", "--validation", "none", "--components", "2", "--groups", "5"},
     "--groups has nothing to do with --validation none"},
    {{"pls", "t.csv", "--y", "y", "--group-column", "g", "--folds", "blocks"},
     "--folds 'blocks' and --group-column 'g' do not go together"},
    {{"pls", "t.csv", "--y", "y", "--folds", "loo"},
     "--folds takes one of interleaved, blocks, random and leave-one-out, not 'loo' (did you mean 'leave-one-out'?)"},
    {{"pls", "t.csv", "--y", "y", "--scale", "center"},
     "--scale takes one of uv, pareto, centre and none, not 'center' (did you mean 'centre'?)"},
    {{"pls", "t.csv", "--y", "y", "--component", "3"},
     "pls has no option '--component' (did you mean '--components'?); it takes --y, "},
    {{"plsda", "t.csv"}, "there is no command 'plsda' (did you mean 'pls'?); kalmia takes one of the commands pls, "},
    {{"pls", "t.csv", "--y", "y", "--no-rows"}, "--no-rows says what a stored model holds: give --save too"},
    {{"filter", "t.csv", "--y", "y", "--components", "1", "--out", "o", "--keep-table"},
     "--keep-table says what a stored filter holds: give --save too"},
    {{"pls", "t.csv", "--y", "y", "--repeats", "5"}, "--repeats is for --folds random"},
    {{"pls", "t.csv", "--y", "y", "--folds", "blocks", "--repeats", "5"}, "--repeats is for --folds random"},
    {{"pls", "t.csv", "--y", "y", "--folds", "random", "--repeats", "0"}, "--repeats takes a whole number from 1 on"},
    {{"pls", "t.csv", "--y", "y", "--folds", "leave-one-out", "--groups", "5"},
     "--groups has nothing to do with --folds leave-one-out"},
    {{"pls", "t.csv", "--y", "y", "--select", "min", "--components", "3"},
     "--select has nothing to choose where --components gives the number of components"},
    {{"pls", "t.csv", "--y", "y", "--select", "best"},
     "--select takes one of one-se, randomisation, min and q2, not 'best'"},
    {{"pls", "t.csv", "--y", "y", "--validation", "component", "--permutations", "9"},
     "--permutations refits models and goes with --validation refit alone"},
    {{"pls", "t.csv", "--y", "y", "--validation", "component", "--nested"},
     "--nested goes with --validation refit alone"},
    {{"pls", "t.csv", "--y", "y", "--components", "2", "--nested"},
     "--nested validates a choice, and --components leaves none"},
    {{"pls", "t.csv", "--y", "y", "--permutations", "2000000"}, "--permutations takes at most 1000000"},
    {{"pls", "t.csv", "--y", "y", "--alpha", "0.01"}, "--alpha is for --select randomisation"},
    {{"pls", "t.csv", "--y", "y", "--select", "randomisation", "--alpha", "1"},
     "--alpha takes a number above 0 and below 1, not '1'"}};

TEST(Failure, SaysInOneLineWhatIsWrongWithTheCommandLineAndWhatWouldBeRight) {
  for (const BadLine& line : kBadLines) {
    SCOPED_TRACE(::testing::PrintToString(line.words));
    ExpectFailure(RunKalmia(line.words), 2, line.message);
  }
}

TEST(Failure, PointsToTheHelpOfTheCommandThatWasCalled) {
  ExpectFailure(RunKalmia({"pls", "t.csv", "--y", "y", "--frobnicate"}), 2, "; see kalmia pls --help");
  ExpectFailure(RunKalmia({"predict", "m"}), 2, "; see kalmia predict --help");
  ExpectFailure(RunKalmia(std::vector<std::string>{}), 2, "; see kalmia --help");
}

TEST(Failure, IsExitCode2ForNonsenseInPlaceOfANumber) {
  for (const char* option : {"--components", "--groups"}) {
    for (const char* nonsense : {"abc", "-1", "-3", "2.5", "1e3", "", " 5", "5x", "99999999999999", "NaN", "Auto"}) {
      SCOPED_TRACE(std::string(option) + " " + nonsense);
      ExpectFailure(RunKalmia({"pls", "t.csv", "--y", "y", std::string(option) + "=" + nonsense}), 2, option);
    }
  }
}

TEST(Failure, IsExitCode2ForAnOptionWithNothingInIt) {
  for (const char* option : {"--y", "--id", "--x", "--exclude", "--scale", "--group-column", "--save", "--csv"}) {
    SCOPED_TRACE(option);
    std::vector<std::string> line = {"pls", "t.csv", option, ""};
    if (std::string(option) != "--y") line.insert(line.end(), {"--y", "y"});
    ExpectFailure(RunKalmia(line), 2, std::string(option) + " needs a value");
  }
  ExpectFailure(RunKalmia({"predict", "m", "t.csv", "--csv", ""}), 2, "--csv needs a value, DIR, not an empty text");
}

TEST(Failure, NeverStoresAModelOverItsTable) {
  const ScratchFolder folder;
  const std::string text = LinearTable(20, 4, 1);
  const std::string table = folder.Write("t.csv", text);
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--save", folder.Path("./t.csv")}), 2, "--save would overwrite");
  EXPECT_EQ(ReadWholeFile(table), text);
}

TEST(Failure, ADashIsNoOutput) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", "-"}), 2,
                "--save takes a file, not '-': standard output shows the results");
  ExpectFailure(RunKalmia({"opls", table, "--y", "y", "--id", "name", "--save-cv", "-"}), 2, "--save-cv takes a file");
  ExpectFailure(RunKalmia({"fill", table, "--out", "-"}), 2, "--out takes a file");
}

TEST(Failure, NeverWritesResultsOverATableOrAModel) {
  const ScratchFolder folder;
  const std::string text = LinearTable(20, 4, 1);
  for (const char* name : {"scores.csv", "y-weights.csv", "fit.csv"}) {
    const std::string table = folder.Write(name, text);
    ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--csv", folder.Path("")}), 2,
                  "--csv would overwrite the table " + table);
    EXPECT_EQ(ReadWholeFile(table), text);
  }
  const std::string model = folder.Path("predictions.csv");
  const std::string table = folder.Path("fit.csv");
  ASSERT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", model}).exitCode, 0);
  const std::string bytes = ReadWholeFile(model);
  ExpectFailure(RunKalmia({"predict", model, table, "--csv", folder.Path("")}), 2,
                "--csv would overwrite the model " + model);
  EXPECT_EQ(ReadWholeFile(model), bytes);
  const std::string other = folder.Path("m");
  std::filesystem::rename(model, other);
  std::filesystem::rename(table, model);
  ExpectFailure(RunKalmia({"predict", other, model, "--csv", folder.Path(".")}), 2, "--csv would overwrite the table");
  EXPECT_EQ(ReadWholeFile(model), text);
}

TEST(Failure, NeverStoresAModelUnderTheNameOfAnotherResult) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  for (const char* csvFolder : {".", "d"}) {
    ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--csv", folder.Path(csvFolder), "--save",
                             folder.Path(std::string("./") + csvFolder + "/vip.csv")}),
                  2, "--save and --csv would both write ");
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

struct UnwritablePlace {
  const char* what;
  std::string path;
  const char* message;
};

TEST(Failure, IsExitCode3WhereAFolderCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  const UnwritablePlace places[] = {{"below a file", table + "/below", "Not a directory"},
                                    {"below nothing", folder.Path("no/such/place"), "No such file or directory"},
                                    {"in the system's own folder", "/proc/kalmia", ""}};
  for (const UnwritablePlace& place : places) {
    for (const char* option : {"--save", "--csv"}) {
      SCOPED_TRACE(std::string(place.what) + " " + option);
      ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", option, place.path}), 3, place.message);
    }
  }
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", folder.Path("")}), 3, "Is a directory");
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--csv", table}), 3, "Not a directory");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

TEST(Failure, LeavesNothingOfTheOtherFilesWhereOneCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", folder.Path("m"), "--csv", table}), 3,
                "Not a directory");
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", "/dev/full", "--csv", folder.Path("d")}),
                3, "");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

TEST(Failure, IsExitCode3OnAFullDisk) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", "/dev/full"}), 3,
                "cannot write /dev/full: No space left on device");
  CommandRun run;
  run.outputFile = "/dev/full";
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"describe", table}, {"pls", table, "--y", "y", "--id", "name"}, {"--help"}, {"--version"}}) {
    run.arguments = arguments;
    ExpectFailure(RunKalmia(run), 3, "cannot write standard output: No space left on device");
  }
}

TEST(Failure, LeavesNothingHalfWrittenWhereSpaceEndsWithinAFile) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(200, 4, 1));
  const std::string old = folder.Write("m", "what was there before");
  CommandRun run;
  run.largestFile = 3000;  // the first files fit, later ones do not (an OpenMP runtime may want 1024 itself)
  run.outputFile = "/dev/null";
  run.arguments = {"pls", table, "--y", "y", "--id", "name", "--save", old};
  ExpectFailure(RunKalmia(run), 3, "File too large");
  EXPECT_EQ(ReadWholeFile(old), "what was there before");
  run.arguments = {"pls", table, "--y", "y", "--id", "name", "--csv", folder.Path("d")};
  ExpectFailure(RunKalmia(run), 3, "File too large");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"m", "t.csv"}));
}

TEST(FailureOfPredict, SaysWhatTheTableLacks) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  const std::string model = folder.Path("m");
  ASSERT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", model}).exitCode, 0);
  const std::pair<const char*, const char*> tables[] = {
      {"a,b\n1,2\n", "no column has the name of one of the model's X columns"},
      {"x1 x2\n1 2\n", "X columns; the table has one column only, 'x1 x2'"},
      {"x1,x2\nNA,\n,\n", "every cell of the model's X columns is missing"},
      {"x1,x2\n1,two\n", "row 1 (line 2), column 'x2': 'two' is not a number"},
      {"x1,x2\n1,inf\n", "'inf' is infinite"},
      {"x1,x2\n", "no data rows"},
      {"x1,x2,y\n1,2,3\n1,2,what\n", "row 2 (line 3), column 'y': 'what' is not a number"}};
  for (const auto& [text, message] : tables) {
    SCOPED_TRACE(message);
    ExpectFailure(RunKalmia({"predict", model, folder.Write("n.csv", text), "--csv", folder.Path("d")}), 1, message);
  }
  ExpectFailure(RunKalmia({"predict", model, table, "--id", "nobody"}), 1, "there is no column 'nobody'");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"m", "n.csv", "t.csv"}));
}

}  // namespace
