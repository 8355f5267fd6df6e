#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "signal/WaveletCase.h"
#include "testing/Ints.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

struct OpenWavelet : Wavelet {
  using Wavelet::SubForwardTransform;
};

using Indices = NCIntegralVector<int, -99>;

std::vector<std::string> TextsOf(const NCStringVector& names) {
  std::vector<std::string> texts;
  for (int i = 1; i <= names.Size(); ++i) texts.emplace_back(static_cast<const char*>(names[i]));
  return texts;
}

std::vector<std::string> TextsOf(NCStringVector* names) {
  const std::unique_ptr<NCStringVector> owned(names);
  return TextsOf(*owned);
}

TEST(WaveletCompression, PicksTheListedCellsInTheirOrder) {
  const auto v = Signal({10, 20, -99});
  const auto indices = Ints({3, 1, 2, 1});
  const OwnedVector picked(Wavelet::CompressVector(&v, &indices, nullptr));
  EXPECT_THAT(CellsOf(*picked), ElementsAre(-99, 10, 20, 10));
  EXPECT_EQ(picked->GetNumMisVal(), 1);
}

TEST(WaveletCompression, WritesIntoAVectorOfTheListsSizeAndMayBeTheInput) {
  auto v = Signal({10, 20});
  const auto indices = Ints({2, 1});
  NCDataVector<float> out(2);
  EXPECT_EQ(Wavelet::CompressVector(&v, &indices, &out), &out);
  EXPECT_THAT(CellsOf(out), ElementsAre(20, 10));
  EXPECT_EQ(out.GetNumMisVal(), 0);
  EXPECT_EQ(Wavelet::CompressVector(&v, &indices, &v), &v);
  EXPECT_THAT(CellsOf(v), ElementsAre(20, 10));
}

TEST(WaveletCompression, RefusesAVectorThatIsLongerThanTheList) {
  const auto v = Signal({1, 2, 3});
  const auto fewer = Ints({1, 2}), right = Ints({1, 2, 3}), zero = Ints({0, 1, 2}), beyond = Ints({1, 2, 4});
  NCDataVector<float> out(2, 7.0F);
  EXPECT_EQ(Wavelet::CompressVector(&v, &fewer, nullptr), nullptr);
  EXPECT_EQ(Wavelet::CompressVector(&v, &fewer, &out), nullptr);
  EXPECT_EQ(Wavelet::CompressVector(&v, &right, &out), nullptr);  // out has not the size of the list
  EXPECT_EQ(Wavelet::CompressVector(nullptr, &right, nullptr), nullptr);
  EXPECT_EQ(Wavelet::CompressVector(&v, nullptr, nullptr), nullptr);
  EXPECT_EQ(Wavelet::CompressVector(&v, &zero, nullptr), nullptr);
  EXPECT_EQ(Wavelet::CompressVector(&v, &beyond, nullptr), nullptr);
  EXPECT_THAT(CellsOf(out), Each(7.0F));
}

TEST(WaveletCompression, OfNothingByAnEmptyListIsNothing) {
  const NCDataVector<float> none;
  const Indices noIndices;
  const OwnedVector picked(Wavelet::CompressVector(&none, &noIndices, nullptr));
  ASSERT_TRUE(picked);
  EXPECT_EQ(picked->Size(), 0);
  NCDataVector<float> out;
  EXPECT_EQ(Wavelet::CompressVector(&none, &noIndices, &out), &out);
}

TEST(WaveletUncompression, PutsTheCellsWhereTheListSaysAndZerosElsewhere) {
  const auto v = Signal({10, 20});
  const auto indices = Ints({5, 2});
  EXPECT_THAT(CellsOf(*OwnedVector(Wavelet::UncompressVector(&v, &indices, 5, nullptr, false))),
              ElementsAre(0, 20, 0, 0, 10));
  EXPECT_THAT(CellsOf(*OwnedVector(Wavelet::UncompressVector(&v, &indices, 5, nullptr, true))),
              ElementsAre(0, 20, 0, 0, 10, 0, 0, 0));
  EXPECT_EQ(OwnedVector(Wavelet::UncompressVector(&v, &indices, 8, nullptr, true))->Size(), 8);
}

