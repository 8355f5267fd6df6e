#pragma once

#include "kalmia/signal/NCTransform.h"

/// A transformation with these constants; the one that no formula reads is `unread`.
inline TransformStruct TransformOf(TransformE::Transform type, float a, float b, float c = -99, float unread = -99) {
  TransformStruct transform;
  transform.SetTransform(type);
  const float constants[] = {unread, a, b, c};
  for (int i = 0; i < TransformStruct::kConstants; ++i) transform.SetConstant(i, constants[i]);
  return transform;
}
