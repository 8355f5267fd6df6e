#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "cluster/PlainClustering.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/support/UserComm.h"

/// Writes down what the user is told and asked.
struct Dialogue : UserComm {
  int Ask(const char* question, const char* message, const char* caption, int buttons) override {
    questions.push_back(std::string(question) + "|" + message + "|" + caption + "|" + std::to_string(buttons));
    return answer;
  }
  void Show(const char* text, const char* caption, int helpContext) override {
    shown.push_back(std::string(text) + "|" + caption + "|" + std::to_string(helpContext));
  }
  int answer = 0;
  std::vector<std::string> questions, shown;
};

/// Each test has a directory of temporary files of its own, which has to be empty at the end.
class OnDisk : public ::testing::Test {
 protected:
  OnDisk() {
    // In memory where the machine has a place for that: hundreds of files are made and removed.
    std::string name = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
    name += "/kalmia-ondisk-XXXXXX";
    if (mkdtemp(name.data())) directory_ = name;
    if (const char* const before = getenv("TMPDIR")) before_ = before;
    setenv("TMPDIR", directory_.c_str(), 1);
    UserComm::SetUserComm(&dialogue_);
  }
  ~OnDisk() override {
    UserComm::SetUserComm(nullptr);
    DendroGram::SetMaximumPairsInMemory(0);
    before_.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", before_.c_str(), 1);
    EXPECT_EQ(Files(), 0) << "files left behind";
    std::filesystem::remove_all(directory_);
  }
  int Files() const {
    const std::filesystem::directory_iterator files(directory_);
    return static_cast<int>(std::distance(begin(files), end(files)));
  }
  static std::vector<PlainMerge> Merges(const NCDataMatrix<float>& table, std::uint64_t cap) {
    DendroGram::SetMaximumPairsInMemory(cap);
    DendroGram::SingleLinkageDistanceCalculator calculator;
    return MergesOf(calculator, table);
  }
  static CString ErrorOf(const std::function<void()>& work) {
    try {
      work();
    } catch (const NCError& error) {
      return error.GetMessage();
    }
    return "";
  }

  std::string directory_, before_;
  Dialogue dialogue_;
};
