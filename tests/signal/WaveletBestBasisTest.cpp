#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "signal/WaveletCase.h"

using ::testing::Each;
using ::testing::ElementsAre;

namespace {

struct OpenWavelet : Wavelet {
  using Wavelet::CalcEntropy;
  using Wavelet::GetBestBasisTree;
  using Wavelet::PadVector;
};

using OwnedDecisions = std::unique_ptr<BoolVector>;

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

double EntropyOfAll(const NCDataVector<float>& v, double norm) {
  return OpenWavelet::CalcEntropy(&v, 1, v.Size(), norm);
}

TEST(WaveletNode, CountsLevelByLevel) {
  EXPECT_EQ(Wavelet::Node(1, 1), 1);
  EXPECT_EQ(Wavelet::Node(2, 1), 2);
  EXPECT_EQ(Wavelet::Node(2, 2), 3);
  EXPECT_EQ(Wavelet::Node(3, 2), 5);
  EXPECT_EQ(Wavelet::Node(5, 16), 31);
  EXPECT_EQ(Wavelet::Node(31, 1 << 30), 2147483647);
}

TEST(WaveletBestBasisTree, SplitsWhereTheChildrenHaveLessAndKeepsTies) {
  auto tree = Signal({5, 3, 2, 1, 1, 1, 1});  // below: 2 < 3, and 2 = 2; above: 2 + 2 < 5
  BoolVector decisions(3, false);
  OpenWavelet::GetBestBasisTree(&tree, &decisions);
  EXPECT_THAT(CellsOf(decisions), ElementsAre(true, true, false));
  EXPECT_THAT(CellsOf(tree), ElementsAre(4, 2, 2, 1, 1, 1, 1));
  tree = Signal({4, 3, 2, 1, 1, 1, 1});
  OpenWavelet::GetBestBasisTree(&tree, &decisions);
  EXPECT_THAT(CellsOf(decisions), ElementsAre(false, true, false));  // the second is not asked any more
  EXPECT_THAT(CellsOf(tree), ElementsAre(4, 2, 2, 1, 1, 1, 1));
}

TEST(WaveletBestBasisTree, SplitsAnEntropyThatIsNoNumber) {
  auto tree = Signal({std::numeric_limits<float>::quiet_NaN(), 1, 2});
  BoolVector decisions(1, false);
  OpenWavelet::GetBestBasisTree(&tree, &decisions);
  EXPECT_TRUE(decisions[1]);
  EXPECT_EQ(tree[1], 3.0F);
}

TEST(WaveletBestBasisTree, RoundsASumToFloatBeforeItIsComparedHigherUp) {
  // The two last leave 1 - 2^-26, which is below 1 but rounds to it.
  auto tree = Signal({1, 2, 0, 1 - 0x1p-24F, 0x1p-24F - 0x1p-26F, 0, 0});
  BoolVector decisions(3, false);
  OpenWavelet::GetBestBasisTree(&tree, &decisions);
  EXPECT_THAT(CellsOf(decisions), ElementsAre(false, true, false));
  EXPECT_EQ(tree[2], 1.0F);
}

TEST(WaveletBestBasis, OfZerosAndOfASpikeIsTheSignalItself) {
  const SomeFilters filters;
  NCDataVector<float> spike(16, 0.0F);
  spike(5, 3.0F);
  const NCDataVector<float> zeros(16, 0.0F);
  for (const NCDataVector<float>* signal : {&std::as_const(spike), &zeros}) {
    const OwnedDecisions decisions(
        Wavelet::FindBestBasis(signal, filters.decomposition, Wavelet::DetrendNone, nullptr));
    ASSERT_EQ(decisions->Size(), 15);
    EXPECT_FALSE((*decisions)[1]);
  }
  EXPECT_THAT(CellsOf(*OwnedDecisions(
                  Wavelet::FindBestBasis(&zeros, filters.decomposition, Wavelet::DetrendNone, nullptr))),
              Each(false));
}

TEST(WaveletBestBasis, OfASignalThatIsNotFiniteIsTheSignalItself) {
  const SomeFilters filters;
  for (const float odd : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
    for (const auto mode : kModes) {
      auto signal = RandomSignal(16, 1);
      signal(5, odd);
      const OwnedDecisions decisions(Wavelet::FindBestBasis(&signal, filters.decomposition, mode, nullptr));
      ASSERT_TRUE(decisions);
      EXPECT_THAT(CellsOf(*decisions), Each(false));  // there are no shares of such an energy, and ties stay whole
    }
}

/// All trees below a node of `cells` cells: whole, or split into any two trees.
std::vector<BoolVector> AllBases(int cells) {
  std::vector<BoolVector> bases = {BoolVector(cells - 1, false)};
  if (cells == 1) return bases;
  const std::vector<BoolVector> halves = AllBases(cells / 2);
  for (const BoolVector& left : halves)
    for (const BoolVector& right : halves) {
      BoolVector decisions(cells - 1, false);
      decisions(1) = true;
      for (int level = 1; 1 << level < cells; ++level)
        for (int index = 1; index <= 1 << (level - 1); ++index) {
          decisions(Wavelet::Node(level + 1, index)) = left[Wavelet::Node(level, index)];
          decisions(Wavelet::Node(level + 1, index + (1 << (level - 1)))) = right[Wavelet::Node(level, index)];
        }
      bases.push_back(decisions);
    }
  return bases;
}

/// Kinds of signals whose best bases lie in different corners of the tree.
std::vector<NCDataVector<float>> SignalsForBases(int n) {
  std::vector<NCDataVector<float>> signals;
  for (unsigned seed = 1; seed <= 10; ++seed) {
    signals.push_back(RandomSignal(n, seed));
    NCDataVector<float> wave(n, 0.0F), bump(n, 0.0F);
    for (int i = 1; i <= n; ++i) {
      wave(i, std::cos(0.3F * seed * i) + 0.1F * signals[0][i]);
      bump(i, std::exp(-0.1F * (i - 0.5F * seed) * (i - 0.5F * seed)) + 0.01F * signals[0][i]);
    }
    signals.push_back(wave);
    signals.push_back(bump);
  }
  return signals;
}

TEST(WaveletBestBasis, HasTheLeastEntropyOfAllBasesThereAre) {
  for (const FamilyAndOrder& filter :
       {FamilyAndOrder{Wavelet::FunctionDaubechies, 1}, {Wavelet::FunctionSymmlet, 3}, {Wavelet::FunctionCoiflet, 1}})
    for (int n : {2, 4, 8, 16}) {
      const Filters filters(filter.type, filter.order);
      const auto bases = AllBases(n);
      ASSERT_EQ(bases.size(), n == 2 ? 2U : n == 4 ? 5U : n == 8 ? 26U : 677U);
      int split = 0;
      for (const NCDataVector<float>& signal : SignalsForBases(n)) {
        const OwnedDecisions decisions(
            Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendNone, nullptr));
        const double found = EntropyOfAll(*InBasis(signal, *decisions, filters.decomposition), Norm(signal));
        double least = std::numeric_limits<double>::infinity();
        for (const BoolVector& basis : bases)
          least = std::min(least, EntropyOfAll(*InBasis(signal, basis, filters.decomposition), Norm(signal)));
        // A basis of 16 blocks adds 31 entropies below 3, each rounded to float.
        EXPECT_LE(found, least + 31 * 3 * 0x1p-24) << filter << ", " << n << " cells";
        split += (*decisions)[1];
      }
      EXPECT_GT(split, 0);
    }
}

TEST(WaveletBestBasis, OfAPreparedSignalIsThatOfTheFilledDetrendedAndPaddedOne) {
  const SomeFilters filters;
  std::set<std::vector<bool>> decisionsOfModes;
  for (const auto mode : kModes) {
    const auto holes = Signal({25, -99, 24, 28, 23, 23, 21, 21, -99, 22, 28});
    auto prepared = Signal({25, 24.5F, 24, 28, 23, 23, 21, 21, 21.5F, 22, 28});
    long double mean = 0, slope = 0;
    if (mode == Wavelet::DetrendMean) prepared.DetrendMean(mean);
    if (mode == Wavelet::DetrendLinear) prepared.DetrendLinear(mean, slope);
    OpenWavelet::PadVector(&prepared, 16);
    const OwnedDecisions found(Wavelet::FindBestBasis(&holes, filters.decomposition, mode, nullptr));
    const OwnedDecisions expected(
        Wavelet::FindBestBasis(&prepared, filters.decomposition, Wavelet::DetrendNone, nullptr));
    EXPECT_EQ(CellsOf(*found), CellsOf(*expected)) << mode;
    decisionsOfModes.insert(CellsOf(*found));
  }
  EXPECT_EQ(decisionsOfModes.size(), 3U) << "each mode has a basis of its own here";
}

TEST(WaveletBestBasis, FillsGivenDecisionsOfTheRightSizeAndNoOthers) {
  const SomeFilters filters;
  const auto signal = RandomSignal(12, 1);
  const OwnedDecisions expected(
      Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendMean, nullptr));
  for (bool before : {false, true}) {
    BoolVector decisions(15, before);
    const BoolVector share(decisions);
    EXPECT_EQ(Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendMean, &decisions), &decisions);
    EXPECT_EQ(CellsOf(decisions), CellsOf(*expected));
    EXPECT_THAT(CellsOf(share), Each(before));
  }
  for (int size : {0, 11, 14, 16}) {
    BoolVector decisions(size, true);
    EXPECT_EQ(Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendMean, &decisions), nullptr);
    EXPECT_THAT(CellsOf(decisions), Each(true));
  }
}

