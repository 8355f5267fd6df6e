#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "PropertyWorld.h"

// Random sequences of the operations of all containers and kernels on a world of vectors and tables that share storage:
// after each one all counts are right, and nothing has changed but what the operation names. Whether the cells are
// right is not asked here: for vectors NCDataVectorPropertyTest does, beside a model of the cells.

namespace {

template <class T>
std::vector<Operation<T>> AllOperations() {
  std::vector<Operation<T>> all;
  for (const auto& some : {VectorOperations<T>(), VectorArithmetic<T>(), IntegerOperations<T>(), MatrixOperations<T>(),
                           MatrixCellOperations<T>(), KernelOperations<T>()})
    all.insert(all.end(), some.begin(), some.end());
  return all;
}

template <class T>
class CountsAndSharing : public ::testing::Test {};
TYPED_TEST_SUITE(CountsAndSharing, CellTypes, CellTypeNames);

TYPED_TEST(CountsAndSharing, HoldThroughRandomSequencesOfOperations) {
  const auto operations = AllOperations<TypeParam>();
  constexpr int kSequences = 100, kSteps = 400;
  std::map<std::string, int> runs;
  for (unsigned seed = 1; seed <= kSequences && !this->HasFailure(); ++seed) {
    World<TypeParam> world(seed);
    for (int step = 0; step < kSteps && !this->HasFailure(); ++step) {
      const int drawn = world.Int(0, static_cast<int>(operations.size()) - 1);
      const auto& operation = operations[static_cast<std::size_t>(drawn)];
      SCOPED_TRACE("sequence " + std::to_string(seed) + ", step " + std::to_string(step) + ": " + operation.name);
      operation.run(world);
      world.CheckAndSettle();
      ++runs[operation.name];
    }
  }
  EXPECT_EQ(runs.size(), operations.size()) << "every operation was drawn";
}

}  // namespace
