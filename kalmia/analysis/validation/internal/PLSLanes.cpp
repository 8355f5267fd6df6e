#include "kalmia/analysis/validation/internal/PLSLanes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr double kUnit = 0x1p-53;
constexpr double kLostDigits = 1e-7;   ///< relative error that the rounding of single precision makes good for
constexpr double kLeastLeft = 1e-9;    ///< share of X's sum of squares; less is a difference of what was rounded
constexpr double kLeastOfS = 1e-10;    ///< share of the sum of squares of S, from which it is computed anew
/// |X'u| / (|X| |u|) over sqrt(K): ten times what NCPLS takes for nothing in common.
constexpr double kLeastRelation = 1e-5;
constexpr double kSameVector = 1e-10;  ///< relative squared change of u, at which NCPLS ends its rounds
constexpr double kLeadOfALaterColumn = 1.000001;  ///< in the sums of squares that the start is chosen by

std::vector<std::vector<std::size_t>> FittedRows(const std::vector<LaneRound>& rounds) {
  std::vector<std::vector<std::size_t>> fitted;
  for (const LaneRound& round : rounds) fitted.push_back(round.fitted);
  return fitted;
}

constexpr std::size_t kRowsBetweenQuestions = 64;  ///< whether to stop

}  // namespace

PLSLanes::PLSLanes(const LaneTable& table, std::vector<LaneRound> rounds, WorkProgress* progress,
                   const Proceed& proceed)
    : table_(table),
      rounds_(std::move(rounds)),
      x_(table.x, table.xNames.size(), FittedRows(rounds_), table.scaling, progress),
      yColumns_(table.y.size()),
      lanes_(rounds_.size()),
      f_(yColumns_, Vectors(x_.Rows() * kLanes, 0.0)),
      s_(yColumns_, Vectors(x_.Columns() * kLanes, 0.0)),
      q_(yColumns_, Vectors(x_.Rows() * kLanes, 0.0)),
      ss_(yColumns_ * yColumns_) {
  int most = 0;
  for (std::size_t l = 0; l < lanes_.size(); ++l) {
    TakeY(l);
    most = std::max(most, lanes_[l].lastModel);
  }
  for (int a = 1; a <= most; ++a) {
    NextComponent();
    proceed(static_cast<double>(a) / most);
  }
  FormRotations();
}

void PLSLanes::TakeY(std::size_t l) {
  Lane& lane = lanes_[l];
  const LaneRound& round = rounds_[l];
  lane.isSound = x_.IsSound(l);
  for (std::size_t k = 0; k < x_.Columns(); ++k) lane.columns += x_.HasSpread(k, l) ? 1.0 : 0.0;
  std::vector<double> shifts;
  std::vector<std::vector<float>> cells;
  int ofWholeTable = 0;
  for (const std::vector<double>& column : RowsOfColumns(table_.y, round.fitted)) {
    shifts.push_back(ShiftOf(column));
    cells.push_back(SingleCells(column, shifts.back(), &ofWholeTable));
    if (IsConstant(cells.back())) lane.isSound = false;
  }
  if (!lane.isSound) return;
  NCDataMatrix<float> y = MatrixOf(cells, static_cast<int>(round.fitted.size()));
  try {
    lane.yScaling = ScaleColumns(ScalingOfY(table_.scaling), table_.yNames, &y, shifts);
  } catch (const BadData&) {  // it is told where the round is fitted alone
    lane.isSound = false;
    return;
  }
  for (std::size_t i = 0; i < round.fitted.size(); ++i) {
    for (std::size_t j = 0; j < yColumns_; ++j) {
      const double cell = std::as_const(y)[static_cast<int>(i) + 1][static_cast<int>(j) + 1];
      f_[j][round.fitted[i] * kLanes + l] = cell;
      lane.wholeY += cell * cell;
    }
  }
  SeriesLimits limits = round.limits;
  limits.components = std::min({limits.components, static_cast<int>(round.fitted.size()) - 1,
                                static_cast<int>(lane.columns)});
  lane.lastModel = limits.LastModel(/*block=*/1);
  lane.leftX = x_.SumsOfSquares()[l];
  lane.leftOutSquares = RealMatrix(round.leftOut.size(), static_cast<std::size_t>(lane.lastModel) + 1);
  for (std::size_t i = 0; i < round.leftOut.size(); ++i) {
    if (i % kRowsBetweenQuestions == 0) x_.Ask();
    lane.leftOutSquares(i, 0) = x_.SumOfSquares(round.leftOut[i], l);
  }
}

