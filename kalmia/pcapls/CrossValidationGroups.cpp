#include "kalmia/pcapls/CrossValidationGroups.h"

#include <algorithm>

#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/NCError.h"

NCIntegralVector<int, -99> kalmia::GroupsOrDefault(const NCIntegralVector<int, -99>* given, int count, int rounds,
                                                   const char* what) {
  if (!given) return GetDeafultCVGroupsVector(count, std::max(rounds, 1));
  if (given->Size() == count) return *given;
  CString message;
  message.Format("Cross validation: there are %i groups for %i %s.", given->Size(), count, what);
  throw NCError(message);
}
