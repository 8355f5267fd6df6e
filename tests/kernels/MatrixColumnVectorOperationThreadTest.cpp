#include "kalmia/kernels/MatrixColumnVectorOperationThread.h"

#include <gtest/gtest.h>

#include <boost/thread.hpp>
#include <utility>
#include <vector>

#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

using NCMultiThreading::ColumnSliceRange;
using NCMultiThreading::MatrixColumnVectorOperationThread;

namespace {

using Slices = std::vector<std::pair<int, int>>;

Slices SlicesOf(ColumnSliceRange range) {
  Slices slices;
  while (!range.Empty()) slices.push_back(range.Next());
  return slices;
}

struct Cut {
  const char* what;
  int first, last, processors;
  int sliceSize, numSlices;
  Slices slices;  // half-open
};

const Cut kCuts[] = {
    {"10 columns on 4 processors", 1, 10, 4, 3, 4, {{1, 4}, {4, 7}, {7, 10}, {10, 11}}},
    {"9 columns on 4 processors need 3 slices", 1, 9, 4, 3, 3, {{1, 4}, {4, 7}, {7, 10}}},
    {"columns on one processor", 1, 5, 1, 5, 1, {{1, 6}}},
    {"fewer columns than processors", 1, 2, 8, 1, 2, {{1, 2}, {2, 3}}},
    {"as many columns as processors", 1, 3, 3, 1, 3, {{1, 2}, {2, 3}, {3, 4}}},
    {"a range that starts elsewhere", 5, 9, 2, 3, 2, {{5, 8}, {8, 10}}},
    {"one column", 1, 1, 2, 1, 1, {{1, 2}}},
    {"no columns", 1, 0, 4, 0, 0, {}},
    {"no processors count as one", 1, 4, 0, 4, 1, {{1, 5}}},
};

TEST(ColumnSliceRange, CutsColumnsIntoOneSliceForEachProcessor) {
  for (const Cut& cut : kCuts) {
    SCOPED_TRACE(cut.what);
    const ColumnSliceRange range(cut.first, cut.last, cut.processors);
    EXPECT_EQ(range.current, cut.first);
    EXPECT_EQ(range.last, cut.last);
    EXPECT_EQ(range.sliceSize, cut.sliceSize);
    EXPECT_EQ(range.numSlices, cut.numSlices);
    EXPECT_EQ(range.GetSliceSize(), cut.sliceSize);
    EXPECT_EQ(range.GetNumSlices(), cut.numSlices);
    EXPECT_EQ(SlicesOf(range), cut.slices);
  }
}

TEST(ColumnSliceRange, StaysExactWithAsManyProcessorsAsAnIntegerHolds) {
  const ColumnSliceRange range(1, 3, 2147483647);
  EXPECT_EQ(range.sliceSize, 1);
  EXPECT_EQ(range.numSlices, 3);
}

template <class T>
class MatrixColumnVectorOperationThreadTest : public testing::Test {};
TYPED_TEST_SUITE(MatrixColumnVectorOperationThreadTest, CellTypes, CellTypeNames);

/// Writes what it was given, so that a test sees it.
template <class T>
void RecordCall(T* out, int c, const NCDataMatrix<T>& X, const NCDataVector<T>& v, long double ss, int misValMode,
                int& numMisVal) {
  out[c] = static_cast<T>(1000 * X[1][c] + 100 * v[1] + 10 * ss + misValMode);
  --numMisVal;
}

TYPED_TEST(MatrixColumnVectorOperationThreadTest, CallsTheOperationForEachColumnOfItsSlice) {
  using T = TypeParam;
  const auto x = MatrixOf<T>({{1, 2, 3, 4, 5}});
  const auto v = VectorOf<T>({6});
  std::vector<T> out(6, T{-1});
  int numMisVal = 10;
  MatrixColumnVectorOperationThread<T> slice(out.data(), 2, 5, &x, &v, 7.0L, 3, &numMisVal, RecordCall<T>);
  slice();
  EXPECT_EQ(out, (std::vector<T>{-1, -1, 2673, 3673, 4673, -1}));
  EXPECT_EQ(numMisVal, 7);
}

TYPED_TEST(MatrixColumnVectorOperationThreadTest, OnThreadsOfTheirOwnTheSlicesGiveTheWholeRegressionToTheBit) {
  using T = TypeParam;
  for (const double holesOfV : {0.0, 0.3}) {
    const auto x = RandomMatrix<T>(20, 37, 0.3, 1);
    const auto v = RandomVector<T>(20, holesOfV, 2);
    std::vector<T> out(38, kHole<T>);
    std::vector<int> counts(4);
    boost::thread_group threads;
    ColumnSliceRange range(1, 37, 4);
    for (int k = 0; !range.Empty(); ++k) {
      const auto [first, end] = range.Next();
      threads.create_thread(MatrixColumnVectorOperationThread<T>(out.data(), first, end, &x, &v, v.GetSS(),
                                                                 holesOfV > 0 ? 3 : 1, &counts[k],
                                                                 NCDataMatrix<T>::SpecialNipalsRegressOneColumnFix));
    }
    threads.join_all();
    const NCDataVector<T> whole = x.SpecialNipalsRegressColumnsFix(v);
    EXPECT_TRUE(SameBits({out.begin() + 1, out.end()}, CellsOf(whole)));
    EXPECT_EQ(37 + counts[0] + counts[1] + counts[2] + counts[3], whole.GetNumMisVal());
  }
}

TYPED_TEST(MatrixColumnVectorOperationThreadTest, KeepsItsMembersUnderTheirNames) {
  using T = TypeParam;
  const auto x = MatrixOf<T>({{1}});
  const auto v = VectorOf<T>({2});
  T out[2] = {};
  int numMisVal = 0;
  const MatrixColumnVectorOperationThread<T> slice(out, 3, 4, &x, &v, 5.0L, 2, &numMisVal, RecordCall<T>);
  EXPECT_EQ(slice.output, out);
  EXPECT_EQ(slice.firstColumn, 3);
  EXPECT_EQ(slice.endColumn, 4);
  EXPECT_EQ(slice.matrix, &x);
  EXPECT_EQ(slice.vector, &v);
  EXPECT_EQ(slice.sumOfSquares, 5.0L);
  EXPECT_EQ(slice.misValMode, 2);
  EXPECT_EQ(slice.numMisVal, &numMisVal);
  EXPECT_FALSE(slice.operation.empty());
}

}  // namespace
