#include <algorithm>
#include <cmath>

#include "kalmia/statistics/ControlChart.h"
#include "kalmia/support/CompareWithTolerance.h"

namespace {

using kalmia::kMissing;
using kalmia::kMissingCell;

constexpr double kLambdaTolerance = 1.1920928955078125e-7;  // 2^-23
constexpr double kFirstLambdaStep = 0.1;
constexpr double kLastLambdaStep = 0.0005;  ///< steps shorter than this are not taken
constexpr double kSmallestLambda = 1e-5;    ///< below: the search led nowhere
constexpr double kUsualLambda = 0.2;
constexpr double kLimitWidth = 3.0;         ///< standard deviations from the target to a limit

}  // namespace

double ControlChart::GetMSSD() const {
  if (subgroupSize_ == 1) return stdDevProcess_;
  if (mssd_ != kMissing) return mssd_;
  const int present = means_.Size() - means_.GetNumMisVal();
  if (present < 2) return kMissing;
  double sum = 0;
  for (int i = 2; i <= means_.Size(); ++i) {
    if (means_[i] == kMissingCell<float> || means_[i - 1] == kMissingCell<float>) continue;
    const double difference = static_cast<double>(means_[i]) - means_[i - 1];
    sum += difference * difference;
  }
  mssd_ = std::sqrt(sum / (2.0 * present - 2.0));
  return mssd_;
}

double ControlChart::GetActionLimit() const {
  if (actionLimit_ == kMissing) CalculateCuSum();
  return actionLimit_;
}

double ControlChart::GetDeadBand() const {
  if (deadBand_ == kMissing) CalculateCuSum();
  return deadBand_;
}

const NCDataVector<float>* ControlChart::GetHighCuSum() const {
  if (highCuSum_.Size() == 0) CalculateCuSum();
  return &highCuSum_;
}

const NCDataVector<float>* ControlChart::GetLowCuSum() const {
  if (lowCuSum_.Size() == 0) CalculateCuSum();
  return &lowCuSum_;
}

const NCDataVector<float>* ControlChart::GetDevFromTarget() const {
  if (devFromTarget_.Size() == 0) CalculateCuSum();
  return &devFromTarget_;
}

void ControlChart::CalculateCuSum() const {
  const int size = means_.Size();
  devFromTarget_.Resize(size);
  highCuSum_.Resize(size);
  lowCuSum_.Resize(size);
  const double mssd = GetMSSD();
  const bool known = mssd != kMissing;
  deadBand_ = known ? mssd * kDeadBand : kUnknown;
  actionLimit_ = known ? mssd * kActionLimit : kUnknown;
  double low = previousLow_ == kMissing ? 0.0 : previousLow_;
  double high = previousHigh_ == kMissing ? 0.0 : previousHigh_;
  for (int i = 1; i <= size; ++i) {
    const double x = means_[i];
    if (means_[i] != kMissingCell<float>) {
      devFromTarget_(i, static_cast<float>(x - target_));
      // Cells, as they are stored, are what the next step starts from.
      low = static_cast<float>(std::max(0.0, low - (x - target_ + deadBand_)));
      high = static_cast<float>(std::max(0.0, high + x - target_ - deadBand_));
    } else {
      devFromTarget_(i, kMissingCell<float>);
    }
    lowCuSum_(i, known ? static_cast<float>(low) : kMissingCell<float>);
    highCuSum_(i, known ? static_cast<float>(high) : kMissingCell<float>);
  }
}

void ControlChart::CalculateEWMA(NCDataVector<float>* ewma, double lambda) const {
  const int size = means_.Size();
  ewma->Resize(size);
  if (size == 0) return;
  float forecast = static_cast<float>(previousEWMA_ == kMissing ? target_ : previousEWMA_);
  (*ewma)(1, forecast);
  for (int i = 2; i <= size; ++i) {
    const float x = means_[i - 1];
    const double before = forecast;
    if (x != kMissingCell<float>) forecast = static_cast<float>((x - before) * lambda + before);
    (*ewma)(i, forecast);
  }
}

double ControlChart::CalculateSumErr(NCDataVector<float>* ewma, double lambda) const {
  CalculateEWMA(ewma, lambda);
  double sum = 0;
  for (int i = 1; i <= means_.Size(); ++i) {
    if (means_[i] == kMissingCell<float>) continue;
    const double error = static_cast<double>(means_[i]) - (*ewma)[i];
    sum += error * error;
  }
  return sum;
}

double ControlChart::CalculateLambda(NCDataVector<float>* ewma, double start, double step) const {
  const auto errorAt = [this, ewma](double lambda) { return CalculateSumErr(ewma, lambda); };
  const auto isPositive = [](double lambda) { return CompareWithTolerance(lambda, 0.0, kLambdaTolerance) > 0; };
  double low = start, high = start;
  double lowError = errorAt(low), highError = lowError;
  while (std::fabs(step) >= kLastLambdaStep) {
    high = low + step;
    highError = errorAt(high);
    if (!(highError < lowError)) {
      step /= 2;
      continue;
    }
    while (high < 1.0 && isPositive(high)) {
      const double next = high + step;
      const double nextError = errorAt(next);
      if (highError <= nextError) {
        step /= 2;
        break;
      }
      low = high;
      lowError = highError;
      high = next;
      highError = nextError;
    }
    const bool inside = CompareWithTolerance(high, 1.0, kLambdaTolerance) < 0 && isPositive(high);
    if (!inside) step /= 2;
  }
  return lowError <= highError ? low : high;
}

double ControlChart::GetEWMALambda() const {
  if (lambda_ != kMissing) return lambda_;
  NCDataVector<float> forecasts;
  lambda_ = CalculateLambda(&forecasts, kFirstLambdaStep, kFirstLambdaStep);
  const double downwards = CalculateLambda(&forecasts, 1.0, -kFirstLambdaStep);
  if (CalculateSumErr(&forecasts, downwards) < CalculateSumErr(&forecasts, lambda_)) lambda_ = downwards;
  if (lambda_ < kSmallestLambda) lambda_ = kUsualLambda;
  lambda_ = std::min(lambda_, 1.0);
  return lambda_;
}

const NCDataVector<float>* ControlChart::GetEWMA() const {
  if (ewma_.Size() == 0) CalculateEWMA(&ewma_, GetEWMALambda());
  return &ewma_;
}

void ControlChart::CalculateEWMALimits() const {
  const double lambda = GetEWMALambda();
  const double sigma = GetMSSD();  // of single cells, the process's standard deviation
  if (sigma == kMissing) return;
  ewmaStdDev_ = std::sqrt(lambda / (2.0 - lambda)) * sigma;
  if (target_ == kMissing) return;
  ewmaUCL_ = target_ + kLimitWidth * ewmaStdDev_;
  ewmaLCL_ = target_ - kLimitWidth * ewmaStdDev_;
}

double ControlChart::GetEWMAStdDev() const {
  if (ewmaStdDev_ == kMissing) CalculateEWMALimits();
  return ewmaStdDev_;
}

double ControlChart::GetEWMAUCL() const {
  if (ewmaUCL_ == kMissing) CalculateEWMALimits();
  return ewmaUCL_;
}

double ControlChart::GetEWMALCL() const {
  if (ewmaLCL_ == kMissing) CalculateEWMALimits();
  return ewmaLCL_;
}
