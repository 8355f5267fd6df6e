// What a round of PLSLanes tells, once all components are there.
#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/validation/internal/PLSLanes.h"

namespace kalmia::analysis {

namespace {

/// Adds vector[k] factor of one lane to sums[k].
void AddColumnOfLane(const std::vector<double>& vector, const LaneNumbers& factor, std::size_t lane,
                     std::vector<double>* sums) {
  for (std::size_t k = 0; k < sums->size(); ++k) (*sums)[k] += vector[k * kLanes + lane] * factor[lane];
}

}  // namespace

std::optional<RoundFigures> PLSLanes::Figures(std::size_t lane, const RoundQuestions& asked) const {
  const Lane& of = lanes_[lane];
  if (!of.isSound) return std::nullopt;
  RoundFigures figures;
  figures.lastModel = of.lastModel;
  figures.r2x = of.r2x;
  figures.r2y = of.r2y;
  for (std::size_t k = 0; k < x_.Columns(); ++k) {
    if (!x_.HasSpread(k, lane)) figures.columnsWithoutSpread.push_back(table_.xNames[k]);
  }
  figures.leftOut = Predictions(lane, rounds_[lane].leftOut);
  NoteDistances(lane, &figures.leftOut);
  if (asked.fitted) figures.fitted = Predictions(lane, rounds_[lane].fitted);
  figures.coefficients = Coefficients(lane, asked.firstOfCoefficients);
  const bool ofOPLS = asked.importances == ImportanceKinds::OfOPLS;
  figures.importances = ofOPLS ? ImportancesOfOPLS(lane, asked.firstOfCoefficients)
                               : Importances(lane, asked.firstOfCoefficients);
  return figures;
}

LeftOutRows PLSLanes::Predictions(std::size_t lane, const std::vector<std::size_t>& rows) const {
  const Lane& of = lanes_[lane];
  RealMatrix scaled(rows.size(), yColumns_), predicted(rows.size(), yColumns_);
  LeftOutRows result;
  for (std::size_t a = 0; a <= static_cast<std::size_t>(of.lastModel); ++a) {
    for (std::size_t j = 0; j < yColumns_; ++j) {
      const int column = static_cast<int>(j) + 1;
      const double centre = CentreOf(of.yScaling, column), factor = FactorOf(of.yScaling, column);
      for (std::size_t i = 0; i < rows.size(); ++i) {
        if (a > 0) scaled(i, j) += t_[a - 1][rows[i] * kLanes + lane] * c_[a - 1][j][lane];
        predicted(i, j) = scaled(i, j) / factor + centre;
      }
    }
    result.predicted.push_back(predicted);
  }
  return result;
}

void PLSLanes::NoteDistances(std::size_t lane, LeftOutRows* rows) const {
  const Lane& of = lanes_[lane];
  rows->distances = RealMatrix(of.leftOutSquares.rows, of.leftOutSquares.columns, kNotANumber);
  for (std::size_t a = 0; a < rows->distances.columns; ++a) {
    const bool isNothingLeft =
        of.r2x[a] >= 1.0 - kRoundings || (a > 0 && rounds_[lane].fitted.size() <= a + 1);  // as PooledDeviation has it
    if (static_cast<double>(a) == of.columns || isNothingLeft) continue;
    // Both are deviations of as many degrees of freedom a row.
    const double whole = x_.SumsOfSquares()[lane] / static_cast<double>(x_.FittedRows(lane));
    const double ofFitted = (1.0 - of.r2x[a]) * whole;
    for (std::size_t i = 0; i < rows->distances.rows; ++i) {
      rows->distances(i, a) = std::sqrt(of.leftOutSquares(i, a) / ofFitted);
    }
  }
}

std::vector<std::vector<std::vector<double>>> PLSLanes::Coefficients(std::size_t lane, int first) const {
  const Lane& of = lanes_[lane];
  std::vector<std::vector<double>> scaled(yColumns_, std::vector<double>(x_.Columns(), 0.0));
  std::vector<std::vector<std::vector<double>>> ofModels;
  for (int a = 0; a <= of.lastModel; ++a) {
    const bool isAsked = a >= std::min(first, of.lastModel);
    ofModels.emplace_back(isAsked ? yColumns_ : 0, std::vector<double>(x_.Columns() + 1, 0.0));
    for (std::size_t j = 0; j < yColumns_; ++j) {
      const auto component = static_cast<std::size_t>(a) - 1;
      if (a > 0) AddColumnOfLane(r_[component], c_[component][j], lane, &scaled[j]);
      if (isAsked) TakeUnitsOfTable(lane, j, scaled[j], &ofModels.back()[j]);
    }
  }
  return ofModels;
}

void PLSLanes::TakeUnitsOfTable(std::size_t lane, std::size_t j, const std::vector<double>& scaled,
                                std::vector<double>* slopes) const {
  const ColumnScaling& yScaling = lanes_[lane].yScaling;
  const int column = static_cast<int>(j) + 1;
  const double factor = FactorOf(yScaling, column);
  double intercept = CentreOf(yScaling, column);
  for (std::size_t k = 0; k < scaled.size(); ++k) {
    const double slope = scaled[k] * x_.Factor(k, lane) / factor;
    const double shift = table_.xShifts.empty() ? 0.0 : table_.xShifts[k];
    intercept -= slope * (x_.Centre(k, lane) + shift);
    (*slopes)[k] = slope;
  }
  slopes->back() = intercept;
}

std::vector<std::vector<std::vector<double>>> PLSLanes::Importances(std::size_t lane, int first) const {
  const Lane& of = lanes_[lane];
  std::vector<double> weighted(x_.Columns(), 0.0);
  double total = 0.0;
  std::vector<std::vector<std::vector<double>>> ofModels;
  for (int model = 0; model <= of.lastModel; ++model) {
    ofModels.push_back({std::vector<double>(model >= std::min(first, of.lastModel) ? x_.Columns() : 0, 0.0)});
    if (model == 0) continue;
    const std::size_t a = static_cast<std::size_t>(model) - 1;
    double cc = 0.0;
    for (const LaneNumbers& c : c_[a]) cc += c[lane] * c[lane];
    const double described = cc * tt_[a][lane];
    total += described;
    for (std::size_t k = 0; k < weighted.size(); ++k) {
      const double weight = w_[a][k * kLanes + lane];
      weighted[k] += described * weight * weight;
    }
    std::vector<double>& vip = ofModels.back().front();
    for (std::size_t k = 0; k < vip.size(); ++k) vip[k] = std::sqrt(of.columns * weighted[k] / total);
  }
  return ofModels;
}

/// Of one Y column OPLS has the weights of PLS: the first one is predictive, the others, but for their signs, are those
/// of its orthogonal components. Their scores t_o = X w_o less what is of the ones before, and so their loadings, are
/// sums over the components of PLS, whose scores are orthogonal: X w_a = t_a + sum over b < a of (p_b'w_a) t_b.
/// Source: R. Ergon, J. Chemometrics 19 (2005) 1-4.
std::vector<std::vector<std::vector<double>>> PLSLanes::ImportancesOfOPLS(std::size_t lane, int first) const {
  const Lane& of = lanes_[lane];
  const std::size_t columns = x_.Columns();
  const auto lastModel = static_cast<std::size_t>(of.lastModel);
  const std::vector<double> none(columns, 0.0);
  std::vector<double> predictive = none, weighted = none;
  for (std::size_t k = 0; k < columns && lastModel > 0; ++k) {
    predictive[k] = std::sqrt(of.columns) * std::abs(w_[0][k * kLanes + lane]);
  }
  double total = 0.0;
  std::vector<std::vector<double>> scores;  // orthogonal ones, by the components of PLS
  std::vector<std::vector<std::vector<double>>> ofModels = {{none, none}};
  for (std::size_t model = 1; model <= lastModel; ++model) {
    if (model > 1) {
      scores.push_back(OrthogonalScore(lane, model - 1, scores));
      total += AddOrthogonalLoading(lane, scores.back(), &weighted);
    }
    const bool isAsked = model >= static_cast<std::size_t>(std::min(first, of.lastModel));
    std::vector<double> orthogonal = isAsked ? none : std::vector<double>();
    for (std::size_t k = 0; k < orthogonal.size() && total > 0.0; ++k) {
      orthogonal[k] = std::sqrt(of.columns * weighted[k] / total);
    }
    ofModels.push_back({isAsked ? predictive : std::vector<double>(), std::move(orthogonal)});
  }
  return ofModels;
}

std::vector<double> PLSLanes::OrthogonalScore(std::size_t lane, std::size_t a,
                                              const std::vector<std::vector<double>>& before) const {
  std::vector<double> score(a + 1, 0.0);
  score[a] = 1.0;
  for (std::size_t b = 0; b < a; ++b) score[b] = pw_[a][b][lane];
  for (const std::vector<double>& other : before) {
    double product = 0.0, square = 0.0;
    for (std::size_t b = 0; b < other.size(); ++b) {
      product += score[b] * other[b] * tt_[b][lane];
      square += other[b] * other[b] * tt_[b][lane];
    }
    for (std::size_t b = 0; b < other.size(); ++b) score[b] -= product / square * other[b];
  }
  return score;
}

double PLSLanes::AddOrthogonalLoading(std::size_t lane, const std::vector<double>& score,
                                      std::vector<double>* weighted) const {
  double tt = 0.0;
  for (std::size_t b = 0; b < score.size(); ++b) tt += score[b] * score[b] * tt_[b][lane];
  double total = 0.0;
  for (std::size_t k = 0; k < weighted->size(); ++k) {
    double xt = 0.0;  // of column k of X with the score
    for (std::size_t b = 0; b < score.size(); ++b) xt += score[b] * tt_[b][lane] * p_[b][k * kLanes + lane];
    (*weighted)[k] += xt * xt / tt;
    total += xt * xt / tt;
  }
  return total;
}

}  // namespace kalmia::analysis
