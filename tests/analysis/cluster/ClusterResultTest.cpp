#include "kalmia/analysis/cluster/ClusterResult.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace {

using namespace kalmia::analysis;

// Two pairs of rows a unit apart, ten units between them.
Table Pairs() { return Table("name,a,b\nr1,0,0\nr2,1,0\nr3,10,0\nr4,11,0\n", "t.csv"); }

ClusterRecipe RecipeOf(const std::string& method) {
  ClusterRecipe recipe;
  recipe.method = method;
  recipe.id = "name";
  recipe.scaling = NCScale::ScalingNone;
  recipe.cut = 2;
  return recipe;
}

TEST(ClusterFit, FindsTwoPairsWithoutABar) {
  for (const char* const method : {"ward", "single"}) {
    const ClusterResult result = Fit(RecipeOf(method), Pairs());
    EXPECT_EQ(result.clusterOf, (std::vector<int>{1, 1, 2, 2})) << method;
    EXPECT_EQ(result.Clusters(), 2) << method;
    EXPECT_EQ(result.merges.back().rows, 4) << method;
  }
  // The heights of single linkage are distances: 1, 1 and from r2 to r3.
  EXPECT_EQ(Fit(RecipeOf("single"), Pairs()).merges.back().height, 9.0F);
}

TEST(ClusterFit, RefusesAMethodThatThereIsNot) {
  EXPECT_EQ(FailureOf<BadRequest>([] { Fit(RecipeOf("average"), Pairs()); }),
            "there is no clustering by the method 'average': take ward or single");
}

TEST(ClusterFit, RefusesACutThatMakesNoSense) {
  ClusterRecipe recipe = RecipeOf("ward");
  recipe.cut = -1;
  EXPECT_THROW(Fit(recipe, Pairs()), BadRequest);
  recipe.cut = 0;
  for (const double height : {-0.5, std::nan("")}) {
    recipe.height = height;
    EXPECT_THROW(Fit(recipe, Pairs()), BadRequest) << height;
  }
  recipe.height = 0.0;
  EXPECT_EQ(Fit(recipe, Pairs()).Clusters(), 4);
}

TEST(ClusterFit, LeavesNoRangeOpenOnTheBar) {
  for (const char* const method : {"ward", "single"}) {
    ProgressLog log;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    Fit(RecipeOf(method), Pairs(), bar.get());
    EXPECT_EQ(log.Count("PushSubRange"), log.Count("PopSubRange")) << log.Joined();
    EXPECT_GT(log.Count("SetValue"), 0) << method;
  }
}

TEST(ClusterFit, StopsWhereTheBarWantsToStop) {
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(Fit(RecipeOf("ward"), Pairs(), bar.get()), Stopped);
}

}  // namespace
