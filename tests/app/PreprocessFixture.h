#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CommandRun.h"
#include "TestTables.h"
#include "Words.h"

/// `kalmia preprocess` with the table x1 to x12 and y of 20 rows in t.csv.
class PreprocessFixture : public ::testing::Test {
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
