#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "signal/WaveletCase.h"
#include "testing/AllocationMeter.h"
#include "testing/Ints.h"

// What is given to be filled stays as it was where memory runs out.

namespace {

/// Lets each allocation of `operation(out)` fail in turn, until none is left.
template <class Out>
void ExpectUntouchedWhereMemoryRunsOut(const Out& before, const std::function<void(Out&)>& operation) {
  int failures = 0;
  for (int which = 1;; ++which, ++failures) {
    Out out;
    out.CopyContent(before);
    try {
      const FailAllocation fail(which);
      operation(out);
      if (!fail.HasFailed()) break;
      FAIL() << "allocation " << which << " was not missed";
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(out, before) << "allocation " << which;
  }
  EXPECT_GT(failures, 0);
}

using Vector = NCDataVector<float>;

TEST(WaveletOutOfMemory, LeavesTransformsAndTheirInversesAsTheyWere) {
  const SomeFilters filters;
  const auto signal = RandomSignal(13, 1), padded = RandomSignal(16, 2);
  long double mean = 0, slope = 0;
  ExpectUntouchedWhereMemoryRunsOut<Vector>(Signal({1, -99, 3}), [&](Vector& out) {
    Wavelet::ForwardTransform(&signal, filters.decomposition, Wavelet::DetrendLinear, mean, slope, &out, true);
  });
  ExpectUntouchedWhereMemoryRunsOut<Vector>(signal, [&](Vector& out) {
    Wavelet::BackwardTransform(&padded, filters.reconstruction, Wavelet::DetrendLinear, 13, 1, 1, &out);
  });
}

TEST(WaveletOutOfMemory, LeavesPacketsAndTheirInversesAsTheyWere) {
  const SomeFilters filters;
  const auto signal = RandomSignal(13, 1), padded = RandomSignal(16, 2);
  const BoolVector decisions(15, true);
  long double mean = 0, slope = 0;
  ExpectUntouchedWhereMemoryRunsOut<Vector>(padded, [&](Vector& out) {
    Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters.decomposition, Wavelet::DetrendMean, mean, slope,
                                       &out);
  });
  ExpectUntouchedWhereMemoryRunsOut<Vector>(signal, [&](Vector& out) {
    Wavelet::BackwardTransformBestBasis(&padded, &decisions, filters.reconstruction, Wavelet::DetrendMean, 13, 1, 0,
                                        &out);
  });
}

TEST(WaveletOutOfMemory, LeavesGivenDecisionsAsTheyWere) {
  const SomeFilters filters;
  const auto signal = RandomSignal(13, 1);
  const BoolVector before(15, true);
  ExpectUntouchedWhereMemoryRunsOut<BoolVector>(before, [&](BoolVector& decisions) {
    Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendMean, &decisions);
  });
}

TEST(WaveletOutOfMemory, KeepsNothingOfNamesThatWereNotMade) {
  const auto indices = Ints({1, 3, 4});
  const BoolVector decisions(3, true);
  const std::function<NCStringVector*()> kMakers[] = {
      [&] { return Wavelet::MakeVarNames("a name that is long enough for a block of its own", 3); },
      [&] { return Wavelet::MakeVarNames("a name that is long enough for a block of its own", &indices); },
      [&] { return Wavelet::MakeVarNames("a name that is long enough for a block of its own", &indices, &decisions); }};
  for (const auto& make : kMakers) {
    delete make();  // what a first call leaves behind for good is there now
    int failures = 0;
    for (int which = 1;; ++which, ++failures) {
      const PeakBytesDuring meter;
      try {
        const FailAllocation fail(which);
        delete make();
        if (!fail.HasFailed()) break;
        FAIL() << "allocation " << which << " was not missed";
      } catch (const std::bad_alloc&) {
      }
      EXPECT_EQ(meter.GetLiveBytes(), 0) << "allocation " << which;
    }
    EXPECT_GT(failures, 3);  // the vector and each name
  }
}

TEST(WaveletOutOfMemory, LeavesCompressedVectorsAsTheyWere) {
  const auto two = Signal({10, 20}), three = Signal({1, 2, 3});
  const auto indices = Ints({2, 1}), repeated = Ints({2, 1, 2});
  ExpectUntouchedWhereMemoryRunsOut<Vector>(
      three, [&](Vector& out) { Wavelet::CompressVector(&two, &repeated, &out); });
  ExpectUntouchedWhereMemoryRunsOut<Vector>(
      three, [&](Vector& out) { Wavelet::UncompressVector(&two, &indices, 3, &out, false); });
}

TEST(WaveletOutOfMemory, LeavesASpectrumAsItWas) {
  const auto coefficients = RandomSignal(8, 1);
  ExpectUntouchedWhereMemoryRunsOut<NCDataMatrix<float>>(
      NCDataMatrix<float>(2, 2, 1.0F),
      [&](NCDataMatrix<float>& out) { Wavelet::PowerSpectrum(&coefficients, false, &out); });
}

}  // namespace
