#include "kalmia/containers/DeepCopied.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "testing/RandomTables.h"

namespace {

using Matrix = NCDataMatrix<float>;

/// Whether both have the same cells in the same memory.
bool Share(const Matrix& a, const Matrix& b) { return a[1].begin() == b[1].begin(); }

struct Model {
  kalmia::DeepCopied<Matrix> table;
  kalmia::DeepCopied<std::vector<Matrix>> tables;
  kalmia::DeepCopied<std::unique_ptr<Matrix>> maybe;
};

Model SomeModel() {
  Model model;
  model.table = RandomMatrix<float>(3, 4, 0.3, 1);
  model.tables.push_back(RandomMatrix<float>(2, 2, 0.0, 2));
  model.maybe = std::make_unique<Matrix>(RandomMatrix<float>(2, 5, 0.0, 3));
  return model;
}

void ExpectEqualButApart(const Model& a, const Model& b) {
  EXPECT_TRUE(a.table == b.table);
  EXPECT_EQ(a.table.GetNumMisVal(), b.table.GetNumMisVal());
  EXPECT_TRUE(a.tables[0] == b.tables[0]);
  EXPECT_TRUE(*a.maybe == *b.maybe);
  EXPECT_FALSE(Share(a.table, b.table));
  EXPECT_FALSE(Share(a.tables[0], b.tables[0]));
  EXPECT_FALSE(Share(*a.maybe, *b.maybe));
}

TEST(DeepCopied, MembersShareNothingWithThoseOfACopy) {
  const Model model = SomeModel();
  const Model copy(model), copyOfTheCopy(copy);
  ExpectEqualButApart(copy, model);
  ExpectEqualButApart(copyOfTheCopy, copy);
}

TEST(DeepCopied, MembersShareNothingWithWhatIsAssigned) {
  const Model model = SomeModel();
  Model assigned;
  assigned = model;
  ExpectEqualButApart(assigned, model);
  const Model& itself = assigned;
  assigned = itself;
  ExpectEqualButApart(assigned, model);
}

TEST(DeepCopied, SharesATableThatItIsGivenAndGivesOut) {
  const Matrix table = RandomMatrix<float>(3, 4, 0.0, 1);
  kalmia::DeepCopied<Matrix> made(table), assigned;
  assigned = table;
  EXPECT_TRUE(Share(made, table));
  EXPECT_TRUE(Share(assigned, table));
  const Matrix out = made.AsValue();
  EXPECT_TRUE(Share(out, table));
}

TEST(DeepCopied, CopiesNothingAsNothing) {
  Model copy(Model{});
  EXPECT_EQ(copy.table.SizeRows(), 0);
  EXPECT_TRUE(copy.tables.empty());
  EXPECT_FALSE(copy.maybe);
  const Model empty, again(empty);
  EXPECT_EQ(again.table.SizeRows(), 0);
  EXPECT_TRUE(again.tables.empty());
  EXPECT_FALSE(again.maybe);
}

TEST(DeepCopy, OfAVectorSharesNothing) {
  const auto cells = RandomVector<float>(5, 0.2, 1);
  const auto copy = kalmia::DeepCopy(cells);
  EXPECT_TRUE(copy == cells);
  EXPECT_NE(copy.begin(), cells.begin());
}

}  // namespace
