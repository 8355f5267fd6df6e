#include "kalmia/o2pls/OSCPLSComponentValidator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

constexpr double kNegligibleShare = 0.0001;
constexpr int kMostComponents = 25;

float LimitOf(const NCDataMatrix<float>& X) {
  const float limit = static_cast<float>(static_cast<double>(X.GetSS()) * kNegligibleShare);
  return std::isfinite(limit) ? limit : std::numeric_limits<float>::max();
}

int MostComponentsOf(const NCDataMatrix<float>& X, int wanted) {
  const std::int64_t side = std::min(X.SizeColumns(), X.SizeRows());
  const std::int64_t most = wanted > 0 ? std::min<std::int64_t>((3 * side + 3) / 4, wanted) : (side + 1) / 2;
  return static_cast<int>(std::min<std::int64_t>(most, kMostComponents));
}

}  // namespace

OSCPLSComponentValidator::OSCPLSComponentValidator(NCPLS* model, int maxComponents)
    : model_(model),
      ssLimit_(LimitOf(*model->GetXResiduals())),
      maxComponents_(MostComponentsOf(*model->GetXResiduals(), maxComponents)) {}

bool OSCPLSComponentValidator::IsPreComponentValidator() { return true; }

bool OSCPLSComponentValidator::IsValid() {
  if (model_->GetComponents() >= maxComponents_) return false;
  return static_cast<long double>(ssLimit_) <= model_->GetXResiduals()->GetSS();
}
