#include "kalmia/analysis/fit/internal/PLSExtraction.h"

#include <utility>

#include "kalmia/analysis/model/Prediction.h"
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
    crossValidation_ = std::make_unique<PLSCrossValidation>(fit_.model.get(), task.rounds, &task.groups);
  }

  PLSComponents Run() {
    while (fit_.kept < task_.mostComponents) {
      progress_.Ask();
      const int component = fit_.kept + 1;
      if (!Extract(component)) break;
      CrossValidate(component);
      ComponentRecord record = Judge();
      record.kept = record.significant || !task_.stopAtFirstFailure;
      Deflate(&record);
      fit_.components.push_back(record);
      if (!record.kept) break;
      ++fit_.kept;
      fit_.crossValidatedResiduals = *crossValidation_->GetYPredResiduals();
      if (record.r2xCum >= 1.0 - kExhausted && fit_.kept < task_.mostComponents) {
        fit_.endedEarly = kNothingLeft;
        break;
      }
    }
    return std::move(fit_);
  }

 private:
  /// False if X and Y have nothing more in common, or if nothing is left of X.
  bool Extract(int component) {
    progress_.Begin(ComponentText(component));
    try {
      fit_.model->NextComponent(progress_.Bar(), /*start=*/nullptr, /*quiet=*/false, /*strict=*/true);
    } catch (const NCError& error) {
      progress_.Ask();
      const std::string reason = OneLine(static_cast<const char*>(error.GetMessage()));
      fit_.endedEarly = ReasonToEnd(task_, component, reason, "their");
      return false;
    }
    const NCDataVector<float>& p = fit_.model->GetPprim()->back();
    if (p.GetNumMisVal() < p.Size()) return true;
    // The scores are so small that nothing can be regressed on them.
    DropNewest(*fit_.model->GetXResiduals(), *fit_.model->GetYResiduals());
    fit_.endedEarly = ReasonToEnd(task_, component, kNothingLeft, "its");
    return false;
  }

  void CrossValidate(int component) {
    progress_.BeginRounds(ComponentText(component), task_.rounds);
    const NCDataVector<float> w = fit_.model->GetWprim()->back();
    crossValidation_->NextComponent(&w, kMaxIterations, ssY_, progress_.Bar(), /*quiet=*/false);
    progress_.Ask();
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
    DropNewest(xBefore, yBefore);
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

  void DropNewest(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y) {
    const NCPLS& model = *fit_.model;
    const NCDataMatrix<float> c = WithoutLastRow(model.GetCprim());
    const NCDataMatrix<float> p = WithoutLastRow(model.GetPprim());
    const NCDataMatrix<float> w = WithoutLastRow(model.GetWprim());
    const NCDataMatrix<float> u = WithoutLastRow(model.GetUprim());
    const NCDataMatrix<float> t = WithoutLastRow(model.GetTprim());
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
