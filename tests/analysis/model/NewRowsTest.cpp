// Rows for a stored model: what they take of memory, and what is thrown where there is none.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "StepTables.h"
#include "TestTables.h"
#include "kalmia/analysis/model/NewRows.h"
#include "testing/AllocationMeter.h"

namespace {

using kalmia::analysis::ApplyChain;
using kalmia::analysis::Table;
using kalmia::analysis::LearnChain;
using kalmia::analysis::ModelInfo;
using kalmia::analysis::NewRows;
using kalmia::analysis::Notes;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Signals;

/// A model whose X are two coefficients of so many channels, 100, 101...
ModelInfo FrameOfCoefficients(int channels) {
  Signals signals = SignalsOf(RandomCells(3, channels));
  Notes notes;
  ModelInfo model;
  model.chain = LearnChain(ParseSteps("wavelet-compress:2:daubechies:4", "steps"), &signals, &notes);
  model.xNames = signals.names;
  return model;
}

/// Columns 100 and 103 alone.
std::string TwoChannels(int rows) {
  std::string text = "100,103\n";
  for (int r = 0; r < rows; ++r) text += std::to_string(r % 7) + "," + std::to_string(r % 5 + 0.5) + "\n";
  return text;
}

TEST(NewRows, TakeNoRoomForAllTheColumnsThatTheTableDoesNotHave) {
  constexpr int kChannels = 100000, kRows = 300;
  const ModelInfo model = FrameOfCoefficients(kChannels);
  const Table table(TwoChannels(kRows), "t");
  Notes notes;
  const PeakBytesDuring peak;
  const NewRows rows = ReadNewRows(model, table, "", &notes);
  EXPECT_EQ(rows.x.SizeRows(), kRows);
  EXPECT_EQ(rows.x.SizeColumns(), 2);
  // The whole is 120 MB. A block of it is an eighth, in and out of the step, and a row has copies on its way.
  EXPECT_LT(peak.GetBytes(), 60 << 20);
}

TEST(NewRows, AreTheSameInBlocksAsOneByOne) {
  constexpr int kChannels = 1 << 20, kRows = 6;  // four rows in a block
  const ModelInfo model = FrameOfCoefficients(kChannels);
  const Table table(TwoChannels(kRows), "t");
  Notes notes;
  const NewRows rows = ReadNewRows(model, table, "", &notes);
  ASSERT_EQ(rows.x.SizeRows(), kRows);
  for (int r = 0; r < kRows; ++r) {
    NCDataMatrix<float> cells(1, kChannels);
    Signals signals = SignalsOf(cells);
    signals.cells.Row(0)[0] = NumbersOf(table, "100")[static_cast<std::size_t>(r)];
    signals.cells.Row(0)[3] = NumbersOf(table, "103")[static_cast<std::size_t>(r)];
    ApplyChain(model.chain, &signals);
    for (int c = 1; c <= 2; ++c) EXPECT_EQ(rows.x[r + 1][c], static_cast<float>(signals.cells.Row(0)[c - 1])) << r;
  }
}

TEST(NewRows, LeaveMissingMemoryToTheirCaller) {
  const ModelInfo model = FrameOfCoefficients(40);
  const Table table(TwoChannels(3), "t.csv");
  int refused = 0;
  for (int which = 1;; ++which) {
    Notes notes;
    const FailAllocation fail(which);
    try {
      ReadNewRows(model, table, "", &notes);
      if (!fail.HasFailed()) break;
    } catch (const std::bad_alloc&) {
      ++refused;
    }
  }
  EXPECT_GT(refused, 10);
}

}  // namespace