double PLSLanes::DotOfRows(const Vectors& a, const Vectors& b, std::size_t l) const {
  double sum = 0.0;
  for (const std::size_t row : rounds_[l].fitted) sum += a[row * kLanes + l] * b[row * kLanes + l];
  return sum;
}

/// S = X'F and Q = E S, which takes a pass over X for each Y column and each of them.
void PLSLanes::Renew() {
  const std::size_t before = Components();
  for (std::size_t j = 0; j < yColumns_; ++j) {
    LaneNumbers sumOfF{};
    for (std::size_t i = 0; i < f_[j].size(); ++i) sumOfF[i % kLanes] += f_[j][i];
    Vectors prepared(s_[j].size());
    PartSums sums(x_.ColumnParts(), 1 + before);
    x_.ForColumns([&](const LanePart& part) {
      x_.MultiplyColumns(part, f_[j], sumOfF, s_[j].data());
      x_.Prepare(part, s_[j], &prepared, sums.Of(part, 0));
      for (std::size_t b = 0; b < before; ++b) {
        AddLaneDots(p_[b].data(), s_[j].data(), part.begin, part.end, sums.Of(part, 1 + b));
      }
    });
    const LaneNumbers offset = sums.Total(0);
    x_.ForRows([&](const LanePart& part) { x_.MultiplyRows(part, prepared, offset, q_[j].data()); });
    for (std::size_t b = 0; b < before; ++b) {
      const LaneNumbers share = sums.Total(1 + b);
      for (std::size_t i = 0; i < q_[j].size(); ++i) q_[j][i] -= t_[b][i] * share[i % kLanes];
    }
  }
  PartSums squares(x_.ColumnParts(), ss_.size());
  x_.ForColumns([&](const LanePart& part) {
    for (std::size_t i = 0; i < yColumns_; ++i) {
      for (std::size_t j = i; j < yColumns_; ++j) {
        AddLaneDots(s_[i].data(), s_[j].data(), part.begin, part.end, squares.Of(part, Place(i, j)));
      }
    }
  });
  largestS_ = {};
  for (std::size_t i = 0; i < yColumns_; ++i) {
    for (std::size_t j = i; j < yColumns_; ++j) ss_[Place(i, j)] = ss_[Place(j, i)] = squares.Total(Place(i, j));
    for (std::size_t l = 0; l < kLanes; ++l) largestS_[l] += ss_[Place(i, i)][l];
  }
}

void PLSLanes::NextComponent() {
  bool isSmall = Components() == 0;
  for (std::size_t l = 0; l < lanes_.size(); ++l) {
    double squares = 0.0;
    for (std::size_t j = 0; j < yColumns_; ++j) squares += ss_[Place(j, j)][l];
    if (IsActive(l) && squares < kLeastOfS * largestS_[l]) isSmall = true;
  }
  if (isSmall) Renew();
  for (std::size_t l = 0; l < lanes_.size(); ++l) {
    lanes_[l].g.assign(yColumns_, 0.0);
    x_.Ask();
    if (IsActive(l)) Iterate(l);
  }
  FormScores();
  RegressOnScores();
  FormLoadings();
}

