#pragma once

#include "kalmia/analysis/validation/internal/ComponentSeries.h"

namespace kalmia::analysis {

/// Series of PLS models: model a has a components.
class PLSFamily : public SeriesFamily {
 public:
  std::unique_ptr<ComponentSeries> Extract(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                           const SeriesLimits& limits, WorkProgress* progress) const override;
  bool HasModelsOfPLS(std::size_t /*yColumns*/) const override { return true; }
  ImportanceKinds Importances() const override { return ImportanceKinds::OfPLS; }
};

}  // namespace kalmia::analysis
