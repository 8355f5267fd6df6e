#include "kalmia/analysis/cluster/internal/ClusterRun.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/text/Failure.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/ScratchFolder.h"

namespace {

using namespace kalmia::analysis;

ClusterData DataOf(const NCDataMatrix<float>& cells) {
  ClusterData data;
  data.cells = cells;
  for (int r = 1; r <= cells.SizeRows(); ++r) data.rowNames.push_back(std::to_string(r));
  return data;
}

TEST(ClusterRun, StopsWhereTheBarWantsToStop) {
  for (const char* const method : {"ward", "single"}) {
    ClusterRecipe recipe;
    recipe.method = method;
    ProgressLog log;
    log.stopAt = 1;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    Notes notes;
    EXPECT_THROW(BuildTree("table.csv", DataOf(RandomMatrix<float>(8, 3, 0, 1)), recipe, bar.get(), &notes), Stopped)
        << method;
  }
}

// Half of a limit on memory of 1000 bytes is enough for a buffer: the distances go to the folder of this recipe alone.
TEST(ClusterRun, KeepsDistancesInTheFolderOfItsRecipeAndLeavesNoFileThere) {
  const ScratchFolder folder;
  ClusterRecipe recipe;
  recipe.method = "single";
  recipe.memory = 1000;
  recipe.temporaryFolder = folder.Path(".");
  recipe.temporaryFolderName = "the folder";
  Notes notes;
  BuildTree("table.csv", DataOf(RandomMatrix<float>(40, 3, 0, 1)), recipe, nullptr, &notes);
  ASSERT_EQ(notes.Lines().size(), 1U);
  EXPECT_EQ(notes.Lines().front(), "the 780 distances of 40 rows found no room in memory and were kept in temporary "
                                   "files in the folder");
  EXPECT_EQ(folder.Names(), std::vector<std::string>());
}

TEST(ClusterRun, NamesAFolderInWhichNoFileCanBeMade) {
  ClusterRecipe recipe;
  recipe.method = "single";
  recipe.memory = 1000;
  recipe.temporaryFolder = "/no/such/folder";
  Notes notes;
  try {
    BuildTree("table.csv", DataOf(RandomMatrix<float>(40, 3, 0, 1)), recipe, nullptr, &notes);
    ADD_FAILURE() << "no failure";
  } catch (const BadFile& failure) {
    EXPECT_STREQ(failure.what(), "cannot make temporary files in /no/such/folder: No such file or directory");
  }
}

}  // namespace
