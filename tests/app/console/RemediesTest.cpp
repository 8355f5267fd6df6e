#include "app/console/Remedies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandRun.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/containers/Missing.h"

namespace {

using namespace kalmia::analysis;
using namespace kalmia::app;

TextBuffer BufferOf(const std::string& text) {
  TextBuffer buffer;
  buffer.Reserve(text.size());
  text.copy(buffer.Free(), text.size());
  buffer.Grow(text.size());
  return buffer;
}

TEST(Remedies, StandBehindTheSentenceAsOptionsOfTheCommand) {
  EXPECT_EQ(MessageOf(BadData("nothing helps"), "pls"), "nothing helps");
  EXPECT_EQ(MessageOf(BadData("words are empty or NA", Remedy::NameMissingWords), "pls"),
            "words are empty or NA (--na WORD adds to these)");
  EXPECT_EQ(MessageOf(BadFile("it is full", Remedy::GiveMemory), "cluster"), "it is full; give more --memory");
}

TEST(Remedies, NameTheOptionOfASettingAndWhereARequestIsExplained) {
  EXPECT_EQ(MessageOf(BadData("so few rows", InSetting("lags")), "spectrum"), "so few rows (--lags)");
  EXPECT_EQ(MessageOf(BadRequest("for single values", InSetting("sigmaFrom")), "chart"),
            "for single values (--sigma-from); see kalmia chart --help");
}

TEST(Failure, SaysInWhichRowAndColumnWhichWordIsWrong) {
  const Table table(BufferOf("a,b\n1,2\n3,x\n"), "t.csv");
  try {
    ReadNumbers(table, 1);
    ADD_FAILURE() << "no failure";
  } catch (const BadData& failure) {
    EXPECT_EQ(failure.Place().row, 2);
    EXPECT_EQ(failure.Place().column, "b");
    EXPECT_EQ(failure.Place().word, "x");
    EXPECT_EQ(failure.WhatHelps(), Remedy::NameMissingWords);
  }
}

TEST(CommandMessages, NameTheOptionThatHelps) {
  const ScratchFolder folder;
  const CommandResult run = RunKalmia({"o2pls", folder.Write("x.csv", "a,b\n1,2\n3,1\n"),
                                       folder.Write("y.csv", "c,d\n1,2\n3,1\n2,2\n")});
  EXPECT_THAT(run.error, ::testing::EndsWith(": give --id to match rows by name\n"));
  const CommandResult lines = RunKalmia({"describe", folder.Write("l.csv", "Instrument X\nexported; 2024\nid,a,b\n")});
  EXPECT_THAT(lines.error, ::testing::EndsWith("the header has 1; if there are lines above the header, leave them out "
                                               "by --skip-lines or --comment\n"));
}

}  // namespace