/// The rounds of NIPALS, in matrices of the size of Y: u = F g, |X'u|^2 = g'S'S g, t't of w = S g / |S g|, and so on.
void PLSLanes::Iterate(std::size_t l) {
  Lane& lane = lanes_[l];
  RealMatrix ss(yColumns_, yColumns_), qq(yColumns_, yColumns_), ff(yColumns_, yColumns_);
  for (std::size_t i = 0; i < yColumns_; ++i) {
    for (std::size_t j = 0; j < yColumns_; ++j) {
      ss(i, j) = ss_[Place(i, j)][l];
      ff(i, j) = j < i ? ff(j, i) : DotOfRows(f_[i], f_[j], l);
      qq(i, j) = j < i ? qq(j, i) : yColumns_ == 1 ? 0.0 : DotOfRows(q_[i], q_[j], l);
    }
  }
  const auto form = [this](const RealMatrix& matrix, const std::vector<double>& v) {
    double sum = 0.0;
    for (std::size_t i = 0; i < yColumns_; ++i) {
      for (std::size_t j = 0; j < yColumns_; ++j) sum += v[i] * matrix(i, j) * v[j];
    }
    return sum;
  };
  std::size_t longest = 0;
  for (std::size_t j = 1; j < yColumns_; ++j) {
    if (ff(j, j) > kLeadOfALaterColumn * ff(longest, longest)) longest = j;
  }
  std::vector<double> g(yColumns_, 0.0);
  g[longest] = 1.0;
  const double leastRelation = kLeastRelation / std::sqrt(lane.columns);
  for (int round = 1;; ++round) {
    const double squares = form(ss, g);  // of S g
    const double relation = std::sqrt(squares / (lane.leftX * form(ff, g)));
    if (!(squares > 0.0) || !(relation > leastRelation) || !std::isfinite(relation)) {
      lane.isSound = false;
      return;
    }
    lane.g = g;
    for (double& cell : lane.g) cell /= std::sqrt(squares);
    if (yColumns_ == 1 || round == kMaxIterations) return;
    std::vector<double> next(yColumns_, 0.0), change(yColumns_);
    double cc = 0.0;
    for (std::size_t i = 0; i < yColumns_; ++i) {  // t't c
      for (std::size_t j = 0; j < yColumns_; ++j) next[i] += ss(i, j) * lane.g[j];
      cc += next[i] * next[i];
    }
    const double tt = form(qq, lane.g);
    for (std::size_t j = 0; j < yColumns_; ++j) {
      next[j] *= tt / cc;  // c / c'c
      change[j] = next[j] - g[j];
    }
    if (!(form(ff, change) > kSameVector * form(ff, next))) return;
    g = std::move(next);
  }
}

/// t = Q g; what rounding has left of earlier scores is taken off.
void PLSLanes::FormScores() {
  Vectors t(x_.Rows() * kLanes, 0.0);
  for (std::size_t j = 0; j < yColumns_; ++j) {
    LaneNumbers g{};
    for (std::size_t l = 0; l < lanes_.size(); ++l) g[l] = lanes_[l].g[j];
    for (std::size_t i = 0; i < t.size(); i += kLanes) {
      for (std::size_t l = 0; l < kLanes; ++l) t[i + l] += q_[j][i + l] * g[l];
    }
  }
  const std::vector<double>& mask = x_.Mask();
  const auto dots = [&](const Vectors& other) {
    LaneNumbers sums{};
    for (std::size_t i = 0; i < t.size(); i += kLanes) {
      for (std::size_t l = 0; l < kLanes; ++l) sums[l] += mask[i + l] * t[i + l] * other[i + l];
    }
    return sums;
  };
  for (std::size_t b = 0; b < Components(); ++b) {
    LaneNumbers share = dots(t_[b]);
    for (std::size_t l = 0; l < kLanes; ++l) share[l] /= tt_[b][l];
    for (std::size_t i = 0; i < t.size(); i += kLanes) {
      for (std::size_t l = 0; l < kLanes; ++l) t[i + l] -= share[l] * t_[b][i + l];
    }
  }
  tt_.push_back(dots(t));
  t_.push_back(std::move(t));
}

