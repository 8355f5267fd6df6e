#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "signal/Transforms.h"

using ::testing::ElementsAre;

namespace {

TEST(NCTransformError, SaysNothingWentWrongAtFirst) {
  const NCTransformError error;
  EXPECT_EQ(error.Code, NCTransformError::ErrorNone);
  EXPECT_EQ(error.Row, 0);
  EXPECT_EQ(error.Column, 0);
  EXPECT_STREQ(error.GetMessage(), "");
  EXPECT_EQ(NCTransformError::ErrorNone, 1);
  EXPECT_EQ(NCTransformError::ErrorCalculation, 2);
  EXPECT_EQ(NCTransformError::ErrorColumnCount, 3);
}

TEST(NCTransformError, TakesTheRowBeforeTheColumn) {
  const NCTransformError error(7, 3, NCTransformError::ErrorCalculation, "text");
  EXPECT_EQ(error.Row, 7);
  EXPECT_EQ(error.Column, 3);
  EXPECT_EQ(error.Code, 2);
  EXPECT_STREQ(error.GetMessage(), "text");
}

TEST(NCTransformError, ClonesAllOfItself) {
  const NCTransformError error(7, 3, NCTransformError::ErrorColumnCount, "text");
  const NCError& asBase = error;
  const std::unique_ptr<NCError> clone(asBase.Clone());
  const auto* twin = dynamic_cast<const NCTransformError*>(clone.get());
  ASSERT_NE(twin, nullptr);
  EXPECT_EQ(twin->Row, 7);
  EXPECT_EQ(twin->Column, 3);
  EXPECT_EQ(twin->Code, NCTransformError::ErrorColumnCount);
  EXPECT_STREQ(twin->GetMessage(), "text");
}

TEST(NCTransformError, IsAssignedWhole) {
  const NCTransformError error(7, 3, NCTransformError::ErrorColumnCount, "text");
  NCTransformError assigned(1, 2, NCTransformError::ErrorCalculation, "another");
  assigned = error;
  EXPECT_EQ(assigned.Row, 7);
  EXPECT_EQ(assigned.Column, 3);
  EXPECT_EQ(assigned.Code, NCTransformError::ErrorColumnCount);
  EXPECT_STREQ(assigned.GetMessage(), "text");
}

TEST(NCTransformError, KeepsItsCodeWhereItIsCaughtAsOneOfItsBases) {
  const NCTransformError error(7, 3, NCTransformError::ErrorColumnCount, "text");
  try {
    throw error;
  } catch (const NCError& caught) {
    EXPECT_STREQ(caught.GetMessage(), "text");
    EXPECT_EQ(dynamic_cast<const NCTransformError&>(caught).Code, NCTransformError::ErrorColumnCount);
  }
  try {
    throw error;
  } catch (const Exception& caught) {
    EXPECT_EQ(dynamic_cast<const NCTransformError&>(caught).Column, 3);
  }
}

TEST(NCTransformErrors, HandsOutItsErrorsInTheirOrder) {
  NCTransformErrors errors;
  EXPECT_EQ(errors.Size(), 0);
  EXPECT_EQ(errors.GetFirstError(), nullptr);
  EXPECT_EQ(errors.GetNextError(), nullptr);
  for (int row = 1; row <= 3; ++row)
    errors.AddError(NCTransformError(row, 5, NCTransformError::ErrorCalculation, ""));
  EXPECT_EQ(errors.GetNextError(), nullptr) << "the position stays where it was, behind the last";
  EXPECT_EQ(errors.Size(), 3);
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_EQ(errors.GetFirstError()->Row, 1);
    EXPECT_EQ(errors.GetNextError()->Row, 2);
    EXPECT_EQ(errors.GetNextError()->Row, 3);
    EXPECT_EQ(errors.GetNextError(), nullptr);
    EXPECT_EQ(errors.GetNextError(), nullptr);
  }
}

TEST(NCTransformErrors, AppendsCopiesOfAnothersErrorsAndOfItsOwn) {
  NCTransformErrors one, two;
  one.AddError(NCTransformError(1, 1, NCTransformError::ErrorCalculation, ""));
  two.AddError(NCTransformError(2, 1, NCTransformError::ErrorCalculation, ""));
  two.AddError(NCTransformError(3, 1, NCTransformError::ErrorCalculation, ""));
  one.Append(two);
  EXPECT_THAT(PlacesOf(one), ElementsAre(std::pair(1, 1), std::pair(2, 1), std::pair(3, 1)));
  EXPECT_EQ(two.Size(), 2);
  two.Append(two);
  EXPECT_THAT(PlacesOf(two), ElementsAre(std::pair(2, 1), std::pair(3, 1), std::pair(2, 1), std::pair(3, 1)));
}

TEST(NCTransformErrors, GoOnToWhatWasAddedWhileThePositionStood) {
  const NCTransformError second(2, 1, NCTransformError::ErrorCalculation, "");
  const NCTransformError third(3, 1, NCTransformError::ErrorCalculation, "");
  NCTransformErrors errors, more;
  errors.AddError(NCTransformError(1, 1, NCTransformError::ErrorCalculation, ""));
  more.AddError(third);
  ASSERT_EQ(errors.GetFirstError()->Row, 1);
  errors.AddError(second);
  ASSERT_NE(errors.GetNextError(), nullptr);  // the position is on the last one now
  errors.Append(more);
  const NCTransformError* next = errors.GetNextError();
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->Row, 3);
  EXPECT_EQ(errors.GetNextError(), nullptr);
}

}  // namespace
