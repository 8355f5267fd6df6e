// The predictive block of a model: the weights that Y'X gives, and what follows from them.
#include <algorithm>
#include <cmath>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/kernels/passes/ComponentPasses.h"
#include "kalmia/kernels/passes/SequentialScores.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/internal/OptionalProgress.h"

namespace {

constexpr double kSettled = 0.01;        ///< of the first pass' cross-product: less is not worth another pass
constexpr double kSmallestShare = 0.01;  ///< of the first component's sum of squares: less is not in the block

NCDataMatrix<float> RowsUpTo(const NCDataMatrix<float>& matrix, int last) {
  NCDataMatrix<float> rows;
  for (int a = 1; a <= last; ++a) rows.InsertRow(a, matrix[a]);
  return rows;
}

}  // namespace

void NCOPLS::CalcOPLS(NCProgress* progress, NCProgress* ofModels, const NCDataMatrix<float>& crossProduct) {
  const kalmia::StoppableProgress bar(progress, "OPLS component aborted.", NCError::Level2);
  bar.SetRange(0.0F, 10.0F);
  bar.PushSubRange(0.0F, 9.0F);
  bar.SetRange(0.0F, 1.0F);
  const Block block = SettleWeights(progress, ofModels, crossProduct);
  bar.PopSubRange();
  AppendBlock(block);
  bar.SetValue(10.0F);
}

/// Pass after pass, the cross-product of what is not explained yet, holes being 0 again, is added to the first one.
NCOPLS::Block NCOPLS::SettleWeights(NCProgress* progress, NCProgress* ofModels, NCDataMatrix<float> crossProduct) {
  const kalmia::StoppableProgress bar(progress, "OPLS component aborted.", NCError::Level2);
  passes_ = 0;
  NCDataMatrix<float> sum;
  Block block;
  NCDataMatrix<float>& W = block.W;
  double firstNorm = kalmia::kMissing, lastNorm = kalmia::kMissing;
  bool again = false;  // without holes one pass is exact
  do {
    const double norm = std::sqrt(static_cast<double>(crossProduct.GetSS()));
    if (passes_ == 0) {
      firstNorm = norm;
      sum = crossProduct;
    } else {
      const double togo = lastNorm < norm ? 0.0 : (norm - kSettled * firstNorm) / firstNorm;
      bar.SetValue(std::max(0.0F, static_cast<float>(1.0 - togo)));
      if (kSettled * firstNorm > norm || lastNorm < norm) break;
      sum += crossProduct;
    }
    lastNorm = norm;
    W = WeightsOf(sum, W, ofModels);
    ++passes_;
    const int holesOfY = y_.GetNumMisVal() - static_cast<int>(missingY_.size());  // those that are not 0 here
    again = (x_.GetNumMisVal() >= 1 || holesOfY >= 1) && passes_ < maxIterations_;
    if (again)
      crossProduct = CrossProduct(FilterAlong(W));
    else
      TakeScoresAlong(&block);
  } while (again);
  return block;
}

/// Renews tFilter_ for the weights W, and returns what is left of X.
NCDataMatrix<float> NCOPLS::FilterAlong(const NCDataMatrix<float>& W) {
  NCDataMatrix<float> left = x_;
  tFilter_.Clear();
  for (int a = 1; a <= W.SizeRows(); ++a) {
    tFilter_.InsertRow(a, left.SpecialNipalsRegressRowsFix(W[a], nullptr, 0));
    left.AddVprimV(tFilter_[a], W[a], -1.0F);
  }
  return left;
}

/// Renews tFilter_ for the weights of a block. The loadings of a single component come along.
void NCOPLS::TakeScoresAlong(Block* block) {
  const NCDataMatrix<float>& W = block->W;
  if (W.SizeRows() != 1) {
    tFilter_ = kalmia::SequentialScores(x_, W, W);
    return;
  }
  NCDataVector<float> t;
  kalmia::CalcScoresAndLoadings(x_, W[1], &t, &block->firstP);
  tFilter_.Clear();
  tFilter_.InsertRow(1, t);
}

NCDataMatrix<float> NCOPLS::WeightsOf(const NCDataMatrix<float>& crossProduct, const NCDataMatrix<float>& former,
                                      NCProgress* ofModels) {
  if (crossProduct.SizeRows() < 2) {
    NCDataMatrix<float> W = kalmia::DeepCopy(crossProduct);
    if (W.SizeRows() == 1) W(1).Normalise();
    return W;
  }
  const int size = SizeOfBlock(former);
  const NCDataMatrix<float> W = ComponentsOf(crossProduct, size, ofModels);
  if (size <= 0) predictiveComponents_ = W.SizeRows();  // decided once for the model
  return W;
}

/// 0 or less: to be decided.
int NCOPLS::SizeOfBlock(const NCDataMatrix<float>& former) const {
  if (predictiveComponents_ > 0 || (wMatrices_.empty() && passes_ == 0)) return predictiveComponents_;
  if (former.SizeRows() > 0) return former.SizeRows();
  return wMatrices_.empty() ? 0 : wMatrices_.front().SizeRows();
}

/// Loadings of the first `size` principal components of the cross-product; 0 or less: of those that are large enough.
NCDataMatrix<float> NCOPLS::ComponentsOf(const NCDataMatrix<float>& crossProduct, int size,
                                         NCProgress* ofModels) const {
  NCPCA components(&crossProduct, maxIterations_);
  components.NextComponent(ofModels, nullptr, 0, nullptr);
  for (int a = 2; a <= size; ++a) {
    components.CalculateResiduals();
    components.NextComponent(ofModels, nullptr, 0, nullptr);
  }
  if (size > 0) return *components.GetPprim();

  const auto newestSS = [&components] { return static_cast<double>(components.GetTprim()->back().GetSS()); };
  const double threshold = kSmallestShare * newestSS();
  double ss = 0.0;
  do {
    components.CalculateResiduals();
    components.NextComponent(ofModels, nullptr, 0, nullptr);
    ss = newestSS();
  } while (components.GetComponents() < crossProduct.SizeRows() && ss > threshold);
  const NCDataMatrix<float>& P = *components.GetPprim();
  return threshold > ss ? RowsUpTo(P, P.SizeRows() - 1) : P;
}

void NCOPLS::AppendBlock(const Block& block) {
  const NCDataMatrix<float>& W = block.W;
  NCDataMatrix<float> E = x_, F = y_, P, C;
  tprim_.Clear();
  uprim_.Clear();
  for (int a = 1; a <= W.SizeRows(); ++a) {
    NCDataVector<float> t = tFilter_[1], p = block.firstP;
    if (a > 1)
      kalmia::CalcScoresAndLoadings(E, W[a], &t, &p);
    else if (p.Size() == 0)
      p = E.SpecialNipalsRegressColumnsFix(t);
    tprim_.InsertRow(a, t);
    P.InsertRow(a, p);
    C.InsertRow(a, F.SpecialNipalsRegressColumnsFix(t));
    uprim_.InsertRow(a, F.SpecialNipalsRegressRowsFix(C[a], nullptr, 0));
    if (a == W.SizeRows()) break;  // nobody reads what is left behind the last
    E.AddVprimV(t, p, -1.0F);
    F.AddVprimV(t, C[a], -1.0F);
  }
  wMatrices_.push_back(W);
  pMatrices_.push_back(P);
  cMatrices_.push_back(C);
}
