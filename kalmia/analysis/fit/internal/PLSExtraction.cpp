#include "kalmia/analysis/fit/internal/PLSExtraction.h"

#include <utility>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

class Extraction {
 public:
  Extraction(const PLSTask& task, NCProgress* progress)
      : task_(task), progress_(progress), ssY_(ColumnSumsOfSquares(task.y)) {
    fit_.model = std::make_unique<NCPLS>(&task.x, &task.y, kMaxIterations);
    if (!task.judgeComponents) return;
    crossValidation_ = std::make_unique<PLSCrossValidation>(fit_.model.get(), task.rounds, &task.groups);
  }

  PLSComponents Run() {
    bool goesOn = true;
    while (goesOn && fit_.kept < task_.mostComponents) goesOn = ExtractNext();
    if (goesOn) DescribeFurther();
    return std::move(fit_);
  }

 private:
  /// Whether there can be a next component.
  bool ExtractNext() {
    progress_.Ask();
    const int component = fit_.kept + 1;
    const std::string reason = ReasonForNone(component);
    if (!reason.empty()) {
      fit_.endedEarly = ReasonToEnd(task_, component, reason, reason == kNothingLeft ? "its" : "their");
      return false;
    }
    ComponentRecord record = Judged(component);
    record.kept = record.significant || !task_.stopAtFirstFailure;
    Deflate(&record);
    fit_.components.push_back(record);
    if (!record.kept) return false;
    ++fit_.kept;
    if (task_.judgeComponents) fit_.crossValidatedResiduals = *crossValidation_->GetYPredResiduals();
    if (!IsExhausted(record)) return true;
    if (fit_.kept < task_.mostComponents) fit_.endedEarly = kNothingLeft;
    return false;
  }

  static bool IsExhausted(const ComponentRecord& record) { return record.r2xCum >= 1.0 - kExhausted; }

  /// Components that would come after those of the model. They are described and dropped again.
  void DescribeFurther() {
    if (task_.describedComponents <= fit_.kept) return;
    const NCDataMatrix<float> x = *fit_.model->GetXResiduals();
    const NCDataMatrix<float> y = *fit_.model->GetYResiduals();
    for (int component = fit_.kept + 1; component <= task_.describedComponents; ++component) {
      progress_.Ask();
      if (!ReasonForNone(component).empty()) break;
      fit_.model->CalculateResiduals();
      ComponentRecord record = Unjudged();
      Describe(&record);
      fit_.components.push_back(record);
      if (IsExhausted(record)) break;
    }
    DropFurther(x, y);
  }

  /// Extracts a component. Says why there is none: X and Y have nothing more in common, or nothing is left of X.
  std::string ReasonForNone(int component) {
    progress_.Begin(ComponentText(component));
    try {
      fit_.model->NextComponent(progress_.Bar(), /*start=*/nullptr, /*quiet=*/false, /*strict=*/true);
    } catch (const NCError& error) {
      progress_.Ask();
      return OneLine(static_cast<const char*>(error.GetMessage()));
    }
    const NCDataVector<float>& p = fit_.model->GetPprim()->back();
    if (p.GetNumMisVal() < p.Size()) return "";
    // The scores are so small that nothing can be regressed on them.
    DropFurther(*fit_.model->GetXResiduals(), *fit_.model->GetYResiduals());
    return kNothingLeft;
  }

  ComponentRecord Judged(int component) {
    if (!task_.judgeComponents) return Unjudged();
    CrossValidate(component);
    return Judge();
  }

  void CrossValidate(int component) {
    progress_.BeginRounds(ComponentText(component), task_.rounds);
    const NCDataVector<float> w = fit_.model->GetWprim()->back();
    crossValidation_->NextComponent(&w, kMaxIterations, ssY_, progress_.Bar(), /*quiet=*/false);
    progress_.Ask();
  }

