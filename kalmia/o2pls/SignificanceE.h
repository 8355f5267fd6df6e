#pragma once

#include "kalmia/support/Export.h"

/// Why a cross-validation accepted or refused a component. O2PLS gives R1, R2, NS and N3; the other codes of the scheme
/// only have their names here.
class KALMIA_EXPORT SignificanceE {
 public:
  enum Significance {
    R1 = 0,   ///< its Q2 gains more than the limit
    R2 = 1,   ///< enough single variables gain more than the limit
    R5 = 2,
    NS = 3,   ///< not significant: the gain does not exceed the limit
    N3 = 4,   ///< tried with too few observations to say
    N4 = 5,
    U = 6,
    NA = 7,
    RB1 = 8,
    RB2 = 9,
    NB1 = 10
  };

  static const char* GetSignificance(Significance code);  ///< the name as above; "" for other codes
  static bool IsSignificant(Significance code);           ///< R1, R2, R5, RB1 and RB2
};
