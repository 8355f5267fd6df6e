// `kalmia preprocess`: what it writes and stores; models of preprocessed X, and predictions with them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;

Words operator+(Words first, const Words& more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

CommandResult RunWell(const Words& arguments, const std::string& input = "") {
  CommandResult result = RunKalmia(arguments, input);
  EXPECT_EQ(result.exitCode, 0) << result.error;
  return result;
}

/// The table x1 to x12 and y of 20 rows in t.csv.
class Preprocess : public ::testing::Test {
 protected:
  Words On(const std::string& table) const { return {"preprocess", table, "--out", out_}; }
  Words Learn(const std::string& steps) const {
    return On(table_) + Words{"--steps", steps, "--id", "name", "--exclude", "y"};
  }
  std::string Out() const { return ReadWholeFile(out_); }

  ScratchFolder folder_;
  std::string text_ = LinearTable(20, 12, 6);
  std::string table_ = folder_.Write("t.csv", text_);
  std::string out_ = folder_.Path("out.csv");
  std::string saved_ = folder_.Path("saved");
};

TEST_F(Preprocess, WritesTheColumnsThatStayThenWhatTheStepsMake) {
  const std::string table = folder_.Write("s.csv", "a,id,b,n\n1,x,10,12345678901\n2,\"y,z\",100,\n,w,1000,7.50\n");
  RunWell(On(table) + Words{"--steps", "linear:2:1", "--id", "id", "--exclude", "n"});
  EXPECT_EQ(Out(), "id,n,a,b\nx,12345678901,3,21\n\"y,z\",,5,201\nw,7.50,,2001\n");
  RunWell(On(table) + Words{"--steps", "log", "--x", "b"});
  EXPECT_EQ(Out(), "a,id,n,b\n1,x,12345678901,1\n2,\"y,z\",,2\n,w,7.50,3\n");
}

TEST_F(Preprocess, WritesDecimalPointsWhateverTheTableHas) {
  const std::string table = folder_.Write("de.csv", "id;a;b\nr1;1,5;0,25\nr2;2,5;NA\n");
  RunWell(On(table) + Words{"--steps", "linear:2", "--x", "a"});
  EXPECT_EQ(Out(), "id,b,a\nr1,0.25,3\nr2,,5\n");
}

TEST_F(Preprocess, WritesNaForAMissingCellWhereThereIsOnlyOneColumn) {
  const std::string table = folder_.Write("s.csv", "a,b\n1,3\nNA,NA\n2,5\n");
  RunWell(On(table) + Words{"--steps", "wavelet-compress:1:daubechies:4"});
  EXPECT_EQ(CsvAt(out_).Rows(), 3);
  EXPECT_THAT(Out(), HasSubstr("\nNA\n"));
}

TEST_F(Preprocess, TellsWhatItDid) {
  const CommandResult run = RunWell(Learn("derivative:1:5, wavelet-compress:4") + Words{"--save", saved_});
  EXPECT_EQ(run.output,
            "Preprocessed 20 rows of " + table_ + ", 12 columns, into " + out_ +
                ", 4 columns\n  1  derivative:1:5:2, channels 1 apart\n  2  wavelet-compress:4:symmlet:8\n\n"
                "Saved the steps as " +
                saved_ + "\n");
  EXPECT_EQ(run.error, "");
  const json told = RunWell(Learn("derivative:1:5, wavelet-compress:4") + Words{"--json"}).Json();
  EXPECT_EQ(told["steps"][0], (json{{"step", "derivative:1:5:2"}, {"spacing", 1.0}}));
  EXPECT_EQ(told["steps"][1]["positions"].size(), 4U);
  EXPECT_EQ(told["outColumns"][0], "wavelet_" + std::to_string(told["steps"][1]["positions"][0].get<int>()));
  EXPECT_EQ(told["saved"], nullptr);
}

TEST_F(Preprocess, TakesStepsFromAFileAsFromTheCommandLine) {
  RunWell(Learn("snv,derivative:1:5:2"));
  const std::string expected = Out();
  const std::string steps = folder_.Write("steps.txt", "# signals of one size\nsnv\n\nderivative:1:5:2   # slopes\n");
  RunWell(On(table_) + Words{"--steps-file", steps, "--id", "name", "--exclude", "y"});
  EXPECT_EQ(Out(), expected);
  RunWell(On(table_) + Words{"--steps-file", "-", "--id", "name", "--exclude", "y"}, "snv,derivative:1:5:2");
  EXPECT_EQ(Out(), expected);
}

TEST_F(Preprocess, AppliesSavedStepsToLaterTablesToTheSameBits) {
  RunWell(Learn("detrend,derivative:1:5,wavelet-compress:5:daubechies:6") + Words{"--save", saved_});
  const std::string learnt = Out();
  RunWell(On(table_) + Words{"--steps-file", saved_});
  EXPECT_EQ(Out(), learnt);
  RunWell(On(folder_.Write("turned.csv", WithRowsReversed(text_))) + Words{"--steps-file", saved_});
  EXPECT_EQ(Out(), WithRowsReversed(learnt));
  const std::size_t secondLine = text_.find('\n') + 1, thirdLine = text_.find('\n', secondLine) + 1;
  RunWell(On(folder_.Write("one.csv", text_.substr(0, thirdLine))) + Words{"--steps-file", saved_});
  EXPECT_EQ(Out(), learnt.substr(0, Out().size()));
  EXPECT_EQ(std::count(learnt.begin(), learnt.begin() + static_cast<std::ptrdiff_t>(Out().size()), '\n'), 2);
}

TEST_F(Preprocess, ShowsSavedSteps) {
  RunWell(Learn("snv,derivative:1:5,wavelet-compress:3") + Words{"--save", saved_});
  const std::string info = RunWell({"info", saved_}).output;
  for (const char* part : {"Steps file", "of 12 columns", "snv", "derivative:1:5:2, channels 1 apart",
                           "wavelet-compress:3:symmlet:8", "x1, x2, x3", "3 columns", "wavelet_"}) {
    EXPECT_THAT(info, HasSubstr(part));
  }
}

TEST_F(Preprocess, RestoresSignalsFromTheCoefficientsThatItKept) {
  RunWell(Learn("linear:2,wavelet-compress:16") + Words{"--save", saved_});
  const std::string kept = folder_.Path("kept.csv");
  folder_.Write("kept.csv", Out());
  const CommandResult run = RunWell(On(kept) + Words{"--steps-file", saved_, "--restore"});
  EXPECT_EQ(run.output, "Restored 20 rows of " + kept + ", 16 columns, into " + out_ +
                            ", 12 columns\n  2  wavelet-compress:16:symmlet:8\n");
  const auto before = CsvAt(table_), after = CsvAt(out_);
  EXPECT_EQ(after.ColumnNames(),
            (Words{"name", "y", "x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8", "x9", "x10", "x11", "x12"}));
  for (const char* column : {"x1", "x7", "x12"}) {
    const auto x = NumbersOf(before, column), back = NumbersOf(after, column);
    // All coefficients are kept: four levels of floats up to 400 there and back.
    for (std::size_t r = 0; r < x.size(); ++r) EXPECT_NEAR(back[r], 2 * x[r], 1e-3) << column << ' ' << r;
  }
}

TEST_F(Preprocess, LeavesEveryFileAsItWasWhereItFails) {
  const std::string bad = folder_.Write("bad.csv", "n,a,b\nu,1,2\nv,3,-1\n");
  folder_.Write("out.csv", "before");
  ExpectFailure(RunKalmia(On(bad) + Words{"--steps", "snv,linear,log", "--id", "n", "--save", saved_}), 1,
                "bad.csv: step 3, log:1:0: row 1 (line 2), 'u', column 'a' is -0.70710677, of which the step makes no "
                "number");
  ExpectFailure(RunKalmia(On(bad) + Words{"--steps", "log", "--id", "n", "--save", saved_}), 1,
                "bad.csv: step 1, log:1:0: row 2 (line 3), 'v', column 'b' is -1, of which the step makes no number");
  ExpectFailure(RunKalmia(On(table_) + Words{"--steps", "snv", "--save", folder_.Path("no/such/folder")}), 3, "");
  EXPECT_EQ(Out(), "before");
  EXPECT_EQ(folder_.Names(), (Words{"bad.csv", "out.csv", "t.csv"}));
}

TEST_F(Preprocess, FindsTheRowOfAMessageWhereNamesRepeatOrAreEmpty) {
  const std::string replicates = folder_.Write("r.csv", "n,a,b,y\nu,1,2,1\nu,3,-1,2\n\n\"\",5,5,3\n");
  const std::string log = folder_.Write("log", "log"), snv = folder_.Write("snv", "linear,snv");
  ExpectFailure(RunKalmia(On(replicates) + Words{"--steps", "log", "--id", "n"}), 1,
                "r.csv: step 1, log:1:0: row 2 (line 3), 'u', column 'b' is -1,");
  ExpectFailure(RunKalmia({"pls", replicates, "--y", "y", "--id", "n", "--steps-file", log}), 1,
                "r.csv: step 1, log:1:0: row 2 (line 3), 'u', column 'b' is -1,");
  ExpectFailure(RunKalmia({"pca", replicates, "--x", "a..b", "--id", "n", "--steps-file", snv}), 1,
                "r.csv: step 2, snv: row 3 (line 5), '' has no variance");
  ExpectFailure(RunKalmia(On(replicates) + Words{"--steps", "snv", "--x", "a..b"}), 1,
                "r.csv: step 1, snv: row 3 (line 5) has no variance");
}

TEST_F(Preprocess, IsRefusedInOneLine) {
  RunWell(Learn("snv") + Words{"--save", saved_});
  const std::string damaged = folder_.Write("damaged", ReadWholeFile(saved_).substr(0, 60));
  const std::string steps = folder_.Write("steps", "snv\nsmooth:6\n");
  const std::string inf = folder_.Write("inf.csv", "a,b\n1,2\ninf,3\n");
  const std::string fewer = folder_.Write("fewer.csv", "name,x1,x2\nu,1,2\nv,3,4\n");
  const std::string twice = folder_.Write("twice.csv", "a,b,wavelet_1\n1,2,3\n4,6,6\n");
  const struct {
    Words arguments;
    int exitCode;
    std::string message;
  } rows[] = {
      {On(table_), 2, "needs --steps or --steps-file"},
      {On(table_) + Words{"--steps", "snv", "--steps-file", steps}, 2, "--steps"},
      {{"preprocess", table_, "--steps", "snv"}, 2, "--out"},
      {On(table_) + Words{"--steps", "snv,cube"}, 2, "--steps: step 2, 'cube': there is no such step"},
      {On(table_) + Words{"--steps-file", steps}, 2, "steps: step 2, 'smooth:6': its window is '6', not an odd number"},
      {On(table_) + Words{"--steps-file", damaged}, 3, "damaged is cut"},
      {On(table_) + Words{"--steps-file", folder_.Path("none")}, 3, "none"},
      {On(table_) + Words{"--steps-file", saved_, "--x", "x1"}, 2, "--x, --exclude and --save do not go with it"},
      {On(table_) + Words{"--steps-file", saved_, "--save", folder_.Path("copy")}, 2, "do not go with it"},
      {On(table_) + Words{"--steps-file", saved_, "--restore"}, 2, "--restore takes saved steps that end with"},
      {On(table_) + Words{"--steps-file", steps, "--restore"}, 2, "step 2"},
      {On(table_) + Words{"--steps", "snv", "--restore"}, 2, "--restore"},
      {On(table_) + Words{"--steps", "snv", "--x", "x1..x3", "--exclude", "y"}, 2, "--exclude"},
      {On(table_) + Words{"--steps", "snv", "--exclude", "z"}, 1, "there is no column 'z'"},
      {On(inf) + Words{"--steps", "linear"}, 1, "row 2"},
      {On(table_) + Words{"--steps-file", saved_, "--id", "x2"}, 1,
       "the steps of " + saved_ + " take column 'x2', which is to name the rows"},
      {On(fewer) + Words{"--steps-file", saved_}, 1, "there is no column 'x3'"},
      {On(fewer) + Words{"--steps", "snv", "--x", "name"}, 1, "there is no column of numbers to work on"},
      {On(twice) + Words{"--steps", "wavelet-compress:2", "--x", "a..b"}, 1,
       "column 'wavelet_1' would stand in the output twice"},
      {On(table_) + Words{"--steps", "smooth:15", "--id", "name"}, 1, "the window is wider than the signals"},
      {{"preprocess", table_, "--steps", "snv", "--out", table_}, 2, "--out would overwrite the table"},
      {{"preprocess", table_, "--steps-file", steps, "--out", steps}, 2, "--out would overwrite --steps-file"},
      {On(table_) + Words{"--steps", "snv", "--save", out_}, 2, "would both write"},
      {On(table_) + Words{"--steps-file", steps, "--save", steps}, 2, "--save would overwrite --steps-file"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    ExpectFailure(RunKalmia(row.arguments), row.exitCode, row.message);
  }
}

TEST_F(Preprocess, SaysOfAFileOfAnotherKindWhatItIs) {
  const std::string model = folder_.Path("m"), cv = folder_.Path("cv");
  RunWell({"opls", table_, "--y", "y", "--id", "name", "--save", model, "--save-cv", cv});
  RunWell(Learn("snv") + Words{"--save", saved_});
  ExpectFailure(RunKalmia(On(table_) + Words{"--steps-file", model}), 3,
                model + " is a model file, no chain of preprocessing steps");
  ExpectFailure(RunKalmia({"pca", table_, "--steps-file", cv}), 3,
                cv + " is a cross-validation file, no chain of preprocessing steps");
  ExpectFailure(RunKalmia({"predict", saved_, table_}), 3, saved_ + " is a steps file, no Kalmia model");
  ExpectFailure(RunKalmia({"predict", cv, table_}), 3, cv + " is a cross-validation file, no Kalmia model");
  ExpectFailure(RunKalmia({"opls", table_, "--y", "y", "--resume", model}), 3,
                model + " is a model file, no cross-validation of kalmia opls");
  ExpectFailure(RunKalmia({"info", folder_.Write("text", "snv")}), 3, "text is no Kalmia model");
}

/// Fits with --steps-file and predicts the training rows with the stored model.
class PreprocessedModel : public Preprocess {
 protected:
  CommandResult Fit(const Words& what, const std::string& steps) const {
    return RunWell(Words{what.front(), table_, "--id", "name", "--steps-file", folder_.Write("steps", steps), "--save",
                         model_, "--csv", folder_.Path("csv"), "--json"} +
                   Words(what.begin() + 1, what.end()));
  }
  json Predicted(const std::string& table) const {
    return RunWell({"predict", model_, table, "--json"}).Json()["rows"];
  }

  std::string model_ = folder_.Path("m");
};

TEST_F(PreprocessedModel, PredictsItsTrainingRowsFromTheRawTableToTheFittedBits) {
  for (const char* steps : {"log", "snv,derivative:1:5", "detrend:mean,wavelet-compress:6:daubechies:6"}) {
    SCOPED_TRACE(steps);
    Fit({"pls", "--y", "y", "--components", "2"}, steps);
    const auto fitted = NumbersOf(CsvAt(folder_.Path("csv/fit.csv")), "predicted y");
    RunWell({"predict", model_, table_, "--csv", folder_.Path("new")});
    const auto predicted = NumbersOf(CsvAt(folder_.Path("new/predictions.csv")), "predicted y");
    EXPECT_EQ(predicted, fitted);
    EXPECT_EQ(fitted.size(), 20U);
  }
}

TEST_F(PreprocessedModel, IsThatOfTheTableThatPreprocessWrites) {
  for (const Words& fit : std::vector<Words>{{"pls", "--y", "y", "--components", "2"},
                                             {"opls", "--y", "y", "--orthogonal", "1"},
                                             {"pca", "--exclude", "y", "--components", "2"}}) {
    SCOPED_TRACE(fit.front());
    const json inOne = Fit(fit, "snv,derivative:1:5").Json();
    const json predicted = Predicted(table_);
    RunWell(Learn("snv,derivative:1:5"));
    const std::string there = folder_.Path("there");
    const json inTwo =
        RunWell(Words{fit.front(), out_, "--id", "name", "--save", there, "--json"} + Words(fit.begin() + 1, fit.end()))
            .Json();
    EXPECT_EQ(inOne["components"], inTwo["components"]);
    EXPECT_EQ(predicted, RunWell({"predict", there, out_, "--json"}).Json()["rows"]);
    const json info = RunWell({"info", model_, "--json"}).Json();
    EXPECT_EQ(info["preprocessing"], (json{{{"step", "snv"}}, {{"step", "derivative:1:5:2"}, {"spacing", 1.0}}}));
    EXPECT_THAT(RunWell({"info", model_}).output, HasSubstr("derivative:1:5:2, channels 1 apart"));
  }
}

TEST_F(PreprocessedModel, TellsOfItsStepsAsItTellsOfItsColumns) {
  const std::string steps = folder_.Write("steps", "derivative:1:5, wavelet-compress:3");
  const std::string told = "made of 12 of " + table_ +
                           ", 20 rows\nPreprocessing of X:\n  1  derivative:1:5:2, channels 1 apart\n"
                           "  2  wavelet-compress:3:symmlet:8\nX ";
  for (const Words& fit : std::vector<Words>{{"pls", "--y", "y", "--components", "1"},
                                             {"opls", "--y", "y", "--orthogonal", "1"},
                                             {"pca", "--exclude", "y", "--components", "1"}}) {
    SCOPED_TRACE(fit.front());
    const Words words = fit + Words{table_, "--id", "name", "--save", model_};
    const Words withSteps = words + Words{"--steps-file", steps};
    const CommandResult run = RunWell(withSteps);
    EXPECT_THAT(run.output, HasSubstr(" 3 columns " + told));
    EXPECT_EQ(RunWell(withSteps + Words{"--json"}).Json()["preprocessing"],
              RunWell({"info", model_, "--json"}).Json()["preprocessing"]);
    EXPECT_THAT(RunWell(words).output, HasSubstr(" 12 columns of " + table_ + ", 20 rows\nX "));
    EXPECT_EQ(RunWell(words + Words{"--json"}).Json()["preprocessing"], json::array());
  }
}

TEST_F(PreprocessedModel, NotesWhatItsCrossValidationDoesNotLeaveOut) {
  const Words fit = {"pls", table_, "--y", "y", "--id", "name", "--steps-file"};
  const std::string note =
      "note: step 2, wavelet-compress:3:symmlet:8: chosen from all rows, those left out in cross-validation too";
  EXPECT_THAT(RunWell(fit + Words{folder_.Write("a", "snv,wavelet-compress:3")}).error, HasSubstr(note));
  EXPECT_EQ(RunWell(fit + Words{folder_.Write("b", "snv,wavelet-denoise")}).error, "");
  RunWell(Learn("snv,wavelet-compress:3") + Words{"--save", saved_});
  EXPECT_EQ(RunWell(fit + Words{saved_}).error, "");  // chosen from rows of whatever table it was
  for (const char* command : {"pls", "opls", "pca"}) {
    EXPECT_THAT(RunKalmia({command, "--help"}).output, HasSubstr("chooses it chooses from all rows"));
  }
}

TEST_F(PreprocessedModel, TakesSavedStepsAsTheyAre) {
  RunWell(Learn("snv,wavelet-compress:5:daubechies:4") + Words{"--save", saved_});
  const Words fit = {"pls", table_, "--y", "y", "--id", "name", "--components", "2", "--save", model_, "--json"};
  const json x = RunWell(fit + Words{"--steps-file", saved_}).Json();
  EXPECT_EQ(RunWell({"info", model_, "--json"}).Json()["preprocessing"],
            RunWell({"info", saved_, "--json"}).Json()["steps"]);
  const CommandResult part = RunKalmia(fit + Words{"--steps-file", saved_, "--exclude", "x4"});
  ExpectFailure(part, 1, "the steps of " + saved_ + " take column 'x4', which is not in X");
  std::string wider = text_;
  for (std::size_t at = wider.find(",y\n"); at != std::string::npos; at = std::string::npos)
    wider.replace(at, 3, ",y,z\n");
  for (std::size_t at = wider.find('\n', wider.find('\n') + 1), i = 0; at != std::string::npos; ++i) {
    wider.insert(at, "," + std::to_string(i * i));
    at = wider.find('\n', wider.find('\n', at) + 1);
  }
  Words onWider = fit + Words{"--steps-file", saved_};
  onWider[1] = folder_.Write("wider.csv", wider);
  const CommandResult run = RunWell(onWider);
  EXPECT_THAT(run.error, HasSubstr("left out of X, not among the columns of " + saved_ + ": z"));
  EXPECT_EQ(run.Json()["components"], x["components"]);
}

TEST_F(PreprocessedModel, TakesColumnsThatANewTableLacksAsMissing) {
  Fit({"pls", "--y", "y", "--components", "2"}, "detrend:mean");
  std::string without = text_;
  without.replace(without.find(",x5,"), 4, ",z5,");
  const CommandResult run = RunWell({"predict", model_, folder_.Write("new.csv", without), "--json"});
  EXPECT_THAT(run.error, HasSubstr("taken as missing cells, not in the table: x5"));
  EXPECT_EQ(run.Json()["missingColumns"], json({"x5"}));
  ExpectFailure(RunKalmia({"predict", model_, folder_.Write("none.csv", "u,v\n1,2\n3,4\n")}), 1,
                "no column has the name");
}

TEST_F(PreprocessedModel, RefusesNewRowsThatTheStepsCannotTake) {
  Fit({"pls", "--y", "y", "--components", "1"}, "log");
  std::string negative = text_;
  negative.replace(negative.find("\ns1,") + 4, 0, "-");
  ExpectFailure(RunKalmia({"predict", model_, folder_.Write("new.csv", negative)}), 1,
                "new.csv: step 1, log:1:0: row 1 (line 2), 's1', column 'x1' is -");
}

TEST_F(PreprocessedModel, LeavesOutRowsAndColumnsThatComeOutEmpty) {
  const std::string table = folder_.Write("h.csv", "a,b,c,y\n1,2,4,1\n,,,2\n3,7,5,3\n2,2,9,1\n8,1,2,6\n");
  const std::string steps = folder_.Write("steps", "snv");
  const CommandResult run =
      RunWell({"pls", table, "--y", "y", "--steps-file", steps, "--components", "1", "--groups", "3", "--json"});
  EXPECT_THAT(run.error, HasSubstr("left out, without any X cell: row 2"));
  const std::string flat = folder_.Write("flat", "linear:0:1");
  ExpectFailure(RunKalmia({"pls", table, "--y", "y", "--steps-file", flat}), 1, "every X column is constant");
}

}  // namespace
