#include "kalmia/analysis/fit/internal/OPLSExtraction.h"

#include <limits>
#include <memory>
#include <utility>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

class Extraction {
 public:
  Extraction(const OPLSTask& task, NCProgress* progress)
      : task_(task),
        progress_(progress),
        model_(&task.x, &task.y, task.predictive.value_or(0), kMaxIterations),
        xLeft_(task.x),
        yLeft_(task.y) {}

  OPLSComponents Run() {
    StartWithBlock();
    while (model_.SizeOrthogonalComponents() < task_.mostComponents && AddOrthogonal()) {
    }
    TakeModel();
    return std::move(fit_);
  }

 private:
  static constexpr auto kValidated = ": cross-validation";  ///< behind the component, beside the bar

  /// Not with a component that cannot be computed, for there is no model then.
  void StartWithBlock() {
    progress_.Begin(ComponentText(1));
    try {
      model_.NextComponent(progress_.Bar(), progress_.SilentBar());
      if (!HasScores(*model_.GetTprim())) throw NCError("X and Y have nothing in common");
      if (task_.judgeComponents && task_.resumed == nullptr) StartValidation();
    } catch (const NCError& error) {
      progress_.Ask();
      throw BadData("no component can be computed: " + TextOf(error));
    }
    if (!task_.judgeComponents) return;
    if (task_.resumed != nullptr) ResumeValidation();
    q2Cum_ = fit_.validation.steps.front().q2Cum;
    blockQ2_ = q2Cum_;
    TakeCrossValidation(fit_.validation.steps.front());
  }

  void StartValidation() {
    progress_.Begin(ComponentText(1) + kValidated);
    NCIntegralVector<int, -99> groups = task_.groups;
    validation_ = std::make_unique<OPLSCrossValidation>(&task_.x, &task_.y, model_.SizeComponents(), task_.rounds,
                                                        progress_.Bar(), &groups, progress_.SilentBar());
    fit_.validation.predictive = model_.SizeComponents();
    RememberStep();
  }

  void ResumeValidation() {
    fit_.validation = task_.resumed->state;
    if (fit_.validation.predictive != model_.SizeComponents()) {
      throw BadData(task_.resumed->name + " was made with " +
                    Counted(static_cast<std::size_t>(fit_.validation.predictive), "predictive component") + ", not " +
                    std::to_string(model_.SizeComponents()));
    }
    NCIntegralVector<int, -99> groups = task_.groups;
    try {
      validation_ = std::make_unique<OPLSCrossValidation>(&task_.x, &task_.y, &fit_.validation.data, &groups);
    } catch (const NCError&) {
      RefuseParts(task_.resumed->name);
    }
  }

  /// The results of the newest step of cross-validation, and what it goes on from.
  void RememberStep() {
    OPLSCvStep step;
    step.q2Cum = validation_->GetQ2TotCum();
    step.residuals = validation_->GetYPredResiduals();
    step.t = *validation_->GetTPred();
    if (validation_->SizeOComponents() > 0) step.to = *validation_->GetToPred();
    fit_.validation.steps.push_back(std::move(step));
    fit_.validation.data = *validation_->GetData();
  }

  /// A component of zeros, or of no numbers, is none.
  static bool HasScores(const NCDataMatrix<float>& scores) {
    for (int a = 1; a <= scores.SizeRows(); ++a)
      if (!(scores[a].GetSS() > 0.0L)) return false;
    return true;
  }

  static std::string TextOf(const NCError& error) { return OneLine(static_cast<const char*>(error.GetMessage())); }

  /// Whether the search goes on behind this component.
  bool AddOrthogonal() {
    progress_.Ask();
    const std::string text = ComponentText(model_.SizeComponents() + model_.SizeOrthogonalComponents() + 1);
    progress_.Begin(text);
    const NCOPLS before = model_;
    try {
      model_.NextComponent(progress_.Bar(), progress_.SilentBar());
      const int newest = model_.SizeOrthogonalComponents();
      const NCDataVector<float>& t = (*model_.GetTOprim())[newest];
      if (!(t.GetSS() > kExhausted * task_.x.GetSS())) throw NCError(kNothingLeft);
      if (task_.judgeComponents && fit_.validation.steps.size() <= static_cast<std::size_t>(newest)) {
        progress_.Begin(text + kValidated);
        validation_->NextComponent(progress_.Bar(), progress_.SilentBar());
        RememberStep();
      }
    } catch (const NCError& error) {
      progress_.Ask();
      fit_.endedEarly = TextOf(error);
      model_ = before;
      return false;
    }
    OPLSComponentRecord record = DescribeOrthogonal();
    if (task_.judgeComponents) return Judge(before, &record);
    record.kept = true;
    FillQ2(0.0F, 0.0F, &record);
    fit_.components.push_back(record);
    return true;
  }

