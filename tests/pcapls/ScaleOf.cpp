#include "ScaleOf.h"

NCScale ScaleOf(std::initializer_list<NCScale::Scaling> types) {
  NCScale scale(static_cast<int>(types.size()));
  int variable = 0;
  for (const NCScale::Scaling type : types) scale.SetType(++variable, type);
  return scale;
}

NCScale ScaleOfAll(int variables, NCScale::Scaling type) {
  NCScale scale(variables);
  for (int j = 1; j <= variables; ++j) scale.SetType(j, type);
  return scale;
}
