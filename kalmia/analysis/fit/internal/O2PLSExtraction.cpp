#include "kalmia/analysis/fit/internal/O2PLSExtraction.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/PLSMissingValueEstimator.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kXSide = 1;  ///< bits of NCO2PLSDimensionalityException::Type
constexpr int kYSide = 2;

[[noreturn]] void Refuse(const std::string& message) { throw BadData(message); }

/// The text of an error as a part of one line.
std::string TextOf(const NCError& error) {
  std::string text = static_cast<const char*>(error.GetMessage());
  std::replace(text.begin(), text.end(), '\n', ' ');
  return OneLine(text);
}

/// Every component has scores of more than rounding.
bool HasScores(const NCDataMatrix<float>& scores, const NCDataMatrix<float>& block) {
  for (int a = 1; a <= scores.SizeRows(); ++a)
    if (!(scores[a].GetSS() > kExhausted * block.GetSS())) return false;
  return true;
}

O2PLSMatrices MatricesOf(const NCO2PLS& model) {
  return {model.GetT(),  model.GetU(),  model.GetP(),  model.GetW(), model.GetC(),  model.GetQ(),
          model.GetTo(), model.GetWo(), model.GetPo(), model.GetS(), model.GetUo(), model.GetCo(),
          model.GetQo(), model.GetR(),  model.GetLambda(), model.GetXLambda()};
}

class Fitting {
 public:
  Fitting(const O2PLSTask& task, Notes* notes, NCProgress* progress)
      : task_(task), notes_(notes), progress_(progress) {}

  O2PLSComponents Run() {
    if (task_.numbers) {
      RefuseTooMany(*task_.numbers);
      Fit(*task_.numbers);
      if (task_.judgeComponents) JudgeGivenNumbers();
    } else {
      Validate({-1, -1, -1});
      if (results_.PredictiveSignificance.Size() == 0) RefuseWithoutJoint();
      if (results_.PredictiveComponents > 0) FitWhatWasFound();
    }
    if (model_.SizePredComps() > 0) fit_.model = MatricesOf(model_);
    RecordComponents();
    return std::move(fit_);
  }

 private:
  void JudgeGivenNumbers() {
    Validate(*task_.numbers);
    LeaveOutWhatOneRoundLacks();
    NoteWhatWasNotJudged();
  }

  bool IsJudged() const { return task_.judgeComponents || !task_.numbers; }

  void RefuseTooMany(const O2PLSNumbers& numbers) const {
    const int rows = task_.x.SizeRows() - 1;
    const int x = task_.x.SizeColumns();
    const int y = task_.y.SizeColumns();
    const std::string sizes = Counted(static_cast<std::size_t>(task_.x.SizeRows()), "row") + ", " +
                              Counted(static_cast<std::size_t>(x), "X column") + " and " +
                              Counted(static_cast<std::size_t>(y), "Y column");
    if (numbers.joint > std::min({rows, x, y})) {
      Refuse(std::to_string(numbers.joint) + " joint components are too many for " + sizes);
    }
    const auto refuseSide = [&](const char* block, int unique) {
      Refuse(std::to_string(numbers.joint) + " joint and " + std::to_string(unique) + " " + block +
             "-unique components are too many for " + sizes);
    };
    if (numbers.xUnique > std::min(rows, x) - numbers.joint) refuseSide("X", numbers.xUnique);
    if (numbers.yUnique > std::min(rows, y) - numbers.joint) refuseSide("Y", numbers.yUnique);
  }

  /// The model of all rows. Throws NCO2PLSDimensionalityException where there are not so many unique components.
  void TryFit(const O2PLSNumbers& numbers) {
    model_ = NCO2PLS(task_.x, task_.y, /*checkDimensions=*/true, kMaxIterations);
    model_.Fit(numbers.joint, numbers.xUnique, numbers.yUnique, progress_.SilentBar());
  }

  void Fit(const O2PLSNumbers& numbers) {
    progress_.Begin("fitting the model");
    try {
      TryFit(numbers);
    } catch (const NCError& error) {
      Refuse("the model cannot be computed: " + TextOf(error));
    }
    RefuseEmptyComponents();
  }

