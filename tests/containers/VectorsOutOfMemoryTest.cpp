#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "testing/AllocationMeter.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

// Each allocation of each operation fails once: std::bad_alloc comes out, the vector is as it was, nothing leaks.

namespace {

const void* BlockOf(const NCDataVector<float>& v) { return v.GetVector(); }
const void* BlockOf(const NCDataVector<double>& v) { return v.GetVector(); }
const void* BlockOf(const NCIntegralVector<int, -99>& v) { return v.GetPtr(); }

template <class V>
struct Operation {
  const char* name;
  std::function<void(V&)> run;
};

/// Runs the operation with its allocation number `which` failing; false once it has fewer.
template <class V>
bool FailsAt(int which, const std::function<void(V&)>& run, V& v) {
  bool thrown = false;
  const FailAllocation fail(which);
  try {
    run(v);
  } catch (const std::bad_alloc&) {
    thrown = true;
  }
  const bool failed = fail.HasFailed();
  EXPECT_EQ(thrown, failed) << "an allocation that failed is kept from the caller";
  return failed;
}

/// Demands of each operation on `make()`, which a twin shares where `shared`, that it survives every failure.
template <class V>
void ExpectUnchangedByFailures(const std::vector<Operation<V>>& operations, const std::function<V()>& make,
                               bool shared) {
  using Cells = std::vector<typename V::value_type>;
  for (const Operation<V>& operation : operations) {
    SCOPED_TRACE(std::string(operation.name) + (shared ? " of a shared vector" : ""));
    int which = 1;
    for (;; ++which) {
      V v = make(), twin;
      if (shared) twin = v;
      const Cells cells(v.begin(), v.end()), twinCells(twin.begin(), twin.end());
      const void* block = BlockOf(v);
      const PeakBytesDuring meter;
      if (!FailsAt(which, operation.run, v)) break;
      EXPECT_EQ(meter.GetLiveBytes(), 0) << "allocation " << which;
      EXPECT_EQ(Cells(v.begin(), v.end()), cells) << "allocation " << which;
      EXPECT_EQ(Cells(twin.begin(), twin.end()), twinCells) << "allocation " << which;
      EXPECT_EQ(BlockOf(v), block) << "allocation " << which;
      if constexpr (!std::is_integral_v<typename V::value_type>) {
        EXPECT_TRUE(HasExactCounts(v));
      }
    }
    EXPECT_GT(which, 1) << "no allocation was there to fail";
  }
}

/// The same of what makes a vector: nothing leaks.
template <class V>
void ExpectNoLeak(const std::vector<Operation<V>>& operations) {
  for (const Operation<V>& operation : operations) {
    SCOPED_TRACE(operation.name);
    V ignored;
    const PeakBytesDuring meter;
    int which = 1;
    while (FailsAt(which, operation.run, ignored)) {
      EXPECT_EQ(meter.GetLiveBytes(), 0) << "allocation " << which;
      ++which;
    }
    EXPECT_GT(which, 1) << "no allocation was there to fail";
    EXPECT_EQ(meter.GetLiveBytes(), 0);
  }
}

template <class T>
class NCDataVectorOutOfMemory : public ::testing::Test {
 protected:
  using V = NCDataVector<T>;
  /// (1, -99, 3), without room for a fourth cell.
  static V Make() {
    V v(3);
    v(1, T(1));
    v(3, T(3));
    return v;
  }