TEST(WaveletUncompression, OfNoIndicesGivesZerosOfTheFullLength) {
  const NCDataVector<float> none;
  const Indices noIndices;
  EXPECT_THAT(CellsOf(*OwnedVector(Wavelet::UncompressVector(&none, &noIndices, 3, nullptr, false))),
              ElementsAre(0, 0, 0));
  EXPECT_THAT(CellsOf(*OwnedVector(Wavelet::UncompressVector(&none, &noIndices, 3, nullptr, true))),
              ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(CellsOf(*OwnedVector(Wavelet::UncompressVector(&none, &noIndices, 0, nullptr, false))), IsEmpty());
}

TEST(WaveletUncompression, WritesIntoAVectorOfTheLengthAndMayBeTheInput) {
  auto v = Signal({10, 20, 30});
  const auto indices = Ints({3, 1, 2});
  NCDataVector<float> out(3, -99.0F);
  EXPECT_EQ(Wavelet::UncompressVector(&v, &indices, 3, &out, false), &out);
  EXPECT_THAT(CellsOf(out), ElementsAre(20, 30, 10));
  EXPECT_EQ(out.GetNumMisVal(), 0);
  EXPECT_EQ(Wavelet::UncompressVector(&v, &indices, 3, &v, false), &v);
  EXPECT_THAT(CellsOf(v), ElementsAre(20, 30, 10));
}

TEST(WaveletUncompression, WritesIntoAVectorOfThePaddedLengthAndCountsItsHoles) {
  const auto v = Signal({10, -99});
  const auto indices = Ints({5, 2});
  NCDataVector<float> out(8, -99.0F);
  EXPECT_EQ(Wavelet::UncompressVector(&v, &indices, 5, &out, true), &out);
  EXPECT_THAT(CellsOf(out), ElementsAre(0, -99, 0, 0, 10, 0, 0, 0));
  EXPECT_EQ(out.GetNumMisVal(), 1);
}

TEST(WaveletUncompression, KeepsTheLastOfSeveralCellsForOnePosition) {
  const auto v = Signal({10, 20, 30});
  const auto indices = Ints({2, 3, 2});
  EXPECT_THAT(CellsOf(*OwnedVector(Wavelet::UncompressVector(&v, &indices, 3, nullptr, false))),
              ElementsAre(0, 30, 20));
}

TEST(WaveletUncompression, RefusesWhatDoesNotFit) {
  const auto two = Signal({1, 2});
  const auto twoIndices = Ints({1, 2}), three = Ints({1, 2, 3}), twice = Ints({1, 1});
  const auto zero = Ints({0, 1}), beyond = Ints({1, 5});
  const struct {
    const char* what;
    const NCDataVector<float>* in;
    const Indices* indices;
    int originalLength, outLength;
    bool padded;
  } kBad[] = {{"no vector", nullptr, &twoIndices, 4, 4, false},
              {"no list", &two, nullptr, 4, 4, false},
              {"more indices than cells", &two, &twice, 1, 1, false},
              {"more indices than cells, padded", &two, &twice, 1, 1, true},
              {"another number of indices", &two, &three, 4, 4, false},
              {"an output of another length", &two, &twoIndices, 4, 3, false},
              {"an output that is not padded", &two, &twoIndices, 3, 3, true},
              {"a negative length", &two, &twoIndices, -1, 0, true},
              {"a length without a power of two above", &two, &twoIndices, (1 << 30) + 1, 1, true},
              {"index 0", &two, &zero, 4, 4, false},
              {"an index beyond the length", &two, &beyond, 4, 4, false}};
  for (const auto& bad : kBad) {
    SCOPED_TRACE(bad.what);
    NCDataVector<float> out(bad.outLength, 7.0F);
    EXPECT_EQ(Wavelet::UncompressVector(bad.in, bad.indices, bad.originalLength, &out, bad.padded), nullptr);
    EXPECT_THAT(CellsOf(out), Each(7.0F));
  }
}

TEST(WaveletUncompression, OfNoIndicesIsRefusedTooWhereNoPowerOfTwoIsAbove) {
  const NCDataVector<float> none;
  const Indices noIndices;
  NCDataVector<float> out;
  EXPECT_EQ(OwnedVector(Wavelet::UncompressVector(&none, &noIndices, (1 << 30) + 1, nullptr, true)), nullptr);
  EXPECT_EQ(Wavelet::UncompressVector(&none, &noIndices, (1 << 30) + 1, &out, true), nullptr);
  EXPECT_EQ(Wavelet::UncompressVector(&none, &noIndices, -1, &out, true), nullptr);
}

TEST(WaveletCompression, KeepsExactlyTheCellsThatItListsAndNothingElse) {
  const SomeFilters filters;
  const auto signal = RandomSignal(50, 1);
  const OwnedVector coefficients = Transformed(signal, filters.decomposition, true);
  std::vector<int> order(64);
  std::iota(order.begin(), order.end(), 1);
  std::sort(order.begin(), order.end(),
            [&](int a, int b) { return std::abs((*coefficients)[a]) > std::abs((*coefficients)[b]); });
  order.resize(10);
  const auto indices = Ints(order);
  NCDataVector<float> kept = *coefficients;
  kept.Reduce(indices);  // CompressVector takes no list that is shorter than the vector
  const OwnedVector restored(Wavelet::UncompressVector(&kept, &indices, 50, nullptr, true));
  ASSERT_EQ(restored->Size(), 64);
  double lost = 0;
  for (int i = 1; i <= 64; ++i) {
    const bool listed = std::count(order.begin(), order.end(), i) > 0;
    EXPECT_EQ((*restored)[i], listed ? (*coefficients)[i] : 0.0F) << i;
    if (!listed) lost += double((*coefficients)[i]) * (*coefficients)[i];
  }
  // Orthogonal: what the padded signal loses is what the dropped coefficients held.
  const OwnedVector whole(Wavelet::BackwardTransform(coefficients.get(), filters.reconstruction, Wavelet::DetrendNone,
                                                     64, 0, 0, nullptr));
  const OwnedVector back(Wavelet::BackwardTransform(restored.get(), filters.reconstruction, Wavelet::DetrendNone, 64, 0,
                                                    0, nullptr));
  EXPECT_NEAR(Norm(*whole - *back), std::sqrt(lost), kRoundings * Norm(*whole));
}

TEST(WaveletCompression, ByAListOfAllPositionsIsUndone) {
  const auto v = RandomSignal(8, 1);
  const auto indices = Ints({8, 1, 7, 2, 6, 3, 5, 4});
  const OwnedVector packed(Wavelet::CompressVector(&v, &indices, nullptr));
  const OwnedVector back(Wavelet::UncompressVector(packed.get(), &indices, 8, nullptr, false));
  EXPECT_EQ(CellsOf(*back), CellsOf(v));
}

TEST(WaveletDetailSizes, AreHalvedAndTakeTheCellThatIsSetAside) {
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(8, 3)), ElementsAre(4, 2, 1));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(7, 1)), ElementsAre(4));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(7, 2)), ElementsAre(4, 1));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(12, 3)), ElementsAre(6, 4, 1));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(11, 3)), ElementsAre(6, 2, 1));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(2, 1)), ElementsAre(1));   // a single cell stays single
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(3, 1)), ElementsAre(1));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(1, 2)), ElementsAre(0, 0));
  EXPECT_THAT(CellsOf(Wavelet::GetNumInDetails(8, 0)), IsEmpty());
}

