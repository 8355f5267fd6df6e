#include "kalmia/analysis/model/internal/PresentCells.h"

namespace kalmia::analysis {

double SumOfPresentSquares(const NCDataVector<float>& v) {
  double sum = 0.0;
  for (int i = 1; i <= v.Size(); ++i) sum += Present(v[i]) * Present(v[i]);
  return sum;
}

}  // namespace kalmia::analysis
