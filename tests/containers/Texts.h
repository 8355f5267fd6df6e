#pragma once

#include <string>
#include <vector>

#include "kalmia/containers/NCStringVector.h"

// Vectors of strings for tests, and what they hold.

inline NCStringVector Strings(const std::vector<std::string>& texts) {
  NCStringVector v;
  for (const std::string& text : texts) v.push_back(text.c_str());
  return v;
}

inline std::vector<std::string> TextsOf(const NCStringVector& v) {
  std::vector<std::string> texts;
  for (int i = 1; i <= v.Size(); ++i) texts.emplace_back(v[i]);
  return texts;
}
