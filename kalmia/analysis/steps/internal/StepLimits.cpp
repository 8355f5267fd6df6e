#include "kalmia/analysis/steps/internal/StepLimits.h"

namespace kalmia::analysis {

std::string StepLimits(StepKind kind) {
  switch (kind) {
    case StepKind::Log:
    case StepKind::NegLog: return "takes cells with a x + b above 0";
    case StepKind::Logit: return "takes cells above a and below b; a lies below b";
    // Beyond, the result is no normal number of double precision, or no finite one of single precision.
    case StepKind::Exp: return "takes cells with a x + b from -708 to 88.7";
    case StepKind::Power:
      return "takes cells with a x + b above 0; below 0 too where c is whole, 0 where c is not negative";
    case StepKind::Snv: return "takes rows in which two cells differ, and rows without a cell";
    case StepKind::Smooth: return "the window is wider than the polynomial's order, and at most as wide as the signals";
    case StepKind::Derivative: return "the window as for smooth; order 3 takes polynomial 3";
    case StepKind::WaveletCompress: return "the count is at most that of the channels, rounded up to a power of two";
    default: return "";
  }
}

std::string CommonStepLimits() {
  return "Numbers, those that come out too, are below 3.4e38 in size.\n"
         "Missing cells stay missing up to detrend and in wavelet-denoise; windows make do with the cells\n"
         "they have; wavelets see holes filled along straight lines. A row without a cell stays so.\n";
}

}  // namespace kalmia::analysis