  void RefuseEmptyComponents() const {
    if (!HasScores(model_.GetT(), task_.x) || !HasScores(model_.GetU(), task_.y)) {
      Refuse(std::to_string(model_.SizePredComps()) + " joint components are more than X and Y have in common");
    }
    if (!HasScores(model_.GetTo(), task_.x)) {
      Refuse("the model cannot be computed: nothing is left of X for so many X-unique components");
    }
    if (!HasScores(model_.GetUo(), task_.y)) {
      Refuse("the model cannot be computed: nothing is left of Y for so many Y-unique components");
    }
  }

  /// The limits of the whole blocks come from the fit, for the rounds of the cross-validation go without.
  void FitWhatWasFound() {
    const int found = results_.XSideComponents;
    LeaveOutWhatOneRoundLacks();
    if (results_.XSideComponents < found) {
      NoteCut("X", found, results_.XSideComponents,
              "a round of the cross-validation has nothing left for the next one");
    }
    O2PLSNumbers numbers = {results_.PredictiveComponents, results_.XSideComponents, results_.YSideComponents};
    for (;;) {
      progress_.Begin("fitting the model");
      try {
        TryFit(numbers);
        break;
      } catch (const NCO2PLSDimensionalityException& limit) {
        if ((limit.Type & kXSide) != 0) Cut("X", limit.XLimit, &numbers.xUnique);
        if ((limit.Type & kYSide) != 0) Cut("Y", limit.YLimit, &numbers.yUnique);
        Validate(numbers);
      } catch (const NCError& error) {
        Refuse("the model cannot be computed: " + TextOf(error));
      }
    }
    RefuseEmptyComponents();
  }

  void Cut(const char* block, int limit, int* number) {
    const std::string other = *block == 'X' ? "Y" : "X";
    NoteCut(block, *number, limit, "the next one is related to " + other + " after all");
    *number = limit;
  }

  void NoteCut(const std::string& block, int from, int to, const std::string& why) {
    notes_->Add(block + "-unique components are cut from " + std::to_string(from) + " to " + std::to_string(to) + ": " +
                why);
  }

  /// -1 in all numbers searches.
  void Validate(const O2PLSNumbers& numbers) {
    NCIntegralVector<int, -99> groups = task_.groups;
    progress_.Begin("cross-validation");
    try {
      results_ = O2PLSCrossValidation(&task_.x, &task_.y, task_.rounds, progress_.Bar(), &groups,
                                      kMaxIterations, numbers.joint, numbers.xUnique, numbers.yUnique,
                                      progress_.SilentBar())
                     .GetResults();
    } catch (const NCError& error) {
      Refuse("cross-validation: " + TextOf(error));
    }
  }

  /// With one Y column a round that has exactly nothing left beside the joint component ends with missing scores where
  /// others fail: it predicts nothing, and Q2 could pass 1. Cross-validates without the X-unique components from there.
  void LeaveOutWhatOneRoundLacks() {
    const auto hasHoles = [](const NCDataMatrix<float>& ofRounds) { return ofRounds.GetNumMisVal() > 0; };
    const auto& scores = results_.ToSet;
    const auto inEveryRound = static_cast<int>(std::find_if(scores.begin(), scores.end(), hasHoles) - scores.begin());
    if (inEveryRound >= results_.XSideComponents) return;
    Validate({results_.PredictiveComponents, inEveryRound, results_.YSideComponents});
  }

  [[noreturn]] static void RefuseWithoutJoint() {
    Refuse("cross-validation: a joint component cannot be computed in every round (or the numbers are too large or too "
           "small; try scaling to unit variance)");
  }

  void NoteWhatWasNotJudged() {
    if (results_.PredictiveComponents == 0) RefuseWithoutJoint();
    if (results_.XSideComponents < model_.SizeXSideOrthoComps() ||
        results_.YSideComponents < model_.SizeYSideOrthoComps()) {
      notes_->Add("cross-validation could not compute all unique components; those without a Q2 are not judged");
    }
  }

