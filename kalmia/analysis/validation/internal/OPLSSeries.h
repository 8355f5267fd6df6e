#pragma once

#include <memory>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"

namespace kalmia::analysis {

/// Series of OPLS models: model 1 has the predictive components alone, and each further model an orthogonal one more.
class OPLSFamily : public SeriesFamily {
 public:
  /// Predictive components; 0 for as many as X and Y of all rows have in common. A round that cannot have so many has
  /// model 0 alone.
  explicit OPLSFamily(int predictive) : predictive_(predictive) {}

  std::unique_ptr<ComponentSeries> Extract(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                           const SeriesLimits& limits, WorkProgress* progress) const override;
  int Block() const override { return predictive_; }
  /// Of one Y column the predictive component and the orthogonal ones span what the components of PLS span.
  /// Source: J. Trygg, S. Wold, J. Chemometrics 16 (2002) 119-128.
  bool HasModelsOfPLS(std::size_t yColumns) const override { return yColumns == 1; }
  void LearnBlock(int ofAllRows) override { predictive_ = ofAllRows; }
  ImportanceKinds Importances() const override { return ImportanceKinds::OfOPLS; }

 private:
  int predictive_;
};

/// With the predictive components that the recipe gives, cut to the number of Y columns.
std::unique_ptr<SeriesFamily> FamilyOf(const OPLSRecipe& recipe, const Table& table);

}  // namespace kalmia::analysis
