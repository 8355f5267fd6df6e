#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <memory>
#include <string>
#include <utility>

#include "cluster/OnDisk.h"
#include "kalmia/support/NCProgress.h"
#include "testing/RandomTables.h"

// A disk that fills up while distances are on their way to it and back.

namespace {

/// From Fill() to the end of the scope no file may grow beyond so many bytes, which stands in for a disk that is full.
class DiskThatFills {
 public:
  explicit DiskThatFills(rlim_t bytes) : bytes_(bytes), handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
  }
  ~DiskThatFills() {
    setrlimit(RLIMIT_FSIZE, &before_);
    signal(SIGXFSZ, handler_);
  }
  void Fill() const {
    const rlimit small = {bytes_, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }

 private:
  rlim_t bytes_;
  rlimit before_ = {};
  void (*handler_)(int);
};

/// Fills the disk at the first question of a phase, by which the file that is read has been written whole.
class FillingSink : public NCProgress::Sink {
 public:
  FillingSink(const DiskThatFills* disk, std::string phase) : disk_(disk), phase_(std::move(phase)) {}

  void SetText(const char* text) override { isInPhase_ = isInPhase_ || text == phase_; }
  bool IsBreakPressed() override {
    if (isInPhase_) disk_->Fill();
    return false;
  }
  void SetRange(float, float) override {}
  bool SetValue(float) override { return true; }
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}

 private:
  const DiskThatFills* disk_;
  std::string phase_;
  bool isInPhase_ = false;
};

class FullDisk : public OnDisk {
 protected:
  /// What an analysis of 60 rows, 1770 pairs, ends with, and how many merges it had made, where the disk is full from
  /// that phase on; memory for `cap` pairs.
  CString ErrorWhereItFills(const NCDataMatrix<float>& table, const char* phase, std::uint64_t cap, rlim_t bytes) {
    DendroGram::SetMaximumPairsInMemory(cap);
    const DiskThatFills disk(bytes);
    NCProgress bar(std::make_unique<FillingSink>(&disk, phase));
    DendroGram::SingleLinkageDistanceCalculator calculator;
    const CString message = ErrorOf([&] {
      calculator.Init(table, &bar);
      int i = 0, j = 0;
      for (int merge = 1; merge < table.SizeRows(); ++merge) calculator.FindNearestAndMerge(i, j);
    });
    calculator = DendroGram::SingleLinkageDistanceCalculator();
    EXPECT_EQ(Files(), 0);
    return message;
  }
};

TEST_F(FullDisk, WhileSavingShowsAsAFailedReadWhenTheFileIsSplit) {
  const DiskThatFills disk(4096);
  disk.Fill();
  EXPECT_EQ(ErrorOf([] { Merges(RandomMatrix<float>(60, 3, 0, 1), 500); }), "Error when reading from temporary file.");
}

TEST_F(FullDisk, WhileSplittingShowsAsAFailedReadWhenASegmentIsLoaded) {
  const NCDataMatrix<float> table = RandomMatrix<float>(60, 3, 0, 1);
  // Memory for 442 of the 1770 pairs, 9 segments of some 200: 2400 bytes, of which 100 find room.
  EXPECT_EQ(ErrorWhereItFills(table, "Splitting distances", 500, 100),
            "Internal error in MegaDistances::LoadNextSegment.");
  EXPECT_EQ(ErrorWhereItFills(table, "Splitting distances", 500, 100000), "") << "room enough";
}

TEST_F(FullDisk, WhileASegmentIsDividedAgainShowsAsAFailedReadToo) {
  // All distances lie close to 1, and so in one of the segments, which has to be divided again.
  NCDataMatrix<float> table(60, 60, 0.0F);
  for (int r = 1; r <= 60; ++r) table(r, r, 1 + 0.001F * static_cast<float>(r));
  EXPECT_EQ(ErrorWhereItFills(table, "Re-partitioning", 500, 100),
            "Internal error in MegaDistances::LoadNextSegment.");
  EXPECT_EQ(ErrorWhereItFills(table, "Re-partitioning", 500, 100000), "") << "room enough";
}

}  // namespace
