#pragma once

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

namespace kalmia {
struct ControlChartFactors;
}  // namespace kalmia

/// Centre lines, limits and series of a statistical process control chart for one series of measurements. The series is
/// cut into consecutive subgroups of n cells; an incomplete last one is ignored. Missing cells are ignored; a subgroup
/// without present cells is missing.
///
/// An unknown number is -99. Factors exist for n from 2 to 25; for other n, numbers that need a factor are -99. For n
/// below 1 there are no subgroups. Throws nothing. Getters that compute on demand store their results, so a chart
/// serves one thread at a time.
/// Sources: Montgomery (2009), Introduction to Statistical Quality Control, 6th ed., chapters 6 (limits), 9.1 (tabular
/// CuSum), 9.2 (EWMA).
class KALMIA_EXPORT ControlChart {
 public:
  enum ControlType : int { Individual = 0, MeanRange = 1, MeanStdDev = 2, CuSum = 3, EWMA = 4, EWMAStdDev = 5 };

  /// The type for a text of FromControlType; `Individual` for any other text.
  static ControlType ToControlType(const char* text);
  /// "Individual", "Mean/Range", "Mean/StdDev", "CuSum". The types EWMA and EWMAStdDev have no own text and give
  /// "Individual".
  static const char* FromControlType(ControlType type);

  /// A chart of `data` in subgroups of `subgroupSize` cells. Its target is the mean of the subgroup means (each rounded
  /// to float).
  ControlChart(ControlType type, const NCDataVector<float>& data, int subgroupSize);

  // Results of the constructor and the setters.
  ControlType GetControlType() const { return type_; }
  double GetTarget() const { return target_; }                      ///< the centre line
  double GetMeanUCL() const { return meanUCL_; }                    ///< types MeanRange, MeanStdDev
  double GetMeanLCL() const { return meanLCL_; }
  const NCDataVector<float>* GetMeanVector() const { return &means_; }       ///< a mean per subgroup
  double GetRangeMean() const { return rangeMean_; }                ///< type MeanRange
  double GetRangeUCL() const { return rangeUCL_; }
  double GetRangeLCL() const { return rangeLCL_; }
  const NCDataVector<float>* GetRangeVector() const { return &ranges_; }     ///< type MeanRange, else empty
  double GetStdDevMean() const { return stdDevMean_; }              ///< types MeanStdDev, CuSum
  double GetStdDevUCL() const { return stdDevUCL_; }
  double GetStdDevLCL() const { return stdDevLCL_; }
  const NCDataVector<float>* GetStdDevVector() const { return &stdDevs_; }   ///< types MeanStdDev, CuSum, else empty
  double GetStdDevProcess() const { return stdDevProcess_; }        ///< the estimate for the process
  double GetStdDevIndividual() const { return stdDevIndividual_; }  ///< of the cells themselves

  // Computed on demand.
  /// Root of half the mean square successive difference of the means: sqrt(sum (m(i) - m(i-1))^2 / (2 c - 2)) over
  /// neighbours that are both present, with c present means. GetStdDevProcess() if n is 1; -99 for c below 2.
  double GetMSSD() const;
  double GetActionLimit() const;  ///< 4.5 GetMSSD(); a CuSum above it is a signal
  double GetDeadBand() const;     ///< k = 0.5 GetMSSD()
  /// high(i) = max(0, high(i-1) + x(i) - T - k); a missing mean repeats the cell before.
  const NCDataVector<float>* GetHighCuSum() const;
  /// low(i) = max(0, low(i-1) - (x(i) - T + k)); a missing mean repeats the cell before.
  const NCDataVector<float>* GetLowCuSum() const;
  const NCDataVector<float>* GetDevFromTarget() const;  ///< x(i) - T, missing where the mean is
  /// The weight that was set. Otherwise the weight with the smallest sum of squared one-step forecast errors found by a
  /// search with halving steps, from 0.1 upwards and from 1 downwards; 0.2 if this is below 1e-5; at most 1.
  double GetEWMALambda() const;
  /// Forecasts: v(1) = the previous EWMA or the target, v(i) = v(i-1) + lambda (m(i-1) - v(i-1)); a missing mean
  /// repeats the cell before.
  const NCDataVector<float>* GetEWMA() const;
  double GetEWMAStdDev() const;   ///< sqrt(lambda / (2 - lambda)) GetMSSD()
  double GetEWMAUCL() const;      ///< target + 3 GetEWMAStdDev()
  double GetEWMALCL() const;      ///< target - 3 GetEWMAStdDev()

