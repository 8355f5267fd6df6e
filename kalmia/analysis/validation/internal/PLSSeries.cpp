#include "kalmia/analysis/validation/internal/PLSSeries.h"

#include <utility>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

class PLSSeriesPrediction : public SeriesPrediction {
 public:
  PLSSeriesPrediction(const NCDataMatrix<float>& x, const NCPLS& model)
      : prediction_(x, *model.GetWprim(), *model.GetPprim(), *model.GetCprim(), kMissingTolerance) {}

  void Next() override { prediction_.CalcNextComponent(); }
  bool HasScores(int row) const override { return !IsMissing((*prediction_.GetTPred())[row]); }
  const NCDataMatrix<float>& Y() const override { return *prediction_.GetYPred(); }
  std::vector<RowResidual> XResiduals() const override { return RowResiduals(*prediction_.GetXResiduals()); }

 private:
  NCPLSPred prediction_;
};

class PLSSeries : public ComponentSeries {
 public:
  PLSSeries(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, const SeriesLimits& limits,
            WorkProgress* progress)
      : ComponentSeries(x, y), model_(&x, &y, kMaxIterations) {
    const int most = limits.LastModel(block_);
    while (LastModel() < most && AddComponent(progress)) {
    }
  }

  std::unique_ptr<SeriesPrediction> Predict(const NCDataMatrix<float>& x) const override {
    return std::make_unique<PLSSeriesPrediction>(x, model_);
  }

  std::vector<RealMatrix> Slopes() const override {
    const NCDataMatrix<float> wStar = model_.GetWStarPrim();
    const NCDataMatrix<float>& c = *model_.GetCprim();
    RealMatrix sum(static_cast<std::size_t>(model_.GetXResiduals()->SizeColumns()),
                   static_cast<std::size_t>(model_.GetYResiduals()->SizeColumns()));
    std::vector<RealMatrix> slopes(1, sum);
    for (int a = 1; a <= LastModel(); ++a) {
      for (std::size_t k = 0; k < sum.rows; ++k) {
        const double weight = PresentOrZero(wStar[a][static_cast<int>(k) + 1]);
        for (std::size_t j = 0; j < sum.columns; ++j) {
          sum(k, j) += weight * PresentOrZero(c[a][static_cast<int>(j) + 1]);
        }
      }
      slopes.push_back(sum);
    }
    return slopes;
  }

  std::vector<std::vector<std::vector<double>>> Importances() const override {
    std::vector<std::vector<double>> vip = VariableImportances(model_);
    vip.resize(static_cast<std::size_t>(LastModel()));
    const std::vector<double> none(static_cast<std::size_t>(model_.GetXResiduals()->SizeColumns()), 0.0);
    std::vector<std::vector<std::vector<double>>> ofModels = {{none}};
    for (std::vector<double>& ofModel : vip) ofModels.push_back({std::move(ofModel)});
    return ofModels;
  }

 private:
  /// Returns whether there is more to come.
  bool AddComponent(WorkProgress* progress) {
    progress->Ask();
    try {
      model_.NextComponent(progress->SilentBar(), /*start=*/nullptr, /*quiet=*/false, /*strict=*/true);
    } catch (const NCError&) {
      progress->Ask();
      return false;  // X and Y have nothing more in common
    }
    const NCDataVector<float>& p = model_.GetPprim()->back();
    if (p.GetNumMisVal() == p.Size()) return false;  // scores so small that nothing can be regressed on them
    model_.CalculateResiduals();
    return Append(*model_.GetXResiduals(), *model_.GetYResiduals());
  }

  NCPLS model_;
};

}  // namespace

std::unique_ptr<ComponentSeries> PLSFamily::Extract(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                                    const SeriesLimits& limits, WorkProgress* progress) const {
  return std::make_unique<PLSSeries>(x, y, limits, progress);
}

}  // namespace kalmia::analysis
