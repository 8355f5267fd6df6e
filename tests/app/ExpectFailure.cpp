#include "ExpectFailure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

void ExpectFailure(const CommandResult& result, int exitCode, const std::string& message) {
  EXPECT_EQ(result.exitCode, exitCode);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.ErrorLines(), 1) << result.error;
  EXPECT_THAT(result.error, ::testing::StartsWith("kalmia: "));
  EXPECT_THAT(result.error, ::testing::HasSubstr(message));
}
