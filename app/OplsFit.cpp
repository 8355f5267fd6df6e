#include "app/OplsFit.h"

#include <memory>
#include <utility>

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"
#include "app/Numbers.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "kalmia/support/NCError.h"

namespace kalmia::app {

namespace {

class Extraction {
 public:
  explicit Extraction(const OplsTask& task)
      : task_(task),
        model_(&task.x, &task.y, task.predictive.value_or(0), kMaxIterations),
        xLeft_(task.x),
        yLeft_(task.y) {}

  OplsFit Run() {
    StartWithBlock();
    while (model_.SizeOrthogonalComponents() < task_.mostComponents && AddOrthogonal()) {
    }
    TakeModel();
    return std::move(fit_);
  }

 private:
  /// Not with a component that cannot be computed, for there is no model then.
  void StartWithBlock() {
    progress_.BeginFit(1);
    try {
      model_.NextComponent(progress_.Get());
      if (!HasScores(*model_.GetTprim())) throw NCError("X and Y have nothing in common");
      progress_.BeginFit(1);
      NCIntegralVector<int, -99> groups = task_.groups;
      validation_ = std::make_unique<OPLSCrossValidation>(&task_.x, &task_.y, model_.SizeComponents(), task_.rounds,
                                                          progress_.Get(), &groups);
    } catch (const NCError& error) {
      StopIfInterrupted();
      throw Failure(ExitCode::BadData, "no component can be computed: " + TextOf(error));
    }
    q2Cum_ = validation_->GetQ2TotCum();
    blockQ2_ = q2Cum_;
    TakeCrossValidation();
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
    StopIfInterrupted();
    const int component = model_.SizeComponents() + model_.SizeOrthogonalComponents() + 1;
    progress_.BeginFit(component);
    const NCOPLS before = model_;
    try {
      model_.NextComponent(progress_.Get());
      const int newest = model_.SizeOrthogonalComponents();
      const NCDataVector<float>& t = (*model_.GetTOprim())[newest];
      if (!(t.GetSS() > kExhausted * task_.x.GetSS())) throw NCError(kNothingLeft);
      validation_->NextComponent(progress_.Get());
    } catch (const NCError& error) {
      StopIfInterrupted();
      fit_.endedEarly = TextOf(error);
      model_ = before;
      return false;
    }
    const OplsComponentRecord record = JudgeOrthogonal();
    fit_.components.push_back(record);
    if (!record.kept) {
      model_ = before;
      return false;
    }
    TakeCrossValidation();
    fit_.crossValidated.to.push_back(*validation_->GetToPred());
    return true;
  }

  OplsComponentRecord JudgeOrthogonal() {
    OplsComponentRecord record;
    record.orthogonal = true;
    const int o = model_.SizeOrthogonalComponents();
    TakeOff((*model_.GetTOprim())[o], (*model_.GetPOprim())[o], (*model_.GetCOprim())[o], &record);
    const float gain = validation_->GetQ2TotCum() - q2Cum_;
    q2Cum_ = validation_->GetQ2TotCum();
    FillQ2(gain, q2Cum_, &record);
    record.kept = record.significant || !task_.stopAtFirstFailure;
    return record;
  }

  void FillQ2(float gain, float q2Cum, OplsComponentRecord* record) const {
    record->q2 = AsWritten(gain);
    record->q2Cum = AsWritten(q2Cum);
    record->q2Limit = AsWritten(validation_->GetQ2Lim());
    record->significant = gain > validation_->GetQ2Lim();
  }

  /// Takes t p' off what is left of X, and t c' off what is left of Y, and tells the shares.
  void TakeOff(const NCDataVector<float>& t, const NCDataVector<float>& p, const NCDataVector<float>& c,
               OplsComponentRecord* record) {
    const double x = DescribedShare(task_.x, xLeft_);
    const double y = DescribedShare(task_.y, yLeft_);
    xBefore_ = xLeft_;
    yBefore_ = yLeft_;
    xLeft_.AddVprimV(t, p, -1.0F);
    yLeft_.AddVprimV(t, c, -1.0F);
    record->r2x = DescribedShare(task_.x, xLeft_) - x;
    record->r2y = DescribedShare(task_.y, yLeft_) - y;
  }

  void TakeCrossValidation() {
    fit_.crossValidatedResiduals = validation_->GetYPredResiduals();
    fit_.crossValidated.t = *validation_->GetTPred();
  }

  /// The predictive components, taken off behind the kept orthogonal ones, stand in front of them.
  void TakeModel() {
    if (!fit_.components.empty() && !fit_.components.back().kept) {
      xLeft_ = xBefore_;
      yLeft_ = yBefore_;
    }
    std::vector<OplsComponentRecord> all;
    for (int a = 1; a <= model_.SizeComponents(); ++a) {
      OplsComponentRecord record;
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

  const OplsTask& task_;
  FitProgress progress_;
  NCOPLS model_;
  std::unique_ptr<OPLSCrossValidation> validation_;
  NCDataMatrix<float> xLeft_, yLeft_;      ///< without the components so far
  NCDataMatrix<float> xBefore_, yBefore_;  ///< and with the newest
  float blockQ2_ = 0.0F;
  float q2Cum_ = 0.0F;
  OplsFit fit_;
};

}  // namespace

OplsFit FitOpls(const OplsTask& task) { return Extraction(task).Run(); }

}  // namespace kalmia::app
