#include "kalmia/support/NCError.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/// An error with a field of its own, as the derived ones of the library.
class ColumnError : public NCError {
 public:
  ColumnError(int column, const CString& text) : NCError(text, Level1), Column(column) {}
  ColumnError* Clone() const override { return new ColumnError(*this); }
  int Column;
};

TEST(NCError, IsOfLevel0WithoutALevel) {
  EXPECT_EQ(NCError().GetLevel(), NCError::Level0);
  EXPECT_STREQ(NCError().GetMessage(), "");
  EXPECT_EQ(NCError("text").GetLevel(), NCError::Level0);
  EXPECT_STREQ(NCError("text").GetMessage(), "text");
}

TEST(NCError, KeepsMessageAndLevelWhenCopiedAndAssigned) {
  const NCError error("text", NCError::Level2);
  const NCError copy(error);
  NCError assigned;
  assigned = error;
  for (const NCError* e : {&copy, static_cast<const NCError*>(&assigned)}) {
    EXPECT_STREQ(e->GetMessage(), "text");
    EXPECT_EQ(e->GetLevel(), NCError::Level2);
  }
}

TEST(NCError, HasTheLevels0To2) {
  EXPECT_EQ(static_cast<NCError::Level>(0), NCError::Level0);
  EXPECT_EQ(static_cast<NCError::Level>(1), NCError::Level1);
  EXPECT_EQ(static_cast<NCError::Level>(2), NCError::Level2);
}

TEST(NCError, ClonesTheMostDerivedTypeWithItsFields) {
  const ColumnError error(7, "text");
  const NCError& base = error;
  const std::unique_ptr<NCError> clone(base.Clone());
  const auto* derived = dynamic_cast<const ColumnError*>(clone.get());
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(derived->Column, 7);
  EXPECT_STREQ(derived->GetMessage(), "text");
  EXPECT_EQ(derived->GetLevel(), NCError::Level1);
}

TEST(NCError, IsCaughtAsAnException) {
  try {
    throw NCError("text", NCError::Level2);
  } catch (const Exception& error) {
    EXPECT_STREQ(error.GetMessage(), "text");
    EXPECT_NE(dynamic_cast<const NCError*>(&error), nullptr);
  }
}

}  // namespace
