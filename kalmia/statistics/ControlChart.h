#pragma once

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

namespace kalmia {
struct ControlChartFactors;
}  // namespace kalmia

/// Centre lines, limits and series of statistical process control charts of one series of measurements, which is cut
/// into consecutive subgroups of n cells (a last incomplete one is left out). Missing cells are left out of their
/// subgroup; a subgroup without cells is missing itself.
///
/// A number that is not known is -99. Factors exist for n from 2 to 25: for other sizes whatever needs one is -99; for
/// n below 1 there are no subgroups. Nothing is thrown. The getters that compute on demand store what they computed in
/// the chart: one chart serves one thread at a time.
/// Sources: Montgomery (2009), Introduction to Statistical Quality Control, 6th ed., chapters 6 (limits), 9.1 (tabular
/// CuSum), 9.2 (EWMA).
class KALMIA_EXPORT ControlChart {
 public:
  enum ControlType : int { Individual = 0, MeanRange = 1, MeanStdDev = 2, CuSum = 3, EWMA = 4, EWMAStdDev = 5 };

  /// The type of a text as FromControlType gives it; `Individual` for any other.
  static ControlType ToControlType(const char* text);
  /// "Individual", "Mean/Range", "Mean/StdDev", "CuSum"; the types EWMA and EWMAStdDev have no text of their own and
  /// give "Individual".
  static const char* FromControlType(ControlType type);

  /// A chart of `data` in subgroups of `subgroupSize` cells. Its target is the mean of the subgroup means (each rounded
  /// to float).
  ControlChart(ControlType type, const NCDataVector<float>& data, int subgroupSize);

  // What the constructor and the setters left.
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
  /// Root of half the mean square successive difference of the means, sqrt(sum (m(i) - m(i-1))^2 / (2 c - 2)) over
  /// neighbours that are both present, c the present means; GetStdDevProcess() where n is 1; -99 for c below 2.
  double GetMSSD() const;
  double GetActionLimit() const;  ///< 4.5 GetMSSD(): a CuSum beyond it is a signal
  double GetDeadBand() const;     ///< k = 0.5 GetMSSD()
  /// high(i) = max(0, high(i-1) + x(i) - T - k); a missing mean repeats the cell before.
  const NCDataVector<float>* GetHighCuSum() const;
  /// low(i) = max(0, low(i-1) - (x(i) - T + k)); a missing mean repeats the cell before.
  const NCDataVector<float>* GetLowCuSum() const;
  const NCDataVector<float>* GetDevFromTarget() const;  ///< x(i) - T, missing where the mean is
  /// The weight that was set, or else the one with the smallest sum of squared one-step forecast errors that a search
  /// with halving steps from 0.1 upwards and from 1 downwards finds; 0.2 where that is below 1e-5, never above 1.
  double GetEWMALambda() const;
  /// Forecasts: v(1) = the previous EWMA or the target, v(i) = v(i-1) + lambda (m(i-1) - v(i-1)); a missing mean
  /// repeats the cell before.
  const NCDataVector<float>* GetEWMA() const;
  double GetEWMAStdDev() const;   ///< sqrt(lambda / (2 - lambda)) GetMSSD()
  double GetEWMAUCL() const;      ///< target + 3 GetEWMAStdDev()
  double GetEWMALCL() const;      ///< target - 3 GetEWMAStdDev()

  /// Moves the centre line and the limits that hang on it (for the type EWMAStdDev nothing else is computed afresh); a
  /// weight that was estimated stays. -99 is passed over.
  void SetTarget(double target);
  /// Sets the process's standard deviation from outside, and what follows from it. -99 is passed over. Where n is 1, c4
  /// counts as 1 for the types CuSum, EWMA and EWMAStdDev.
  void SetStdDevSubgroup(double stdDev);
  void SetEWMALambda(double lambda);              ///< -99: to be estimated again
  /// Goes on from an earlier period, with the types EWMA and EWMAStdDev; other types ignore it. A weight that was
  /// estimated is estimated again; with one that was set or imported the limits stay.
  void SetPrevious(double ewma);
  void SetPrevious(double low, double high);      ///< the same for the CuSums of the type CuSum
  /// Takes the centre line, all limits and the EWMA weight of a reference chart; the series of means stay this one's.
  void ImportLimits(const ControlChart& other);

  /// The numbers of a chart that ImportLimits() takes over, to be kept and used again later; -99 for what is not known,
  /// or was not asked of the chart by then.
  struct Limits {
    double target, meanUCL, meanLCL, rangeMean, rangeUCL, rangeLCL, stdDevProcess, stdDevIndividual;
    double stdDevMean, stdDevUCL, stdDevLCL, actionLimit, deadBand, lambda, ewmaUCL, ewmaLCL, ewmaStdDev, mssd;
  };
  Limits GetLimits() const;  ///< estimates the EWMA weight, if that is not known yet
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
