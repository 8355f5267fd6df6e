// Files of --save-limits as the program wrote them before they said where their standard deviation comes from: limits
// of 2 4 6 8 3 5 7 5 1 9 4 18, with mean 6 and standard deviation 4.45176.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ChartTables.h"
#include "CommandRun.h"
#include "TestTables.h"

namespace {

using ::testing::HasSubstr;

struct OldLimitsFile {
  const char* name;  ///< the type, and what else sets it apart
  const char* limits;  ///< a line of the table that is printed
  nlohmann::json sigmaFrom;
};

const OldLimitsFile kOldFiles[] = {
    {"individual", "value     -7.35528  6.00000      19.3553", "values"},  // 6 +- 3 x 4.45176
    {"individual-given", "value     -6.00000  6.00000      18.0000", "given"},  // 6 +- 3 x 4
    {"individual-of-4-given", "mean     -6.00000  6.00000      18.0000", "given"},
    {"ewma", "EWMA      1.54824  6.00000      10.4518", "values"},  // 6 +- 3 x 4.45176 sqrt(0.2 / 1.8)
    {"ewma-of-4-given", "EWMA      2.31480  6.00000      9.68520", "given"},  // c4 = 0.9213 of 4: 6 +- 3.6852
    {"cusum", "CuSum     -20.0329  0.00000      20.0329", "values"},  // 4.5 x 4.45176
    {"cusum-of-4", "CuSum     -6.75000  0.00000      6.75000", nullptr},  // means 5 5 8: 4.5 x sqrt(9 / 4)
    {"cusum-of-4-given", "CuSum     -16.5834  0.00000      16.5834", "given"},  // 4.5 x 3.6852
    {"mean-range-of-4", "mean     -0.561000  6.00000      12.5610", nullptr}};  // A2 = 0.729, mean range 9

TEST(OldLimitsFiles, MeanWhatTheyMeantAndSayWhereTheirSpreadComesFromAsFarAsItShows) {
  for (const OldLimitsFile& old : kOldFiles) {
    SCOPED_TRACE(old.name);
    const std::string file = std::string(KALMIA_OLD_FILES_DIR) + "/limits/" + old.name + ".limits";
    const std::string type = nlohmann::json::parse(ReadWholeFile(file))["type"];
    std::vector<std::string> line = {"chart", "-", "--column", "x", "--type", type, "--limits-from", file};
    EXPECT_THAT(RunKalmia(line, kTwelve).output, HasSubstr(old.limits));
    line.emplace_back("--json");
    EXPECT_EQ(RunKalmia(line, kTwelve).Json()["sigmaFrom"], old.sigmaFrom);
  }
}

TEST(OldLimitsFiles, HaveATargetOfMinus99WhereTheySayNone) {
  const ScratchFolder folder;
  nlohmann::json json =
      nlohmann::json::parse(ReadWholeFile(std::string(KALMIA_OLD_FILES_DIR) + "/limits/individual-given.limits"));
  json["limits"]["target"] = nullptr;
  json["limits"]["meanLower"] = -102;
  json["limits"]["meanUpper"] = -96;
  json["limits"]["sdProcess"] = 1;
  const std::string file = folder.Write("limits", json.dump());
  const CommandResult run = RunKalmia(
      {"chart", "-", "--column", "x", "--type", "individual", "--limits-from", file}, "x\n-98\n-97\n-95\n");
  EXPECT_THAT(run.output, HasSubstr("value     -102.000  -99.0000     -96.0000"));
  EXPECT_THAT(run.output, HasSubstr("1 signal\n"));
}

}  // namespace