  const V other_ = VectorOf<T>({-99, 5, 6});
  const V longer_ = V(50, T(1));
};
TYPED_TEST_SUITE(NCDataVectorOutOfMemory, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorOutOfMemory, AVectorThatGrowsIsUnchanged) {
  using V = NCDataVector<TypeParam>;
  const V &other = this->other_, &longer = this->longer_;
  const std::vector<Operation<V>> operations = {
      {"Reserve", [](V& v) { v.Reserve(50); }},
      {"SetSize", [](V& v) { v.SetSize(50); }},
      {"Resize", [](V& v) { v.Resize(50); }},
      {"InsertValues", [](V& v) { v.InsertValues(2, 50, TypeParam(1)); }},
      {"InsertValues of a vector", [&](V& v) { v.InsertValues(2, other); }},
      {"InsertValues of itself", [](V& v) { v.InsertValues(2, v); }},
      {"insert", [](V& v) { v.insert(v.begin(), TypeParam(1)); }},
      {"push_back", [](V& v) { v.push_back(TypeParam(1)); }},
      {"CopyContent", [&](V& v) { v.CopyContent(longer); }},
      {"CopyZeroBasedVector", [&](V& v) { v.CopyZeroBasedVector(longer.begin(), longer.Size()); }},
      {"Reduce", [](V& v) { v.Reduce(Ints({3, 3, 2, 1})); }},
      {"+", [&](V& v) { v + other; }},
      {"-", [&](V& v) { v - other; }},
      {"- of a number", [](V& v) { v - 1.0L; }},
      {"* of a number", [](V& v) { v * 2.0L; }},
      {"DotMultiplication", [&](V& v) { v.DotMultiplication(other); }},
      {"DotDivide", [&](V& v) { v.DotDivide(other); }},
      {"VectorDivide", [](V& v) { v.VectorDivide(2.0L); }},
  };
  for (bool shared : {false, true}) ExpectUnchangedByFailures<V>(operations, this->Make, shared);
}

TYPED_TEST(NCDataVectorOutOfMemory, AVectorThatHasToUnlinkIsUnchanged) {
  using V = NCDataVector<TypeParam>;
  const V& other = this->other_;
  const std::vector<Operation<V>> operations = {
      {"ForceUnlink", [](V& v) { v.ForceUnlink(); }},
      {"a write", [](V& v) { v(1, kHole<TypeParam>); }},
      {"SetRange", [&](V& v) { v.SetRange(1, other, 1, 3); }},
      {"SetAllValues", [](V& v) { v.SetAllValues(kHole<TypeParam>); }},
      {"SetSize", [](V& v) { v.SetSize(2); }},
      {"RemoveValues", [](V& v) { v.RemoveValues(2, 1); }},
      {"Remove", [](V& v) { v.Remove(kHole<TypeParam>); }},
      {"erase", [](V& v) { v.erase(v.begin()); }},
      {"CopyContent", [&](V& v) { v.CopyContent(other); }},
      {"CopyZeroBasedVector", [&](V& v) { v.CopyZeroBasedVector(other.begin(), 2); }},
      {"+=", [&](V& v) { v += other; }},
      {"-=", [&](V& v) { v -= other; }},
      {"+= of a number", [](V& v) { v += 1.0L; }},
      {"-= of the missing value", [](V& v) { v -= -99.0L; }},
      {"*=", [](V& v) { v *= 2.0L; }},
      {"Abs", [](V& v) { v.Abs(); }},
      {"Sqrt", [](V& v) { v.Sqrt(); }},
      {"Normalise", [](V& v) { v.Normalise(); }},
      {"TransformTo_Sub_d_x_Vt", [&](V& v) { v.TransformTo_Sub_d_x_Vt(1.0L, other); }},
  };
  ExpectUnchangedByFailures<V>(operations, this->Make, /*shared=*/true);
}

TYPED_TEST(NCDataVectorOutOfMemory, AVectorThatIsNotMadeLeaksNothing) {
  using V = NCDataVector<TypeParam>;
  ExpectNoLeak<V>({{"of a size", [](V&) { V(50); }}, {"of a value", [](V&) { V(50, TypeParam(1)); }}});
}

using IntVector = NCIntegralVector<int, -99>;

TEST(NCIntegralVectorOutOfMemory, AVectorThatGrowsIsUnchanged) {
  const IntVector other = Ints({7, 8}), longer(50, 1), indices = Ints({3, 3, 2, 1});
  const std::vector<Operation<IntVector>> operations = {
      {"Reserve", [](IntVector& v) { v.Reserve(50); }},
      {"SetSize", [](IntVector& v) { v.SetSize(50); }},
      {"SetNumValues", [](IntVector& v) { v.SetNumValues(50, 1); }},
      {"Resize", [](IntVector& v) { v.Resize(50); }},
      {"InsertValues", [](IntVector& v) { v.InsertValues(2, 50, 1); }},
      {"InsertValues of a vector", [&](IntVector& v) { v.InsertValues(2, other); }},
      {"InsertValues of itself", [](IntVector& v) { v.InsertValues(2, v); }},
      {"Concat", [&](IntVector& v) { v.Concat(other); }},
      {"insert", [](IntVector& v) { v.insert(v.begin(), 1); }},
      {"push_back", [](IntVector& v) { v.push_back(1); }},
      {"CopyContent", [&](IntVector& v) { v.CopyContent(longer); }},
      {"Reduce", [&](IntVector& v) { v.Reduce(indices); }},
      {"Clear", [](IntVector& v) { v.Clear(); }},
  };
  for (bool shared : {false, true})
    ExpectUnchangedByFailures<IntVector>(operations, [] { return Ints({1, -99, 3}); }, shared);
}

TEST(NCIntegralVectorOutOfMemory, AVectorThatHasToUnlinkIsUnchanged) {
  const IntVector other = Ints({7, 8, 9}), indices = Ints({2});
  const std::vector<Operation<IntVector>> operations = {
      {"ForceUnlink", [](IntVector& v) { v.ForceUnlink(); }},
      {"a write", [](IntVector& v) { v(1) = 7; }},
      {"SetRange", [](IntVector& v) { v.SetRange(1, 2, 7); }},
      {"SetAllValues", [](IntVector& v) { v.SetAllValues(7); }},
      {"GenerateIndex", [](IntVector& v) { v.GenerateIndex(1, 1); }},
      {"SetSize", [](IntVector& v) { v.SetSize(2); }},
      {"RemoveValues", [](IntVector& v) { v.RemoveValues(2, 1); }},
      {"Remove", [&](IntVector& v) { v.Remove(indices); }},
      {"erase", [](IntVector& v) { v.erase(v.begin()); }},
      {"CopyContent", [&](IntVector& v) { v.CopyContent(other); }},
      {"Sort", [](IntVector& v) { v.Sort(true, true); }},
      {"SortWithOriginalIndex", [](IntVector& v) { std::vector<int> o; v.SortWithOriginalIndex(true, true, o); }},
      {"Scramble", [](IntVector& v) { v.Scramble(); }},
      {"+=", [](IntVector& v) { v += 1; }},
  };
  ExpectUnchangedByFailures<IntVector>(operations, [] { return Ints({1, -99, 3}); }, /*shared=*/true);
}

TEST(NCIntegralVectorOutOfMemory, AVectorThatIsNotMadeLeaksNothing) {
  const std::vector<int> cells(50, 1);
  ExpectNoLeak<IntVector>({{"empty", [](IntVector&) { IntVector(); }},
                           {"of a size", [](IntVector&) { IntVector(50); }},
                           {"of an array", [&](IntVector&) { IntVector(cells.data(), 50); }}});
}

}  // namespace
