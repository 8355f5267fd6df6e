#include "kalmia/o2pls/internal/FirstLoading.h"

#include "kalmia/pcapls/NCPCA.h"

namespace kalmia {

NCDataVector<float> FirstLoading(const NCDataMatrix<float>& table, int maxIterations, NCProgress* progress) {
  NCPCA model(&table, maxIterations);
  model.NextComponent(progress, nullptr, 0, nullptr);
  return (*model.GetPprim())[1];
}

}  // namespace kalmia