  /// Unique components go off first, then the joint ones, as the model was made.
  void RecordComponents() {
    Shares x(task_.x);
    Shares y(task_.y);
    const std::vector<double> xUnique = x.TakeOff(fit_.model.to, fit_.model.po);
    const std::vector<double> yUnique = y.TakeOff(fit_.model.uo, fit_.model.qo);
    const std::vector<double> xJoint = x.TakeOff(fit_.model.t, fit_.model.p);
    const std::vector<double> yJoint = y.TakeOff(fit_.model.u, fit_.model.q);
    Record(O2PLSComponentRecord::Joint, results_.Q2Cum, results_.PredictiveSignificance, xJoint, yJoint);
    Record(O2PLSComponentRecord::XUnique, results_.Q2XSide, results_.XSideSignificance, xUnique,
           std::vector<double>(xUnique.size(), kNone));
    Record(O2PLSComponentRecord::YUnique, results_.Q2YSide, results_.YSideSignificance,
           std::vector<double>(yUnique.size(), kNone), yUnique);
  }

  /// What each component takes off a block.
  class Shares {
   public:
    explicit Shares(const NCDataMatrix<float>& block) : block_(block), left_(block) {}

    std::vector<double> TakeOff(const NCDataMatrix<float>& scores, const NCDataMatrix<float>& loadings) {
      std::vector<double> shares;
      for (int a = 1; a <= scores.SizeRows(); ++a) {
        const double before = DescribedShare(block_, left_);
        left_.AddVprimV(scores[a], loadings[a], -1.0F);
        shares.push_back(DescribedShare(block_, left_) - before);
      }
      return shares;
    }

   private:
    const NCDataMatrix<float>& block_;
    NCDataMatrix<float> left_;
  };

  /// Components that were tried, or that are kept without.
  void Record(O2PLSComponentRecord::Kind kind, const NCDataVector<float>& q2,
              const NCIntegralVector<int, -99>& verdicts, const std::vector<double>& r2x,
              const std::vector<double>& r2y) {
    const int kept = static_cast<int>(r2x.size());
    for (int a = 1; a <= std::max(kept, verdicts.Size()); ++a) {
      O2PLSComponentRecord record;
      record.kind = kind;
      record.kept = a <= kept;
      if (a <= verdicts.Size()) record.verdict = static_cast<SignificanceE::Significance>(verdicts[a]);
      const auto i = static_cast<std::size_t>(a) - 1;
      record.r2x = record.kept ? r2x[i] : kNone;
      record.r2y = record.kept ? r2y[i] : kNone;
      record.q2 = a <= q2.Size() ? ShortestDouble(q2[a]) : kNone;
      record.q2Limit = IsJudged() ? ShortestDouble(O2PLSCrossValidation::GetQ2Lim(task_.x.SizeRows(), a)) : kNone;
      fit_.components.push_back(record);
    }
  }

  const O2PLSTask& task_;
  Notes* notes_;
  WorkProgress progress_;
  NCO2PLS model_;
  O2PLSCVResults results_;
  O2PLSComponents fit_;
};

}  // namespace

std::optional<O2PLSMatrices> TryO2PLS(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                      const O2PLSNumbers& numbers, WorkProgress* progress) {
  progress->Ask();
  NCO2PLS model(x, y, /*checkDimensions=*/false, kMaxIterations);
  try {
    model.Fit(numbers.joint, numbers.xUnique, numbers.yUnique, progress->SilentBar());
  } catch (const NCError&) {
    progress->Ask();
    return std::nullopt;
  }
  const bool isWhole = HasScores(model.GetT(), x) && HasScores(model.GetU(), y) && HasScores(model.GetTo(), x) &&
                       HasScores(model.GetUo(), y);
  if (!isWhole) return std::nullopt;
  return MatricesOf(model);
}

void EstimateHoles(NCDataMatrix<float>* x, NCDataMatrix<float>* y, WorkProgress* progress) {
  if (x->GetNumMisVal() + y->GetNumMisVal() == 0) return;
  try {
    PLSMissingValueEstimator(*x, *y, /*both=*/true, progress->SilentBar());
  } catch (const NCError& error) {
    progress->Ask();
    Refuse("the missing cells cannot be estimated: " + OneLine(static_cast<const char*>(error.GetMessage())));
  }
}

O2PLSComponents ExtractO2PLS(const O2PLSTask& task, Notes* notes, NCProgress* progress) {
  return Fitting(task, notes, progress).Run();
}

}  // namespace kalmia::analysis
