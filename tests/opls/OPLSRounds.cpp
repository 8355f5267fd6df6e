#include "OPLSRounds.h"

#include <algorithm>

Tables TablesOf(const RoundsCase& which) {
  Tables tables = RelatedTables(which.rows, which.xVariables, which.yVariables, which.holes, which.seed);
  if (which.strongGroup < 0) return tables;
  const int half = which.xVariables / 2;
  for (int i = 1; i <= which.rows; ++i) {
    if (i % kRounds != which.strongGroup) tables.Y(i, 2, 1e-3F * tables.Y[i][2]);
    for (int j = 1; j <= half; ++j) tables.X(i, half + j, 0.1F * tables.X[i][half + j] - tables.X[i][j]);
  }
  return tables;
}

const std::vector<RoundsCase>& RoundsCases() {
  static const std::vector<RoundsCase> cases = {{"OneY", 24, 6, 1, 0.0, 1},
                                                {"ThreeY", 24, 6, 3, 0.0, 2},
                                                {"Wide", 18, 40, 2, 0.0, 2},
                                                {"OneYWithHoles", 24, 6, 1, 0.1, 1},
                                                {"ThreeYWithHoles", 24, 6, 3, 0.1, 2},
                                                {"ASmallerBlockInTheFirstRound", 24, 6, 2, 0.0, 0, 0, 55},
                                                {"ASmallerBlockInASecondRound", 24, 6, 2, 0.0, 0, 1, 55},
                                                {"ASmallerBlockInTheLastRound", 24, 6, 2, 0.0, 0, kRounds - 1, 55}};
  return cases;
}

Division Divide(const Tables& tables, const NCIntegralVector<int, -99>& groups, int group) {
  Division division;
  for (int i = 1; i <= tables.X.SizeRows(); ++i) {
    const bool out = groups[i] == group;
    (out ? division.leftOut : division.kept.X).push_back(tables.X[i]);
    (out ? division.leftOutRows : division.keptRows).push_back(i);
    if (!out) division.kept.Y.push_back(tables.Y[i]);
  }
  return division;
}

namespace {

/// Turns the newest components of a round along those of the first; a component that either has not stays.
void Align(NCOPLS* model, const NCOPLS& first, Turns* turns) {
  for (int a = 1; a <= std::min(model->SizeComponents(), first.SizeComponents()); ++a) {
    if ((*model->GetWprim())[a] * (*first.GetWprim())[a] >= 0.0L) continue;
    model->NegatePredictiveComp(a);
    ++turns->predictive;
    if (model->SizeComponents() != first.SizeComponents()) ++turns->amongDifferentSizes;
  }
  const int o = model->SizeOrthogonalComponents();
  if (o == 0 || (*model->GetWOprim())[o] * (*first.GetWOprim())[o] >= 0.0L) return;
  model->NegateOComp(o);
  ++turns->orthogonal;
}

}  // namespace

std::vector<NCOPLS> ModelsOf(const std::vector<Division>& rounds, int predictive, int orthogonal, Turns* turns) {
  std::vector<NCOPLS> models;
  for (const Division& round : rounds) models.push_back(FittedOPLS(round.kept, predictive, -1));
  Turns counted;
  for (int o = 0; o <= orthogonal; ++o)
    for (NCOPLS& model : models) {
      model.NextComponent(nullptr);
      Align(&model, models.front(), &counted);
    }
  if (turns) *turns = counted;
  return models;
}
