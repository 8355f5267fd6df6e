#include "app/ClusterRun.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using namespace kalmia::app;

ClusterData DataOf(const NCDataMatrix<float>& cells) {
  ClusterData data;
  data.cells = cells;
  for (int r = 1; r <= cells.SizeRows(); ++r) data.rowNames.push_back(std::to_string(r));
  return data;
}

// No interrupt, no disk and no hole explains it: the library's own words are the best that can be said.
TEST(ClusterRun, PassesAnErrorOnForWhichItKnowsNoBetterWords) {
  for (const char* const method : {"ward", "single"}) {
    ClusterOptions options;
    options.method = method;
    ProgressLog log;
    log.stopAt = 1;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    Notes notes;
    try {
      BuildTree("table.csv", DataOf(RandomMatrix<float>(8, 3, 0, 1)), options, bar.get(), &notes);
      ADD_FAILURE() << "not stopped";
    } catch (const NCError& error) {
      EXPECT_EQ(error.GetMessage(), "Cluster analysis aborted.") << method;
    }
  }
}

}  // namespace
