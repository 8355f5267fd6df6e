#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "kalmia/containers/NCIntegralVector.h"
#include "testing/Ints.h"

// Structure, in each of the three types of cells: beside a std::vector that goes through the same.

namespace {

template <class V>
class NCIntegralVectorOfEachType : public ::testing::Test {
 protected:
  using Cell = typename V::value_type;
  using Model = std::vector<int>;  // of 0 and 1, which every type has

  static V Of(const Model& cells) {
    V v(static_cast<int>(cells.size()));
    for (int i = 1; i <= v.Size(); ++i) v(i) = static_cast<Cell>(cells[static_cast<std::size_t>(i) - 1]);
    return v;
  }
  static Model CellsOf(const V& v) { return Model(v.begin(), v.end()); }

  const Model model_ = {1, 0, 0, 1, 1};
};
using Instances =
    ::testing::Types<NCIntegralVector<int, -99>, NCIntegralVector<bool, 0>, NCIntegralVector<unsigned long, 0>>;
struct InstanceNames {
  template <class V>
  static const char* GetName(int) {
    using Cell = typename V::value_type;
    return std::is_same_v<Cell, int> ? "int" : std::is_same_v<Cell, bool> ? "bool" : "unsigned_long";
  }
};
TYPED_TEST_SUITE(NCIntegralVectorOfEachType, Instances, InstanceNames);

TYPED_TEST(NCIntegralVectorOfEachType, IsMadeOfASizeAValueOrAnArray) {
  const typename TestFixture::Cell cells[] = {1, 0, 1};
  EXPECT_EQ(this->CellsOf(TypeParam(cells, 3)), (std::vector<int>{1, 0, 1}));
  EXPECT_EQ(this->CellsOf(TypeParam(3, 1)), std::vector<int>(3, 1));
  const int missing = std::is_same_v<typename TestFixture::Cell, int> ? -99 : 0;
  EXPECT_EQ(this->CellsOf(TypeParam(3)), std::vector<int>(3, missing));
}

TYPED_TEST(NCIntegralVectorOfEachType, InsertsAnywhereWithAndWithoutRoom) {
  for (int room : {0, 50})
    for (int at = 1; at <= 6; ++at) {
      TypeParam v = this->Of(this->model_);
      v.Reserve(room);
      TypeParam twin(v), other(v), self(v), single(v);
      std::vector<int> expected = this->model_;
      expected.insert(expected.begin() + at - 1, 3, 1);
      v.InsertValues(at, 3, 1);
      EXPECT_EQ(this->CellsOf(v), expected);
      expected = this->model_;
      const std::vector<int> inserted = {0, 1};
      expected.insert(expected.begin() + at - 1, inserted.begin(), inserted.end());
      other.InsertValues(at, this->Of(inserted));
      EXPECT_EQ(this->CellsOf(other), expected);
      expected = this->model_;
      expected.insert(expected.begin() + at - 1, this->model_.begin(), this->model_.end());
      self.InsertValues(at, self);
      EXPECT_EQ(this->CellsOf(self), expected);
      expected = this->model_;
      expected.insert(expected.begin() + at - 1, 1);
      const auto* newCell = single.insert(single.begin() + at - 1, 1);
      EXPECT_EQ(newCell, single.begin() + at - 1);
      EXPECT_EQ(this->CellsOf(single), expected);
      EXPECT_EQ(this->CellsOf(twin), this->model_);
    }
}

TYPED_TEST(NCIntegralVectorOfEachType, AppendsThroughManyBlocks) {
  TypeParam v;
  std::vector<int> expected;
  for (int i = 0; i < 7000; ++i) {
    expected.push_back(i % 3 == 0);
    v.push_back(i % 3 == 0);
  }
  EXPECT_EQ(this->CellsOf(v), expected);
  v.Concat(v);
  expected.resize(14000);
  std::copy_n(expected.begin(), 7000, expected.begin() + 7000);
  EXPECT_EQ(this->CellsOf(v), expected);
}

TYPED_TEST(NCIntegralVectorOfEachType, RemovesAnywhere) {
  for (int at = 1; at <= 6; ++at)
    for (int n = 0; at + n <= 6; ++n) {
      TypeParam v = this->Of(this->model_), erased(v), twin(v);
      std::vector<int> expected = this->model_;
      expected.erase(expected.begin() + at - 1, expected.begin() + at - 1 + n);
      v.RemoveValues(at, n);
      EXPECT_EQ(this->CellsOf(v), expected);
      const auto* behind = erased.erase(erased.begin() + at - 1, erased.begin() + at - 1 + n);
      EXPECT_EQ(behind, erased.begin() + at - 1);
      EXPECT_EQ(this->CellsOf(erased), expected);
      EXPECT_EQ(this->CellsOf(twin), this->model_);
    }
}

TYPED_TEST(NCIntegralVectorOfEachType, RemovesAndTakesListedCells) {
  TypeParam v = this->Of(this->model_), reduced(v), twin(v);
  v.Remove(Ints({5, 2, 2, 77}));
  EXPECT_EQ(this->CellsOf(v), (std::vector<int>{1, 0, 1}));
  reduced.Reduce(Ints({5, 2, 2, 1}));
  EXPECT_EQ(this->CellsOf(reduced), (std::vector<int>{1, 0, 0, 1}));
  EXPECT_EQ(this->CellsOf(twin), this->model_);
}

TYPED_TEST(NCIntegralVectorOfEachType, ResizesWithAFill) {
  TypeParam v = this->Of(this->model_), twin(v);
  v.Resize(7, 1);
  EXPECT_EQ(this->CellsOf(v), (std::vector<int>{1, 0, 0, 1, 1, 1, 1}));
  v.resize(2);
  EXPECT_EQ(this->CellsOf(v), (std::vector<int>{1, 0}));
  v.Resize(0);
  EXPECT_TRUE(v.empty());
  EXPECT_EQ(this->CellsOf(twin), this->model_);
}

TYPED_TEST(NCIntegralVectorOfEachType, IsWrittenInRangesAndWhole) {
  TypeParam v = this->Of(this->model_), twin(v);
  v.SetRange(2, 2, 1);
  EXPECT_EQ(this->CellsOf(v), std::vector<int>(5, 1));
  v.SetRange(4, 2, 0);
  EXPECT_EQ(this->CellsOf(v), (std::vector<int>{1, 1, 1, 0, 0}));
  v.SetAllValues(1);
  EXPECT_EQ(this->CellsOf(v), std::vector<int>(5, 1));
  v.SetNumValues(2, 1);
  EXPECT_EQ(this->CellsOf(v), std::vector<int>(2, 1));
  v.CopyContent(twin);
  EXPECT_EQ(this->CellsOf(v), this->model_);
  EXPECT_NE(v.GetPtr(), twin.GetPtr());
  EXPECT_EQ(this->CellsOf(twin), this->model_);
}

TYPED_TEST(NCIntegralVectorOfEachType, PartsFromATwinWithTheRoomThatItHas) {
  TypeParam v = this->Of(this->model_);
  v.Reserve(20);
  TypeParam twin(v);
  twin.ForceUnlink();
  EXPECT_EQ(this->CellsOf(twin), this->model_);
  const auto* block = twin.GetPtr();
  twin.InsertValues(6, 15, 1);
  EXPECT_EQ(twin.GetPtr(), block);
  EXPECT_EQ(this->CellsOf(v), this->model_);
}

}  // namespace
