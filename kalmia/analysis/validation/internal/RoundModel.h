#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"
#include "kalmia/analysis/validation/internal/RoundFigures.h"
#include "kalmia/analysis/validation/internal/RoundX.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

/// A series of models of some rows of a table: shifts, centres, factors and components are learnt from these rows
/// alone, as Fit learns them.
class RoundModel {
 public:
  /// X by columns, with their names, and Y by columns. An X column without two different cells has no say. A Y column
  /// without two different cells is predicted by what it has, whatever X says.
  /// The series goes as far as `limits` says; less far where there are fewer rows less one, or columns with a say, or
  /// nothing is left of X or Y.
  /// Throws BadData where a Y column (called by `yNames`) has no cell or a column cannot be scaled; Stopped.
  RoundModel(const SeriesFamily& family, const std::vector<std::string>& xNames, const RealColumns& x,
             const std::vector<std::string>& yNames, const RealColumns& y, NCScale::Scaling scaling,
             SeriesLimits limits, WorkProgress* progress);
  /// Of X that is scaled already.
  RoundModel(const SeriesFamily& family, RoundX x, const std::vector<std::string>& yNames, const RealColumns& y,
             NCScale::Scaling scaling, SeriesLimits limits, WorkProgress* progress);

  int LastModel() const { return lastModel_; }
  /// Nothing where no X column or no Y column has spread.
  const ComponentSeries* Series() const { return series_.get(); }
  /// Names of the X columns without a say.
  const std::vector<std::string>& ColumnsWithoutSpread() const { return x_.ColumnsWithoutSpread(); }

  /// Of rows of all X columns, in the order of those that the models were fitted to. A row without a score in a model
  /// has neither prediction nor distance from there on. Distances are those of the models from `firstOfDistances`, or
  /// else the last one, on.
  LeftOutRows Predict(const RealColumns& x, WorkProgress* progress, int firstOfDistances = 0) const;
  /// The same of measured cells in single precision, where no column is shifted.
  LeftOutRows Predict(const NCDataMatrix<float>& x, WorkProgress* progress, int firstOfDistances = 0) const;

  /// The coefficients of each model in the units of the table: one vector for each Y column, with the slope of each X
  /// column at its place among `slopes`, and the intercept behind them. `places` has a place for each X column that the
  /// models were given; kNowhere for one whose slope is not asked for. 0 where the model has no slope. Nothing of
  /// models before the `first`, or else the last one.
  std::vector<std::vector<std::vector<double>>> Coefficients(const std::vector<std::size_t>& places,
                                                             std::size_t slopes, int first = 0) const;
  /// VIP of each model and kind, likewise, without an intercept; 0 where a column has no say.
  std::vector<std::vector<std::vector<double>>> Importances(const std::vector<std::size_t>& places,
                                                            std::size_t columns) const;
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

 private:
  /// A Y column: in the models, or constant.
  struct YColumn {
    int place = 0;  ///< among those of the models, from 1; 0 for none
    double constant = 0.0;
  };

  NCDataMatrix<float> TakeY(const std::vector<std::string>& names, const RealColumns& y);
  double InUnitsOfTable(const YColumn& column, float scaled) const;
  LeftOutRows PredictScaled(int count, const NCDataMatrix<float>& scaled, WorkProgress* progress,
                            int firstOfDistances) const;
  void NoteDistances(const SeriesPrediction& prediction, int model, LeftOutRows* rows) const;
  std::vector<std::vector<double>> InUnitsOfTable(const RealMatrix& scaled, const std::vector<std::size_t>& places,
                                                  std::size_t slopes) const;

  RoundX x_;
  ImportanceKinds importanceKinds_;
  std::vector<YColumn> y_;
  std::vector<std::string> yNames_;  ///< of those in the models
  std::vector<double> yShifts_;
  ColumnScaling yScaling_;
  std::unique_ptr<ComponentSeries> series_;
  int lastModel_ = 0;
};

}  // namespace kalmia::analysis
