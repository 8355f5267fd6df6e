#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "kalmia/support/LanguageString.h"
#include "signal/WaveletCase.h"

namespace {

using Type = Wavelet::WaveletFunctionType;

struct OpenWavelet : Wavelet {
  using Wavelet::GetWaveletFunction;
  using Wavelet::GetWaveletFunctionD;
  using Wavelet::GetWaveletFunctionR;
};

Type TypeOf(int number) { return static_cast<Type>(number); }

/// sum over i of a[i] b[i + shift].
double Product(const NCDataVector<float>& a, const NCDataVector<float>& b, int shift) {
  double sum = 0;
  for (int i = 1; i <= a.Size(); ++i)
    if (i + shift >= 1 && i + shift <= b.Size()) sum += double(a[i]) * double(b[i + shift]);
  return sum;
}

double Sum(const NCDataVector<float>& v) { return static_cast<double>(v.GetSum()); }

// Taps are below 1 and rounded to float: a sum of fifty of them, or of their products, is off by at most 50 half units.
constexpr double kTaps = 50 * 0x1p-24;

TEST(WaveletNames, OfTheModesAreThoseOfTheLanguage) {
  const unsigned ids[] = {10117, 10116, 10115};
  for (int mode = 0; mode <= 2; ++mode)
    EXPECT_STREQ(Wavelet::DetrendStr(static_cast<Wavelet::DetrendMode>(mode)), LanguageString::Get(ids[mode]));
  EXPECT_EQ(Wavelet::DetrendStr(static_cast<Wavelet::DetrendMode>(3)), nullptr);
  EXPECT_EQ(Wavelet::DetrendStr(static_cast<Wavelet::DetrendMode>(-1)), nullptr);
}

TEST(WaveletNames, GiveTheModeOfThatVeryName) {
  for (int mode = 0; mode <= 2; ++mode) {
    const auto expected = static_cast<Wavelet::DetrendMode>(mode);
    const auto other = static_cast<Wavelet::DetrendMode>((mode + 1) % 3);
    EXPECT_EQ(Wavelet::Detrend(Wavelet::DetrendStr(expected), other), expected);
  }
  EXPECT_EQ(Wavelet::Detrend("none", Wavelet::DetrendLinear), Wavelet::DetrendLinear);  // "None" is the name
  EXPECT_EQ(Wavelet::Detrend("", Wavelet::DetrendMean), Wavelet::DetrendMean);
  EXPECT_EQ(Wavelet::Detrend(nullptr, Wavelet::DetrendMean), Wavelet::DetrendMean);
}

TEST(WaveletNames, OfTheFamiliesAreThoseOfTheLanguage) {
  const unsigned ids[] = {10106, 10113, 10114, 10118, 10107, 10108, 10109, 10110, 10111, 10112};
  for (int type = 0; type <= 9; ++type) {
    EXPECT_STREQ(Wavelet::WaveletFunctionStr(TypeOf(type)), LanguageString::Get(ids[type]));
    EXPECT_EQ(Wavelet::WaveletFunction(LanguageString::Get(ids[type]), TypeOf((type + 1) % 10)), type);
  }
  EXPECT_EQ(Wavelet::WaveletFunctionStr(TypeOf(10)), nullptr);
  EXPECT_EQ(Wavelet::WaveletFunctionStr(TypeOf(-1)), nullptr);
  EXPECT_EQ(Wavelet::WaveletFunction("Haar", Wavelet::FunctionSymmlet), Wavelet::FunctionSymmlet);
  EXPECT_EQ(Wavelet::WaveletFunction(nullptr, Wavelet::FunctionCoiflet), Wavelet::FunctionCoiflet);
}

TEST(WaveletNames, FollowTheLanguage) {
  ASSERT_TRUE(LanguageString::Set(10118, "Least asymmetric"));
  EXPECT_STREQ(Wavelet::WaveletFunctionStr(Wavelet::FunctionSymmlet), "Least asymmetric");
  EXPECT_EQ(Wavelet::WaveletFunction("Least asymmetric", Wavelet::FunctionBeylkin), Wavelet::FunctionSymmlet);
  LanguageString::Set(10118, nullptr);
}

TEST(WaveletFilterOrders, HaveTheirNamesAndLengths) {
  const struct {
    int type;
    std::vector<std::string> names;
    std::vector<int> lengths;
  } kFamilies[] = {{0, {"N/A"}, {18}},
                   {1, {"2", "3", "4", "5"}, {12, 18, 24, 30}},
                   {2, {"4", "6", "8", "10", "12", "20", "50"}, {4, 6, 8, 10, 12, 20, 50}},
                   {3, {"4", "6", "8", "10"}, {8, 12, 16, 20}},
                   {4, {"1", "3", "5"}, {2, 6, 10}},
                   {5, {"2", "4", "6", "8"}, {6, 10, 14, 18}},
                   {6, {"1", "3", "5", "7", "9"}, {4, 8, 12, 16, 20}},
                   {7, {"4"}, {10}},
                   {8, {"5"}, {12}},
                   {9, {"8"}, {18}}};
  for (const auto& family : kFamilies) {
    SCOPED_TRACE(family.type);
    const Type type = TypeOf(family.type);
    const int orders = static_cast<int>(family.names.size());
    ASSERT_EQ(Wavelet::GetNumFunctionOrder(type), orders);
    for (int order = 1; order <= orders; ++order) {
      char* name = Wavelet::GetFunctionOrderName(type, order);
      EXPECT_STREQ(name, family.names[order - 1].c_str());
      EXPECT_EQ(Wavelet::GetFunctionOrderIndex(type, family.names[order - 1].c_str()), order);
      const Filters filters(type, order);
      for (const auto& pair : {filters.decomposition, filters.reconstruction}) {
        EXPECT_EQ(pair.lowPass->Size(), family.lengths[order - 1]);
        EXPECT_EQ(pair.highPass->Size(), family.lengths[order - 1]);
      }
    }
    EXPECT_EQ(Wavelet::GetFunctionOrderName(type, 0), nullptr);
    EXPECT_EQ(Wavelet::GetFunctionOrderName(type, -1), nullptr);
    EXPECT_EQ(Wavelet::GetFunctionOrderName(type, orders + 1), nullptr);
    EXPECT_EQ(Wavelet::GetFunctionOrderIndex(type, "7.5"), 0);
    EXPECT_EQ(Wavelet::GetFunctionOrderIndex(type, nullptr), 0);
  }
  EXPECT_EQ(Wavelet::GetNumFunctionOrder(TypeOf(10)), 0);
  EXPECT_EQ(Wavelet::GetNumFunctionOrder(TypeOf(-1)), 0);
  EXPECT_EQ(Wavelet::GetFunctionOrderName(TypeOf(10), 1), nullptr);
  EXPECT_EQ(Wavelet::GetFunctionOrderIndex(TypeOf(10), "4"), 0);
}

TEST(WaveletFilters, StartEmptyAndAreCleanedUpOnce) {
  Wavelet::WaveletFilters filters;
  EXPECT_EQ(filters.highPass, nullptr);
  EXPECT_EQ(filters.lowPass, nullptr);
  filters.CleanUp();
  filters = Wavelet::GetDecompositionFilter(Wavelet::FunctionBeylkin, 1);
  const Wavelet::WaveletFilters copy(filters);
  EXPECT_EQ(copy.lowPass, filters.lowPass);
  EXPECT_EQ(copy.highPass, filters.highPass);
  filters.CleanUp();
  EXPECT_EQ(filters.highPass, nullptr);
  EXPECT_EQ(filters.lowPass, nullptr);
}

TEST(WaveletFilters, AreNullForABadFamilyOrOrder) {
  const struct {
    int type, order;
  } kBad[] = {{0, 0}, {0, 2}, {2, 8}, {3, -1}, {6, 6}, {9, 2}, {10, 1}, {-1, 1}};
  for (const auto& bad : kBad)
    for (const auto& filters : {Wavelet::GetDecompositionFilter(TypeOf(bad.type), bad.order),
                                Wavelet::GetReconstructionFilter(TypeOf(bad.type), bad.order)}) {
      EXPECT_EQ(filters.lowPass, nullptr) << bad.type << ' ' << bad.order;
      EXPECT_EQ(filters.highPass, nullptr) << bad.type << ' ' << bad.order;
    }
}

TEST(WaveletFilters, PublishedOnesComeForTheirKindOfFamilyOnly) {
  for (const FamilyAndOrder& filter : AllFilters()) {
    const bool orthogonal = filter.type <= Wavelet::FunctionSymmlet;
    EXPECT_EQ(OwnedVector(OpenWavelet::GetWaveletFunction(filter.type, filter.order)) != nullptr, orthogonal);
    EXPECT_EQ(OwnedVector(OpenWavelet::GetWaveletFunctionD(filter.type, filter.order)) != nullptr, !orthogonal);
    EXPECT_EQ(OwnedVector(OpenWavelet::GetWaveletFunctionR(filter.type, filter.order)) != nullptr, !orthogonal);
  }
  EXPECT_EQ(OpenWavelet::GetWaveletFunction(Wavelet::FunctionSymmlet, 5), nullptr);
  EXPECT_EQ(OpenWavelet::GetWaveletFunctionD(Wavelet::FunctionBiorthogonal1, 0), nullptr);
  EXPECT_EQ(OpenWavelet::GetWaveletFunctionR(TypeOf(10), 1), nullptr);
}

TEST(WaveletFilters, SymmletsAreStoredWithSumTwoTheOthersWithRootTwo) {
  for (const FamilyAndOrder& filter : OrthogonalFilters()) {
    const OwnedVector h(OpenWavelet::GetWaveletFunction(filter.type, filter.order));
    EXPECT_NEAR(Sum(*h), filter.type == Wavelet::FunctionSymmlet ? 2 : std::sqrt(2), kTaps) << filter;
  }
}

/// Daubechies (1992), table 6.1, N = 2: ((1 + s), (3 + s), (3 - s), (1 - s)) / (4 sqrt 2) with s = sqrt 3.
TEST(WaveletFilters, OfFourTapsAreThoseOfTheClosedForm) {
  const double s = std::sqrt(3), d = 4 * std::sqrt(2);
  const double h[] = {(1 + s) / d, (3 + s) / d, (3 - s) / d, (1 - s) / d};
  const Filters filters(Wavelet::FunctionDaubechies, 1);
  const double expected[4][4] = {{h[3], h[2], h[1], h[0]},
                                 {h[0], -h[1], h[2], -h[3]},
                                 {h[0], h[1], h[2], h[3]},
                                 {-h[3], h[2], -h[1], h[0]}};
  const NCDataVector<float>* const found[] = {filters.decomposition.lowPass, filters.decomposition.highPass,
                                              filters.reconstruction.lowPass, filters.reconstruction.highPass};
  for (int f = 0; f < 4; ++f)
    for (int i = 0; i < 4; ++i) EXPECT_NEAR((*found[f])[i + 1], expected[f][i], 2 * 0x1p-24) << f << ' ' << i;
}

TEST(WaveletFilters, OfAPairOfSplinesHaveTheSignsOfTheirOwnRule) {  // Haar: D = R = (1, 1) / sqrt 2
  const Filters filters(Wavelet::FunctionBiorthogonal1, 1);
  const auto h = static_cast<float>(std::sqrt(0.5));
  EXPECT_THAT(CellsOf(*filters.decomposition.lowPass), ::testing::ElementsAre(h, h));
  EXPECT_THAT(CellsOf(*filters.decomposition.highPass), ::testing::ElementsAre(-h, h));
  EXPECT_THAT(CellsOf(*filters.reconstruction.lowPass), ::testing::ElementsAre(h, h));
  EXPECT_THAT(CellsOf(*filters.reconstruction.highPass), ::testing::ElementsAre(h, -h));
}

class WaveletOrthogonalFilters : public ::testing::TestWithParam<FamilyAndOrder> {};

TEST_P(WaveletOrthogonalFilters, FollowTheRulesOfReversalAndSign) {
  const Filters filters(GetParam().type, GetParam().order);
  const OwnedVector h(OpenWavelet::GetWaveletFunction(GetParam().type, GetParam().order));
  h->Normalise();
  const int length = h->Size();
  for (int i = 1; i <= length; ++i) {
    EXPECT_EQ((*filters.decomposition.lowPass)[i], (*h)[length + 1 - i]);
    EXPECT_EQ((*filters.decomposition.highPass)[i], i % 2 == 0 ? -(*h)[i] : (*h)[i]);
    EXPECT_EQ((*filters.reconstruction.lowPass)[i], (*h)[i]);
    EXPECT_EQ((*filters.reconstruction.highPass)[i], i % 2 == 1 ? -(*h)[length + 1 - i] : (*h)[length + 1 - i]);
  }
}

TEST_P(WaveletOrthogonalFilters, HaveUnitLengthAndNothingInCommonWithTheirEvenShifts) {
  const Filters filters(GetParam().type, GetParam().order);
  const NCDataVector<float>& h = *filters.reconstruction.lowPass;
  EXPECT_NEAR(Sum(h), std::sqrt(2), kTaps);
  for (int shift = 0; shift < h.Size(); shift += 2) EXPECT_NEAR(Product(h, h, shift), shift == 0, kTaps) << shift;
}

INSTANTIATE_TEST_SUITE_P(EveryFilter, WaveletOrthogonalFilters, ::testing::ValuesIn(OrthogonalFilters()));

class WaveletBiorthogonalFilters : public ::testing::TestWithParam<FamilyAndOrder> {};

TEST_P(WaveletBiorthogonalFilters, FollowTheirOwnRulesOfReversalAndSign) {
  const Filters filters(GetParam().type, GetParam().order);
  const OwnedVector d(OpenWavelet::GetWaveletFunctionD(GetParam().type, GetParam().order));
  const OwnedVector r(OpenWavelet::GetWaveletFunctionR(GetParam().type, GetParam().order));
  *d *= std::sqrt(2.0L) / d->GetSum();
  *r *= std::sqrt(2.0L) / r->GetSum();
  const int length = d->Size();
  for (int i = 1; i <= length; ++i) {
    EXPECT_EQ((*filters.decomposition.lowPass)[i], (*d)[length + 1 - i]);
    EXPECT_EQ((*filters.decomposition.highPass)[i], i % 2 == 1 ? -(*r)[i] : (*r)[i]);
    EXPECT_EQ((*filters.reconstruction.lowPass)[i], (*r)[i]);
    EXPECT_EQ((*filters.reconstruction.highPass)[i], i % 2 == 0 ? -(*d)[length + 1 - i] : (*d)[length + 1 - i]);
  }
}

TEST_P(WaveletBiorthogonalFilters, HaveNothingInCommonWithTheEvenShiftsOfTheOther) {
  const OwnedVector d(OpenWavelet::GetWaveletFunctionD(GetParam().type, GetParam().order));
  const OwnedVector r(OpenWavelet::GetWaveletFunctionR(GetParam().type, GetParam().order));
  EXPECT_NEAR(Sum(*d), std::sqrt(2), kTaps);
  EXPECT_NEAR(Sum(*r), std::sqrt(2), kTaps);
  for (int shift = -d->Size(); shift <= d->Size(); shift += 2)
    EXPECT_NEAR(Product(*d, *r, shift), shift == 0, kTaps) << shift;
}

INSTANTIATE_TEST_SUITE_P(EveryFilter, WaveletBiorthogonalFilters, ::testing::ValuesIn(BiorthogonalFilters()));

/// The number of moments that a high pass takes off is what defines the families: Daubechies (1992), chapters 6 and 8.
TEST(WaveletFilters, TakeOffAsManyMomentsAsTheirFamilyPromises) {
  for (const FamilyAndOrder& filter : AllFilters()) {
    if (filter.type == Wavelet::FunctionBeylkin) continue;  // made for the shape of its spectrum, not for moments
    const int number = std::stoi(Wavelet::GetFunctionOrderName(filter.type, filter.order));
    const int moments = filter.type == Wavelet::FunctionDaubechies      ? number / 2
                        : filter.type == Wavelet::FunctionCoiflet       ? 2 * number
                        : filter.type == Wavelet::FunctionSymmlet       ? number
                        : filter.type <= Wavelet::FunctionBiorthogonal3 ? filter.type - 3
                        : filter.type == Wavelet::FunctionBiorthogonal6 ? 6
                                                                        : number;
    const Filters filters(filter.type, filter.order);
    const NCDataVector<float>& g = *filters.decomposition.highPass;
    const double centre = (g.Size() + 1) / 2.0;
    for (int power = 0; power < moments; ++power) {
      double moment = 0, size = 0;
      for (int i = 1; i <= g.Size(); ++i) {
        const double term = double(g[i]) * std::pow((i - centre) / centre, power);
        moment += term;
        size += std::fabs(term);
      }
      // Each tap is off by half a unit of itself, and scaling rounds it once more.
      EXPECT_LT(std::fabs(moment), 2 * 0x1p-24 * size + 1e-12) << filter << ", moment " << power;
    }
  }
}

}  // namespace
