// `kalmia preprocess`: what it writes and stores, and what it refuses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExpectFailure.h"
#include "PreprocessFixture.h"

namespace {

using nlohmann::json;
using ::testing::HasSubstr;

class Preprocess : public PreprocessFixture {};

TEST_F(Preprocess, WritesTheColumnsThatStayThenWhatTheStepsMake) {
  const std::string table = folder_.Write("s.csv", "a,id,b,n\n1,x,10,12345678901\n2,\"y,z\",100,\n,w,1000,7.50\n");
  RunWell(On(table) + Words{"--steps", "linear:2:1", "--id", "id", "--exclude", "n"});
  EXPECT_EQ(Out(), "id,n,a,b\nx,12345678901,3,21\n\"y,z\",,5,201\nw,7.50,,2001\n");
  RunWell(On(table) + Words{"--steps", "log", "--x", "b"});
  EXPECT_EQ(Out(), "a,id,n,b\n1,x,12345678901,1\n2,\"y,z\",,2\n,w,7.50,3\n");
}

TEST_F(Preprocess, WritesZeroWithoutASign) {
  RunWell(On(folder_.Write("s.csv", "a,b\n1,10\n")) + Words{"--steps", "neglog"});
  EXPECT_EQ(Out(), "a,b\n0,-1\n");
}

TEST_F(Preprocess, WritesDecimalPointsWhateverTheTableHas) {
  const std::string table = folder_.Write("de.csv", "id;a;b\nr1;1,5;0,25\nr2;2,5;NA\n");
  RunWell(On(table) + Words{"--steps", "linear:2", "--x", "a"});
  EXPECT_EQ(Out(), "id,b,a\nr1,0.25,3\nr2,,5\n");
}

TEST_F(Preprocess, ChangesTheDecimalCommasOfNumbersAlone) {
  const std::string table =
      folder_.Write("de.csv", "id;remark;b;a\n1,10;\"low, est\";0,25;1,5\nNA;3,5;NA;2,5\nx,1;;1,0e39;3\n");
  RunWell(On(table) + Words{"--steps", "linear:2", "--id", "id", "--x", "a"});
  EXPECT_EQ(Out(), "id,remark,b,a\n\"1,10\",\"low, est\",0.25,3\nNA,3.5,,5\n\"x,1\",,1.0e39,6\n");
}

TEST_F(Preprocess, NotesColumnsOfTextInARange) {
  const std::string table = folder_.Write("s.csv", "id,a,t,b,u\nr1,1,low,2,x\nr2,3,high,4,y\n");
  EXPECT_EQ(RunWell(On(table) + Words{"--steps", "linear:2", "--x", "a..b"}).error,
            "note: no channel, as it holds text: t\n");
  EXPECT_EQ(Out(), "id,t,u,a,b\nr1,low,x,2,4\nr2,high,y,6,8\n");
  EXPECT_EQ(RunWell(On(table) + Words{"--steps", "linear:2"}).error, "");
}

TEST_F(Preprocess, ReadsDecimalCommasInTheNamesOfChannelsOfATableThatHasThem) {
  const std::string table = folder_.Write("de.csv", "id;\"1,0\";\"1,5\";\"2,0\"\nr1;1,5;0,25;2\nr2;2,5;NA;1\n");
  const CommandResult run = RunWell(On(table) + Words{"--steps", "derivative:1:3"});
  EXPECT_THAT(run.output, HasSubstr("derivative:1:3:2, channels 0.5 apart"));
  EXPECT_EQ(run.error, "");
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
  RunWell(On(table_) + Words{"--steps-file", "-", "--id", "name", "--exclude", "y"},
          "\xEF\xBB\xBFsnv\r\nderivative:1:5:2");
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

TEST_F(Preprocess, RestoresMissingCoefficientsAsZerosAndNothingOfNone) {
  RunWell(Learn("wavelet-compress:3") + Words{"--save", saved_});
  const std::string header = Out().substr(0, Out().find('\n') + 1);  // name, y and three coefficients
  const auto restored = [&](const std::string& rows) {
    RunWell(On(folder_.Write("kept.csv", header + rows)) + Words{"--steps-file", saved_, "--restore"});
    return Out();
  };
  EXPECT_EQ(restored("s1,1,30,NA,2\n"), restored("s1,1,30,0,2\n"));
  EXPECT_NE(restored("s1,1,30,5,2\n"), restored("s1,1,30,0,2\n"));
  EXPECT_THAT(restored("s1,1,30,5,2\ns2,1,,,\n"), HasSubstr("\ns2,1,,,,,,,,,,,,\n"));
  const std::string two = header.substr(0, header.rfind(',')) + "\ns1,1,30,5\n";
  ExpectFailure(RunKalmia(On(folder_.Write("two.csv", two)) + Words{"--steps-file", saved_, "--restore"}), 1,
                "two.csv: there is no column 'wavelet_");
}

TEST_F(Preprocess, WritesToDevicesAndFailsWithThemAsAWhole) {
  RunWell({"preprocess", table_, "--steps", "snv", "--exclude", "y", "--out", "/dev/null", "--save", saved_});
  EXPECT_EQ(folder_.Names(), (Words{"saved", "t.csv"}));
  const Words other = {"preprocess", table_, "--steps", "detrend", "--exclude", "y"};
  const std::string before = ReadWholeFile(saved_);
  ExpectFailure(RunKalmia(other + Words{"--out", "/dev/full", "--save", saved_}), 3, "cannot write /dev/full");
  ExpectFailure(RunKalmia(other + Words{"--out", out_, "--save", "/dev/full"}), 3, "cannot write /dev/full");
  EXPECT_EQ(folder_.Names(), (Words{"saved", "t.csv"}));
  EXPECT_EQ(ReadWholeFile(saved_), before);
}

TEST_F(Preprocess, LeavesEveryFileAsItWasWhereItFails) {
  const std::string bad = folder_.Write("bad.csv", "n,a,b\nu,1,2\nv,3,-1\n");
  folder_.Write("out.csv", "before");
  ExpectFailure(RunKalmia(On(bad) + Words{"--steps", "snv,linear,log", "--id", "n", "--save", saved_}), 1,
                "bad.csv: step 3, log:1:0: row 1 (line 2), 'u', column 'a' is -0.7071067811865475, of which the step "
                "makes no number");
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
  const std::string compressed = folder_.Path("compressed"), kept = folder_.Path("kept.csv");
  RunWell({"preprocess", table_, "--steps", "wavelet-compress:16", "--id", "name", "--exclude", "y", "--out", kept,
           "--save", compressed});
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
      {On(table_) + Words{"--steps-file", saved_, "--x", "x1"}, 2,
       "holds saved steps and their columns, which cannot be chosen anew (--x); see kalmia preprocess --help"},
      {On(table_) + Words{"--steps-file", saved_, "--save", folder_.Path("copy")}, 2,
       "holds saved steps already: --save does not go with it"},
      {On(table_) + Words{"--steps-file", saved_, "--restore"}, 2,
       "signals are restored from saved steps that end with wavelet-compress, not"},
      {On(table_) + Words{"--steps-file", steps, "--restore"}, 2, "step 2"},
      {On(table_) + Words{"--steps", "snv", "--restore"}, 2, "--restore"},
      {On(table_) + Words{"--steps", "snv", "--x", "x1..x3", "--exclude", "y"}, 2, "--exclude"},
      {On(table_) + Words{"--steps", "snv", "--exclude", "z"}, 1, "there is no column 'z'"},
      {On(inf) + Words{"--steps", "linear"}, 1, "row 2"},
      {On(table_) + Words{"--steps-file", saved_, "--id", "x2"}, 1,
       "the steps of " + saved_ + " take column 'x2', which is to name the rows"},
      {On(kept) + Words{"--steps-file", compressed, "--restore", "--id", "wavelet_1"}, 1,
       "the steps of " + compressed + " take column 'wavelet_1', which is to name the rows"},
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

TEST_F(Preprocess, TakesTheFirstBytesOfAStepsFileForNoText) {
  RunWell(Learn("snv") + Words{"--save", saved_});
  const std::string bytes = ReadWholeFile(saved_);
  for (std::size_t length = 1; length < 8; ++length) {
    const std::string cut = folder_.Write("cut", bytes.substr(0, length));
    const std::string message = cut + " is not a steps file: it is cut after " + std::to_string(length) + " byte";
    ExpectFailure(RunKalmia(On(table_) + Words{"--steps-file", cut}), 3, message);
    ExpectFailure(RunKalmia({"pca", table_, "--steps-file", cut}), 3, message);
  }
  ExpectFailure(RunKalmia(On(table_) + Words{"--steps-file", folder_.Write("cut", bytes.substr(0, 8))}), 3,
                "is cut: it ends within its header");
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

}  // namespace
