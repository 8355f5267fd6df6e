#pragma once

#include "kalmia/pcapls/NCComponentValidator.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/Export.h"

/// Ends the PLS model inside NCYOrthogonalPLS when it has GetMaxComponents() components, or when less than a
/// ten-thousandth of its X is left.
class KALMIA_EXPORT OSCPLSComponentValidator : public NCComponentValidator {
 public:
  /// `model` is not owned, and its X must be complete so far. With m the smaller side of X, the limit is
  /// `maxComponents`, at most (3 m + 3) / 4, or (m + 1) / 2 if `maxComponents` is not above 0, in whole numbers; never
  /// more than 25.
  OSCPLSComponentValidator(NCPLS* model, int maxComponents);

  bool IsPreComponentValidator() override;  ///< true
  bool IsValid() override;

  int GetMaxComponents() const { return maxComponents_; }
  /// 0.0001 times the sum of squares of X; the largest float if this is not finite.
  float GetSSLimit() const { return ssLimit_; }

 private:
  NCPLS* model_;
  float ssLimit_;
  int maxComponents_;
};
