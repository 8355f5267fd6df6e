#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "kalmia/signal/SignalLength.h"
#include "signal/WaveletCase.h"
#include "signal/WaveletPacketCase.h"
#include "testing/AllocationMeter.h"

using ::testing::Each;

namespace {

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

using PacketTransform = decltype(&Wavelet::ForwardTransformBestBasisObswise);

/// Both ways to look at a table.
struct Direction {
  PacketTransform transform;
  bool byRow;

  NCDataVector<float> SignalOf(const NCDataMatrix<float>& table, int i) const {
    return byRow ? table[i] : table.GetColumn(i);
  }
  int SignalsOf(const NCDataMatrix<float>& table) const { return byRow ? table.SizeRows() : table.SizeColumns(); }
  int LengthOf(const NCDataMatrix<float>& table) const { return byRow ? table.SizeColumns() : table.SizeRows(); }
};
const Direction kDirections[] = {{&Wavelet::ForwardTransformBestBasisObswise, true},
                                 {&Wavelet::ForwardTransformBestBasisVarwise, false}};

class WaveletPacketsOfTables : public ::testing::TestWithParam<Direction> {
 protected:
  NCDataMatrix<float> Table(int signals, int length) const {
    NCDataMatrix<float> table = RandomSignals(signals, length, 1);
    if (!GetParam().byRow) table.Transpose();
    return table;
  }
  NCDataMatrix<float>* Transform(const NCDataMatrix<float>* in, const BoolVector* decisions, Wavelet::DetrendMode mode,
                                 NCDataMatrix<float>* out) {
    return GetParam().transform(in, decisions, filters_.decomposition, mode, means_, slopes_, out);
  }
  void ForgetTrends() {
    delete means_;
    delete slopes_;
    means_ = slopes_ = nullptr;
  }
  void TearDown() override { ForgetTrends(); }

  const SomeFilters filters_;
  NCDataVector<float>* means_ = nullptr;
  NCDataVector<float>* slopes_ = nullptr;
};

TEST_P(WaveletPacketsOfTables, TransformEachSignalInOneBasis) {
  for (int length : {1, 2, 8, 11, 16})
    for (const auto mode : kModes) {
      SCOPED_TRACE(testing::Message() << length << " cells, mode " << mode);
      const int padded = kalmia::PowerLength(length);
      const BoolVector decisions = RandomDecisions(padded, 3);
      const NCDataMatrix<float> table = Table(4, length);
      const OwnedMatrix result(Transform(&table, &decisions, mode, nullptr));
      ASSERT_TRUE(result);
      ASSERT_EQ(GetParam().SignalsOf(*result), 4);
      ASSERT_EQ(GetParam().LengthOf(*result), padded);
      EXPECT_EQ(means_ != nullptr, mode != Wavelet::DetrendNone);
      EXPECT_EQ(slopes_ != nullptr, mode == Wavelet::DetrendLinear);
      for (int i = 1; i <= 4; ++i) {
        const NCDataVector<float> signal = GetParam().SignalOf(table, i);
        long double mean = 0, slope = 0;
        const OwnedVector expected(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters_.decomposition, mode,
                                                                      mean, slope, nullptr));
        EXPECT_EQ(CellsOf(GetParam().SignalOf(*result, i)), CellsOf(*expected));
        if (means_) { EXPECT_EQ((*means_)[i], static_cast<float>(mean)); }
        if (slopes_) { EXPECT_EQ((*slopes_)[i], static_cast<float>(slope)); }
      }
      ForgetTrends();
    }
}

TEST_P(WaveletPacketsOfTables, FillAGivenTableOfAnySizeAndCountItsHoles) {
  const NCDataMatrix<float> table = Table(4, 11);
  const BoolVector decisions = RandomDecisions(16, 3);
  const OwnedMatrix expected(Transform(&table, &decisions, Wavelet::DetrendLinear, nullptr));
  NCDataMatrix<float> small(2, 2), right(expected->SizeRows(), expected->SizeColumns());  // full of holes
  for (NCDataMatrix<float>* out : {&small, &right}) {
    EXPECT_EQ(Transform(&table, &decisions, Wavelet::DetrendLinear, out), out);
    EXPECT_EQ(*out, *expected);
    EXPECT_EQ(GetParam().SignalsOf(*out), 4);
    EXPECT_EQ(out->GetNumMisVal(), 0);
    for (int c = 1; c <= out->SizeColumns(); ++c) EXPECT_EQ(out->GetColumnMisVal(c), 0);
  }
}

TEST_P(WaveletPacketsOfTables, MayWriteIntoTheInputWhetherItsSizeChangesOrNot) {
  const BoolVector decisions = RandomDecisions(16, 3);
  for (int length : {11, 16}) {
    NCDataMatrix<float> table = Table(4, length);
    const NCDataMatrix<float> share = table, before = Table(4, length);
    const OwnedMatrix expected(Transform(&table, &decisions, Wavelet::DetrendNone, nullptr));
    EXPECT_EQ(Transform(&table, &decisions, Wavelet::DetrendNone, &table), &table);
    EXPECT_EQ(table, *expected);
    EXPECT_EQ(share, before);
  }
}

