#include "kalmia/statistics/ControlChart.h"

#include <cstring>

#include "kalmia/statistics/ControlChartFactors.h"
#include "kalmia/statistics/internal/Subgroups.h"
#include "kalmia/support/CompareWithTolerance.h"

namespace {

constexpr double kZeroTolerance = 1.1920928955078125e-7;  // 2^-23, the spacing of floats at 1

struct TypeText {
  ControlChart::ControlType type;
  const char* text;
};
constexpr TypeText kTypeTexts[] = {{ControlChart::Individual, "Individual"},
                                   {ControlChart::MeanRange, "Mean/Range"},
                                   {ControlChart::MeanStdDev, "Mean/StdDev"},
                                   {ControlChart::CuSum, "CuSum"}};

/// Of a number in double, whose -99 says that it is not known.
bool IsKnown(double value) { return value != kalmia::kMissing; }

}  // namespace

ControlChart::ControlType ControlChart::ToControlType(const char* text) {
  for (const TypeText& entry : kTypeTexts)
    if (text != nullptr && std::strcmp(entry.text, text) == 0) return entry.type;
  return Individual;
}

const char* ControlChart::FromControlType(ControlType type) {
  for (const TypeText& entry : kTypeTexts)
    if (entry.type == type) return entry.text;
  return kTypeTexts[0].text;
}

const kalmia::ControlChartFactors* ControlChart::FactorsFor(double spread) const {
  return IsKnown(spread) ? kalmia::FindControlChartFactors(subgroupSize_) : nullptr;
}

ControlChart::ControlChart(ControlType type, const NCDataVector<float>& data, int subgroupSize)
    : type_(type), subgroupSize_(subgroupSize), means_(kalmia::SubgroupMeans(data, subgroupSize)) {
  target_ = static_cast<double>(means_.GetMean());
  if (CompareWithTolerance(target_, 0.0, kZeroTolerance) == 0) target_ = 0.0;
  stdDevIndividual_ = static_cast<double>(data.GetStdDev());
  const auto processFromSuccession = [this] { return subgroupSize_ == 1 ? stdDevIndividual_ : GetMSSD(); };
  switch (type_) {
    case MeanRange:
      ranges_ = kalmia::SubgroupRanges(data, subgroupSize);
      SetMeanRangeValues(static_cast<double>(ranges_.GetMean()));
      break;
    case MeanStdDev:
      stdDevs_ = kalmia::SubgroupStdDevs(data, subgroupSize);
      SetStdDevValues(static_cast<double>(stdDevs_.GetMean()));
      break;
    case CuSum:
      stdDevs_ = kalmia::SubgroupStdDevs(data, subgroupSize);
      stdDevMean_ = static_cast<double>(stdDevs_.GetMean());
      stdDevProcess_ = processFromSuccession();
      break;
    case EWMA:
      stdDevProcess_ = processFromSuccession();
      break;
    case EWMAStdDev:
      stdDevProcess_ = stdDevIndividual_;
      break;
    default:
      break;
  }
}

void ControlChart::SetMeanLimits(double halfWidth) {
  const bool known = IsKnown(halfWidth) && IsKnown(target_);
  meanUCL_ = known ? target_ + halfWidth : kUnknown;
  meanLCL_ = known ? target_ - halfWidth : kUnknown;
}

void ControlChart::SetMeanRangeValues(double meanRange) {
  const Factors* factors = FactorsFor(meanRange);
  rangeMean_ = meanRange;
  rangeUCL_ = factors ? factors->d4 * meanRange : kUnknown;
  rangeLCL_ = factors ? factors->d3 * meanRange : kUnknown;
  SetMeanLimits(factors ? factors->a2 * meanRange : kUnknown);
  stdDevProcess_ = factors ? meanRange / factors->d2 : kUnknown;
}

void ControlChart::SetStdDevValues(double meanStdDev) {
  const Factors* factors = FactorsFor(meanStdDev);
  stdDevMean_ = meanStdDev;
  stdDevUCL_ = factors ? factors->b4 * meanStdDev : kUnknown;
  stdDevLCL_ = factors ? factors->b3 * meanStdDev : kUnknown;
  SetMeanLimits(factors ? factors->a3 * meanStdDev : kUnknown);
  stdDevProcess_ = factors ? meanStdDev / factors->c4 : kUnknown;
}

