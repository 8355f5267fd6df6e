#include "kalmia/signal/NCTransform.h"

#include <gtest/gtest.h>

#include "testing/RandomTables.h"

namespace {

TEST(NCTransform, PrintsALogarithm) {
  TransformStruct log;
  log.SetTransform(TransformE::TransformLog);
  log.SetConstant(1, 2);
  log.SetConstant(2, -3);
  EXPECT_STREQ(log.ToString(false), "10log(2*x - 3)");
}

}  // namespace
