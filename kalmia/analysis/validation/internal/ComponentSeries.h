#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/internal/RoundFigures.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

// What tells one family of models of Y from another: how components come out of scaled tables. One extraction gives a
// series of models. Model 0 has no component, model 1 a block of one or more, and each further model one more.

/// Components of a model whose block has so many.
inline int ComponentsOfModel(int model, int block) { return model == 0 ? 0 : block + model - 1; }

/// How far a series goes.
struct SeriesLimits {
  int models = 0;      ///< number of the last model
  int components = 0;  ///< that it may have

  /// The number of the last model, where the block of model 1 has so many components.
  int LastModel(int block) const;
};

/// What the models of a series say of new rows, one model after the other, from 0 on.
class SeriesPrediction {
 public:
  virtual ~SeriesPrediction() = default;

  /// Goes on to the next model; not beyond the last one.
  virtual void Next() = 0;
  /// Whether the row (from 1) has all scores of this model; not asked for model 0.
  virtual bool HasScores(int row) const = 0;
  virtual const NCDataMatrix<float>& Y() const = 0;            ///< rows by Y columns, scaled
  virtual std::vector<RowResidual> XResiduals() const = 0;     ///< of each row
};

/// The models that were extracted from tables of scaled cells.
class ComponentSeries {
 public:
  virtual ~ComponentSeries() = default;

  int LastModel() const { return static_cast<int>(pooledDeviations_.size()) - 1; }
  int Block() const { return block_; }
  /// Shares of the sums of squares of X and of Y that each model describes.
  const std::vector<double>& R2X() const { return r2x_; }
  const std::vector<double>& R2Y() const { return r2y_; }
  /// Of the rows that the components come from, see PooledDeviation.
  double PooledDeviationOf(int model) const { return pooledDeviations_[static_cast<std::size_t>(model)]; }

  /// `x` is scaled as the tables were, and has to outlive the prediction.
  virtual std::unique_ptr<SeriesPrediction> Predict(const NCDataMatrix<float>& x) const = 0;
  /// For each model the coefficients of scaled Y on scaled X, X columns by Y columns.
  virtual std::vector<RealMatrix> Slopes() const = 0;
  /// For each model and kind VIP of the X columns, 0 of model 0.
  virtual std::vector<std::vector<std::vector<double>>> Importances() const = 0;

 protected:
  ComponentSeries(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y);

  /// Takes note of what the next model leaves of X and Y. Returns whether it is more of X than roundings.
  bool Append(const NCDataMatrix<float>& xResiduals, const NCDataMatrix<float>& yResiduals);

  int block_ = 1;

 private:
  std::vector<RowResidual> wholeX_, wholeY_;
  std::vector<double> r2x_ = {0.0}, r2y_ = {0.0};
  std::vector<double> pooledDeviations_;  ///< for each model
};

/// Of a weight or loading, in whose place -99 stands for none.
double PresentOrZero(float number);

/// Extracts series of one family.
class SeriesFamily {
 public:
  virtual ~SeriesFamily() = default;

  /// The series ends early where nothing is left of X or Y. Throws Stopped.
  virtual std::unique_ptr<ComponentSeries> Extract(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                                   const SeriesLimits& limits, WorkProgress* progress) const = 0;
  /// Components of the block of model 1; 0 where the series of all rows is to tell.
  virtual int Block() const { return 1; }
  /// The rounds take the block that the series of all rows has.
  virtual void LearnBlock(int /*ofAllRows*/) {}
  /// Whether the models of complete tables say of left-out rows what those of PLS of as many components do, which may be
  /// fitted side by side.
  virtual bool HasModelsOfPLS(std::size_t /*yColumns*/) const { return false; }
  virtual ImportanceKinds Importances() const = 0;
};

}  // namespace kalmia::analysis
