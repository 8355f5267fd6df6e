#include "kalmia/analysis/validation/internal/RoundModel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/table/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

int RowCount(const RealColumns& columns) {
  return columns.empty() ? 0 : static_cast<int>(columns.front().size());
}

/// The mean of the cells that are there; not a number where none is.
double MeanOf(const std::vector<double>& cells) {
  double sum = 0.0;
  int present = 0;
  for (const double cell : cells) {
    if (std::isnan(cell)) continue;
    sum += cell;
    ++present;
  }
  return present > 0 ? sum / present : kNotANumber;
}

/// Whether there is nothing left of X but roundings, over the rows that the model describes.
bool IsExhausted(const std::vector<RowResidual>& whole, const std::vector<RowResidual>& left) {
  double ofWhole = 0.0, ofLeft = 0.0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (left[i].present == 0) continue;
    ofWhole += whole[i].sumOfSquares;
    ofLeft += left[i].sumOfSquares;
  }
  return 1.0 - ofLeft / ofWhole >= 1.0 - kExhausted;
}

/// Of a scaled cell, in whose place -99 stands for none.
double Present(float cell) { return IsMissing(cell) ? 0.0 : cell; }

}  // namespace

RoundModel::RoundModel(const std::vector<std::string>& xNames, const RealColumns& x,
                       const std::vector<std::string>& yNames, const RealColumns& y, NCScale::Scaling scaling,
                       int most, WorkProgress* progress) {
  NCDataMatrix<float> singleX = TakeX(xNames, x);
  NCDataMatrix<float> singleY = TakeY(yNames, y);
  progress->Ask();
  components_ = std::min({most, RowCount(y) - 1, static_cast<int>(xPlaces_.size())});
  if (xPlaces_.empty() || yNames_.empty()) return;
  xScaling_ = ScaleColumns(scaling, xNames_, &singleX, xShifts_);
  yScaling_ = ScaleColumns(ScalingOfY(scaling), yNames_, &singleY, yShifts_);
  Extract(singleX, singleY, components_, progress);
}

NCDataMatrix<float> RoundModel::TakeX(const std::vector<std::string>& names, const RealColumns& x) {
  std::vector<std::vector<float>> taken;
  int ofWholeTable = 0;  // moved cells, of which the fit of all rows has told
  for (std::size_t k = 0; k < x.size(); ++k) {
    const double shift = ShiftOf(x[k]);
    std::vector<float> cells = SingleCells(x[k], shift, &ofWholeTable);
    if (IsConstant(cells)) {
      withoutSpread_.push_back(names[k]);
      continue;
    }
    xPlaces_.push_back(k);
    xNames_.push_back(names[k]);
    xShifts_.push_back(shift);
    taken.push_back(std::move(cells));
  }
  return MatrixOf(taken, RowCount(x));
}

NCDataMatrix<float> RoundModel::TakeY(const std::vector<std::string>& names, const RealColumns& y) {
  std::vector<std::vector<float>> taken;
  int ofWholeTable = 0;
  for (std::size_t j = 0; j < y.size(); ++j) {
    const double mean = MeanOf(y[j]);
    if (std::isnan(mean)) throw BadData("the Y column " + Quoted(names[j]) + " has no value");
    const double shift = ShiftOf(y[j]);
    std::vector<float> cells = SingleCells(y[j], shift, &ofWholeTable);
    if (IsConstant(cells)) {
      y_.push_back({0, mean});
      continue;
    }
    yNames_.push_back(names[j]);
    y_.push_back({static_cast<int>(yNames_.size()), mean});
    yShifts_.push_back(shift);
    taken.push_back(std::move(cells));
  }
  return MatrixOf(taken, RowCount(y));
}

void RoundModel::Extract(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int most,
                         WorkProgress* progress) {
  pls_ = std::make_unique<NCPLS>(&x, &y, kMaxIterations);
  components_ = 0;
  const std::vector<RowResidual> whole = RowResiduals(x);
  pooledDeviation_.push_back(PooledDeviation(whole, 0));
  while (components_ < most) {
    progress->Ask();
    try {
      pls_->NextComponent(progress->SilentBar(), /*start=*/nullptr, /*quiet=*/false, /*strict=*/true);
    } catch (const NCError&) {
      progress->Ask();
      return;  // X and Y have nothing more in common
    }
    const NCDataVector<float>& p = pls_->GetPprim()->back();
    if (p.GetNumMisVal() == p.Size()) return;  // scores so small that nothing can be regressed on them
    pls_->CalculateResiduals();
    ++components_;
    const std::vector<RowResidual> left = RowResiduals(*pls_->GetXResiduals());
    pooledDeviation_.push_back(PooledDeviation(left, components_));
    if (IsExhausted(whole, left)) return;
  }
}

