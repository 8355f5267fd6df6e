#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "signal/WaveletCase.h"

using ::testing::Each;

// The same input on several threads at once. A share of it, taken and given back by each call, would be counted in
// plain memory: the count goes astray, and then the input is freed under its owner, or never its own again.

namespace {

using Cells = std::vector<std::vector<float>>;

constexpr int kThreads = 4;
constexpr int kRounds = 5000;  // of some microseconds each: long enough for a count that is not safe to go astray

Cells CellsOfRows(const NCDataMatrix<float>& m) {
  Cells cells;
  for (const NCDataVector<float>& row : m) cells.push_back(CellsOf(row));
  return cells;
}

/// Whether a write finds the cells where they are, as in a vector that nobody has a share of.
bool IsUnshared(NCDataVector<float>& v) {
  const float* const cells = v.begin();
  v(1, v[1]);
  return v.begin() == cells;
}

bool IsUnshared(NCDataMatrix<float>& m) {
  const NCDataVector<float>* const rows = m.begin();
  bool unshared = true;
  for (int r = 1; r <= m.SizeRows(); ++r) unshared = IsUnshared(m(r)) && unshared;
  return m.begin() == rows && unshared;
}

void ExpectTheSameOnSeveralThreads(const std::function<Cells()>& operation) {
  const Cells alone = operation();
  std::vector<int> wrong(kThreads, 0);
  std::vector<std::thread> threads;
  for (int& count : wrong)
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) count += operation() != alone;
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(wrong, Each(0));
}

/// A table with holes, of four signals by row and eight by column.
class WaveletOnSeveralThreads : public ::testing::Test {
 protected:
  using Transform = std::function<NCDataMatrix<float>*(NCDataVector<float>*& means, NCDataVector<float>*& slopes)>;

  /// The result of a transform of the table, and its trends.
  Cells ResultOf(const Transform& transform) const {
    NCDataVector<float>*means = nullptr, *slopes = nullptr;
    const OwnedMatrix result(transform(means, slopes));
    const OwnedVector ownedMeans(means), ownedSlopes(slopes);
    Cells cells = CellsOfRows(*result);
    cells.push_back(CellsOf(*means));
    cells.push_back(CellsOf(*slopes));
    return cells;
  }
  void TearDown() override { EXPECT_TRUE(IsUnshared(table_)); }

  const SomeFilters filters_;
  NCDataMatrix<float> table_ = RandomSignals(4, 8, 1);
};

TEST_F(WaveletOnSeveralThreads, TransformsTheRowsOfOneTable) {
  ExpectTheSameOnSeveralThreads([this] {
    return ResultOf([this](auto*& means, auto*& slopes) {
      return Wavelet::ForwardTransformObswise(&table_, filters_.decomposition, Wavelet::DetrendLinear, means, slopes,
                                              nullptr, /*pad=*/true);
    });
  });
}

TEST_F(WaveletOnSeveralThreads, TransformsTheColumnsOfOneTable) {
  ExpectTheSameOnSeveralThreads([this] {
    return ResultOf([this](auto*& means, auto*& slopes) {
      return Wavelet::ForwardTransformVarwise(&table_, filters_.decomposition, Wavelet::DetrendLinear, means, slopes,
                                              nullptr, /*pad=*/true);
    });
  });
}

TEST_F(WaveletOnSeveralThreads, TransformsTheRowsOfOneTableInABestBasis) {
  const BoolVector decisions(7, true);
  ExpectTheSameOnSeveralThreads([&] {
    return ResultOf([&](auto*& means, auto*& slopes) {
      return Wavelet::ForwardTransformBestBasisObswise(&table_, &decisions, filters_.decomposition,
                                                       Wavelet::DetrendLinear, means, slopes, nullptr);
    });
  });
}

TEST_F(WaveletOnSeveralThreads, TransformsTheColumnsOfOneTableInABestBasis) {
  const BoolVector decisions(3, true);
  ExpectTheSameOnSeveralThreads([&] {
    return ResultOf([&](auto*& means, auto*& slopes) {
      return Wavelet::ForwardTransformBestBasisVarwise(&table_, &decisions, filters_.decomposition,
                                                       Wavelet::DetrendLinear, means, slopes, nullptr);
    });
  });
}

TEST_F(WaveletOnSeveralThreads, FindsTheBestBasesOfOneTable) {
  ExpectTheSameOnSeveralThreads([this] {
    Cells bases;
    for (int row = 0; row <= table_.SizeRows(); ++row) {  // 0: of the column means
      const std::unique_ptr<BoolVector> basis(
          Wavelet::FindBestBasisObswise(&table_, row, filters_.decomposition, Wavelet::DetrendMean, nullptr));
      bases.emplace_back(basis->begin(), basis->end());
    }
    return bases;
  });
}

TEST_F(WaveletOnSeveralThreads, CalculatesTheEnergiesOfOneTable) {
  ExpectTheSameOnSeveralThreads([this] { return Cells{CellsOf(Wavelet::CalcWCEnergy(&table_))}; });
}

TEST_F(WaveletOnSeveralThreads, TransformsOneSignalThereAndBackAndShowsItsPower) {
  NCDataVector<float> signal = RandomSignal(64, 1);
  ExpectTheSameOnSeveralThreads([&] {
    const OwnedVector forward = Transformed(signal, filters_.decomposition, /*pad=*/true);
    const OwnedVector back(Wavelet::BackwardTransform(&signal, filters_.reconstruction, Wavelet::DetrendMean, 64, 1, 0,
                                                      nullptr));
    Cells cells = CellsOfRows(*OwnedMatrix(Wavelet::PowerSpectrum(&signal, /*limit=*/true, nullptr)));
    cells.push_back(CellsOf(*forward));
    cells.push_back(CellsOf(*back));
    return cells;
  });
  EXPECT_TRUE(IsUnshared(signal));
}

}  // namespace
