#include "kalmia/analysis/validation/internal/OPLSSeries.h"

#include <algorithm>
#include <optional>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/model/internal/PresentCells.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

class OPLSSeriesPrediction : public SeriesPrediction {
 public:
  OPLSSeriesPrediction(const NCDataMatrix<float>& x, const OPLSMatrices& model, int yColumns)
      : x_(x), model_(model), mean_(x.SizeRows(), yColumns, 0.0F) {}

  void Next() override {
    if (prediction_) {
      prediction_->CalcNextComponent();
    } else {
      prediction_.emplace(&x_, &model_.w, &model_.p, &model_.c, &model_.wo, &model_.po, &model_.co);
    }
  }

  bool HasScores(int row) const override {
    const int components = prediction_->GetTPred()->SizeRows() + prediction_->SizeOComps();
    return x_.SizeColumns() - x_[row].GetNumMisVal() >= components && HasScores(*prediction_->GetTPred(), row) &&
           HasScores(*prediction_->GetTOPred(), row);
  }

  const NCDataMatrix<float>& Y() const override { return prediction_ ? *prediction_->GetYPred() : mean_; }

  std::vector<RowResidual> XResiduals() const override {
    if (!prediction_) return RowResiduals(x_);
    NCDataMatrix<float> left = prediction_->GetXOrthoResiduals();
    const NCDataMatrix<float>& p = model_.p[static_cast<std::size_t>(prediction_->SizeOComps())];
    for (int a = 1; a <= p.SizeRows(); ++a) left.AddVprimV((*prediction_->GetTPred())[a], p[a], -1.0F);
    return RowResiduals(left);
  }

 private:
  static bool HasScores(const NCDataMatrix<float>& scores, int row) {
    for (int a = 1; a <= scores.SizeRows(); ++a) {
      if (IsMissing(scores[a][row])) return false;
    }
    return true;
  }

  const NCDataMatrix<float>& x_;
  const OPLSMatrices& model_;
  NCDataMatrix<float> mean_;
  mutable std::optional<NCOPLSPred> prediction_;  ///< whose getters are not const
};

using Direction = std::vector<double>;  ///< in the space of X

Direction RowOf(const NCDataMatrix<float>& matrix, int row) {
  Direction cells;
  for (int k = 1; k <= matrix.SizeColumns(); ++k) cells.push_back(PresentOrZero(matrix[row][k]));
  return cells;
}

double Product(const Direction& a, const Direction& b) {
  double sum = 0.0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += a[k] * b[k];
  return sum;
}

/// Components that are taken out of X one after the other, as linear functions of X itself: the scores of what they
/// leave along w are x r / w'w, with r = w less the sum over them of r_i (p_i' w).
class Removed {
 public:
  /// x times this is the score along w.
  Direction Along(const Direction& w) const {
    Direction r = w;
    for (std::size_t i = 0; i < scores_.size(); ++i) {
      const double share = Product(loadings_[i], w);
      for (std::size_t k = 0; k < r.size(); ++k) r[k] -= share * scores_[i][k];
    }
    const double length = Product(w, w);
    for (double& cell : r) cell = length > 0.0 ? cell / length : 0.0;
    return r;
  }

  void TakeOut(Direction score, Direction loading) {
    scores_.push_back(std::move(score));
    loadings_.push_back(std::move(loading));
  }

 private:
  std::vector<Direction> scores_;
  std::vector<Direction> loadings_;
};

void AddProduct(const Direction& score, const NCDataVector<float>& c, RealMatrix* slopes) {
  for (std::size_t k = 0; k < slopes->rows; ++k) {
    for (std::size_t j = 0; j < slopes->columns; ++j) {
      (*slopes)(k, j) += score[k] * PresentOrZero(c[static_cast<int>(j) + 1]);
    }
  }
}

class OPLSSeries : public ComponentSeries {
 public:
  OPLSSeries(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int predictive, const SeriesLimits& limits,
             WorkProgress* progress)
      : ComponentSeries(x, y),
        xColumns_(static_cast<std::size_t>(x.SizeColumns())),
        yColumns_(static_cast<std::size_t>(y.SizeColumns())),
        importances_(1, {2, std::vector<double>(xColumns_, 0.0)}) {
    block_ = std::max(1, predictive);
    if (limits.LastModel(block_) == 0) return;
    NCOPLS model(&x, &y, predictive, kMaxIterations);
    if (!AddBlock(predictive, limits, progress, &model)) return;
    const double smallest = kExhausted * static_cast<double>(x.GetSS());
    const int most = limits.LastModel(block_);
    bool isMore = Append(model.GetXResiduals(), model.GetYResiduals());
    TakeImportances(model);
    while (LastModel() < most && isMore && Advance(&model, progress)) {
      if (!(static_cast<double>(model.GetTOprim()->back().GetSS()) > smallest)) break;
      isMore = Append(model.GetXResiduals(), model.GetYResiduals());
      TakeImportances(model);
    }
    TakeMatrices(model);
  }

  std::unique_ptr<SeriesPrediction> Predict(const NCDataMatrix<float>& x) const override {
    return std::make_unique<OPLSSeriesPrediction>(x, matrices_, static_cast<int>(yColumns_));
  }

  std::vector<std::vector<std::vector<double>>> Importances() const override { return importances_; }