TEST(WaveletBestBasis, IsRefusedWithoutASignalOrFilters) {
  const SomeFilters filters;
  const auto signal = RandomSignal(4, 1);
  const NCDataVector<float> holes(4), none;
  for (const NCDataVector<float>* bad : {static_cast<const NCDataVector<float>*>(nullptr), &holes, &none})
    EXPECT_EQ(Wavelet::FindBestBasis(bad, filters.decomposition, Wavelet::DetrendNone, nullptr), nullptr);
  for (bool low : {false, true}) {
    Wavelet::WaveletFilters half = filters.decomposition;
    (low ? half.lowPass : half.highPass) = nullptr;
    EXPECT_EQ(Wavelet::FindBestBasis(&signal, half, Wavelet::DetrendNone, nullptr), nullptr);
  }
}

TEST(WaveletBestBasis, OfATableIsThatOfARowOrOfTheColumnMeans) {
  const SomeFilters filters;
  NCDataMatrix<float> table = RandomSignals(3, 16, 1);
  for (int r = 1; r <= 3; ++r) table(r, 4, -99.0F);  // a column without a mean: a hole of the mean signal
  NCDataVector<float> means(16);
  for (int c = 1; c <= 16; ++c) means(c, static_cast<float>(table.GetColumn(c).GetMean()));
  ASSERT_EQ(means.GetNumMisVal(), 1);
  for (int row = 0; row <= 3; ++row) {
    const NCDataVector<float> signal = row == 0 ? means : table[row];
    const OwnedDecisions expected(
        Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendMean, nullptr));
    BoolVector given(15, false);
    EXPECT_EQ(Wavelet::FindBestBasisObswise(&table, row, filters.decomposition, Wavelet::DetrendMean, &given), &given);
    EXPECT_EQ(CellsOf(given), CellsOf(*expected)) << row;
    const OwnedDecisions made(
        Wavelet::FindBestBasisObswise(&table, row, filters.decomposition, Wavelet::DetrendMean, nullptr));
    EXPECT_EQ(CellsOf(*made), CellsOf(*expected)) << row;
  }
}

