#include "kalmia/analysis/model/ModelDiagnostics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "kalmia/analysis/model/internal/PresentCells.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/KeptIf.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr int kRowsAtOnce = 4;  ///< a sum waits for its last addition, and several side by side do not
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

}  // namespace

Coefficients CoefficientsInOriginalUnits(const NCPLS& model, const ColumnScaling& xScaling,
                                         const ColumnScaling& yScaling) {
  const NCDataMatrix<float> scaled = model.GetRegressionCoefficients(-1);
  Coefficients coefficients;
  for (int j = 1; j <= scaled.SizeColumns(); ++j) coefficients.intercepts.push_back(CentreOf(yScaling, j));
  for (int k = 1; k <= scaled.SizeRows(); ++k) {
    std::vector<double> slopes;
    for (int j = 1; j <= scaled.SizeColumns(); ++j) {
      slopes.push_back(Present(scaled[k][j]) * FactorOf(xScaling, k) / FactorOf(yScaling, j));
      coefficients.intercepts[static_cast<std::size_t>(j - 1)] -= slopes.back() * CentreOf(xScaling, k);
    }
    coefficients.slopes.push_back(std::move(slopes));
  }
  return coefficients;
}

std::vector<std::vector<double>> VariableImportances(const NCPLS& model) {
  const NCDataMatrix<float>& w = *model.GetWprim();
  std::vector<double> weighted(static_cast<std::size_t>(w.SizeColumns()), 0.0);
  double total = 0.0;
  std::vector<std::vector<double>> ofNumbers;
  for (int a = 1; a <= w.SizeRows(); ++a) {
    const double described = SumOfPresentSquares((*model.GetCprim())[a]) * SumOfPresentSquares((*model.GetTprim())[a]);
    const double length = SumOfPresentSquares(w[a]);
    total += described;
    std::vector<double> vip;
    for (std::size_t k = 0; k < weighted.size(); ++k) {
      const double weight = Present(w[a][static_cast<int>(k) + 1]);
      weighted[k] += described * weight * weight / length;  // a float w is of unit length only nearly
      vip.push_back(std::sqrt(static_cast<double>(w.SizeColumns()) * weighted[k] / total));
    }
    ofNumbers.push_back(std::move(vip));
  }
  return ofNumbers;
}

std::vector<double> VariableImportance(const NCPLS& model) { return VariableImportances(model).back(); }

std::vector<double> HotellingT2(const NCDataMatrix<float>& tPrim) {
  std::vector<double> distances(static_cast<std::size_t>(tPrim.SizeColumns()), 0.0);
  for (int a = 1; a <= tPrim.SizeRows(); ++a) {
    const auto mean = static_cast<double>(tPrim[a].GetMean());
    const auto variance = static_cast<double>(tPrim[a].GetVariance());
    for (std::size_t i = 0; i < distances.size(); ++i) {
      const float score = tPrim[a][static_cast<int>(i) + 1];
      const double difference = score == static_cast<float>(kMissing) ? kNone : score - mean;
      distances[i] += difference * difference / variance;
    }
  }
  return distances;
}

std::vector<RowResidual> RowResiduals(const NCDataMatrix<float>& xResiduals) {
  std::vector<RowResidual> rows;
  for (int first = 1; first <= xResiduals.SizeRows(); first += kRowsAtOnce) {
    const int count = std::min(kRowsAtOnce, xResiduals.SizeRows() - first + 1);
    const float* cells[kRowsAtOnce];
    double sums[kRowsAtOnce] = {};
    for (int i = 0; i < kRowsAtOnce; ++i) cells[i] = xResiduals[first + std::min(i, count - 1)].begin();
    for (int k = 0; k < xResiduals.SizeColumns(); ++k) {
      for (int i = 0; i < kRowsAtOnce; ++i) {
        const double cell = CellOrZero(cells[i][k]);
        sums[i] += cell * cell;
      }
    }
    for (int i = 0; i < count; ++i) {
      const NCDataVector<float>& row = xResiduals[first + i];
      rows.push_back({sums[i], row.Size() - row.GetNumMisVal()});
    }
  }
  return rows;
}

double ResidualDeviation(const RowResidual& row, int components) {
  if (row.present <= components) return kNone;
  return std::sqrt(row.sumOfSquares / (row.present - components));
}

double PooledDeviation(const std::vector<RowResidual>& rows, int components) {
  double sumOfSquares = 0.0;
  double freedom = 0.0;
  int count = 0;
  for (const RowResidual& row : rows) {
    if (row.present <= components) continue;
    sumOfSquares += row.sumOfSquares;
    freedom += row.present - components;
    ++count;
  }
  return count > components + 1 || components == 0 ? std::sqrt(sumOfSquares / freedom) : kNone;  // 0 / 0 without rows
}

}  // namespace kalmia::analysis