TEST(WaveletMovedIndices, AreTheOddLengthsThatAreMet) {
  EXPECT_THAT(CellsOf(Wavelet::GetMovedIndexses(8, 3)), IsEmpty());
  EXPECT_THAT(CellsOf(Wavelet::GetMovedIndexses(7, 2)), ElementsAre(7, 3));
  EXPECT_THAT(CellsOf(Wavelet::GetMovedIndexses(7, 3)), ElementsAre(7, 3, 1));
  EXPECT_THAT(CellsOf(Wavelet::GetMovedIndexses(12, 3)), ElementsAre(3));
  EXPECT_THAT(CellsOf(Wavelet::GetMovedIndexses(11, 2)), ElementsAre(11, 5));
  EXPECT_THAT(CellsOf(Wavelet::GetMovedIndexses(7, 0)), IsEmpty());
}

TEST(WaveletDetailSizes, AddUpToTheLengthWithTheLastApproximationAndAnOddCell) {
  for (int n = 2; n <= 4096; ++n) {
    int levels = 0;
    while (n >> (levels + 1) > 0) ++levels;  // as many as a transform without padding has
    const Indices sizes = Wavelet::GetNumInDetails(n, levels);
    ASSERT_EQ(std::accumulate(sizes.begin(), sizes.end(), 1 + n % 2), n);
  }
}

