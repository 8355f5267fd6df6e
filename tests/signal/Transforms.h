#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "kalmia/signal/NCTransform.h"

/// A transformation with these constants; the one that no formula reads is `unread`.
inline TransformStruct TransformOf(TransformE::Transform type, float a, float b, float c = -99, float unread = -99) {
  TransformStruct transform;
  transform.SetTransform(type);
  const float constants[] = {unread, a, b, c};
  for (int i = 0; i < TransformStruct::kConstants; ++i) transform.SetConstant(i, constants[i]);
  return transform;
}

/// Row and column of each error, in the order of the list.
inline std::vector<std::pair<int, int>> PlacesOf(NCTransformErrors& errors) {
  std::vector<std::pair<int, int>> places;
  for (const NCTransformError* e = errors.GetFirstError(); e; e = errors.GetNextError())
    places.emplace_back(e->Row, e->Column);
  return places;
}

/// A cell after a transformation, and what that returned.
struct Outcome {
  float cell;
  int code;
};

inline Outcome Forward(const TransformStruct& transform, float x) {
  const int code = transform.TransformValue(&x);
  return {x, code};
}

inline Outcome Back(const TransformStruct& transform, float x) {
  const int code = transform.BackTransformValue(&x);
  return {x, code};
}

inline void ExpectDone(const Outcome& outcome, float cell) {
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.cell, cell);
}

inline void ExpectFailed(const Outcome& outcome) {
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(outcome.cell, -99.0F);
}

/// The result is computed in double, whose error is far below half a unit in the last place of the float that it is
/// rounded to; so is that of the long double formula. Their floats differ by one unit at most, and hardly ever.
inline void ExpectRounded(const Outcome& outcome, long double exact) {
  EXPECT_EQ(outcome.code, 1);
  EXPECT_LE(std::abs(outcome.cell - exact), 0x1p-23L * std::abs(exact)) << outcome.cell;
}