  /// Moves the centre line and the limits that depend on it (only the centre line for the type EWMAStdDev). Keeps an
  /// estimated weight. Ignores -99.
  void SetTarget(double target);
  /// Sets the standard deviation of the process and recomputes the numbers that depend on it. Ignores -99. If n is 1,
  /// c4 counts as 1 for the types CuSum, EWMA and EWMAStdDev.
  void SetStdDevSubgroup(double stdDev);
  void SetEWMALambda(double lambda);              ///< -99: to be estimated again
  /// Continues from an earlier period, for the types EWMA and EWMAStdDev; other types ignore it. An estimated weight is
  /// estimated again; with a weight that was set or imported the limits stay.
  void SetPrevious(double ewma);
  void SetPrevious(double low, double high);      ///< the same for the CuSums of the type CuSum
  /// Takes centre line, all limits and EWMA weight from a reference chart. The series of means stay.
  void ImportLimits(const ControlChart& other);

  /// The numbers of a chart that ImportLimits() takes, to be stored and used later. -99: unknown, or not yet computed.
  struct Limits {
    double target, meanUCL, meanLCL, rangeMean, rangeUCL, rangeLCL, stdDevProcess, stdDevIndividual;
    double stdDevMean, stdDevUCL, stdDevLCL, actionLimit, deadBand, lambda, ewmaUCL, ewmaLCL, ewmaStdDev, mssd;
  };
  Limits GetLimits() const;  ///< estimates the EWMA weight if it is not known yet
  void ImportLimits(const Limits& limits);

 private:
  using Factors = kalmia::ControlChartFactors;
  /// The factors for the subgroups of this chart; null where there are none, or where `spread` is not known.
  const Factors* FactorsFor(double spread) const;
  void SetMeanLimits(double halfWidth);
  void SetMeanRangeValues(double meanRange);
  void SetStdDevValues(double meanStdDev);
  void SetSuccession(double stdDev, double meanStdDev);
  void ForgetCuSum();
  void ForgetEWMA();
  void CalculateCuSum() const;
  void CalculateEWMA(NCDataVector<float>* ewma, double lambda) const;
  void CalculateEWMALimits() const;
  double CalculateSumErr(NCDataVector<float>* ewma, double lambda) const;
  double CalculateLambda(NCDataVector<float>* ewma, double start, double step) const;

  static constexpr double kUnknown = kalmia::kMissing;
  static constexpr double kDeadBand = 0.5;     // per GetMSSD(): a shift of one standard deviation is looked for
  static constexpr double kActionLimit = 4.5;  // per GetMSSD()

  ControlType type_;
  int subgroupSize_;
  NCDataVector<float> means_;
  NCDataVector<float> ranges_;
  NCDataVector<float> stdDevs_;
  double target_ = kUnknown;
  double meanUCL_ = kUnknown, meanLCL_ = kUnknown;
  double rangeMean_ = kUnknown, rangeUCL_ = kUnknown, rangeLCL_ = kUnknown;
  double stdDevProcess_ = kUnknown;
  double stdDevIndividual_ = kUnknown;
  double stdDevMean_ = kUnknown, stdDevUCL_ = kUnknown, stdDevLCL_ = kUnknown;
  mutable double actionLimit_ = kUnknown, deadBand_ = kUnknown;
  mutable NCDataVector<float> devFromTarget_, highCuSum_, lowCuSum_;
  mutable double lambda_ = kUnknown;
  bool lambdaIsGiven_ = false;
  mutable NCDataVector<float> ewma_;
  mutable double ewmaUCL_ = kUnknown, ewmaLCL_ = kUnknown, ewmaStdDev_ = kUnknown;
  mutable double mssd_ = kUnknown;
  double previousEWMA_ = kUnknown;
  double previousLow_ = kUnknown, previousHigh_ = kUnknown;
};