TEST(WaveletMovedIndices, AreWhereATransformWithoutPaddingLeavesCellsOfEveryLevel) {
  const SomeFilters filters;
  for (int n = 3; n <= 140; ++n) {
    int levels = 0;
    while (n >> (levels + 1) > 0) ++levels;
    const OwnedVector whole = Transformed(RandomSignal(n, n), filters.decomposition, false);
    // Cells at these positions are those of the last level that reached them: transform no further, and see.
    for (const int position : CellsOf(Wavelet::GetMovedIndexses(n, levels))) {
      NCDataVector<float> cells = RandomSignal(n, n);
      for (int m = n; m > position; m /= 2)
        OpenWavelet::SubForwardTransform(&cells, &cells, m - m % 2, 1, m / 2 + 1, filters.decomposition);
      EXPECT_EQ((*whole)[position], cells[position]) << n;
    }
  }
}

TEST(WaveletVariableNames, CountOrFollowAListOfIndices) {
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("x", 2)), ElementsAre("x_1", "x_2"));
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("x", 0)), IsEmpty());
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("x", -1)), IsEmpty());
  const auto indices = Ints({7, 3});
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("a b", &indices)), ElementsAre("a b_7", "a b_3"));
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames(nullptr, &indices)), ElementsAre("_7", "_3"));
  EXPECT_EQ(Wavelet::MakeVarNames("x", nullptr), nullptr);
}

TEST(WaveletVariableNames, OfABestBasisHaveTheDepthOfTheirBlock) {
  // Split: the root, its second half, and of that the first half; 8 cells.
  BoolVector decisions(7, false);
  decisions(Wavelet::Node(1, 1)) = true;
  decisions(Wavelet::Node(2, 2)) = true;
  decisions(Wavelet::Node(3, 3)) = true;
  decisions(Wavelet::Node(3, 1)) = true;  // below a node that is whole: never asked
  const auto indices = Ints({1, 4, 5, 6, 7, 8});
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("w", &indices, &decisions)),
              ElementsAre("w_1_1", "w_1_4", "w_3_5", "w_3_6", "w_2_7", "w_2_8"));
  const BoolVector whole(7, false), all(7, true);
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("w", &indices, &whole)),
              ElementsAre("w_0_1", "w_0_4", "w_0_5", "w_0_6", "w_0_7", "w_0_8"));
  EXPECT_THAT(TextsOf(Wavelet::MakeVarNames("w", &indices, &all)),
              ElementsAre("w_3_1", "w_3_4", "w_3_5", "w_3_6", "w_3_7", "w_3_8"));
}

TEST(WaveletVariableNames, AreRefusedWithoutDecisionsOrOutsideOfThem) {
  const auto indices = Ints({1, 4}), one = Ints({1}), zero = Ints({0}), beyond = Ints({5});
  const BoolVector decisions(3, false), none, noTree(4, true);
  EXPECT_EQ(Wavelet::MakeVarNames("w", &indices, nullptr), nullptr);
  EXPECT_EQ(Wavelet::MakeVarNames("w", &one, &none), nullptr);
  EXPECT_EQ(Wavelet::MakeVarNames("w", nullptr, &decisions), nullptr);
  EXPECT_EQ(Wavelet::MakeVarNames("w", &zero, &decisions), nullptr);
  EXPECT_EQ(Wavelet::MakeVarNames("w", &beyond, &decisions), nullptr);
  EXPECT_EQ(Wavelet::MakeVarNames("w", &indices, &noTree), nullptr);
}

}  // namespace
