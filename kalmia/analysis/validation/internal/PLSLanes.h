#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"
#include "kalmia/analysis/validation/internal/LaneX.h"
#include "kalmia/analysis/validation/internal/RoundFigures.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

/// A complete table as rounds see it, from which each takes its rows.
struct LaneTable {
  std::vector<const float*> x;       ///< the cells of each row, less the shifts
  std::vector<double> xShifts;       ///< in the units of the table; empty where there are none
  std::vector<std::string> xNames;
  RealColumns y;                     ///< in the units of the table
  std::vector<std::string> yNames;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
};

/// The rows of a round, and how far its series may go.
struct LaneRound {
  std::vector<std::size_t> fitted, leftOut;
  SeriesLimits limits;
};

/// The PLS models of up to eight rounds of a complete table, fitted side by side: what RoundModel says, to the rounding
/// of its single precision.
///
/// With F what is left of the scaled Y, S = X'F and Q = E S, where E is what is left of X, a round of NIPALS from
/// u = F g on has w ~ S g, t ~ Q g and Y't = S'S g: its loop, with the start and the stop of NCPLS, runs in matrices of
/// the size of Y. A component then takes two passes over X, which is not deflated: p = X't / t't and z = E p. With them
///   F <- F - t c',  S <- S - p t't c',  Q <- Q - z t't c' - t p'S,  sum of e_i^2 <- that - 2 t_i z_i + t_i^2 p'p.
/// Scores of left-out rows come along: their rows of Q and z are there too. S and Q are computed anew where these
/// differences have taken too much of them.
/// Sources: F. Lindgren, P. Geladi, S. Wold, J. Chemometrics 7 (1993) 45-59; B. S. Dayal, J. F. MacGregor,
/// J. Chemometrics 11 (1997) 73-85.
class PLSLanes {
 public:
  /// Rounds with at least one fitted row each. `proceed` is told of the share of the components that is done. On all
  /// threads; the same bits for any number of them. Throws Stopped.
  PLSLanes(const LaneTable& table, std::vector<LaneRound> rounds, WorkProgress* progress, const Proceed& proceed);

  /// What the round tells; nothing where X, not being deflated, has not the digits for all its components, or where
  /// nothing but rounding is left of a table: then it has to be fitted alone.
  std::optional<RoundFigures> Figures(std::size_t lane, const RoundQuestions& asked) const;

 private:
  /// One round.
  struct Lane {
    bool isSound = false;
    int lastModel = 0;
    double columns = 0.0;             ///< of X, that have spread
    ColumnScaling yScaling;
    double leftX = 0.0, wholeY = 0.0;  ///< sums of squares
    std::vector<double> r2x = {0.0}, r2y = {0.0};
    RealMatrix leftOutSquares;        ///< left-out rows by models: what is left of each
    std::vector<double> g;            ///< of the component under way: w = S g
  };
  using Vectors = std::vector<double>;  ///< one of each lane, side by side

  void TakeY(std::size_t l);
  void Renew();
  void NextComponent();
  void Iterate(std::size_t l);
  void FormScores();
  void RegressOnScores();
  void FormLoadings();
  void TakeShares(std::size_t l, const Vectors& z, double pp);
  void FormRotations();
  double DotOfRows(const Vectors& a, const Vectors& b, std::size_t l) const;
  LeftOutRows Predictions(std::size_t lane, const std::vector<std::size_t>& rows) const;
  void NoteDistances(std::size_t lane, LeftOutRows* rows) const;
  std::vector<std::vector<std::vector<double>>> Coefficients(std::size_t lane, int first) const;
  void TakeUnitsOfTable(std::size_t lane, std::size_t j, const std::vector<double>& scaled,
                        std::vector<double>* slopes) const;
  std::vector<std::vector<std::vector<double>>> Importances(std::size_t lane, int first) const;
  std::vector<std::vector<std::vector<double>>> ImportancesOfOPLS(std::size_t lane, int first) const;
  /// Of the component a (from 0) of PLS as an orthogonal one of OPLS behind those `before`, each as a sum over the
  /// scores of PLS.
  std::vector<double> OrthogonalScore(std::size_t lane, std::size_t a,
                                      const std::vector<std::vector<double>>& before) const;
  /// Adds the squares of its loading, weighed by t't, to those of each column; the sum of what was added.
  double AddOrthogonalLoading(std::size_t lane, const std::vector<double>& score, std::vector<double>* weighted) const;

  std::size_t Place(std::size_t i, std::size_t j) const { return i * yColumns_ + j; }
  std::size_t Components() const { return t_.size(); }
  bool IsActive(std::size_t l) const {
    return lanes_[l].isSound && static_cast<int>(Components()) < lanes_[l].lastModel;
  }

  const LaneTable& table_;
  std::vector<LaneRound> rounds_;
  LaneX x_;
  std::size_t yColumns_;
  std::vector<Lane> lanes_;

  // Of what is left.
  std::vector<Vectors> f_, s_, q_;      ///< F, S, Q by Y column
  std::vector<LaneNumbers> ss_;         ///< S'S
  LaneNumbers largestS_{};              ///< sum of squares of S when it was computed

  // By component.
  std::vector<Vectors> t_, w_, p_, r_;  ///< r: x r is the score of a row x
  std::vector<LaneNumbers> tt_;         ///< t't
  std::vector<std::vector<LaneNumbers>> c_;   ///< by Y column
  std::vector<std::vector<LaneNumbers>> pw_;  ///< p_b' w_a of the components b before a
};

}  // namespace kalmia::analysis
