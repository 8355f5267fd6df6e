// Models stored by earlier versions of the command: they answer as models of today do. Each was fitted to oliveoil.csv.

#include <gtest/gtest.h>

#include "CommandRun.h"
#include "Words.h"

namespace {

using nlohmann::json;

std::string OldFile(const std::string& name) { return std::string(KALMIA_OLD_FILES_DIR) + "/" + name + ".kalmia"; }

std::string Oils() { return ExampleTable("oliveoil.csv"); }

json JsonOf(const Words& arguments) {
  const CommandResult run = RunKalmia(arguments);
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return run.Json();
}

/// The fit that the files of version 2 came from, of one kind of model, but for where it is saved.
struct KindOfModel {
  const char* name;
  Words fit;
  Words more;  ///< words of `predict`
};

std::vector<KindOfModel> PredictingKinds() {
  const Words pls = {"pls", Oils(), "--y", "yellow,green", "--id", "sample", "--components", "2",
                     "--validation", "component"};
  const Words pca = {"pca", Oils(), "--id", "sample", "--components", "2", "--validation", "component"};
  const Words opls = {"opls", Oils(), "--y",          "yellow,green", "--id",         "sample",
                      "--x",  "Acidity..DK", "--predictive", "1",     "--orthogonal", "1",
                      "--validation", "component"};
  const Words o2pls = {"o2pls",          Oils(),    Oils(), "--id",       "sample", "--x",        "Acidity..DK", "--y",
                       "yellow..syrup", "--joint", "1",    "--x-unique", "1",      "--y-unique", "0",
                       "--validation",  "component"};
  return {{"pls", pls, {}},     {"pca", pca, {}},     {"opls", opls, {}},
          {"o2pls", o2pls, {}}, {"o2pls", o2pls, {"--from", "y"}}};
}

/// What `predict` says of the oils, but for names of files.
json AnswersOf(const std::string& model, const Words& more = {}) {
  json rows = JsonOf(Words{"predict", model, Oils(), "--json"} + more)["rows"];
  for (json& row : rows) {  // what old files do not hold the terms of
    for (const char* ofToday : {"t2", "lower", "upper", "flags", "extrapolation"}) row.erase(ofToday);
  }
  return rows;
}

/// What `info` says of both files is the same, but for names and versions of files.
void ExpectSameInfo(const std::string& old, const std::string& fresh, int version) {
  json info = JsonOf({"info", old, "--json"}), today = JsonOf({"info", fresh, "--json"});
  EXPECT_EQ(info["modelFileVersion"], version);
  EXPECT_EQ(today["modelFileVersion"], 5);
  EXPECT_EQ(info["limits"], nullptr);
  for (const json& interval : info["intervals"]) EXPECT_EQ(interval["s"], nullptr);
  EXPECT_EQ(info["preprocessing"], json::array());
  for (json* each : {&info, &today})
    for (const char* ofTheFile : {"model", "modelFileVersion", "writtenBy", "table", "yTable", "parts", "digest", "limits",
                                  "intervals"}) {
      each->erase(ofTheFile);
    }
  EXPECT_EQ(info, today);
}

TEST(OldModelFile, OfVersion1IsReadAsThePLSModelThatItIs) {
  const ScratchFolder folder;
  const std::string fresh = folder.Path("m");
  JsonOf(PredictingKinds().front().fit + Words{"--save", fresh, "--json"});
  EXPECT_EQ(AnswersOf(OldFile("pls-version-1")), AnswersOf(fresh));
  ExpectSameInfo(OldFile("pls-version-1"), fresh, 1);
}

TEST(OldModelFile, OfVersion2IsReadAsAModelWithoutPreprocessing) {
  const ScratchFolder folder;
  for (const KindOfModel& kind : PredictingKinds()) {
    SCOPED_TRACE(kind.name);
    const std::string old = OldFile(std::string(kind.name) + "-version-2"), fresh = folder.Path(kind.name);
    JsonOf(kind.fit + Words{"--save", fresh, "--json"});
    EXPECT_EQ(AnswersOf(old, kind.more), AnswersOf(fresh, kind.more));
    ExpectSameInfo(old, fresh, 2);
  }
}

/// What `predict` says of a file of this version, whose model predicts so many Y columns. O2PLS and PCA never have
/// intervals, and miss none.
void ExpectNoLimitsAndNoIntervals(const std::string& file, const std::string& table, std::size_t yColumns, int version,
                                  bool couldHaveIntervals) {
  SCOPED_TRACE(file);
  const CommandResult run = RunKalmia({"predict", file, table, "--json"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.error, "note: the model has no limits for rows" +
                           std::string(couldHaveIntervals ? " and no prediction intervals" : "") +
                           ": its file has version " + std::to_string(version) +
                           ", which does not hold what they take\n");
  const json answer = run.Json();
  EXPECT_EQ(answer["limits"], nullptr);
  ASSERT_GT(answer["rows"].size(), 0U);
  for (const json& row : answer["rows"]) {
    EXPECT_EQ(row.value("lower", json::array()), json(std::vector<json>(yColumns, nullptr)));
    EXPECT_EQ(row["t2"], nullptr);
    EXPECT_EQ(row["flags"], json::array());
    EXPECT_TRUE(row["distance"].is_number());
  }
}

TEST(OldModelFile, BeforeVersion5HasNoLimitsAndNoIntervalsAndSaysSo) {
  for (int version = 1; version <= 3; ++version) {
    ExpectNoLimitsAndNoIntervals(OldFile("pls-version-" + std::to_string(version)), Oils(), 2, version, true);
  }
  ExpectNoLimitsAndNoIntervals(OldFile("opls-version-2"), Oils(), 2, 2, true);
  ExpectNoLimitsAndNoIntervals(OldFile("o2pls-version-2"), Oils(), 6, 2, false);
  ExpectNoLimitsAndNoIntervals(OldFile("pca-version-2"), Oils(), 0, 2, false);
  // Fitted to small tables of such columns.
  const ScratchFolder folder;
  const std::string table =
      folder.Write("t.csv", "x1,x2,x3,x4,y2,a,b,c\n1,2,3,4,5,1,1000002,3\n2,1,4,3,7,2,1000003,1\n");
  const auto small = [](const char* name) {
    return std::string(KALMIA_OLD_FILES_DIR "/../../analysis/data/models/") + name;
  };
  ExpectNoLimitsAndNoIntervals(small("shifted-version-4"), table, 1, 4, true);
  ExpectNoLimitsAndNoIntervals(small("opls-version-3"), table, 2, 3, true);
  ExpectNoLimitsAndNoIntervals(small("o2pls-version-3"), table, 2, 3, false);
  ExpectNoLimitsAndNoIntervals(small("pca-version-3"), table, 0, 3, false);
}

TEST(OldModelFile, OfVersion2FiltersAsAFilterOfToday) {
  const ScratchFolder folder;
  const std::string fresh = folder.Path("m"), oldFilter = OldFile("filter-version-2");
  JsonOf({"filter", Oils(), "--y", "yellow,green", "--id", "sample", "--x", "Acidity..DK", "--components", "1",
          "--save", fresh, "--out", folder.Path("fresh.csv"), "--json"});
  JsonOf({"filter", Oils(), "--model", oldFilter, "--out", folder.Path("old.csv"), "--json"});
  const std::string filtered = ReadWholeFile(folder.Path("old.csv"));
  EXPECT_EQ(filtered, ReadWholeFile(folder.Path("fresh.csv")));
  EXPECT_NE(filtered, ReadWholeFile(Oils()));
  ExpectSameInfo(oldFilter, fresh, 2);
}

}  // namespace
