#include "kalmia/analysis/validation/internal/RoundModel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

RoundModel::RoundModel(const SeriesFamily& family, const std::vector<std::string>& xNames, const RealColumns& x,
                       const std::vector<std::string>& yNames, const RealColumns& y, NCScale::Scaling scaling,
                       SeriesLimits limits, WorkProgress* progress)
    : RoundModel(family, RoundX(xNames, x, scaling, progress), yNames, y, scaling, limits, progress) {}

RoundModel::RoundModel(const SeriesFamily& family, RoundX x, const std::vector<std::string>& yNames,
                       const RealColumns& y, NCScale::Scaling scaling, SeriesLimits limits, WorkProgress* progress)
    : x_(std::move(x)), importanceKinds_(family.Importances()) {
  NCDataMatrix<float> singleY = TakeY(yNames, y);
  progress->Ask();
  limits.components = std::min({limits.components, RowCount(y) - 1, x_.Columns()});
  lastModel_ = limits.LastModel(family.Block());
  if (x_.Empty() || yNames_.empty()) return;
  yScaling_ = ScaleColumns(ScalingOfY(scaling), yNames_, &singleY, yShifts_);
  series_ = family.Extract(x_.TakeFitted(), singleY, limits, progress);
  lastModel_ = series_->LastModel();
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

double RoundModel::InUnitsOfTable(const YColumn& column, float scaled) const {
  if (column.place == 0 || series_ == nullptr) return column.constant;
  return scaled / FactorOf(yScaling_, column.place) + CentreOf(yScaling_, column.place);
}

void RoundModel::NoteDistances(const SeriesPrediction& prediction, int model, LeftOutRows* rows) const {
  const std::vector<RowResidual> residuals = prediction.XResiduals();
  const auto a = static_cast<std::size_t>(model);
  const int components = ComponentsOfModel(model, series_->Block());
  for (std::size_t i = 0; i < residuals.size(); ++i) {
    if (std::isnan(rows->predicted[a](i, 0))) continue;
    rows->distances(i, a) = ResidualDeviation(residuals[i], components) / series_->PooledDeviationOf(model);
  }
}

LeftOutRows RoundModel::Predict(const RealColumns& x, WorkProgress* progress, int firstOfDistances) const {
  const NCDataMatrix<float> scaled = series_ != nullptr ? x_.Scaled(x) : NCDataMatrix<float>();
  return PredictScaled(RowCount(x), scaled, progress, firstOfDistances);
}

LeftOutRows RoundModel::Predict(const NCDataMatrix<float>& x, WorkProgress* progress, int firstOfDistances) const {
  const NCDataMatrix<float> scaled = series_ != nullptr ? x_.Scaled(x) : NCDataMatrix<float>();
  return PredictScaled(x.SizeRows(), scaled, progress, firstOfDistances);
}

LeftOutRows RoundModel::PredictScaled(int count, const NCDataMatrix<float>& scaled, WorkProgress* progress,
                                      int firstOfDistances) const {
  const auto rows = static_cast<std::size_t>(count);
  const auto models = static_cast<std::size_t>(lastModel_) + 1;
  LeftOutRows result{{}, RealMatrix(rows, models, kNotANumber)};
  RealMatrix mean(rows, y_.size());
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < y_.size(); ++j) mean(i, j) = InUnitsOfTable(y_[j], 0.0F);
  }
  result.predicted.assign(models, mean);
  if (series_ == nullptr) return result;
  const std::unique_ptr<SeriesPrediction> prediction = series_->Predict(scaled);
  std::vector<bool> hasScores(rows, true);
  const int first = std::min(firstOfDistances, lastModel_);
  if (first == 0) NoteDistances(*prediction, 0, &result);
  for (int a = 1; a <= lastModel_; ++a) {
    progress->Ask();
    prediction->Next();
    RealMatrix& predicted = result.predicted[static_cast<std::size_t>(a)];
    for (std::size_t i = 0; i < rows; ++i) {
      const int row = static_cast<int>(i) + 1;
      if (!prediction->HasScores(row)) hasScores[i] = false;
      for (std::size_t j = 0; j < y_.size(); ++j) {
        const float scaledY = prediction->Y()[row][std::max(1, y_[j].place)];
        predicted(i, j) = hasScores[i] ? InUnitsOfTable(y_[j], scaledY) : kNotANumber;
      }
    }
    if (a >= first) NoteDistances(*prediction, a, &result);
  }
  return result;
}

std::vector<std::vector<std::vector<double>>> RoundModel::Coefficients(const std::vector<std::size_t>& places,
                                                                       std::size_t slopes, int first) const {
  std::vector<std::vector<std::vector<double>>> ofModels;
  if (series_ == nullptr) {
    std::vector<std::vector<double>> means;
    for (const YColumn& column : y_) {
      means.emplace_back(slopes + 1, 0.0);
      means.back().back() = InUnitsOfTable(column, 0.0F);
    }
    ofModels.assign(static_cast<std::size_t>(lastModel_) + 1, means);
    return ofModels;
  }
  for (const RealMatrix& scaled : series_->Slopes()) {
    const bool isAsked = static_cast<int>(ofModels.size()) >= std::min(first, lastModel_);
    ofModels.push_back(isAsked ? InUnitsOfTable(scaled, places, slopes) : std::vector<std::vector<double>>());
  }
  return ofModels;
}

std::vector<std::vector<std::vector<double>>> RoundModel::Importances(const std::vector<std::size_t>& places,
                                                                      std::size_t columns) const {
  if (series_ == nullptr) {
    const std::vector<std::vector<double>> none(importanceKinds_ == ImportanceKinds::OfOPLS ? 2 : 1,
                                                std::vector<double>(columns, 0.0));
    return {static_cast<std::size_t>(lastModel_) + 1, none};
  }
  std::vector<std::vector<std::vector<double>>> ofModels = series_->Importances();
  for (std::vector<std::vector<double>>& ofModel : ofModels) {
    for (std::vector<double>& vip : ofModel) {
      std::vector<double> ofTable(columns, 0.0);
      for (std::size_t k = 0; k < x_.Places().size(); ++k) {
        const std::size_t place = places[x_.Places()[k]];
        if (place != kNowhere) ofTable[place] = vip[k];
      }
      vip = std::move(ofTable);
    }
  }
  return ofModels;
}

std::vector<std::vector<double>> RoundModel::InUnitsOfTable(const RealMatrix& scaled,
                                                            const std::vector<std::size_t>& places,
                                                            std::size_t slopes) const {
  std::vector<std::vector<double>> ofY;
  for (const YColumn& column : y_) {
    ofY.emplace_back(slopes + 1, 0.0);
    double intercept = InUnitsOfTable(column, 0.0F);
    for (std::size_t k = 0; column.place > 0 && k < x_.Places().size(); ++k) {
      const auto variable = static_cast<int>(k) + 1;
      const double factor = FactorOf(x_.Scaling(), variable) / FactorOf(yScaling_, column.place);
      const double slope = scaled(k, static_cast<std::size_t>(column.place) - 1) * factor;
      intercept -= slope * CentreOf(x_.Scaling(), variable);
      const std::size_t place = places[x_.Places()[k]];
      if (place != kNowhere) ofY.back()[place] = slope;
    }
    ofY.back().back() = intercept;
  }
  return ofY;
}

}  // namespace kalmia::analysis
