#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "signal/WaveletCase.h"
#include "testing/AllocationMeter.h"

using ::testing::AnyOf;
using ::testing::Each;

namespace {

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

using TableTransform = decltype(&Wavelet::ForwardTransformObswise);

/// Both ways to look at a table.
struct Direction {
  const char* name;
  TableTransform transform;
  bool byRow;

  NCDataVector<float> SignalOf(const NCDataMatrix<float>& table, int i) const {
    return byRow ? table[i] : table.GetColumn(i);
  }
  int SignalsOf(const NCDataMatrix<float>& table) const { return byRow ? table.SizeRows() : table.SizeColumns(); }
};
const Direction kDirections[] = {{"by observation", &Wavelet::ForwardTransformObswise, true},
                                 {"by variable", &Wavelet::ForwardTransformVarwise, false}};

class WaveletOfTables : public ::testing::TestWithParam<Direction> {
 protected:
  NCDataMatrix<float> Table(int signals, int length, unsigned seed) const {
    NCDataMatrix<float> table = RandomSignals(signals, length, seed);
    if (!GetParam().byRow) table.Transpose();
    return table;
  }
  NCDataMatrix<float>* Transform(const NCDataMatrix<float>* in, Wavelet::DetrendMode mode, NCDataMatrix<float>* out,
                                 bool pad) {
    return GetParam().transform(in, filters_.decomposition, mode, means_, slopes_, out, pad);
  }
  void TearDown() override {
    delete means_;
    delete slopes_;
  }

