#include "kalmia/kernels/RowShift.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "kalmia/kernels/Team.h"

namespace kalmia {

void SubtractFromRows(NCDataMatrix<float>* X, const NCDataVector<float>& v) {
  const int rows = X->SizeRows();
  const int columns = X->SizeColumns();
  X->ForceUnlink();
  if (rows == 0 || columns == 0) return;
  // Where v has a hole, nothing is subtracted. What is added is -1 times a cell in double, rounded to float with the
  // sum: a difference of floats is the same rounded twice or once, for double has more than twice the digits.
  std::vector<float> shift(v.GetVector() + 1, v.GetVector() + 1 + columns);
  std::replace(shift.begin(), shift.end(), kMissingCell<float>, 0.0F);
#pragma omp parallel for schedule(static) num_threads(TeamSize(std::int64_t{rows} * columns))
  for (int r = 1; r <= rows; ++r) {
    int emptied = 0;  // none: the shift has no holes
    NCDataMatrix<float>::AddFV(*X, -1.0F, shift.data(), /*misValMode=*/1, r, emptied, /*columnMisVal=*/nullptr);
  }
}

}  // namespace kalmia
