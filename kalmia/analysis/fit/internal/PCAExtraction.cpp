#include "kalmia/analysis/fit/internal/PCAExtraction.h"

#include <limits>
#include <utility>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/pcapls/NCComponentValidator.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

constexpr auto kHardlyAnythingLeft = "less than 0.001 of X is left";
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

class Extraction {
 public:
  Extraction(const PCATask& task, NCProgress* progress)
      : task_(task),
        progress_(progress),
        columnSs_(ColumnSumsOfSquares(task.x)),
        columnQ2Cum_(task.x.SizeColumns()) {
    fit_.model = std::make_unique<NCPCA>(&task.x, kMaxIterations);
    validator_.SetPCAModel(fit_.model.get());
    for (int k = 1; k <= columnQ2Cum_.Size(); ++k) columnQ2Cum_(k, 0.0F);
  }

  PCAComponents Run() {
    while (fit_.kept < task_.mostComponents) {
      progress_.Ask();
      PCAComponentRecord record;
      record.enoughLeft = validator_.IsValid();
      if (!record.enoughLeft && !IsWorthTrying()) break;
      if (!Extract(fit_.kept + 1, &record)) break;
      record.kept = record.significant || !task_.stopAtFirstFailure;
      Deflate(&record);
      fit_.components.push_back(record);
      if (!record.kept) break;
      ++fit_.kept;
      if (!task_.judgeComponents) continue;
      columnQ2Cum_ = *crossValidation_->GetQ2XVarCum();
      q2Cum_ = crossValidation_->GetQ2TotCum();
    }
    DescribeColumns();
    if (fit_.kept == task_.mostComponents) DescribeFurther();
    return std::move(fit_);
  }

 private:
  /// Where the rule says that too little is left of X: a number of components that was asked for is still computed, as
  /// long as there is more than rounding.
  bool IsWorthTrying() {
    const bool any = fit_.components.empty() || fit_.components.back().r2xCum < 1.0 - kExhausted;
    if (any && !task_.stopAtFirstFailure) return true;
    const char* reason = any && fit_.kept > 0 ? kHardlyAnythingLeft : kNothingLeft;
    fit_.endedEarly = ReasonToEnd(task_, fit_.kept + 1, reason, "its");
    return false;
  }

  /// False if no component can be computed. What was there before is restored then.
  bool Extract(int component, PCAComponentRecord* record) {
    progress_.Begin(ComponentText(component));
    const NCDataMatrix<float> x = *fit_.model->GetResiduals();
    try {
      fit_.model->NextComponent(progress_.Bar(), /*groups=*/nullptr, /*group=*/0, /*start=*/nullptr);
    } catch (const NCError& error) {
      progress_.Ask();
      const std::string reason = OneLine(static_cast<const char*>(error.GetMessage()));
      fit_.endedEarly = ReasonToEnd(task_, component, reason, "its");
      Restore(x, *fit_.model->GetPprim(), *fit_.model->GetTprim());
      return false;
    }
    record->iterations = fit_.model->GetIterations();
    if (task_.judgeComponents) {
      CrossValidate(component, record);
    } else {
      record->q2 = record->q2Cum = record->q2Limit = kNone;
    }
    return true;
  }

  /// Components that would come after those of the model. They are described and dropped again.
  void DescribeFurther() {
    if (task_.describedComponents <= fit_.kept) return;
    const NCDataMatrix<float> x = *fit_.model->GetResiduals();
    const NCDataMatrix<float> p = FirstRows(fit_.model->GetPprim(), fit_.kept);
    const NCDataMatrix<float> t = FirstRows(fit_.model->GetTprim(), fit_.kept);
    for (int component = fit_.kept + 1; component <= task_.describedComponents; ++component) {
      progress_.Begin(ComponentText(component));
      PCAComponentRecord record;
      record.enoughLeft = validator_.IsValid();
      record.q2 = record.q2Cum = record.q2Limit = kNone;
      if (!fit_.components.empty() && fit_.components.back().r2xCum >= 1.0 - kExhausted) break;
      try {
        fit_.model->NextComponent(progress_.Bar(), /*groups=*/nullptr, /*group=*/0, /*start=*/nullptr);
      } catch (const NCError&) {
        progress_.Ask();
        break;  // nothing is left of X
      }
      record.iterations = fit_.model->GetIterations();
      fit_.model->CalculateResiduals();
      Describe(&record);
      fit_.components.push_back(record);
    }
    Restore(x, p, t);
  }

  /// A component that cross-validation cannot judge is not significant.
  void CrossValidate(int component, PCAComponentRecord* record) {
    progress_.BeginRounds(ComponentText(component), 2 * task_.rounds);  // rows and columns in turn
    crossValidation_ = std::make_unique<PCACrossValidation>(fit_.model.get(), q2Cum_, columnQ2Cum_, task_.rounds,
                                                            &task_.groups, /*variableGroups=*/nullptr);
    const float limit = crossValidation_->GetQ2Lim(component, task_.centred);
    record->q2Limit = ShortestDouble(limit);
    try {
      crossValidation_->NextComponent(columnSs_, progress_.Bar());
    } catch (const NCError& error) {
      progress_.Ask();
      fit_.notJudged = OneLine(static_cast<const char*>(error.GetMessage()));
      record->q2 = record->q2Cum = kNone;
      return;
    }
    progress_.Ask();
    record->q2 = ShortestDouble(crossValidation_->GetQ2Tot());
    record->q2Cum = ShortestDouble(crossValidation_->GetQ2TotCum());
    record->significant = crossValidation_->GetQ2Tot() > limit;
  }

  /// Takes the component out of X, to see how much it describes. A component that is not kept then goes.
  void Deflate(PCAComponentRecord* record) {
    const NCDataMatrix<float> before = *fit_.model->GetResiduals();
    fit_.model->CalculateResiduals();
    Describe(record);
    if (record->kept) return;
    Restore(before, FirstRows(fit_.model->GetPprim(), fit_.kept), FirstRows(fit_.model->GetTprim(), fit_.kept));
  }

  void Describe(PCAComponentRecord* record) const {
    record->r2xCum = DescribedShare(task_.x, *fit_.model->GetResiduals());
    record->r2x = record->r2xCum - (fit_.components.empty() ? 0.0 : fit_.components.back().r2xCum);
  }

  void Restore(const NCDataMatrix<float>& x, const NCDataMatrix<float>& p, const NCDataMatrix<float>& t) {
    fit_.model = std::make_unique<NCPCA>(&x, &p, &t, kMaxIterations);
  }

  void DescribeColumns() {
    for (int k = 1; k <= task_.x.SizeColumns(); ++k) {
      fit_.columnR2.push_back(DescribedShareOfColumn(task_.x, *fit_.model->GetResiduals(), k));
      fit_.columnQ2.push_back(task_.judgeComponents ? ShortestDouble(columnQ2Cum_[k]) : kNone);
    }
  }

  const PCATask& task_;
  WorkProgress progress_;
  NCDataVector<float> columnSs_;
  NCDataVector<float> columnQ2Cum_;  ///< over the kept components
  float q2Cum_ = 0.0F;
  PCA_SS_ComponentValidator validator_{nullptr, kSmallestShareLeft};
  PCAComponents fit_;
  std::unique_ptr<PCACrossValidation> crossValidation_;
};

}  // namespace

PCAComponents ExtractPCA(const PCATask& task, NCProgress* progress) { return Extraction(task, progress).Run(); }

}  // namespace kalmia::analysis