  const SomeFilters filters_;
  NCDataVector<float>* means_ = nullptr;
  NCDataVector<float>* slopes_ = nullptr;
};

TEST_P(WaveletOfTables, TransformEachSignalByItself) {
  for (int length : {1, 2, 7, 8, 21})
    for (bool pad : {false, true})
      for (const auto mode : kModes) {
        SCOPED_TRACE(testing::Message() << length << " cells, pad " << pad << ", mode " << mode);
        const NCDataMatrix<float> table = Table(3, length, 1);
        const OwnedMatrix result(Transform(&table, mode, nullptr, pad));
        ASSERT_TRUE(result);
        ASSERT_EQ(GetParam().SignalsOf(*result), 3);
        for (int i = 1; i <= 3; ++i) {
          const NCDataVector<float> signal = GetParam().SignalOf(table, i);
          long double mean = 0, slope = 0;
          const OwnedVector expected(
              Wavelet::ForwardTransform(&signal, filters_.decomposition, mode, mean, slope, nullptr, pad));
          EXPECT_EQ(CellsOf(GetParam().SignalOf(*result, i)), CellsOf(*expected));
          if (mode != Wavelet::DetrendNone) { EXPECT_EQ((*means_)[i], static_cast<float>(mean)); }
          if (mode == Wavelet::DetrendLinear) { EXPECT_EQ((*slopes_)[i], static_cast<float>(slope)); }
        }
        EXPECT_EQ(result->GetNumMisVal(), 0);
        delete means_;
        delete slopes_;
        means_ = slopes_ = nullptr;
      }
}

TEST_P(WaveletOfTables, MakeVectorsOfTrendsOnlyWhereTheModeNeedsThem) {
  const NCDataMatrix<float> table = Table(3, 8, 1);
  for (const auto mode : kModes) {
    const OwnedMatrix result(Transform(&table, mode, nullptr, true));
    EXPECT_EQ(means_ ? means_->Size() : 0, mode != Wavelet::DetrendNone ? 3 : 0) << mode;
    EXPECT_EQ(slopes_ ? slopes_->Size() : 0, mode == Wavelet::DetrendLinear ? 3 : 0) << mode;
  }
}

TEST_P(WaveletOfTables, WriteGivenVectorsOfTrendsAndAGivenTable) {
  const NCDataMatrix<float> table = Table(3, 8, 1);
  NCDataVector<float>* const means = means_ = new NCDataVector<float>(3, 0.0F);
  NCDataVector<float>* const slopes = slopes_ = new NCDataVector<float>(3, 0.0F);
  NCDataMatrix<float> out(1, 1, 5.0F);
  EXPECT_EQ(Transform(&table, Wavelet::DetrendLinear, &out, true), &out);
  EXPECT_EQ(means_, means);
  EXPECT_EQ(slopes_, slopes);
  for (int i = 1; i <= 3; ++i) EXPECT_NE((*slopes)[i], 0.0F);
  const OwnedMatrix expected(Transform(&table, Wavelet::DetrendLinear, nullptr, true));
  EXPECT_EQ(out, *expected);
  EXPECT_EQ(out.SizeRows(), table.SizeRows());
}

TEST_P(WaveletOfTables, LeaveVectorsAloneThatTheModeDoesNotNeed) {
  const NCDataMatrix<float> table = Table(3, 8, 1);
  means_ = new NCDataVector<float>(2, 7.0F);  // of a wrong length, which does not matter in mode 0
  slopes_ = new NCDataVector<float>(2, 8.0F);
  const OwnedMatrix result(Transform(&table, Wavelet::DetrendNone, nullptr, true));
  EXPECT_TRUE(result);
  EXPECT_THAT(CellsOf(*means_), Each(7.0F));
  EXPECT_THAT(CellsOf(*slopes_), Each(8.0F));
}

TEST_P(WaveletOfTables, MayWriteIntoTheInputWhetherItsSizeChangesOrNot) {
  for (bool pad : {true, false}) {
    NCDataMatrix<float> table = Table(3, 6, 1);
    const NCDataMatrix<float> share = table, before = Table(3, 6, 1);
    const OwnedMatrix expected(Transform(&table, Wavelet::DetrendNone, nullptr, pad));
    EXPECT_EQ(Transform(&table, Wavelet::DetrendNone, &table, pad), &table);
    EXPECT_EQ(table.SizeRows(), expected->SizeRows());
    EXPECT_EQ(table, *expected);
    EXPECT_EQ(share, before);
  }
}

TEST_P(WaveletOfTables, KeepTheCountsOfHolesOfAGivenTable) {
  const NCDataMatrix<float> table = Table(4, 8, 1);
  NCDataMatrix<float> out(table.SizeRows(), table.SizeColumns());  // all missing, of the right size
  ASSERT_TRUE(Transform(&table, Wavelet::DetrendNone, &out, false));
  EXPECT_EQ(out.SizeRows(), table.SizeRows());
  EXPECT_EQ(out.SizeColumns(), table.SizeColumns());
  EXPECT_EQ(out.GetNumMisVal(), 0);
  for (int c = 1; c <= out.SizeColumns(); ++c) EXPECT_EQ(out.GetColumnMisVal(c), 0);
}

TEST_P(WaveletOfTables, AreRefusedWholeForOneSignalWithoutACell) {
  NCDataMatrix<float> table = Table(3, 8, 1);
  const NCDataVector<float> holes(8);
  GetParam().byRow ? table.SetRow(3, holes) : table.SetColumn(3, holes);
  NCDataMatrix<float> out(2, 2, 1.0F);
  EXPECT_EQ(Transform(&table, Wavelet::DetrendLinear, &out, true), nullptr);
  EXPECT_EQ(Transform(&table, Wavelet::DetrendLinear, nullptr, true), nullptr);
  EXPECT_EQ(out, NCDataMatrix<float>(2, 2, 1.0F));
  EXPECT_EQ(means_, nullptr);
  EXPECT_EQ(slopes_, nullptr);
}

TEST_P(WaveletOfTables, AreRefusedForAWrongNumberOfTrends) {
  const NCDataMatrix<float> table = Table(3, 8, 1);
  means_ = new NCDataVector<float>(2, 7.0F);
  EXPECT_EQ(Transform(&table, Wavelet::DetrendMean, nullptr, true), nullptr);
  EXPECT_EQ(Transform(&table, Wavelet::DetrendLinear, nullptr, true), nullptr);
  EXPECT_THAT(CellsOf(*means_), Each(7.0F));
  EXPECT_EQ(slopes_, nullptr);
  delete means_;
  means_ = nullptr;
  slopes_ = new NCDataVector<float>(4, 8.0F);
  EXPECT_EQ(Transform(&table, Wavelet::DetrendLinear, nullptr, true), nullptr);
  EXPECT_EQ(means_, nullptr);
  EXPECT_THAT(CellsOf(*slopes_), Each(8.0F));
}

TEST_P(WaveletOfTables, AreRefusedWithoutATableOrFilters) {
  const NCDataMatrix<float> table = Table(3, 8, 1);
  EXPECT_EQ(Transform(nullptr, Wavelet::DetrendNone, nullptr, true), nullptr);
  for (bool low : {false, true}) {
    Wavelet::WaveletFilters half = filters_.decomposition;
    (low ? half.lowPass : half.highPass) = nullptr;
    EXPECT_EQ(GetParam().transform(&table, half, Wavelet::DetrendNone, means_, slopes_, nullptr, true), nullptr);
  }
}

TEST_P(WaveletOfTables, WithoutSignalsGiveATableWithoutSignals) {
  const NCDataMatrix<float> table = GetParam().byRow ? NCDataMatrix<float>(0, 6) : NCDataMatrix<float>(6, 0);
  const OwnedMatrix result(Transform(&table, Wavelet::DetrendMean, nullptr, true));
  ASSERT_TRUE(result);
  EXPECT_EQ(GetParam().SignalsOf(*result), 0);
  EXPECT_EQ(means_->Size(), 0);
}

TEST_P(WaveletOfTables, AreRefusedForSignalsWithoutCells) {
  const NCDataMatrix<float> table = GetParam().byRow ? NCDataMatrix<float>(6, 0) : NCDataMatrix<float>(0, 6);
  for (bool pad : {false, true}) EXPECT_EQ(Transform(&table, Wavelet::DetrendMean, nullptr, pad), nullptr);
  EXPECT_EQ(means_, nullptr);
}

TEST_P(WaveletOfTables, LeaveEverythingAsItWasWhereMemoryRunsOut) {
  const NCDataMatrix<float> table = Table(3, 6, 1), untouched(2, 2, 1.0F);
  int failures = 0;
  for (int which = 1;; ++which, ++failures) {
    NCDataMatrix<float> out(2, 2, 1.0F);
    try {
      const FailAllocation fail(which);
      Transform(&table, Wavelet::DetrendLinear, &out, true);
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

TEST_P(WaveletOfTables, GiveWhatWasGivenTheResultsOfSomeSignalsWhereMemoryRunsOut) {
  const NCDataMatrix<float> table = Table(3, 8, 1), old(table.SizeRows(), table.SizeColumns(), 7.0F);
  const OwnedMatrix expected(Transform(&table, Wavelet::DetrendLinear, nullptr, true));
  const OwnedVector newMeans(means_), newSlopes(slopes_);
  means_ = new NCDataVector<float>(3, 7.0F);
  slopes_ = new NCDataVector<float>(3, 7.0F);
  bool someMean = false;
  for (int which = 1;; ++which) {
    means_->SetAllValues(7.0F);
    slopes_->SetAllValues(7.0F);
    NCDataMatrix<float> out;
    out.CopyContent(old);
    try {
      const FailAllocation fail(which);
      Transform(&table, Wavelet::DetrendLinear, &out, true);
      if (!fail.HasFailed()) break;
      FAIL() << "allocation " << which << " was not missed";
    } catch (const std::bad_alloc&) {
    }
    for (int i = 1; i <= 3; ++i) {
      EXPECT_THAT((*means_)[i], AnyOf(7.0F, (*newMeans)[i])) << which;
      EXPECT_THAT((*slopes_)[i], AnyOf(7.0F, (*newSlopes)[i])) << which;
      const std::vector<float> cells = CellsOf(GetParam().SignalOf(out, i)), before(8, 7.0F);
      if (GetParam().byRow)
        EXPECT_THAT(cells, AnyOf(before, CellsOf((*expected)[i]))) << which;
      else
        EXPECT_EQ(cells, before) << which;
    }
    someMean = someMean || (*means_)[1] != 7.0F;
  }
  EXPECT_TRUE(someMean);  // memory did run out in between
}

INSTANTIATE_TEST_SUITE_P(BothWays, WaveletOfTables, ::testing::ValuesIn(kDirections),
                         [](const auto& info) { return info.param.byRow ? "ByObservation" : "ByVariable"; });

}  // namespace