  /// Nothing is known of what it predicts.
  ComponentRecord Unjudged() const {
    ComponentRecord record;
    record.iterations = fit_.model->GetIterations();
    record.y.q2 = record.y.q2Cum = record.q2Limit = kNotANumber;
    record.perY.assign(static_cast<std::size_t>(task_.y.SizeColumns()), {0.0, 0.0, kNotANumber, kNotANumber});
    return record;
  }

  ComponentRecord Judge() const {
    ComponentRecord record;
    record.iterations = fit_.model->GetIterations();
    record.y.q2 = ShortestDouble(crossValidation_->GetQ2Tot());
    record.y.q2Cum = ShortestDouble(crossValidation_->GetQ2TotCum());
    record.q2Limit = ShortestDouble(crossValidation_->GetQ2Lim());
    record.significant = crossValidation_->GetQ2Tot() > crossValidation_->GetQ2Lim();
    for (int j = 1; j <= task_.y.SizeColumns(); ++j) {
      YShare share;
      share.q2 = ShortestDouble((*crossValidation_->GetQ2YVar())[j]);
      share.q2Cum = ShortestDouble((*crossValidation_->GetQ2YVarCum())[j]);
      record.perY.push_back(share);
    }
    return record;
  }

  /// Takes the component out of X and Y, to see how much it describes. A component that is not kept then goes: the
  /// model is built anew from what was there before.
  void Deflate(ComponentRecord* record) {
    if (record->kept) {
      fit_.model->CalculateResiduals();
      Describe(record);
      return;
    }
    const NCDataMatrix<float> xBefore = *fit_.model->GetXResiduals();
    const NCDataMatrix<float> yBefore = *fit_.model->GetYResiduals();
    fit_.model->CalculateResiduals();
    Describe(record);
    DropFurther(xBefore, yBefore);
  }

  void Describe(ComponentRecord* record) const {
    const NCDataMatrix<float>& yLeft = *fit_.model->GetYResiduals();
    record->r2xCum = DescribedShare(task_.x, *fit_.model->GetXResiduals());
    record->y.r2Cum = DescribedShare(task_.y, yLeft);
    for (std::size_t j = 0; j < record->perY.size(); ++j) {
      record->perY[j].r2Cum = DescribedShareOfColumn(task_.y, yLeft, static_cast<int>(j) + 1);
    }
    const ComponentRecord* before = fit_.components.empty() ? nullptr : &fit_.components.back();
    record->r2x = record->r2xCum - (before != nullptr ? before->r2xCum : 0.0);
    record->y.r2 = record->y.r2Cum - (before != nullptr ? before->y.r2Cum : 0.0);
    for (std::size_t j = 0; j < record->perY.size(); ++j) {
      record->perY[j].r2 = record->perY[j].r2Cum - (before != nullptr ? before->perY[j].r2Cum : 0.0);
    }
  }

  /// Leaves the kept components, with what they have left of X and Y.
  void DropFurther(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y) {
    const NCPLS& model = *fit_.model;
    const NCDataMatrix<float> c = FirstRows(model.GetCprim(), fit_.kept);
    const NCDataMatrix<float> p = FirstRows(model.GetPprim(), fit_.kept);
    const NCDataMatrix<float> w = FirstRows(model.GetWprim(), fit_.kept);
    const NCDataMatrix<float> u = FirstRows(model.GetUprim(), fit_.kept);
    const NCDataMatrix<float> t = FirstRows(model.GetTprim(), fit_.kept);
    fit_.model = std::make_unique<NCPLS>(&x, &y, &c, &p, &w, &u, &t, kMaxIterations);
  }

  const PLSTask& task_;
  WorkProgress progress_;
  NCDataVector<float> ssY_;
  PLSComponents fit_;
  std::unique_ptr<PLSCrossValidation> crossValidation_;
};

}  // namespace

PLSComponents ExtractPLS(const PLSTask& task, NCProgress* progress) { return Extraction(task, progress).Run(); }

}  // namespace kalmia::analysis
