#include "testing/AllocationMeter.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <functional>
#include <new>
#include <thread>
#include <vector>

#include "testing/StreamAttacks.h"

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::SizeIs;

/// Takes bytes and gives them back. Volatile: else the compiler may do without the pair.
void TakeAndGiveBack(std::size_t bytes) {
  char* volatile taken = new char[bytes];
  delete[] taken;
}

TEST(PeakBytesDuring, CountsWhatIsHeldAtOnceAndNotTheSum) {
  const PeakBytesDuring meter;
  for (int i = 0; i < 10; ++i) TakeAndGiveBack(100000);
  EXPECT_GE(meter.GetBytes(), 100000);
  EXPECT_LT(meter.GetBytes(), 200000);
  EXPECT_EQ(meter.GetLiveBytes(), 0);
}

TEST(PeakBytesDuring, NestsWithoutForgettingTheOuterPeak) {
  const PeakBytesDuring outer;
  TakeAndGiveBack(500000);
  {
    const PeakBytesDuring inner;
    TakeAndGiveBack(1000);
    EXPECT_LT(inner.GetBytes(), 10000);
  }
  EXPECT_GE(outer.GetBytes(), 500000);
}

TEST(PeakBytesDuring, CountsEveryThreadAndEveryFormOfNew) {
  struct alignas(64) Wide {
    char bytes[64000];
  };
  const PeakBytesDuring meter;
  std::thread([] {
    Wide* volatile wide = new Wide;
    delete wide;
  }).join();
  EXPECT_GE(meter.GetBytes(), 64000);
  int* volatile quiet = new (std::nothrow) int[50000];
  EXPECT_GE(meter.GetLiveBytes(), 200000);
  delete[] quiet;
}

/// Reads a count and then believes it, in the way that `Trust` names.
enum class Trust { Memory, Cells, Silence, Exceptions };
template <Trust trust>
class Gullible : public VexStreamBase {
 public:
  int count = 0;

 protected:
  bool VexStreamableStartWrite(std::ostream& stream) override {
    const int written = trust == Trust::Cells ? count + 1 : count;
    return WriteFourBytes(&written, 1, stream);
  }
  bool VexStreamableStartRead(std::istream& stream) override {
    if (trust == Trust::Exceptions) throw VexStreamError();
    const bool good = ReadFourBytes(&count, 1, stream);
    if (trust == Trust::Memory && count > 0) TakeAndGiveBack(static_cast<std::size_t>(count & 0xFFFFFF));
    if (trust == Trust::Silence) stream.clear();
    return good || trust == Trust::Silence;
  }
};

/// The texts of the failures that `attack` reports.
std::vector<std::string> FailuresOf(const std::function<void()>& attack) {
  ::testing::TestPartResultArray failures;
  {
    const ::testing::ScopedFakeTestPartResultReporter reporter(
        ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
    attack();
  }
  std::vector<std::string> texts;
  for (int i = 0; i < failures.size(); ++i) texts.push_back(failures.GetTestPartResult(i).message());
  return texts;
}

const std::string kZero(4, '\0');

TEST(StreamAttacks, NoticeAReaderThatTakesMemoryOnAPromise) {
  const auto failures = FailuresOf([] { StreamAttacks<Gullible<Trust::Memory>>().Read("\xFF\xFF\xFF\x7F"); });
  EXPECT_THAT(failures, SizeIs(2)) << "from a stream of known length and from a pipe";
  EXPECT_THAT(failures, Each(HasSubstr("MemoryBound")));
}

TEST(StreamAttacks, NoticeAReaderThatAcceptsACutStream) {
  const auto failures = FailuresOf([] { StreamAttacks<Gullible<Trust::Silence>>().EveryCut(kZero); });
  EXPECT_THAT(failures, Contains(HasSubstr("cut after 0 of 4 bytes")));
}

TEST(StreamAttacks, NoticeAnObjectThatChangesFromPassToPass) {
  const auto failures = FailuresOf([] { StreamAttacks<Gullible<Trust::Cells>>().Read(kZero); });
  EXPECT_THAT(failures, SizeIs(2));
  EXPECT_THAT(failures, Each(HasSubstr("changes from one pass to the next")));
}

TEST(StreamAttacks, NoticeAReaderThatThrowsWhereItMayNot) {
  const auto failures = FailuresOf([] { StreamAttacks<Gullible<Trust::Exceptions>>().Read(kZero); });
  EXPECT_THAT(failures, SizeIs(2));
  EXPECT_THAT(failures, Each(HasSubstr("promises a false read")));
}

/// Allocates twice; which of the two failed, or 0.
int WhichOfTwoFails() {
  for (int which = 1; which <= 2; ++which) {
    try {
      ::operator delete(::operator new(100));  // a new-expression could be optimised away
    } catch (const std::bad_alloc&) {
      return which;
    }
  }
  return 0;
}

TEST(FailAllocation, FailsTheOneThatIsAskedForAndNoOther) {
  for (int which = 1; which <= 2; ++which) {
    const FailAllocation failure(which);
    EXPECT_FALSE(failure.HasFailed());
    EXPECT_EQ(WhichOfTwoFails(), which);
    EXPECT_TRUE(failure.HasFailed());
    EXPECT_EQ(WhichOfTwoFails(), 0);
  }
}

TEST(FailAllocation, FailsNothingBehindItsScope) {
  { const FailAllocation failure(1); }
  EXPECT_EQ(WhichOfTwoFails(), 0);
}

}  // namespace
