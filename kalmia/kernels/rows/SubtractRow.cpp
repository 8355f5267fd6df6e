#include "kalmia/kernels/rows/SubtractRow.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "kalmia/kernels/rows/UnlinkedRows.h"
#include "kalmia/kernels/simd/AddScaledToRows.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {

void SubtractRow(NCDataMatrix<float>* X, const NCDataVector<float>& v) {
  const int rows = X->SizeRows();
  const int columns = X->SizeColumns();
  const UnlinkedRows<float> unlinked(X);
  if (rows == 0 || columns == 0) return;
  // Where v has a hole, nothing is subtracted. What is added is -1 times a cell in double, rounded to float with the
  // sum: a difference of floats is the same rounded twice or once, for double has more than twice the digits.
  std::vector<float> shift(v.GetVector() + 1, v.GetVector() + 1 + columns);
  std::replace(shift.begin(), shift.end(), kMissingCell<float>, 0.0F);
  constexpr int kRowsSideBySide = 4;
  constexpr float kFactors[kRowsSideBySide] = {-1.0F, -1.0F, -1.0F, -1.0F};
  ForSlices(rows, TeamSize(std::int64_t{rows} * columns), kRowsSideBySide, [&](int begin, int end) {
    for (int first = begin; first <= end; first += kRowsSideBySide) {
      float* row[kRowsSideBySide];
      const int count = std::min(kRowsSideBySide, end - first + 1);
      for (int k = 0; k < count; ++k) row[k] = unlinked.Fetch(first + k);
      simd::AddScaledToPresent(row, kFactors, count, shift.data(), columns);
    }
    return 0;
  });
}

}  // namespace kalmia
