#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"

#include <cmath>
#include <limits>
#include <utility>

#include "kalmia/analysis/model/internal/PresentCells.h"
#include "kalmia/analysis/model/internal/ScoreFunctions.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

std::vector<double> Importance(const NCDataMatrix<float>& vectors, const std::vector<double>& weights) {
  std::vector<double> vip(static_cast<std::size_t>(vectors.SizeColumns()), 0.0);
  double total = 0.0;
  for (int a = 1; a <= vectors.SizeRows(); ++a) {
    const double weight = weights[static_cast<std::size_t>(a - 1)];
    const double length = SumOfPresentSquares(vectors[a]);
    total += weight;
    for (std::size_t k = 0; k < vip.size(); ++k) {
      const double cell = Present(vectors[a][static_cast<int>(k) + 1]);
      vip[k] += weight * cell * cell / length;
    }
  }
  for (double& each : vip) each = std::sqrt(vectors.SizeColumns() * each / total);
  return vip;
}

Coefficients CoefficientsInOriginalUnits(const StoredOPLS& model) {
  const OPLSMatrices& opls = model.opls;
  const std::vector<LinearFunction> scores = ScoreFunctions(model);
  const int predictive = model.Predictive(), orthogonal = model.Orthogonal();
  Coefficients coefficients;
  const auto yColumns = static_cast<int>(model.yNames.size());
  for (int j = 1; j <= yColumns; ++j) coefficients.intercepts.push_back(CentreOf(model.yScaling, j));
  for (int k = 1; k <= static_cast<int>(model.xNames.size()); ++k) {
    std::vector<double> slopes;
    for (int j = 1; j <= yColumns; ++j) {
      double scaled = 0.0;
      const auto add = [&](int component, float c) {
        scaled += scores[static_cast<std::size_t>(component - 1)][static_cast<std::size_t>(k - 1)] * Present(c);
      };
      for (int o = 1; o <= orthogonal; ++o) add(predictive + o, opls.co[o][j]);
      for (int a = 1; a <= predictive; ++a) add(a, opls.c.back()[a][j]);
      slopes.push_back(scaled * FactorOf(model.xScaling, k) / FactorOf(model.yScaling, j));
      coefficients.intercepts[static_cast<std::size_t>(j - 1)] -= slopes.back() * CentreOf(model.xScaling, k);
    }
    coefficients.slopes.push_back(std::move(slopes));
  }
  return coefficients;
}

std::vector<double> PredictiveImportance(const StoredOPLS& model) {
  std::vector<double> weights;
  for (int a = 1; a <= model.Predictive(); ++a)
    weights.push_back(SumOfPresentSquares(model.opls.c.back()[a]) * SumOfPresentSquares(model.opls.t[a]));
  return Importance(model.opls.w.back(), weights);
}

std::vector<double> OrthogonalImportance(const StoredOPLS& model) {
  if (model.Orthogonal() == 0) return std::vector<double>(model.xNames.size(), 0.0);
  std::vector<double> weights;
  for (int o = 1; o <= model.Orthogonal(); ++o)
    weights.push_back(SumOfPresentSquares(model.opls.po[o]) * SumOfPresentSquares(model.opls.to[o]));
  return Importance(model.opls.po, weights);
}

ColumnWithScores RelateColumn(const NCDataMatrix<float>& x, int k, const NCDataVector<float>& scores) {
  double n = 0.0, sumX = 0.0, sumT = 0.0;
  const auto forEachPair = [&](const auto& action) {
    for (int i = 1; i <= x.SizeRows(); ++i)
      if (x[i][k] != static_cast<float>(kMissing) && scores[i] != static_cast<float>(kMissing))
        action(static_cast<double>(x[i][k]), static_cast<double>(scores[i]));
  };
  forEachPair([&](double cell, double score) {
    n += 1.0;
    sumX += cell;
    sumT += score;
  });
  double xx = 0.0, xt = 0.0, tt = 0.0;
  forEachPair([&](double cell, double score) {
    const double dx = cell - sumX / n;
    const double dt = score - sumT / n;
    xx += dx * dx;
    xt += dx * dt;
    tt += dt * dt;
  });
  const double none = std::numeric_limits<double>::quiet_NaN();
  return {n > 1.0 ? xt / (n - 1.0) : none, xt / std::sqrt(xx * tt)};
}

}  // namespace kalmia::analysis
