// Models of preprocessed X, and predictions with them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "ExpectFailure.h"
#include "PreprocessFixture.h"

namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;

/// The columns of the table with these names, in their order; the cells of the one named `emptied` are missing.
std::string Picked(const kalmia::analysis::Table& table, const Words& names, const std::string& emptied = "") {
  std::string text;
  for (int row = -1; row < table.Rows(); ++row) {
    for (const std::string& name : names) {
      text += &name == &names.front() ? "" : ",";
      if (row < 0) text += name;
      if (row >= 0 && name != emptied) text += table.Cell(row, table.Find(name));
    }
    text += "\n";
  }
  return text;
}

/// Fits with --steps-file and predicts the training rows with the stored model.
class PreprocessedModel : public PreprocessFixture {
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
  const Words refit = {"pls", table_, "--y", "y", "--id", "name", "--steps-file"};
  const Words fit = Words{"pls", table_, "--validation", "component"} + Words(refit.begin() + 2, refit.end());
  const std::string note =
      "note: step 2, wavelet-compress:3:symmlet:8: chosen from all rows, those left out in cross-validation too";
  EXPECT_THAT(RunWell(fit + Words{folder_.Write("a", "snv,wavelet-compress:3")}).error, HasSubstr(note));
  EXPECT_EQ(RunWell(refit + Words{folder_.Path("a")}).error, "");  // chosen anew in each round
  EXPECT_THAT(RunWell(fit + Words{folder_.Write("b", "snv,wavelet-denoise")}).error, Not(HasSubstr("chosen from")));
  RunWell(Learn("snv,wavelet-compress:3") + Words{"--save", saved_});
  EXPECT_THAT(RunWell(fit + Words{saved_}).error, Not(HasSubstr("chosen from")));  // chosen from rows of whatever table it was
  for (const char* command : {"pls", "opls", "pca"}) {
    EXPECT_THAT(RunKalmia({command, "--help"}).output, HasSubstr("wavelet-compress chooses from all rows"));
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

TEST_F(PreprocessedModel, OfPCAAndOPLSTakesSavedStepsToo) {
  const std::string steps = "snv,wavelet-compress:5:daubechies:4";
  RunWell(Learn(steps) + Words{"--save", saved_});
  for (const Words& fit :
       std::vector<Words>{{"opls", "--y", "y", "--orthogonal", "1"}, {"pca", "--exclude", "y", "--components", "2"}}) {
    SCOPED_TRACE(fit.front());
    const json learnt = Fit(fit, steps).Json();
    json rows = Predicted(table_);
    const Words words = {table_, "--id", "name", "--steps-file", saved_, "--save", model_, "--json"};
    const json saved = RunWell(fit + words).Json();
    EXPECT_EQ(saved["components"], learnt["components"]);
    EXPECT_EQ(saved["preprocessing"], learnt["preprocessing"]);
    json again = Predicted(table_);
    ASSERT_EQ(again.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      // Rounds that learn their own steps are fitted one by one, others side by side: their errors, and so the
      // intervals, agree to single precision.
      for (const char* end : {"lower", "upper"}) {
        if (!rows[i].contains(end)) continue;
        EXPECT_NEAR(again[i][end][0], rows[i][end][0], 1e-5);
        again[i].erase(end);
        rows[i].erase(end);
      }
    }
    EXPECT_EQ(again, rows);
  }
}

TEST_F(PreprocessedModel, RefusesColumnsOfItsStepsThatHoldText) {
  RunWell(Learn("snv") + Words{"--save", saved_});
  std::string swapped = text_;
  swapped.replace(0, 7, "x1,name");
  ExpectFailure(RunKalmia({"pls", folder_.Write("swapped.csv", swapped), "--y", "y", "--steps-file", saved_}), 1,
                "the steps of " + saved_ + " take column 'x1', which holds text, not numbers");
}

TEST_F(PreprocessedModel, RefusesNewRowsOfOneCellForSnv) {
  Fit({"pls", "--y", "y", "--components", "1"}, "snv");
  ExpectFailure(RunKalmia({"predict", model_, folder_.Write("new.csv", "x1,x2,x3\n1,2,3\n,5,\n")}), 1,
                "new.csv: step 1, snv: row 2 (line 3) has no variance");
}

TEST_F(PreprocessedModel, NotesAnEmptyColumnThatBecomesAVariable) {
  const std::string table =
      folder_.Write("r.csv", "y,a,b,c,remarks\n1,2,3,5,\n2,3,5,4,\n3,3,4,8,\n4,7,5,6,\n5,6,8,8,\n");
  const std::string steps = folder_.Write("steps", "smooth:3");
  const Words fit = {"pls", table, "--y", "y", "--components", "1", "--groups", "3"};
  EXPECT_THAT(RunWell(fit + Words{"--steps-file", steps}).error,
              HasSubstr("no cell, but taken as a channel: remarks"));
  EXPECT_THAT(RunWell(fit).error, HasSubstr("left out of X, empty columns: remarks"));
  const CommandResult run = RunWell(On(table) + Words{"--steps", "smooth:3", "--exclude", "y"});
  EXPECT_THAT(run.error, HasSubstr("no cell, but taken as a channel: remarks"));
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

TEST_F(PreprocessedModel, MatchesNewColumnsByNameBeforeWindowsAndWavelets) {
  const auto table = CsvAt(table_);
  const Words names = table.ColumnNames();
  const Words turned(names.rbegin(), names.rend());
  Words fewer = names;
  fewer.erase(std::find(fewer.begin(), fewer.end(), "x5"));
  const std::string inTurn = folder_.Write("turned.csv", Picked(table, turned));
  const std::string lacking = folder_.Write("lacking.csv", Picked(table, fewer));
  const std::string emptied = folder_.Write("emptied.csv", Picked(table, names, "x5"));
  for (const char* steps :
       {"derivative:1:5", "smooth:5,snv", "wavelet-denoise", "wavelet-compress:6:biorthogonal2:4"}) {
    SCOPED_TRACE(steps);
    Fit({"pls", "--y", "y", "--components", "2"}, steps);
    EXPECT_EQ(Predicted(inTurn), Predicted(table_));
    EXPECT_EQ(Predicted(lacking), Predicted(emptied));
    EXPECT_NE(Predicted(lacking), Predicted(table_));
    for (const json& row : Predicted(lacking)) EXPECT_TRUE(row["predicted"][0].is_number()) << row;
  }
}

TEST_F(PreprocessedModel, RefusesNewRowsThatTheStepsCannotTake) {
  Fit({"pls", "--y", "y", "--components", "1"}, "snv");
  ExpectFailure(RunKalmia({"predict", model_, folder_.Write("new.csv", "name,x1,x3\na,1,2\nb,,3\n")}), 1,
                "new.csv: step 1, snv: row 2 (line 3), 'b' has no variance");
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

TEST_F(PreprocessedModel, TakesItsStepsFromTheCommandLineAsFromAFile) {
  const std::string steps = "snv,derivative:1:5";
  const Words file = {"--steps-file", folder_.Write("steps", steps)}, text = {"--steps", steps};
  for (const Words& what : {Words{"pls", table_, "--y", "y", "--components", "2"},
                            Words{"opls", table_, "--y", "y", "--orthogonal", "1"},
                            Words{"pca", table_, "--exclude", "y", "--components", "2"}}) {
    const Words common = what + Words{"--id", "name", "--json"};
    const json fitted = RunWell(common + text).Json();
    EXPECT_EQ(fitted, RunWell(common + file).Json()) << what.front();
    EXPECT_EQ(fitted["preprocessing"].size(), 2U);
    ExpectFailure(RunKalmia(common + text + file), 2, "do not go together");
    ExpectFailure(RunKalmia(common + Words{"--steps", "snv,cube"}), 2,
                  "--steps: step 2, 'cube': there is no such step");
  }
}

TEST_F(PreprocessedModel, IsNeverWrittenOverTheStepsFile) {
  const ScratchFolder csv;
  const std::string steps = csv.Write("scores.csv", "snv");
  const Words common = {table_, "--id", "name", "--steps-file", steps};
  const Words opls = Words{"opls", "--y", "y"} + common;
  for (const Words& fit : {Words{"pca"} + common, Words{"pls", "--y", "y"} + common, opls}) {
    ExpectFailure(RunKalmia(fit + Words{"--save", steps}), 2, "--save would overwrite the steps file " + steps);
    ExpectFailure(RunKalmia(fit + Words{"--csv", csv.Path("")}), 2, "--csv would overwrite the steps file " + steps);
  }
  ExpectFailure(RunKalmia(opls + Words{"--save-cv", steps}), 2, "--save-cv would overwrite the steps file " + steps);
  EXPECT_EQ(ReadWholeFile(steps), "snv");
  EXPECT_EQ(csv.Names(), Words{"scores.csv"});
}

}  // namespace
