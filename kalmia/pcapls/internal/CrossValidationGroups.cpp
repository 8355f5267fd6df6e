#include "kalmia/pcapls/internal/CrossValidationGroups.h"

#include <algorithm>

#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/NCError.h"

namespace kalmia {

NCIntegralVector<int, -99> GroupsOrDefault(const NCIntegralVector<int, -99>* given, int count, int rounds) {
  if (!given) return GetDeafultCVGroupsVector(count, std::max(rounds, 1));
  NCIntegralVector<int, -99> copy;
  copy.CopyContent(*given);
  return copy;
}

void RequireGroupForEach(const NCIntegralVector<int, -99>& groups, int count, const char* what) {
  if (groups.Size() == count) return;
  CString message;
  message.Format("Cross validation: there are %i groups for %i %s.", groups.Size(), count, what);
  throw NCError(message);
}

void RequireSizeOfModel(int size, int sizeOfModel, const char* what) {
  if (size == sizeOfModel) return;
  CString message;
  message.Format("Cross validation: the model has %i %s, and had %i when the validation was made.", sizeOfModel, what,
                 size);
  throw NCError(message);
}

void RequireCellPerVariable(int cells, int variables, const char* name) {
  if (cells == variables) return;
  CString message;
  message.Format("Cross validation: %s has %i cells for %i variables.", name, cells, variables);
  throw NCError(message);
}

}  // namespace kalmia