double RoundModel::InUnitsOfTable(const YColumn& column, float scaled) const {
  if (column.place == 0 || !HasModel()) return column.constant;
  return scaled / FactorOf(yScaling_, column.place) + CentreOf(yScaling_, column.place);
}

NCDataMatrix<float> RoundModel::ScaledX(const RealColumns& x) const {
  std::vector<std::vector<float>> taken;
  int ofWholeTable = 0;
  for (std::size_t k = 0; k < xPlaces_.size(); ++k) {
    taken.push_back(SingleCells(x[xPlaces_[k]], xShifts_[k], &ofWholeTable));
  }
  NCDataMatrix<float> single = MatrixOf(taken, RowCount(x));
  ApplyScale(xScaling_, &single);
  return single;
}

void RoundModel::NoteDistances(const NCDataMatrix<float>& xLeft, int components, LeftOutRows* rows) const {
  const std::vector<RowResidual> residuals = RowResiduals(xLeft);
  const auto a = static_cast<std::size_t>(components);
  for (std::size_t i = 0; i < residuals.size(); ++i) {
    if (std::isnan(rows->predicted[a](i, 0))) continue;
    rows->distances(i, a) = ResidualDeviation(residuals[i], components) / pooledDeviation_[a];
  }
}

LeftOutRows RoundModel::Predict(const RealColumns& x, WorkProgress* progress) const {
  const auto rows = static_cast<std::size_t>(RowCount(x));
  const auto numbers = static_cast<std::size_t>(components_) + 1;
  LeftOutRows result{{}, RealMatrix(rows, numbers, kNotANumber)};
  RealMatrix mean(rows, y_.size());
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < y_.size(); ++j) mean(i, j) = InUnitsOfTable(y_[j], 0.0F);
  }
  result.predicted.assign(numbers, mean);
  if (!HasModel()) return result;
  const NCDataMatrix<float> scaled = ScaledX(x);
  NCPLSPred prediction(scaled, *pls_->GetWprim(), *pls_->GetPprim(), *pls_->GetCprim(), kMissingTolerance);
  std::vector<bool> hasScores(rows, true);
  NoteDistances(scaled, 0, &result);
  for (int a = 1; a <= components_; ++a) {
    progress->Ask();
    prediction.CalcNextComponent();
    RealMatrix& predicted = result.predicted[static_cast<std::size_t>(a)];
    for (std::size_t i = 0; i < rows; ++i) {
      const int row = static_cast<int>(i) + 1;
      if (IsMissing((*prediction.GetTPred())[row])) hasScores[i] = false;
      for (std::size_t j = 0; j < y_.size(); ++j) {
        const int place = std::max(1, y_[j].place);
        const float scaledY = (*prediction.GetYPred())[row][place];
        predicted(i, j) = hasScores[i] ? InUnitsOfTable(y_[j], scaledY) : kNotANumber;
      }
    }
    NoteDistances(*prediction.GetXResiduals(), a, &result);
  }
  return result;
}

std::vector<std::vector<std::vector<double>>> RoundModel::Coefficients(const std::vector<std::size_t>& places,
                                                                       std::size_t slopes) const {
  std::vector<std::vector<double>> sum;
  for (const YColumn& column : y_) {
    sum.emplace_back(slopes + 1, 0.0);
    sum.back().back() = InUnitsOfTable(column, 0.0F);
  }
  std::vector<std::vector<std::vector<double>>> ofNumbers(1, sum);
  if (!HasModel()) {
    ofNumbers.resize(static_cast<std::size_t>(components_) + 1, sum);
    return ofNumbers;
  }
  const NCDataMatrix<float> wStar = pls_->GetWStarPrim();
  for (int a = 1; a <= components_; ++a) {
    for (std::size_t k = 0; k < xPlaces_.size(); ++k) {
      const auto column = static_cast<int>(k) + 1;
      const double weight = Present(wStar[a][column]) * FactorOf(xScaling_, column);
      const double centre = CentreOf(xScaling_, column);
      const std::size_t place = places[xPlaces_[k]];
      for (std::size_t j = 0; j < y_.size(); ++j) {
        if (y_[j].place == 0) continue;
        const double slope = weight * Present((*pls_->GetCprim())[a][y_[j].place]) / FactorOf(yScaling_, y_[j].place);
        sum[j].back() -= slope * centre;
        if (place != kNowhere) sum[j][place] += slope;
      }
    }
    ofNumbers.push_back(sum);
  }
  return ofNumbers;
}

}  // namespace kalmia::analysis