/// c = F't / t't
void PLSLanes::RegressOnScores() {
  c_.emplace_back(yColumns_);
  for (std::size_t j = 0; j < yColumns_; ++j) {
    LaneNumbers& c = c_.back()[j];
    AddLaneDots(f_[j].data(), t_.back().data(), 0, x_.Rows(), c.data());  // F is 0 in left-out rows
    for (std::size_t l = 0; l < kLanes; ++l) c[l] /= tt_.back()[l];
  }
}

/// Goes over X for p, then for z, and deflates what is left.
void PLSLanes::FormLoadings() {
  const std::size_t a = Components() - 1;
  const Vectors& t = t_.back();
  const LaneNumbers& tt = tt_.back();
  Vectors fittedT(t), w(x_.Columns() * kLanes, 0.0), p(w.size()), prepared(w.size());
  LaneNumbers sumOfT{};
  for (std::size_t i = 0; i < t.size(); ++i) {
    fittedT[i] *= x_.Mask()[i];
    sumOfT[i % kLanes] += fittedT[i];
  }
  PartSums sums(x_.ColumnParts(), 2 + 2 * a + yColumns_ + ss_.size());
  x_.ForColumns([&](const LanePart& part) {
    for (std::size_t j = 0; j < yColumns_; ++j) {
      LaneNumbers g{};
      for (std::size_t l = 0; l < lanes_.size(); ++l) g[l] = lanes_[l].g[j];
      for (std::size_t c = part.begin * kLanes; c < part.end * kLanes; c += kLanes) {
        for (std::size_t l = 0; l < kLanes; ++l) w[c + l] += s_[j][c + l] * g[l];
      }
    }
    x_.MultiplyColumns(part, fittedT, sumOfT, p.data());
    for (std::size_t j = 0; j < yColumns_; ++j) {
      const LaneNumbers& ofY = c_.back()[j];
      for (std::size_t c = part.begin * kLanes; c < part.end * kLanes; c += kLanes) {
        for (std::size_t l = 0; l < kLanes; ++l) s_[j][c + l] -= p[c + l] * ofY[l];
      }
    }
    for (std::size_t c = part.begin * kLanes; c < part.end * kLanes; c += kLanes) {
      for (std::size_t l = 0; l < kLanes; ++l) p[c + l] /= tt[l];
    }
    x_.Prepare(part, p, &prepared, sums.Of(part, 0));
    const auto add = [&](const Vectors& u, const Vectors& v, std::size_t sum) {
      AddLaneDots(u.data(), v.data(), part.begin, part.end, sums.Of(part, sum));
    };
    add(p, p, 1);
    for (std::size_t b = 0; b < a; ++b) {
      add(p_[b], p, 2 + b);
      add(p_[b], w, 2 + a + b);
    }
    for (std::size_t i = 0; i < yColumns_; ++i) {
      add(p, s_[i], 2 + 2 * a + i);
      for (std::size_t j = i; j < yColumns_; ++j) add(s_[i], s_[j], 2 + 2 * a + yColumns_ + Place(i, j));
    }
  });
  pw_.emplace_back();
  for (std::size_t b = 0; b < a; ++b) pw_.back().push_back(sums.Total(2 + a + b));
  for (std::size_t i = 0; i < yColumns_; ++i) {
    for (std::size_t j = i; j < yColumns_; ++j) {
      ss_[Place(i, j)] = ss_[Place(j, i)] = sums.Total(2 + 2 * a + yColumns_ + Place(i, j));
    }
  }
  w_.push_back(std::move(w));
  Vectors z(t.size());
  const LaneNumbers offset = sums.Total(0);
  x_.ForRows([&](const LanePart& part) { x_.MultiplyRows(part, prepared, offset, z.data()); });
  for (std::size_t b = 0; b < a; ++b) {
    const LaneNumbers share = sums.Total(2 + b);
    for (std::size_t i = 0; i < z.size(); i += kLanes) {
      for (std::size_t l = 0; l < kLanes; ++l) z[i + l] -= t_[b][i + l] * share[l];
    }
  }
  p_.push_back(std::move(p));
  for (std::size_t j = 0; j < yColumns_; ++j) {
    const LaneNumbers ps = sums.Total(2 + 2 * a + j);
    const LaneNumbers& c = c_.back()[j];
    for (std::size_t i = 0; i < z.size(); i += kLanes) {
      for (std::size_t l = 0; l < kLanes; ++l) {
        q_[j][i + l] -= z[i + l] * (tt[l] * c[l]) + t[i + l] * ps[l];
        f_[j][i + l] -= fittedT[i + l] * c[l];
      }
    }
  }
  const LaneNumbers pp = sums.Total(1);
  for (std::size_t l = 0; l < lanes_.size(); ++l) {
    if (lanes_[l].isSound && static_cast<int>(a) < lanes_[l].lastModel) TakeShares(l, z, pp[l]);
  }
}

