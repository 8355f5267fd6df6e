#include "kalmia/pcapls/ScoreEstimator.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/Exception.h"

namespace {

constexpr float kMissing = kalmia::kMissingCell<float>;

/// A y weight from here on tells that the regression has begun to explode.
constexpr float kLargestWeightOfY = 2.0F;

/// The regression ends when no more than this of the observation's sum of squares is left of the loadings' own.
constexpr double kSmallestShareLeft = 1e-5;

/// sum p r over the loadings that are present, in the order of the variables, in float.
float Project(const NCDataVector<float>& p, const std::vector<float>& r) {
  float t = 0.0F;
  for (int k = 1; k <= p.Size(); ++k)
    if (p[k] != kMissing) t += p[k] * r[static_cast<std::size_t>(k) - 1];
  return t;
}

void TakeOut(const NCDataVector<float>& p, float t, std::vector<float>* r) {
  for (int k = 1; k <= p.Size(); ++k)
    if (p[k] != kMissing) (*r)[static_cast<std::size_t>(k) - 1] -= p[k] * t;
}

bool IsWhollyMissing(const NCDataMatrix<float>& matrix) {
  return matrix.GetNumMisVal() == std::int64_t{matrix.SizeRows()} * matrix.SizeColumns();
}

}  // namespace

ScoreEstimator::ScoreEstimator(const NCDataMatrix<float>& P, int maxIterations)
    : pprim_(P), pTransposed_(P), maxIterations_(maxIterations) {
  pTransposed_.Transpose();
}

void ScoreEstimator::GetT(NCDataMatrix<float>& T, int observation, const NCDataVector<float>& x) const {
  if (pTransposed_.SizeRows() == 0) return;
  if (x.GetNumMisVal() > 0) return EstimateWhitMisVal(&T, observation, x);
  EstimateWhitoutMisVal(&T, observation, x);
}

void ScoreEstimator::EstimateWhitoutMisVal(NCDataMatrix<float>* T, int observation,
                                           const NCDataVector<float>& x) const {
  std::vector<float> r(x.begin(), x.end());
  const int components = pprim_.SizeRows();
  for (int a = 1; a <= components; ++a) {
    const float t = Project(pprim_[a], r);
    (*T)(a, observation, t);
    if (a < components) TakeOut(pprim_[a], t, &r);
  }
}

void ScoreEstimator::EstimateWhitMisVal(NCDataMatrix<float>* T, int observation, const NCDataVector<float>& x) const {
  const NCDataMatrix<float> coefficients = CoefficientsOf(x);
  if (IsWhollyMissing(coefficients)) {
    for (int a = 1; a <= T->SizeRows(); ++a) (*T)(a, observation, 0.0F);
  } else {
    for (int a = 1; a <= coefficients.SizeRows(); ++a) (*T)(a, observation, coefficients[a][1]);
  }
}

NCDataMatrix<float> ScoreEstimator::CoefficientsOf(const NCDataVector<float>& x) const {
  const float squares = static_cast<float>(x.GetSS());
  const int mostComponents = std::min(x.Size() - x.GetNumMisVal(), pTransposed_.SizeColumns());
  NCPLS regression(&pTransposed_, &x, maxIterations_);
  bool goesOn = true;
  while (goesOn) {
    try {
      regression.NextComponent(nullptr, nullptr, /*quiet=*/false, /*strict=*/true);
    } catch (const Exception&) {
      break;  // the components found so far count
    }
    regression.CalculateResiduals();
    const int newest = regression.GetComponents();
    goesOn = newest < mostComponents && !((*regression.GetCprim())[newest][1] >= kLargestWeightOfY) &&
             regression.GetXResiduals()->GetSS() > kSmallestShareLeft * squares;
  }
  return regression.GetRegressionCoefficients(-1);
}
