#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <ios>
#include <vector>

// Equality of bits: == takes zeros of both signs for equal, and NaNs for unequal.

template <class T>
::testing::AssertionResult SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  if (a.size() != b.size()) return ::testing::AssertionFailure() << a.size() << " and " << b.size() << " numbers";
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0)
      return ::testing::AssertionFailure() << "at " << i << ": " << std::hexfloat << a[i] << " and " << b[i];
  return ::testing::AssertionSuccess();
}

/// The same for the rows of tables.
template <class T>
::testing::AssertionResult SameBits(const std::vector<std::vector<T>>& a, const std::vector<std::vector<T>>& b) {
  if (a.size() != b.size()) return ::testing::AssertionFailure() << a.size() << " and " << b.size() << " rows";
  for (std::size_t r = 0; r < a.size(); ++r)
    if (auto same = SameBits(a[r], b[r]); !same) return same << " in row " << r;
  return ::testing::AssertionSuccess();
}
