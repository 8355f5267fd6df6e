#include "kalmia/o2pls/FirstLoading.h"

#include "kalmia/pcapls/NCPCA.h"

namespace kalmia {

NCDataVector<float> FirstLoading(const NCDataMatrix<float>& table, int maxIterations) {
  NCPCA model(&table, maxIterations);
  model.NextComponent(nullptr, nullptr, 0, nullptr);
  return (*model.GetPprim())[1];
}

}  // namespace kalmia
