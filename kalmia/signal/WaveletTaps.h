#pragma once

#include <vector>

#include "kalmia/signal/Wavelet.h"
#include "kalmia/support/Export.h"

namespace kalmia {

/// A pair of filters in double, where Wavelet::WaveletFilters has it in single precision.
struct WaveletTaps {
  std::vector<double> lowPass;   ///< of the approximation coefficients
  std::vector<double> highPass;  ///< of the detail coefficients; as many taps

  bool Empty() const { return lowPass.empty(); }
};

/// The filters of Wavelet::GetDecompositionFilter and GetReconstructionFilter: the same taps before they are rounded to
/// floats. They are orthogonal, or biorthogonal, and have their sums, to 5e-16 a tap. Both empty out of range.
KALMIA_EXPORT WaveletTaps DecompositionTaps(Wavelet::WaveletFunctionType type, int order);
KALMIA_EXPORT WaveletTaps ReconstructionTaps(Wavelet::WaveletFunctionType type, int order);

}  // namespace kalmia
