#include "kalmia/kernels/simd/DeflatedRows.h"

#include <gtest/gtest.h>

#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/simd/Dots.h"
#include "kalmia/kernels/simd/AddScaledToRows.h"
#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

using Row = std::vector<float>;
using Rows = std::vector<Row>;

template <class Pointer>
std::vector<Pointer> PointersTo(Rows& rows) {
  std::vector<Pointer> pointers;
  for (Row& row : rows) pointers.push_back(row.data());
  return pointers;
}

/// What the functions are given, and what each of them makes of it.
struct Case {
  Case(Rows r, Row f, Row others, Row factorsOfDot)
      : rows(std::move(r)),
        factors(std::move(f)),
        w(std::move(others)),
        u(std::move(factorsOfDot)),
        v(factors.rbegin(), factors.rend()) {}

  simd::DeflatedRows Deflated() {
    pointers = PointersTo<const float*>(rows);
    return {pointers.data(), factors.data(), static_cast<int>(rows.size()), w.data(), static_cast<int>(w.size())};
  }

  Rows rows;
  Row factors, w, u;
  std::vector<double> v;  ///< of floats, as promised
  std::vector<const float*> pointers;
};

struct Made {
  Rows stored, storedInPlace, storedWithSums;
  std::vector<double> sums, sumsBesideStored, dots;
};

template <class Store, class Add, class StoreAndAdd, class Dot>
Made MakeAll(Case of, const Store& store, const Add& add, const StoreAndAdd& storeAndAdd, const Dot& dot) {
  const std::vector<double> start(of.w.size(), 0.25);
  Made made{of.rows, of.rows, of.rows, start, start, std::vector<double>(of.rows.size())};
  store(of.Deflated(), PointersTo<float*>(made.stored).data());
  add(of.Deflated(), of.v.data(), made.sums.data());
  storeAndAdd(of.Deflated(), PointersTo<float*>(made.storedWithSums).data(), of.v.data(),
              made.sumsBesideStored.data());
  dot(of.Deflated(), of.u.data(), made.dots.data());
  const simd::DeflatedRows inPlace = of.Deflated();
  store(inPlace, PointersTo<float*>(of.rows).data());
  made.storedInPlace = of.rows;
  return made;
}

Made ByLanes(const Case& of) {
  return MakeAll(of, simd::StoreDeflated, simd::AddDeflated, simd::StoreAndAddDeflated, simd::DotDeflated);
}

Made ByTwins(const Case& of) {
  return MakeAll(of, simd::scalar::StoreDeflated, simd::scalar::AddDeflated, simd::scalar::StoreAndAddDeflated,
                 simd::scalar::DotDeflated);
}

Case RandomCase(int count, int n, unsigned seed) {
  Rows rows;
  for (int k = 0; k < count; ++k) rows.push_back(Cells<float>(n, kHolePatterns[k % 7], seed + k));
  return {rows, Cells<float>(count, HolePattern::None, seed + 50), Cells<float>(n, HolePattern::None, seed + 51),
          Cells<float>(n, HolePattern::None, seed + 52)};
}

TEST(SimdDeflatedRows, AreTheRowsLessTheirMultiples) {
  // The rows become {21, -59} and {-7, -16}; v is {-1, 2}, and the sums start at a quarter.
  const Made made = ByTwins({{{1, -99}, {3, 4}}, {2, -1}, {10, 20}, {1, 3}});
  const Rows expected = {{21, -59}, {-7, -16}};
  EXPECT_EQ(made.stored, expected);
  EXPECT_EQ(made.storedInPlace, expected);
  EXPECT_EQ(made.storedWithSums, expected);
  EXPECT_EQ(made.sums, (std::vector<double>{-34.75, 27.25}));
  EXPECT_EQ(made.sumsBesideStored, made.sums);
  EXPECT_EQ(made.dots, (std::vector<double>{-156, -55}));
}

TEST(SimdDeflatedRows, GiveTheBitsOfAStoredDeflationAndWhatIsMadeOfItsRows) {
  const int n = 100;
  const Case of = RandomCase(simd::kRowsSideBySide, n, 1);
  const Made made = ByLanes(of);
  Rows rows = of.rows;
  simd::AddScaledToRows(PointersTo<float*>(rows).data(), of.factors.data(), simd::kRowsSideBySide, of.w.data(), n);
  std::vector<double> sums(n, 0.25), dots(simd::kRowsSideBySide);
  simd::AddRows(PointersTo<const float*>(rows).data(), of.v.data(), simd::kRowsSideBySide, n, sums.data());
  simd::DotRows(of.u.data(), PointersTo<const float*>(rows).data(), simd::kRowsSideBySide, n, dots.data());
  EXPECT_TRUE(SameBits(made.stored, rows));
  EXPECT_TRUE(SameBits(made.sums, sums));
  EXPECT_TRUE(SameBits(made.dots, dots));
}

TEST(SimdDeflatedRows, LanesGiveTheBitsOfTheScalarTwinForEveryNumberOfRows) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths())
      for (int count = 0; count <= simd::kRowsSideBySide; ++count) {
        SCOPED_TRACE(std::to_string(count) + " rows of " + std::to_string(n));
        const Case of = RandomCase(count, n, static_cast<unsigned>(n));
        const Made lanes = ByLanes(of), twins = ByTwins(of);
        EXPECT_TRUE(SameBits(lanes.stored, twins.stored));
        EXPECT_TRUE(SameBits(lanes.storedInPlace, twins.stored));
        EXPECT_TRUE(SameBits(lanes.storedWithSums, twins.stored));
        EXPECT_TRUE(SameBits(lanes.sums, twins.sums));
        EXPECT_TRUE(SameBits(lanes.sumsBesideStored, twins.sums));
        EXPECT_TRUE(SameBits(lanes.dots, twins.dots));
      }
  }
}

TEST(SimdDeflatedRows, SpecialValuesComeOutAsTheyDoFromTheScalarTwin) {
  const float huge = std::numeric_limits<float>::max(), tiny = std::numeric_limits<float>::denorm_min();
  const float infinity = std::numeric_limits<float>::infinity();
  const Row factors = {0.7F, huge, tiny, -0.0F, infinity, -2.0F, 1e-30F, 1e30F};
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths()) {
      Rows rows;
      for (std::size_t k = 0; k < factors.size(); ++k) rows.push_back(SpecialCells<float>(n, n + k));
      const Case of(rows, factors, SpecialCells<float>(n, n + 500), SpecialCells<float>(n, n + 501));
      const Made lanes = ByLanes(of), twins = ByTwins(of);
      for (std::size_t k = 0; k < factors.size(); ++k) {
        EXPECT_TRUE(SameBitsOrNaNs(lanes.stored[k], twins.stored[k])) << "row " << k << " of " << n;
        EXPECT_TRUE(SameBitsOrNaNs(lanes.storedWithSums[k], twins.stored[k])) << "row " << k << " of " << n;
      }
      EXPECT_TRUE(SameBitsOrNaNs(lanes.sums, twins.sums)) << n;
      EXPECT_TRUE(SameBitsOrNaNs(lanes.sumsBesideStored, twins.sums)) << n;
      EXPECT_TRUE(SameBitsOrNaNs(lanes.dots, twins.dots)) << n;
    }
  }
}

}  // namespace
