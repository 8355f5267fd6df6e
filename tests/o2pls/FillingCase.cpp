#include "FillingCase.h"

#include <cmath>

#include "kalmia/o2pls/PLSMissingValueEstimator.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "testing/RandomTables.h"

namespace filling {

namespace {


}  // namespace

Tables RelatedTables(int rows, int xVariables, int yVariables, int latent, float noise) {
  NCDataMatrix<float> scores = RandomMatrix<float>(latent, rows, 0, 1);
  for (int a = 2; a <= latent; ++a) scores.MultiplyRow(a, std::pow(0.6F, static_cast<float>(a - 1)));
  const auto table = [&](int columns, unsigned seed) {
    Table product = scores.MatrixMultiply(RandomMatrix<float>(latent, columns, 0, seed), true, false);
    return product += RandomMatrix<float>(rows, columns, 0, seed + 1) * static_cast<long double>(noise);
  };
  return {table(xVariables, 2), table(yVariables, 4)};
}

Tables TwoScores(float share, float weight) {
  Tables tables{Table(120, 4), Table(120, 2)};
  for (int i = 1; i <= 120; ++i) {
    const float first = i % 2 == 0 ? 1.0F : -1.0F;
    const float second = i / 2 % 2 == 0 ? 1.0F : -1.0F;
    const float cells[] = {first, first, second / 2, second / 2};
    for (int j = 1; j <= 4; ++j) tables.X(i, j, cells[j - 1]);
    tables.Y(i, 1, weight * first);
    tables.Y(i, 2, std::sqrt(1 - share) * first + std::sqrt(share) * second);
  }
  tables.X(5, 1, kMissing);
  tables.X(8, 3, kMissing);
  return tables;
}

Table WithHoles(Table table, double holes, unsigned seed) {
  const Table mask = RandomMatrix<float>(table.SizeRows(), table.SizeColumns(), holes, seed);
  for (int i = 1; i <= table.SizeRows(); ++i)
    for (int j = 1; j <= table.SizeColumns(); ++j)
      if (mask[i][j] == kMissing) table(i, j, kMissing);
  return table;
}

Search CountComponents(NCPLS* model, const Table& Y) {
  const auto next = [model] { model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true); };
  NCDataVector<float> start(Y.SizeColumns());
  double total = 0.0;
  for (int j = 1; j <= Y.SizeColumns(); ++j) {
    start(j, static_cast<float>(Y.GetColumnSS(j, 0)));
    total += static_cast<double>(start[j]);
  }
  next();
  PLSCrossValidation validation(model, 7, nullptr);
  for (int a = 1;; ++a) {
    validation.NextComponent(&(*model->GetWprim())[a], 200, start, nullptr, /*quiet=*/true);
    if (!(validation.GetQ2Tot() > validation.GetQ2Lim())) return {a - 1, End::Q2};
    const Table before = *model->GetYResiduals();
    model->CalculateResiduals();
    double explained = 0.0;
    bool oneColumn = false;
    for (int j = 1; j <= Y.SizeColumns(); ++j) {
      const double ofColumn =
          static_cast<double>(before.GetColumnSS(j, 0) - model->GetYResiduals()->GetColumnSS(j, 0));
      explained += ofColumn;
      oneColumn = oneColumn || ofColumn > 0.03 * static_cast<double>(start[j]);
    }
    if (explained < 0.01 * total && !oneColumn) return {a - 1, End::LackOfFit};
    try {
      next();
    } catch (const NCError&) {
      return {a, End::NoComponent};
    }
  }
}

Table FilledBy(const NCPLS& model, int components, Table X) {
  for (int i = 1; i <= X.SizeRows(); ++i)
    for (int j = 1; j <= X.SizeColumns(); ++j) {
      if (X[i][j] != kMissing) continue;
      double sum = 0.0;
      for (int a = 1; a <= components; ++a) {
        const double t = (*model.GetTprim())[a][i], p = (*model.GetPprim())[a][j];
        if (t != kMissing && p != kMissing) sum += t * p;
      }
      X(i, j, static_cast<float>(sum));
    }
  return X;
}

Table FilledByTwin(const Table& X, const Table& Y, Search* search) {
  NCPLS model(&X, &Y, 200);
  const Search found = CountComponents(&model, Y);
  if (search) *search = found;
  return FilledBy(model, found.components, X);
}

Table Filled(Table X, Table Y) {
  PLSMissingValueEstimator(X, Y, /*both=*/false);
  return X;
}

}  // namespace filling
