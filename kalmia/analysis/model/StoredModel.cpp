#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

void TakeOut(const StoredFilter& filter, NCDataMatrix<float>* x) {
  for (int a = 1; a <= filter.p.SizeRows(); ++a) x->AddVprimV(x->RegressRows(filter.w[a]), filter.p[a], -1.0F);
}

}  // namespace kalmia::analysis