TEST(WaveletBestBasis, OfATableIsRefusedWithoutTheRowOrWhereThatOfItsSignalIs) {
  const SomeFilters filters;
  const NCDataMatrix<float> table = RandomSignals(3, 16, 1);
  for (int row : {-1, 4})
    EXPECT_EQ(Wavelet::FindBestBasisObswise(&table, row, filters.decomposition, Wavelet::DetrendNone, nullptr),
              nullptr);
  for (int row : {0, 1}) {
    BoolVector others(7, true);
    EXPECT_EQ(Wavelet::FindBestBasisObswise(&table, row, filters.decomposition, Wavelet::DetrendNone, &others),
              nullptr);
    EXPECT_THAT(CellsOf(others), Each(true));
    for (bool low : {false, true}) {
      Wavelet::WaveletFilters half = filters.decomposition;
      (low ? half.lowPass : half.highPass) = nullptr;
      EXPECT_EQ(Wavelet::FindBestBasisObswise(&table, row, half, Wavelet::DetrendNone, nullptr), nullptr);
    }
  }
  const NCDataMatrix<float> noRows(0, 4), noColumns(4, 0);
  EXPECT_EQ(Wavelet::FindBestBasisObswise(&noRows, 0, filters.decomposition, Wavelet::DetrendNone, nullptr), nullptr);
  EXPECT_EQ(Wavelet::FindBestBasisObswise(&noColumns, 0, filters.decomposition, Wavelet::DetrendNone, nullptr),
            nullptr);
  EXPECT_EQ(Wavelet::FindBestBasisObswise(nullptr, 0, filters.decomposition, Wavelet::DetrendNone, nullptr), nullptr);
}

}  // namespace
