#include "kalmia/kernels/passes/ComponentPasses.h"

#include <vector>

#include "kalmia/kernels/passes/CompleteTables.h"
#include "kalmia/kernels/passes/ScoresAndLoadingsPass.h"
#include "kalmia/kernels/regression/ExcludedPositions.h"
#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/regression/RowRegression.h"

namespace kalmia {

namespace {

constexpr float kHole = kMissingCell<float>;

/// Scores are the regression of the rows on w.
class ScoreAlong final : public RowScorer {
 public:
  ScoreAlong(const NCDataMatrix<float>& X, const VectorWithExclusions<float>& w)
      : X_(X), regression_(w, /*fix=*/true) {}

  int Score(int, int first, int last, float* scores) const override {
    return regression_.Rows(X_, scores, first, last);
  }

 private:
  const NCDataMatrix<float>& X_;
  const RowRegression<float> regression_;
};

/// Both steps of CalcScoresAndLoadings in one pass, or false, and t and p are what they were.
bool CalcInOnePass(const NCDataMatrix<float>& X, const VectorWithExclusions<float>& w, NCDataVector<float>* t,
                   NCDataVector<float>* p) {
  return !HasNoCells(X) && CalcScoresAndLoadingsInOnePass(X, ScoreAlong(X, w), t, p);
}

}  // namespace

void CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w, NCDataVector<float>* t,
                           NCDataVector<float>* p) {
  if (CalcInOnePass(X, VectorWithExclusions<float>(w), t, p)) return;
  *t = X.SpecialNipalsRegressRowsFix(w, nullptr, 0);
  *p = X.SpecialNipalsRegressColumnsFix(*t);
}

void CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w,
                           const NCIntegralVector<int, -99>* groups, int group, NCDataVector<float>* t,
                           NCDataVector<float>* p) {
  if (!groups && CalcInOnePass(X, VectorWithExclusions<float>(w), t, p)) return;
  if (groups && CalcInOnePass(X, VectorWithExclusions<float>(w, *groups, group), t, p)) {
    for (int c = 1; c <= p->Size(); ++c)
      if ((*groups)[c] == group) (*p)(c, kHole);
    return;
  }
  *t = X.SpecialNipalsRegressRowsFix(w, groups, group);
  *p = X.SpecialNipalsRegressColumnsFix(*t, groups, group);
}

long double SumSquaresWithout(const NCDataMatrix<float>& Y, const NCDataVector<float>& t,
                              const NCDataVector<float>& c) {
  const int columns = Y.SizeColumns();
  NCDataMatrix<float> rest(1, columns);  // of a row at a time
  std::vector<int> emptied(static_cast<std::size_t>(columns) + 1);
  const int misValMode = MisValMode(Y.GetNumMisVal(), c.GetNumMisVal());
  double sum = 0.0;
  for (int r = 1; r <= Y.SizeRows(); ++r) {
    rest(1).CopyContent(Y[r]);
    const float factor = t[r] == kHole ? kHole : -t[r];
    NCDataMatrix<float>::AddFV(rest, factor, c.begin(), misValMode, 1, emptied[0], emptied.data());
    const double squares = static_cast<double>(rest[1].GetSS());
    if (squares != kMissing) sum += squares;
  }
  return sum;
}

}  // namespace kalmia
