#pragma once

#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/o2pls/internal/O2PLSRounds.h"
#include "kalmia/support/internal/OptionalProgress.h"

namespace kalmia {

/// Adds orthogonal components of one side to the models of all rounds, one at a time, and judges each by Q2 of the
/// block that the side predicts: Q2 = 1 - PRESS / totalSS.
class OrthogonalSearch {
 public:
  OrthogonalSearch(std::vector<O2PLSRound>* rounds, const OptionalProgress& bar, NCProgress* ofModels)
      : rounds_(*rounds), bar_(bar), ofModels_(ofModels) {}

  /// Writes how many components the models have in the end, and appends Q2 and significance of each that was tried.
  /// Throws NCError where the user stops or a round cannot be computed.
  void Run(int* found, NCDataVector<float>* q2Series, NCIntegralVector<int, -99>* significance);

  // To be set before Run.
  bool xSide = true;
  bool isSearch = true;    ///< false: all of `most` are taken, whatever they gain
  int most = 0;
  float totalSS = 0.0F;    ///< of the block whose prediction is judged
  double q2 = 0.0;         ///< of the models as they stand
  double leastGain = 0.0;  ///< in Q2, for a component to be kept

 private:
  bool TryOneMore(NCDataVector<float>* q2Series, NCIntegralVector<int, -99>* significance);

  std::vector<O2PLSRound>& rounds_;
  const OptionalProgress bar_;
  NCProgress* ofModels_;
};

}  // namespace kalmia
