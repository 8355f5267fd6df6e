#include "kalmia/pcapls/internal/ScoredRows.h"

#include <utility>
#include <vector>

namespace kalmia {

void AddOuterProductWhereScored(NCDataMatrix<float>* matrix, const NCDataVector<float>& t, const NCDataVector<float>& v,
                                float f) {
  if (t.GetNumMisVal() == 0) return matrix->AddVprimV(t, v, f);
  NCDataVector<float> scores = t;
  std::vector<std::pair<int, NCDataVector<float>>> unscored;
  for (int i = 1; i <= t.Size(); ++i)
    if (t[i] == kMissingCell<float>) {
      unscored.emplace_back(i, (*matrix)[i]);
      scores(i, 0.0F);
    }
  matrix->AddVprimV(scores, v, f);
  for (const auto& [row, cells] : unscored) matrix->SetRow(row, cells);
}

}  // namespace kalmia