/// What the newest component leaves of the tables and of the left-out rows.
void PLSLanes::TakeShares(std::size_t l, const Vectors& z, double pp) {
  Lane& lane = lanes_[l];
  const std::size_t model = Components();
  const double tt = tt_.back()[l], wholeX = x_.SumsOfSquares()[l];
  lane.leftX -= tt * pp;
  // With a component for each column nothing is left, and nothing is measured by it.
  const bool isLast = static_cast<double>(model) == lane.columns;
  if (!(tt > 0.0) || !(lane.leftX > kLeastLeft * wholeX || isLast)) {
    lane.isSound = false;
    return;
  }
  double leftY = 0.0;
  for (std::size_t j = 0; j < yColumns_; ++j) leftY += DotOfRows(f_[j], f_[j], l);
  lane.r2x.push_back(1.0 - lane.leftX / wholeX);
  lane.r2y.push_back(1.0 - leftY / lane.wholeY);
  const std::vector<std::size_t>& leftOut = rounds_[l].leftOut;
  for (std::size_t i = 0; i < leftOut.size(); ++i) {
    const double t = t_.back()[leftOut[i] * kLanes + l];
    const double left = lane.leftOutSquares(i, model - 1) - 2.0 * t * z[leftOut[i] * kLanes + l] + t * t * pp;
    lane.leftOutSquares(i, model) = left;
    if (!(left > kLeastLeft * lane.leftOutSquares(i, 0) || isLast)) lane.isSound = false;
  }
}

/// r = w - sum over b < a of (p_b'w) r_b. An error of a score x r is some u |x| |r|.
void PLSLanes::FormRotations() {
  const std::size_t components = Components();
  r_ = w_;
  PartSums sums(x_.ColumnParts(), components);
  x_.ForColumns([&](const LanePart& part) {
    for (std::size_t a = 0; a < components; ++a) {
      for (std::size_t b = 0; b < a; ++b) {
        for (std::size_t c = part.begin * kLanes; c < part.end * kLanes; c += kLanes) {
          for (std::size_t l = 0; l < kLanes; ++l) r_[a][c + l] -= pw_[a][b][l] * r_[b][c + l];
        }
      }
      AddLaneDots(r_[a].data(), r_[a].data(), part.begin, part.end, sums.Of(part, a));
    }
  });
  for (std::size_t a = 0; a < components; ++a) {
    const LaneNumbers rr = sums.Total(a);
    for (std::size_t l = 0; l < lanes_.size(); ++l) {
      const double error = kUnit * x_.SumsOfSquares()[l] * rr[l] / tt_[a][l];
      if (static_cast<int>(a) < lanes_[l].lastModel && !(error < kLostDigits)) lanes_[l].isSound = false;
    }
  }
}

}  // namespace kalmia::analysis