  OPLSComponentRecord DescribeOrthogonal() {
    OPLSComponentRecord record;
    record.orthogonal = true;
    const int o = model_.SizeOrthogonalComponents();
    TakeOff((*model_.GetTOprim())[o], (*model_.GetPOprim())[o], (*model_.GetCOprim())[o], &record);
    return record;
  }

  /// Whether the newest component is kept; `before` is the model without it.
  bool Judge(const NCOPLS& before, OPLSComponentRecord* record) {
    const OPLSCvStep& step = fit_.validation.steps[static_cast<std::size_t>(model_.SizeOrthogonalComponents())];
    const float gain = step.q2Cum - q2Cum_;
    q2Cum_ = step.q2Cum;
    FillQ2(gain, q2Cum_, record);
    record->kept = record->significant || !task_.stopAtFirstFailure;
    fit_.components.push_back(*record);
    if (!record->kept) {
      model_ = before;
      return false;
    }
    TakeCrossValidation(step);
    fit_.crossValidated.to.push_back(step.to);
    return true;
  }

  void FillQ2(float gain, float q2Cum, OPLSComponentRecord* record) const {
    if (!task_.judgeComponents) {
      record->q2 = record->q2Cum = record->q2Limit = std::numeric_limits<double>::quiet_NaN();
      return;
    }
    record->q2 = ShortestDouble(gain);
    record->q2Cum = ShortestDouble(q2Cum);
    record->q2Limit = ShortestDouble(validation_->GetQ2Lim());
    record->significant = gain > validation_->GetQ2Lim();
  }

  /// Takes t p' off what is left of X, and t c' off what is left of Y, and tells the shares.
  void TakeOff(const NCDataVector<float>& t, const NCDataVector<float>& p, const NCDataVector<float>& c,
               OPLSComponentRecord* record) {
    const double x = DescribedShare(task_.x, xLeft_);
    const double y = DescribedShare(task_.y, yLeft_);
    xBefore_ = xLeft_;
    yBefore_ = yLeft_;
    xLeft_.AddVprimV(t, p, -1.0F);
    yLeft_.AddVprimV(t, c, -1.0F);
    record->r2x = DescribedShare(task_.x, xLeft_) - x;
    record->r2y = DescribedShare(task_.y, yLeft_) - y;
  }

  void TakeCrossValidation(const OPLSCvStep& step) {
    fit_.crossValidatedResiduals = step.residuals;
    fit_.crossValidated.t = step.t;
  }

  /// The predictive components, taken off behind the kept orthogonal ones, stand in front of them.
  void TakeModel() {
    if (!fit_.components.empty() && !fit_.components.back().kept) {
      xLeft_ = xBefore_;
      yLeft_ = yBefore_;
    }
    std::vector<OPLSComponentRecord> all;
    for (int a = 1; a <= model_.SizeComponents(); ++a) {
      OPLSComponentRecord record;
      TakeOff((*model_.GetTprim())[a], (*model_.GetPprim())[a], (*model_.GetCprim())[a], &record);
      FillQ2(blockQ2_, blockQ2_, &record);
      record.kept = true;
      all.push_back(record);
    }
    all.insert(all.end(), fit_.components.begin(), fit_.components.end());
    fit_.components = std::move(all);
    fit_.u = *model_.GetUprim();
    fit_.model = {*model_.GetWMatrices(), *model_.GetPMatrices(), *model_.GetCMatrices(), *model_.GetWOprim(),
                  *model_.GetPOprim(),    *model_.GetCOprim(),    *model_.GetTOprim(),    *model_.GetTprim()};
  }

  const OPLSTask& task_;
  WorkProgress progress_;
  NCOPLS model_;
  std::unique_ptr<OPLSCrossValidation> validation_;
  NCDataMatrix<float> xLeft_, yLeft_;      ///< without the components so far
  NCDataMatrix<float> xBefore_, yBefore_;  ///< and with the newest
  float blockQ2_ = 0.0F;
  float q2Cum_ = 0.0F;
  OPLSComponents fit_;
};

}  // namespace

OPLSComponents ExtractOPLS(const OPLSTask& task, NCProgress* progress) { return Extraction(task, progress).Run(); }

}  // namespace kalmia::analysis
