#include "kalmia/o2pls/internal/O2PLSRounds.h"

#include <cstddef>
#include <functional>

#include "kalmia/pcapls/internal/ComponentRows.h"

namespace kalmia {

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Flags = std::vector<bool>;
using Groups = NCIntegralVector<int, -99>;

/// The rows of `loadings` that point away from their counterparts.
Flags RowsToTurn(const Matrix& loadings, const Matrix& reference) {
  Flags flags;
  for (int a = 1; a <= loadings.SizeRows(); ++a) flags.push_back(loadings[a] * reference[a] < 0.0L);
  return flags;
}

bool AnyIn(const Flags& flags) {
  for (const bool flag : flags)
    if (flag) return true;
  return false;
}

/// A matrix of each round.
using PerRound = std::vector<Matrix>;

PerRound OfRounds(const std::vector<O2PLSRound>& rounds, const std::function<Matrix(const O2PLSRound&)>& get) {
  PerRound matrices;
  matrices.reserve(rounds.size());
  for (const O2PLSRound& round : rounds) matrices.push_back(get(round));
  return matrices;
}

/// Row `component` of each round's matrix, one below the other.
Matrix RowsOf(const PerRound& matrices, int component) {
  Matrix rows = EmptyMatrix(matrices.front().SizeColumns(), static_cast<int>(matrices.size()));
  for (const Matrix& matrix : matrices) rows.push_back(matrix[component]);
  return rows;
}

void AppendRows(const PerRound& matrices, int components, std::vector<Matrix>* set) {
  for (int a = 1; a <= components; ++a) set->push_back(RowsOf(matrices, a));
}

/// Row `component` of the scores of each round, of all observations in their order: those that a round held out have
/// their predicted scores, the others the fitted ones.
Matrix ScoresOf(const PerRound& fitted, const PerRound& predicted, const Groups& groups, int component) {
  Matrix scores(static_cast<int>(fitted.size()), groups.Size(), 0.0F);
  for (int r = 1; r <= scores.SizeRows(); ++r) {
    const std::size_t round = static_cast<std::size_t>(r) - 1;
    int nextFitted = 0, nextPredicted = 0;
    for (int i = 1; i <= groups.Size(); ++i) {
      const bool heldOut = groups[i] == r - 1;
      scores(r, i, heldOut ? predicted[round][component][++nextPredicted] : fitted[round][component][++nextFitted]);
    }
  }
  return scores;
}

void AppendScores(const PerRound& fitted, const PerRound& predicted, const Groups& groups, int components,
                  std::vector<Matrix>* set) {
  for (int a = 1; a <= components; ++a) set->push_back(ScoresOf(fitted, predicted, groups, a));
}

}  // namespace

NCDataMatrix<float> ErrorsOfY(const O2PLSRound& round) {
  return NCO2PLSYPred(&round.heldOutX, &round.model).GetYPred() - round.heldOutY;
}

NCDataMatrix<float> ErrorsOfX(const O2PLSRound& round) {
  return NCO2PLSXPred(&round.heldOutY, &round.model).GetXPred() - round.heldOutX;
}

void AlignRounds(std::vector<O2PLSRound>* rounds) {
  const NCO2PLS& reference = rounds->front().model;
  const Matrix p = reference.GetP(), c = reference.GetC(), po = reference.GetPo(), co = reference.GetCo();
  for (O2PLSRound& round : *rounds) {
    const Flags xFlips = RowsToTurn(round.model.GetP(), p), yFlips = RowsToTurn(round.model.GetC(), c),
                xSideFlips = RowsToTurn(round.model.GetPo(), po), ySideFlips = RowsToTurn(round.model.GetCo(), co);
    round.model.FlipPredictiveModel(xFlips, yFlips);
    round.model.FlipXSideModel(xSideFlips);
    round.model.FlipYSideModel(ySideFlips);
    const bool turned = AnyIn(xFlips) || AnyIn(yFlips) || AnyIn(xSideFlips) || AnyIn(ySideFlips);
    if (turned || !round.ofY) round.ofY.emplace(&round.heldOutX, &round.model);
    if (turned || !round.ofX) round.ofX.emplace(&round.heldOutY, &round.model);
  }
}

void SaveRounds(const std::vector<O2PLSRound>& rounds, const NCIntegralVector<int, -99>& groups,
                O2PLSCVResults* results) {
  const auto model = [&rounds](Matrix (NCO2PLS::*get)() const) {
    return OfRounds(rounds, [get](const O2PLSRound& round) { return (round.model.*get)(); });
  };
  const auto ofY = [&rounds](Matrix (NCO2PLSYPred::*get)() const) {
    return OfRounds(rounds, [get](const O2PLSRound& round) { return (*round.ofY.*get)(); });
  };
  const auto ofX = [&rounds](Matrix (NCO2PLSXPred::*get)() const) {
    return OfRounds(rounds, [get](const O2PLSRound& round) { return (*round.ofX.*get)(); });
  };
  const int predictive = results->PredictiveComponents;
  AppendScores(model(&NCO2PLS::GetT), ofY(&NCO2PLSYPred::GetT), groups, predictive, &results->TSet);
  AppendScores(model(&NCO2PLS::GetU), ofX(&NCO2PLSXPred::GetU), groups, predictive, &results->USet);
  AppendRows(model(&NCO2PLS::GetP), predictive, &results->PSet);
  AppendRows(model(&NCO2PLS::GetW), predictive, &results->WSet);
  AppendRows(model(&NCO2PLS::GetC), predictive, &results->CSet);
  AppendRows(model(&NCO2PLS::GetQ), predictive, &results->QSet);
  for (const O2PLSRound& round : rounds) {
    results->LambdaSet.push_back(round.model.GetLambda());
    results->XLambdaSet.push_back(round.model.GetXLambda());
  }
  const int xSide = results->XSideComponents;
  AppendScores(model(&NCO2PLS::GetTo), ofY(&NCO2PLSYPred::GetTo), groups, xSide, &results->ToSet);
  AppendRows(model(&NCO2PLS::GetWo), xSide, &results->WoSet);
  AppendRows(model(&NCO2PLS::GetPo), xSide, &results->PoSet);
  AppendRows(model(&NCO2PLS::GetS), xSide, &results->SSet);
  const int ySide = results->YSideComponents;
  AppendScores(model(&NCO2PLS::GetUo), ofX(&NCO2PLSXPred::GetUo), groups, ySide, &results->UoSet);
  AppendRows(model(&NCO2PLS::GetCo), ySide, &results->CoSet);
  AppendRows(model(&NCO2PLS::GetQo), ySide, &results->QoSet);
  AppendRows(model(&NCO2PLS::GetR), ySide, &results->RSet);
}

}  // namespace kalmia
