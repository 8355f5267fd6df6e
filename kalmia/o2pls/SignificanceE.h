#pragma once

#include "kalmia/support/Export.h"

/// Why a component was accepted or refused by a cross-validation. The O2PLS code gives R1, R2, NS and N3; the others
/// belong to the same scheme, and have only their names here.
class KALMIA_EXPORT SignificanceE {
 public:
  enum Significance {
    R1 = 0,   ///< its Q2 gains more than the limit
    R2 = 1,   ///< enough single variables gain more than the limit
    R5 = 2,
    NS = 3,   ///< not significant: the gain does not clear the limit
    N3 = 4,   ///< tried with too few observations to say
    N4 = 5,
    U = 6,
    NA = 7,
    RB1 = 8,
    RB2 = 9,
    NB1 = 10
  };

  static const char* GetSignificance(Significance code);  ///< the name as above; "" for a code that is none of these
  static bool IsSignificant(Significance code);           ///< R1, R2, R5, RB1 and RB2
};
