// --report: the page of a model, without a browser.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using ::testing::HasSubstr;

/// A block of data of a page.
nlohmann::json DataOfPage(const std::string& page, const std::string& id) {
  const std::string tag = "id=\"" + id + "\">";
  const std::size_t begin = page.find(tag) + tag.size();
  return nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
}

TEST(ReportPage, HasTheFiguresAndTheWordsThatRepeatIt) {
  const ScratchFolder folder;
  const std::string table = folder.Write("it's.csv", LinearTable(30, 5, 1)), page = folder.Path("page.html");
  const nlohmann::json output =
      RunWell({"pls", table, "--y", "y", "--id", "name", "--json", "--figures", "--report", page}).Json();
  EXPECT_EQ(output["report"], page);
  const std::string text = ReadWholeFile(page);
  EXPECT_EQ(DataOfPage(text, "kalmia-figures"), output["figures"]);
  const nlohmann::json data = DataOfPage(text, "kalmia-report");
  EXPECT_EQ(data["title"], "PLS of y on it's.csv");
  EXPECT_THAT(data["command"].get<std::string>(), HasSubstr("it'\\''s.csv' --y y --id name"));
  EXPECT_EQ(data["columns"][0]["name"], "y");
  EXPECT_EQ(data["columns"][0]["values"].size(), 30U);
}

TEST(ReportPage, HasAllComponentsWithTheNumbersOfTheFiguresForTheirAxes) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", FadingTable(30, 8, 1)), page = folder.Path("page.html");
  const std::vector<std::string> fit = {"pca", table, "--components", "3", "--json", "--figures"};
  std::vector<std::string> words = fit;
  words.insert(words.end(), {"--report", page});
  RunWell(words);
  words = fit;
  words.insert(words.end(), {"--axes", "3,2"});
  const nlohmann::json other = RunWell(words).Json();
  const nlohmann::json data = DataOfPage(ReadWholeFile(page), "kalmia-report");
  const nlohmann::json& scores = data["components"][0];
  ASSERT_EQ(scores["list"].size(), 3U);
  for (const nlohmann::json& mark : other["figures"]["figures"][0]["marks"]) {
    if (mark["type"] != "points") continue;
    EXPECT_EQ(scores["list"][2]["values"], mark["x"]);
    EXPECT_EQ(scores["list"][1]["values"], mark["y"]);
  }
}

TEST(ReportPage, OfAModelOfWhichNothingIsKeptTellsWhatWasTried) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(60, 20, 1, 3)), page = folder.Path("page.html");
  RunWell({"pca", table, "--validation", "component", "--report", page});
  EXPECT_THAT(DataOfPage(ReadWholeFile(page), "kalmia-report")["text"].get<std::string>(),
              HasSubstr("No component is kept"));
}

TEST(ReportPage, IsRefusedBeforeAnyWorkWhereItCannotBeDrawnOrWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1)), model = folder.Path("m.model");
  const CommandResult nowhere = RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", model, "--report",
                                           folder.Path("none/page.html")});
  EXPECT_EQ(nowhere.exitCode, 3);
  EXPECT_FALSE(std::filesystem::exists(model));
  const CommandResult over = RunKalmia({"pls", table, "--y", "y", "--id", "name", "--report", table});
  EXPECT_EQ(over.exitCode, 2);
}

}  // namespace
