#include "testing/CallersBar.h"

#include <gtest/gtest.h>

#include <string>

#include "kalmia/support/NCError.h"
#include "testing/RecordingProgress.h"

void ExpectTheCallersBarInPlaceOfTheOwn(const std::vector<CalculationWithABar>& calculations) {
  for (const CalculationWithABar& calculation : calculations) {
    SCOPED_TRACE(calculation.what);
    ProgressLog given, own;
    const RecordOwnBars bars(&own);
    const auto with = calculation.run(RecordingBar(&given).get());
    EXPECT_GT(given.Count("SetRange"), 0);
    EXPECT_EQ(own.calls, std::vector<std::string>{});
    EXPECT_EQ(with, calculation.run(nullptr));
    EXPECT_GT(own.Count("open"), 0);
  }
}

void ExpectNCErrorsOnceTheCallersBarStops(const std::vector<CalculationWithABar>& calculations) {
  for (const CalculationWithABar& calculation : calculations) {
    ProgressLog log;
    log.stopAt = 1;
    EXPECT_THROW(calculation.run(RecordingBar(&log).get()), NCError) << calculation.what;
  }
}
