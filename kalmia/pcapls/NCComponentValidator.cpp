#include "kalmia/pcapls/NCComponentValidator.h"

#include <cmath>

#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"

namespace {

constexpr float kMissing = kalmia::kMissingCell<float>;

/// At the start, at or below this there is nothing to be explained.
constexpr double kSmallestSS = 1e-30;

float SumOfSquaresLeft(const NCPCA* model) {
  return model ? static_cast<float>(model->GetResiduals()->GetSS()) : kMissing;
}

}  // namespace

NCComponentValidator::~NCComponentValidator() = default;

void NCComponentValidator::Done() {}

void PCAComponentValidator::SetPCAModel(NCPCA* model) { model_ = model; }

PCA_SS_ComponentValidator::PCA_SS_ComponentValidator(NCPCA* model, float fraction)
    : PCAComponentValidator(model), fraction_(fraction), initialSS_(SumOfSquaresLeft(model)) {}

bool PCA_SS_ComponentValidator::IsPreComponentValidator() { return true; }

bool PCA_SS_ComponentValidator::IsValid() {
  const float left = SumOfSquaresLeft(model_);
  if (left == kMissing || !(initialSS_ > kSmallestSS)) return false;  // a missing start is below, too
  return fraction_ < left / initialSS_;
}

void PCA_SS_ComponentValidator::SetPCAModel(NCPCA* model) {
  PCAComponentValidator::SetPCAModel(model);
  initialSS_ = SumOfSquaresLeft(model);
  if (!std::isfinite(initialSS_)) throw NCError(LanguageString::Get(10374));
}