  /// As NCOPLSPred has it: an orthogonal score is taken once the predictive directions are out of X, which has them
  /// back afterwards; what it takes out of Y comes on top of what the predictive scores say.
  std::vector<RealMatrix> Slopes() const override {
    std::vector<RealMatrix> slopes(1, RealMatrix(xColumns_, yColumns_));
    RealMatrix orthogonal = slopes.front();
    Removed filter;
    for (int model = 1; model <= LastModel(); ++model) {
      if (model > 1) {
        Direction score = OrthogonalScore(filter, model - 1);
        AddProduct(score, matrices_.co[model - 1], &orthogonal);
        filter.TakeOut(std::move(score), RowOf(matrices_.po, model - 1));
      }
      slopes.push_back(orthogonal);
      AddPredictive(filter, static_cast<std::size_t>(model) - 1, &slopes.back());
    }
    return slopes;
  }

 private:
  /// Returns whether there is a next component.
  static bool Advance(NCOPLS* model, WorkProgress* progress) {
    progress->Ask();
    try {
      model->NextComponent(progress->SilentBar(), progress->SilentBar());
      return true;
    } catch (const NCError&) {
      progress->Ask();
      return false;
    }
  }

  /// Returns whether all components of the block are there.
  bool AddBlock(int predictive, const SeriesLimits& limits, WorkProgress* progress, NCOPLS* model) {
    if (!Advance(model, progress)) return false;
    if (predictive > 0 && model->SizeComponents() != predictive) return false;
    const NCDataMatrix<float>& t = *model->GetTprim();
    for (int a = 1; a <= t.SizeRows(); ++a) {
      if (!(t[a].GetSS() > 0.0L)) return false;
    }
    block_ = model->SizeComponents();
    return limits.LastModel(block_) > 0;
  }

  /// Of the newest model.
  void TakeImportances(const NCOPLS& model) {
    const NCDataMatrix<float>&c = model.GetCMatrices()->back(), &w = model.GetWMatrices()->back();
    const NCDataMatrix<float>&t = *model.GetTprim(), &to = *model.GetTOprim(), &po = *model.GetPOprim();
    std::vector<double> predictive, orthogonal;
    for (int a = 1; a <= w.SizeRows(); ++a) predictive.push_back(SumOfPresentSquares(c[a]) * SumOfPresentSquares(t[a]));
    for (int o = 1; o <= po.SizeRows(); ++o) {
      orthogonal.push_back(SumOfPresentSquares(po[o]) * SumOfPresentSquares(to[o]));
    }
    const std::vector<double> none(xColumns_, 0.0);
    importances_.push_back({Importance(w, predictive), orthogonal.empty() ? none : Importance(po, orthogonal)});
  }

  /// Of the models that count: the last component may have been in vain.
  void TakeMatrices(const NCOPLS& model) {
    const auto blocks = [this](const std::vector<NCDataMatrix<float>>& all) {
      return std::vector<NCDataMatrix<float>>(all.begin(), all.begin() + LastModel());
    };
    const auto rows = [this](NCDataMatrix<float> all) {
      const int kept = LastModel() - 1;
      if (all.SizeRows() > kept) all.RemoveRows(kept + 1, all.SizeRows() - kept);
      return all;
    };
    matrices_.w = blocks(*model.GetWMatrices());
    matrices_.p = blocks(*model.GetPMatrices());
    matrices_.c = blocks(*model.GetCMatrices());
    matrices_.wo = rows(*model.GetWOprim());
    matrices_.po = rows(*model.GetPOprim());
    matrices_.co = rows(*model.GetCOprim());
  }

  /// Of the orthogonal component o, from 1.
  Direction OrthogonalScore(Removed filter, int o) const {
    const NCDataMatrix<float>& w = matrices_.w[static_cast<std::size_t>(o) - 1];
    for (int a = 1; a <= w.SizeRows(); ++a) {
      Direction along = RowOf(w, a);
      Direction score = filter.Along(along);
      filter.TakeOut(std::move(score), std::move(along));
    }
    return filter.Along(RowOf(matrices_.wo, o));
  }

  void AddPredictive(Removed filter, std::size_t block, RealMatrix* slopes) const {
    for (int a = 1; a <= block_; ++a) {
      Direction score = filter.Along(RowOf(matrices_.w[block], a));
      AddProduct(score, matrices_.c[block][a], slopes);
      filter.TakeOut(std::move(score), RowOf(matrices_.p[block], a));
    }
  }

  std::size_t xColumns_, yColumns_;
  OPLSMatrices matrices_;  ///< without t and to
  std::vector<std::vector<std::vector<double>>> importances_;
};

}  // namespace

std::unique_ptr<ComponentSeries> OPLSFamily::Extract(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                                     const SeriesLimits& limits, WorkProgress* progress) const {
  return std::make_unique<OPLSSeries>(x, y, predictive_, limits, progress);
}

std::unique_ptr<SeriesFamily> FamilyOf(const OPLSRecipe& recipe, const Table& table) {
  if (!recipe.predictive) return std::make_unique<OPLSFamily>(0);
  return std::make_unique<OPLSFamily>(std::min(*recipe.predictive, CountYColumns(table, recipe)));
}

}  // namespace kalmia::analysis
