#pragma once

namespace kalmia {

/// The published filter or filters of one order of a wavelet family; they live as long as the process.
struct WaveletTable {
  const char* order;             ///< its display name
  int length;                    ///< of each filter
  const double* decomposition;   ///< the only filter of an orthogonal family
  const double* reconstruction;  ///< null for an orthogonal family
};

struct WaveletTables {
  const WaveletTable* first;
  int count;
};

/// The orders of a family in ascending order; none for a number that is no Wavelet::WaveletFunctionType.
WaveletTables TablesOfFamily(int type);

}  // namespace kalmia
