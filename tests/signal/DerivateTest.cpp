#include "kalmia/signal/Derivate.h"

#include <gtest/gtest.h>

#include "testing/RandomTables.h"

namespace {

using Signal = NCDataVector<float>;

TEST(Derivate, ReproducesAParabolaToTheEdges) {
  Signal y(20);
  for (int i = 1; i <= 20; ++i) y(i, static_cast<float>(0.5 * i * i - 3 * i + 2));
  Signal smooth, slope;
  const Derivate<float> filter(Derivate<float>::Quadratic, 7);
  filter.Smooth(y, smooth);
  filter.DoDerivate(y, slope, 1, 1.0F);
  for (int i = 1; i <= 20; ++i) {
    EXPECT_NEAR(smooth[i], y[i], 1e-4);
    EXPECT_NEAR(slope[i], i - 3.0, 1e-4);
  }
}

}  // namespace
