#include "kalmia/statistics/internal/ExactTestFailure.h"

#include "kalmia/support/NCError.h"

namespace kalmia {

/// The texts are those of Algorithm 643. Five of its failures cannot occur here and have no text: two stacks that
/// overflow (the sorts and the recursion need none of fixed size), a negative key (margins whose keys outgrow an int
/// are refused first), and a table with more rows than its array, in both its wordings (the array has the size of the
/// table).
void FailExactTest(const char* reason) {
  CString message;
  message.Format("Error in fexact.\n%s", reason);
  throw NCError(message);
}

}  // namespace kalmia
