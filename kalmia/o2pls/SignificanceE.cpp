#include "kalmia/o2pls/SignificanceE.h"

const char* SignificanceE::GetSignificance(Significance code) {
  switch (code) {
    case R1: return "R1";
    case R2: return "R2";
    case R5: return "R5";
    case NS: return "NS";
    case N3: return "N3";
    case N4: return "N4";
    case U: return "U";
    case NA: return "NA";
    case RB1: return "RB1";
    case RB2: return "RB2";
    case NB1: return "NB1";
  }
  return "";
}

bool SignificanceE::IsSignificant(Significance code) {
  return code == R1 || code == R2 || code == R5 || code == RB1 || code == RB2;
}
