#include "kalmia/pcapls/PCACrossValidation.h"

NCIntegralVector<int, -99> GetDeafultCVGroupsVector(int count, int groups) {
  NCIntegralVector<int, -99> result(count);
  for (int i = 1; i <= count; ++i) result(i) = i % groups;
  return result;
}
