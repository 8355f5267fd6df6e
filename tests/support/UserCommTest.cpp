#include "kalmia/support/UserComm.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Recorder : public UserComm {
 public:
  int Ask(const char* question, const char* message, const char* caption, int buttons) override {
    last = std::string(caption) + "|" + message + "|" + question + "|" + std::to_string(buttons);
    return 5;
  }
  void Show(const char* text, const char* caption, int helpContext) override {
    last = std::string(caption) + "|" + text + "|" + std::to_string(helpContext);
  }
  std::string last;
};

TEST(UserComm, PrintsToStandardErrorAndGoesOnByDefault) {
  ::testing::internal::CaptureStderr();
  EXPECT_NE(UserComm::GetUserComm()->Ask("Do you wish to continue?", "No room.", "Cluster Analysis", 5), 5);
  UserComm::GetUserComm()->Show("A text", "A caption", 1);
  const std::string printed = ::testing::internal::GetCapturedStderr();
  for (const char* part : {"Do you wish to continue?", "No room.", "Cluster Analysis", "A text", "A caption"})
    EXPECT_NE(printed.find(part), std::string::npos) << part;
}

TEST(UserComm, IsTheApplicationsOnceSet) {
  Recorder recorder;
  UserComm* const byDefault = UserComm::GetUserComm();
  UserComm::SetUserComm(&recorder);
  EXPECT_EQ(UserComm::GetUserComm()->Ask("q", "m", "c", 5), 5);
  EXPECT_EQ(recorder.last, "c|m|q|5");
  UserComm::GetUserComm()->Show("t", "c", 854226);
  EXPECT_EQ(recorder.last, "c|t|854226");
  UserComm::SetUserComm(nullptr);
  EXPECT_EQ(UserComm::GetUserComm(), byDefault);
}

}  // namespace
