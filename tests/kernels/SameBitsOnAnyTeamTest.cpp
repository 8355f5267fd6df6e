#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/simd/Lanes.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

constexpr int kRows = 220, kColumns = 200;  // more cells than pay for a team

template <class T>
struct Inputs {
  explicit Inputs(double holes)
      : x(RandomMatrix<T>(kRows, kColumns, holes, 1)),
        alongRows(RandomVector<T>(kRows, holes, 2)),
        alongColumns(RandomVector<T>(kColumns, holes, 3)),
        groups(kColumns) {
    for (int c = 1; c <= kColumns; ++c) groups(c) = c % 7;
  }

  NCDataMatrix<T> x;
  NCDataVector<T> alongRows, alongColumns;
  NCIntegralVector<int, -99> groups;
};

template <class T>
void Append(const NCDataVector<T>& v, std::string& bytes) {
  const int count = v.GetNumMisVal();
  bytes.append(reinterpret_cast<const char*>(v.begin()), sizeof(T) * static_cast<std::size_t>(v.Size()));
  bytes.append(reinterpret_cast<const char*>(&count), sizeof(count));
}

/// The cells of every row and all counts.
template <class T>
std::string BytesOf(const NCDataMatrix<T>& m) {
  std::string bytes;
  for (const NCDataVector<T>& row : m) Append(row, bytes);
  for (int c = 1; c <= m.SizeColumns(); ++c) bytes += std::to_string(m.GetColumnMisVal(c)) + " ";
  return bytes + std::to_string(m.GetNumMisVal());
}

template <class T>
std::string BytesOf(const NCDataVector<T>& v) {
  std::string bytes;
  Append(v, bytes);
  return bytes;
}

std::string BytesOf(long double number) {  // as a double: a long double has bytes that mean nothing
  const double narrow = static_cast<double>(number);
  return std::string(reinterpret_cast<const char*>(&narrow), sizeof(narrow));
}

template <class T>
struct Region {
  const char* what;
  std::function<std::string(const Inputs<T>&)> run;
};

/// Every step that may run in parallel.
template <class T>
std::vector<Region<T>> Regions() {
  using In = const Inputs<T>&;
  return {
      {"GetSS", [](In in) { return BytesOf(in.x.GetSS()); }},
      {"matrix times vector", [](In in) { return BytesOf(in.x * in.alongColumns); }},
      {"PreMultiply", [](In in) { return BytesOf(in.x.PreMultiply(in.alongRows)); }},
      {"RegressColumns", [](In in) { return BytesOf(in.x.RegressColumns(in.alongRows)); }},
      {"SpecialNipalsRegressColumnsFix",
       [](In in) { return BytesOf(in.x.SpecialNipalsRegressColumnsFix(in.alongRows)); }},
      {"SpecialNipalsRegressColumnsFix with groups",
       [](In in) { return BytesOf(in.x.SpecialNipalsRegressColumnsFix(in.alongRows, &in.groups, 3)); }},
      {"SpecialNipalsRegressColumnsFix with a complete vector",
       [](In in) {
         const NCDataVector<T> complete(kRows, T{0.5});
         return BytesOf(in.x.SpecialNipalsRegressColumnsFix(complete, &in.groups, 3));
       }},
      {"RegressRows", [](In in) { return BytesOf(in.x.RegressRows(in.alongColumns)); }},
      {"SpecialNipalsRegressRowsFixWithExclude",
       [](In in) { return BytesOf(in.x.SpecialNipalsRegressRowsFixWithExclude(in.alongColumns, 2, 7)); }},
      {"SpecialNipalsRegressRowsFix",
       [](In in) { return BytesOf(in.x.SpecialNipalsRegressRowsFix(in.alongColumns, nullptr, 0)); }},
      {"SpecialNipalsRegressRowsFix with groups",
       [](In in) { return BytesOf(in.x.SpecialNipalsRegressRowsFix(in.alongColumns, &in.groups, 3)); }},
      {"AddVprimV",
       [](In in) {
         NCDataMatrix<T> m(in.x);
         m.AddVprimV(in.alongRows, in.alongColumns, T{-0.75});
         return BytesOf(m);
       }},
      {"A B'", [](In in) { return BytesOf(in.x.MatrixMultiply(in.x, false, true)); }},
      {"A B", [](In in) { return BytesOf(in.x * RandomMatrix<T>(kColumns, 50, 0.01, 4)); }},
      {"A' A",
       [](In in) {
         NCDataMatrix<T> m(in.x);
         m.TransformToMprim_mul_M();
         return BytesOf(m);
       }},
  };
}

template <class T>
class SameBitsOnAnyTeam : public testing::Test {
 protected:
  /// What each region gives with one thread, held beside what it gives in the place of the call.
  template <class RunElsewhere>
  void CompareWithOneThread(const RunElsewhere& runElsewhere) {
    for (const double holes : {0.0, 0.05, 0.3}) {
      const Inputs<T> inputs(holes);
      for (const Region<T>& region : Regions<T>()) {
        SCOPED_TRACE(testing::Message() << region.what << ", holes " << holes);
        const std::string expected = OnOneThread(region, inputs);
        EXPECT_TRUE(expected == runElsewhere(region, inputs));
      }
    }
  }

  static std::string OnOneThread(const Region<T>& region, const Inputs<T>& inputs) {
    const Threads one(1);
    return region.run(inputs);
  }
};
TYPED_TEST_SUITE(SameBitsOnAnyTeam, CellTypes, CellTypeNames);

TYPED_TEST(SameBitsOnAnyTeam, EveryRegionGivesThemWithTwoAndThreeThreads) {
  for (const int threads : {2, 3})
    this->CompareWithOneThread([threads](const auto& region, const auto& inputs) {
      const Threads some(threads);
      EXPECT_EQ(TeamReallyGot(std::int64_t{kRows} * kColumns), threads);
      return region.run(inputs);
    });
}

TYPED_TEST(SameBitsOnAnyTeam, EveryRegionGivesThemWithThreadingOff) {
  this->CompareWithOneThread([](const auto& region, const auto& inputs) {
    const Threads three(3);
    NCMultiThreading::ThreadingControl::SetThreadingIsOn(false);
    EXPECT_EQ(TeamReallyGot(std::int64_t{kRows} * kColumns), 1);
    return region.run(inputs);
  });
}

TYPED_TEST(SameBitsOnAnyTeam, EveryRegionGivesThemWithTheScalarTwins) {
  this->CompareWithOneThread([](const auto& region, const auto& inputs) {
    const Threads two(2);
    const bool before = kalmia::simd::UsesScalarTwins();
    kalmia::simd::UseScalarTwins(true);
    const std::string bytes = region.run(inputs);
    kalmia::simd::UseScalarTwins(before);
    return bytes;
  });
}

}  // namespace
