#include "kalmia/o2pls/PLSMissingValueEstimator.h"

#include <cstddef>
#include <vector>

#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/NCError.h"

namespace {

constexpr float kMissing = kalmia::kMissingCell<float>;
constexpr int kMaxIterations = 200;
constexpr int kRounds = 7;

/// A component explains too little of Y where it explains less than this share of all of it ...
constexpr double kSmallShareOfAll = 0.01;
/// ... and of no column more than this one.
constexpr double kSmallShareOfColumn = 0.03;

/// What is left of Y while components are taken out of it.
class FitOfY {
 public:
  explicit FitOfY(const NCDataMatrix<float>& Y);

  const NCDataVector<float>& SumsOfSquares() const { return ss_; }  ///< of the columns, before the first component
  /// Whether the component that was taken out last explains too little; `residuals` is Y without it.
  bool LastExplainsTooLittle(const NCDataMatrix<float>& residuals);

 private:
  NCDataVector<float> ss_;
  float total_ = 0.0F;
  std::vector<double> left_;  ///< as ss_, of the residuals
  double leftTotal_ = 0.0;
};

FitOfY::FitOfY(const NCDataMatrix<float>& Y) : ss_(Y.SizeColumns()) {
  double total = 0.0;
  for (int j = 1; j <= Y.SizeColumns(); ++j) {
    ss_(j, static_cast<float>(Y.GetColumnSS(j, 0.0L)));
    left_.push_back(static_cast<double>(ss_[j]));
    total += left_.back();
  }
  total_ = static_cast<float>(total);
  leftTotal_ = static_cast<double>(total_);
}

bool FitOfY::LastExplainsTooLittle(const NCDataMatrix<float>& residuals) {
  bool explainsAColumn = false;
  double sum = 0.0;
  for (int j = 1; j <= residuals.SizeColumns(); ++j) {
    const double ss = static_cast<double>(residuals.GetColumnSS(j, 0.0L));
    double& left = left_[static_cast<std::size_t>(j) - 1];
    if ((left - ss) / static_cast<double>(ss_[j]) > kSmallShareOfColumn) explainsAColumn = true;
    left = ss;
    sum += ss;
  }
  const bool explainsLittle = (leftTotal_ - sum) / static_cast<double>(total_) < kSmallShareOfAll;
  leftTotal_ = sum;
  return explainsLittle && !explainsAColumn;
}

/// Extracts components until one does not count, and tells how many do.
int ExtractComponents(NCProgress* progress, NCPLS* model) {
  FitOfY fit(*model->GetYResiduals());
  const auto nextComponent = [=] { model->NextComponent(progress, nullptr, /*quiet=*/false, /*strict=*/true); };
  nextComponent();
  PLSCrossValidation validation(model, kRounds, nullptr);
  try {
    for (;; nextComponent()) {
      const NCDataVector<float>& w = (*model->GetWprim())[model->GetComponents()];
      validation.NextComponent(&w, kMaxIterations, fit.SumsOfSquares(), progress, /*quiet=*/false);
      if (!(validation.GetQ2Tot() > validation.GetQ2Lim())) return model->GetComponents() - 1;
      model->CalculateResiduals();
      if (fit.LastExplainsTooLittle(*model->GetYResiduals())) return model->GetComponents() - 1;
    }
  } catch (const NCError& error) {
    if (error.GetLevel() != NCError::Level1) throw;
  }
  return model->GetComponents();
}

/// What the first components of the model make of cell (i, j).
float Reconstruction(const NCPLS& model, int components, int i, int j) {
  double sum = 0.0;
  for (int a = 1; a <= components; ++a) {
    const float t = (*model.GetTprim())[a][i];
    const float p = (*model.GetPprim())[a][j];
    if (t != kMissing && p != kMissing) sum += static_cast<double>(t) * static_cast<double>(p);
  }
  return static_cast<float>(sum);
}

/// X with its holes filled; X itself is not changed.
NCDataMatrix<float> Completed(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, NCProgress* progress) {
  NCPLS model(&X, &Y, kMaxIterations);
  const int components = ExtractComponents(progress, &model);
  NCDataMatrix<float> completed = X;
  for (int i = 1; i <= X.SizeRows(); ++i) {
    if (X[i].GetNumMisVal() == 0) continue;
    for (int j = 1; j <= X.SizeColumns(); ++j)
      if (X[i][j] == kMissing) completed(i, j, Reconstruction(model, components, i, j));
  }
  return completed;
}

}  // namespace

void PLSMissingValueEstimator(NCDataMatrix<float>& X, NCDataMatrix<float>& Y, bool both, NCProgress* progress) {
  if (X.SizeRows() != Y.SizeRows()) throw NCError("The two tables have not the same number of rows.");
  if (X.GetNumMisVal() > 0) X = Completed(X, Y, progress);
  if (both) PLSMissingValueEstimator(Y, X, /*both=*/false, progress);
}