void ControlChart::SetTarget(double target) {
  if (!IsKnown(target)) return;
  target_ = target;
  if (type_ == MeanRange) {
    const Factors* factors = FactorsFor(rangeMean_);
    SetMeanLimits(factors ? factors->a2 * rangeMean_ : kUnknown);
  } else if (type_ == MeanStdDev) {
    const Factors* factors = FactorsFor(stdDevMean_);
    SetMeanLimits(factors ? factors->a3 * stdDevMean_ : kUnknown);
  } else if (type_ == CuSum) {
    ForgetCuSum();
  } else if (type_ == EWMA) {
    ForgetEWMA();
  }
}

void ControlChart::SetStdDevSubgroup(double stdDev) {
  if (!IsKnown(stdDev)) return;
  const Factors* factors = FactorsFor(stdDev);
  if (type_ == MeanRange) return SetMeanRangeValues(factors ? stdDev * factors->d2 : kUnknown);
  const double meanStdDev = factors ? stdDev * factors->c4 : kUnknown;
  if (type_ == MeanStdDev) return SetStdDevValues(meanStdDev);
  if (type_ == CuSum || type_ == EWMA || type_ == EWMAStdDev) return SetSuccession(stdDev, meanStdDev);
  stdDevProcess_ = stdDev;
}

void ControlChart::SetSuccession(double stdDev, double meanStdDev) {
  if (subgroupSize_ == 1) meanStdDev = stdDev;
  SetStdDevValues(meanStdDev);
  mssd_ = meanStdDev;
  if (type_ != CuSum || subgroupSize_ == 1) stdDevProcess_ = stdDev;
  if (type_ == CuSum) {
    deadBand_ = IsKnown(mssd_) ? mssd_ * kDeadBand : kUnknown;
    actionLimit_ = IsKnown(mssd_) ? mssd_ * kActionLimit : kUnknown;
    ForgetCuSum();
  } else {
    ewmaUCL_ = ewmaLCL_ = ewmaStdDev_ = kUnknown;
  }
}

void ControlChart::SetEWMALambda(double lambda) {
  lambda_ = lambda;
  lambdaIsGiven_ = IsKnown(lambda);
  ForgetEWMA();
}

void ControlChart::SetPrevious(double ewma) {
  if (type_ != EWMA && type_ != EWMAStdDev) return;
  previousEWMA_ = ewma;
  ewma_.SetSize(0);
  if (lambdaIsGiven_) return;  // and the limits do not depend on the start
  lambda_ = kUnknown;          // the forecasts that it was estimated from start elsewhere now
  ForgetEWMA();
}

void ControlChart::SetPrevious(double low, double high) {
  if (type_ != CuSum) return;
  previousLow_ = low;
  previousHigh_ = high;
  ForgetCuSum();
}

ControlChart::Limits ControlChart::GetLimits() const {
  return {target_, meanUCL_, meanLCL_, rangeMean_, rangeUCL_, rangeLCL_, stdDevProcess_, stdDevIndividual_,
          stdDevMean_, stdDevUCL_, stdDevLCL_, actionLimit_, deadBand_, GetEWMALambda(), ewmaUCL_, ewmaLCL_,
          ewmaStdDev_, mssd_};
}

void ControlChart::ImportLimits(const Limits& limits) {
  ForgetCuSum();
  ForgetEWMA();
  target_ = limits.target;
  meanUCL_ = limits.meanUCL;
  meanLCL_ = limits.meanLCL;
  rangeMean_ = limits.rangeMean;
  rangeUCL_ = limits.rangeUCL;
  rangeLCL_ = limits.rangeLCL;
  stdDevProcess_ = limits.stdDevProcess;
  stdDevIndividual_ = limits.stdDevIndividual;
  stdDevMean_ = limits.stdDevMean;
  stdDevUCL_ = limits.stdDevUCL;
  stdDevLCL_ = limits.stdDevLCL;
  actionLimit_ = limits.actionLimit;
  deadBand_ = limits.deadBand;
  lambda_ = limits.lambda;
  lambdaIsGiven_ = IsKnown(limits.lambda);
  ewmaUCL_ = limits.ewmaUCL;
  ewmaLCL_ = limits.ewmaLCL;
  ewmaStdDev_ = limits.ewmaStdDev;
  mssd_ = limits.mssd;
}

void ControlChart::ImportLimits(const ControlChart& other) { ImportLimits(other.GetLimits()); }

void ControlChart::ForgetCuSum() {
  devFromTarget_.SetSize(0);
  highCuSum_.SetSize(0);
  lowCuSum_.SetSize(0);
}

void ControlChart::ForgetEWMA() {
  ewma_.SetSize(0);
  ewmaUCL_ = ewmaLCL_ = ewmaStdDev_ = kUnknown;
}