TEST_P(WaveletPacketsOfTables, AreRefusedWholeAndWriteNothingThen) {
  const BoolVector decisions(15, true), others(7, true), none;
  const NCDataMatrix<float> table = Table(4, 11);
  NCDataMatrix<float> hole = table;
  const NCDataVector<float> holes(11);
  GetParam().byRow ? hole.SetRow(2, holes) : hole.SetColumn(2, holes);
  Wavelet::WaveletFilters noLow = filters_.decomposition, noHigh = noLow;
  noLow.lowPass = nullptr;
  noHigh.highPass = nullptr;
  const struct {
    const char* what;
    const NCDataMatrix<float>* in;
    const BoolVector* decisions;
    Wavelet::WaveletFilters filters;
  } kBad[] = {{"no table", nullptr, &decisions, filters_.decomposition},
              {"no decisions", &table, nullptr, filters_.decomposition},
              {"other decisions", &table, &others, filters_.decomposition},
              {"decisions about one cell", &table, &none, filters_.decomposition},
              {"no low pass", &table, &decisions, noLow},
              {"no high pass", &table, &decisions, noHigh},
              {"a signal of holes", &hole, &decisions, filters_.decomposition}};
  NCDataMatrix<float> small(2, 2, 1.0F), right = Table(4, 16);
  for (const auto& bad : kBad)
    for (NCDataMatrix<float>* out : {static_cast<NCDataMatrix<float>*>(nullptr), &small, &right}) {
      SCOPED_TRACE(bad.what);
      EXPECT_EQ(GetParam().transform(bad.in, bad.decisions, bad.filters, Wavelet::DetrendLinear, means_, slopes_, out),
                nullptr);
      EXPECT_EQ(means_, nullptr);
      EXPECT_EQ(slopes_, nullptr);
    }
  EXPECT_EQ(small, NCDataMatrix<float>(2, 2, 1.0F));
  EXPECT_EQ(right, Table(4, 16));
}

TEST_P(WaveletPacketsOfTables, AreRefusedForAWrongNumberOfTrends) {
  const BoolVector decisions(15, true);
  const NCDataMatrix<float> table = Table(4, 11);
  NCDataMatrix<float> out(2, 2, 1.0F);
  means_ = new NCDataVector<float>(3, 7.0F);
  EXPECT_EQ(Transform(&table, &decisions, Wavelet::DetrendMean, &out), nullptr);
  EXPECT_EQ(Transform(&table, &decisions, Wavelet::DetrendLinear, &out), nullptr);
  EXPECT_THAT(CellsOf(*means_), Each(7.0F));
  EXPECT_EQ(slopes_, nullptr);
  ForgetTrends();
  slopes_ = new NCDataVector<float>(3, 8.0F);
  EXPECT_EQ(Transform(&table, &decisions, Wavelet::DetrendLinear, &out), nullptr);
  EXPECT_EQ(means_, nullptr);
  EXPECT_THAT(CellsOf(*slopes_), Each(8.0F));
  EXPECT_EQ(out, NCDataMatrix<float>(2, 2, 1.0F));
}

TEST_P(WaveletPacketsOfTables, WithoutSignalsGiveATableWithoutSignals) {
  const BoolVector decisions(7, true);
  const NCDataMatrix<float> table = GetParam().byRow ? NCDataMatrix<float>(0, 6) : NCDataMatrix<float>(6, 0);
  const OwnedMatrix result(Transform(&table, &decisions, Wavelet::DetrendMean, nullptr));
  ASSERT_TRUE(result);
  EXPECT_EQ(GetParam().SignalsOf(*result), 0);
  EXPECT_EQ(means_->Size(), 0);
}

TEST_P(WaveletPacketsOfTables, AreRefusedForSignalsWithoutCells) {
  const BoolVector none;  // what a signal of one cell has
  const NCDataMatrix<float> table = GetParam().byRow ? NCDataMatrix<float>(6, 0) : NCDataMatrix<float>(0, 6);
  EXPECT_EQ(Transform(&table, &none, Wavelet::DetrendMean, nullptr), nullptr);
  EXPECT_EQ(means_, nullptr);
}

TEST_P(WaveletPacketsOfTables, LeaveEverythingAsItWasWhereMemoryRunsOut) {
  const BoolVector decisions = RandomDecisions(8, 3);
  const NCDataMatrix<float> table = Table(3, 6), untouched(2, 2, 1.0F);
  int failures = 0;
  for (int which = 1;; ++which, ++failures) {
    NCDataMatrix<float> out(2, 2, 1.0F);
    try {
      const FailAllocation fail(which);
      Transform(&table, &decisions, Wavelet::DetrendLinear, &out);
      if (!fail.HasFailed()) break;
      FAIL() << "allocation " << which << " was not missed";
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(out, untouched) << which;
    EXPECT_EQ(means_, nullptr) << which;
    EXPECT_EQ(slopes_, nullptr) << which;
  }
  EXPECT_GE(failures, 10);  // trends, filters, rows, table
}

INSTANTIATE_TEST_SUITE_P(BothWays, WaveletPacketsOfTables, ::testing::ValuesIn(kDirections),
                         [](const auto& info) { return info.param.byRow ? "ByObservation" : "ByVariable"; });

}  // namespace
