#pragma once

#include "kalmia/pcapls/NCComponentValidator.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/Export.h"

/// When the PLS model inside NCYOrthogonalPLS has enough components: as soon as it has GetMaxComponents() of them, or
/// less than a ten-thousandth of the X that it started from is left.
class KALMIA_EXPORT OSCPLSComponentValidator : public NCComponentValidator {
 public:
  /// `model` is not owned, and has no component out of its X yet. With m the smaller side of its X, `maxComponents`
  /// above 0 is cut to (3 m + 3) / 4, and otherwise (m + 1) / 2 stands for it, in whole numbers; never more than 25.
  OSCPLSComponentValidator(NCPLS* model, int maxComponents);

  bool IsPreComponentValidator() override;  ///< true
  bool IsValid() override;

  int GetMaxComponents() const { return maxComponents_; }
  /// 0.0001 times the sum of squares of X; the largest float where that is not finite.
  float GetSSLimit() const { return ssLimit_; }

 private:
  NCPLS* model_;
  float ssLimit_;
  int maxComponents_;
};
