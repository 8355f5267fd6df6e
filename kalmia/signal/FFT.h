#pragma once

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Frequency analysis of one signal or of two: autocorrelation, cross-correlation, averaged power spectrum. Each
/// operation works on copies of its signals, prepared in three steps:
///   holes    are filled along straight lines, flat at both ends; without any present cell, -99 is an ordinary value
///   trends   are removed by DetrendMode, over the filled cells; a mean or a sum of exactly -99 counts as unknown and
///            is not removed, so a signal without present cells stays as it is
///   padding  extends the copy to the length of the transforms, a power of two or whole segments
/// Transforms run in double; their results are rounded to float once. Operations keep no state and share no signal, so
/// they may run at the same time on the same signals. An `output` is resized, and may be one of the signals.
class KALMIA_EXPORT FFT {
 public:
  enum DetrendMode : int {
    DetrendNone = 0,   ///< nothing is removed
    DetrendMean = 1,   ///< the mean is removed
    DetrendLinear = 2  ///< the least-squares line is removed; nothing from a single cell
  };
  enum ScalingMode : int {
    ScalingPlain = 0,  ///< power over twice the summed squares of the windows; any other value means this too
    ScalingWindow = 1  ///< and further over sum(w)^2 / sum(w^2)
  };
  /// Windows w(j) of a segment of 2 m cells, j = 1..2 m, with b = 1 / (m + 0.5); any other value is a window of zeros.
  enum DataWindowMode : int {
    WindowBartlett = 0,  ///< triangle: 1 - |(j - 1 - (m - 0.5)) b|
    WindowHann = 1,      ///< raised cosine: (1 - cos(pi j b)) / 2
    WindowWelch = 2      ///< parabola: 1 - ((j - 1 - (m - 0.5)) b)^2
  };

  /// r(j) = sum over k of x(j + k) x(k) for j = 0..lags, in the output's cells j + 1. x is the copy, detrended, padded
  /// with zeros to the power of two at or above n + lags, then centred and divided by the root of its sum of squares:
  /// r(0) = 1. Centring includes the padding, so without `detrend` a signal far from 0 correlates with its own step
  /// down to the padding. Shifts wrap around the end of the padded signal.
  /// Degenerate: a copy that does not vary after detrending and padding gives zeros.
  /// Does nothing, silently, for a null vector, an empty input, and lags below 0 or above n.
  /// Cost: two transforms of the padded length s, s log2(s). Throws only std::bad_alloc.
  /// Source: the correlation theorem, e.g. Oppenheim & Schafer (1975), Digital Signal Processing, 11.
  static void AutoCorrelation(const NCDataVector<float>* input, FFT::DetrendMode detrend, int lags,
                              NCDataVector<float>* output);

  /// r(j) = sum over k of a(j + k) b(k) for j = -lags..lags, in the output's cells j + lags + 1: lag 0 stands in cell
  /// lags + 1. Each signal is prepared as for AutoCorrelation, so |r| <= 1 up to rounding. If `input2` repeats `input1`
  /// later, the peak has a negative lag.
  /// Does nothing in the same cases, and if the signals differ in size. Same cost and errors.
  static void CrossCorrelation(const NCDataVector<float>* input1, const NCDataVector<float>* input2,
                               FFT::DetrendMode detrend, int lags, NCDataVector<float>* output);

  /// Mean power of 2 k windowed segments of the signal at the frequencies (i - 1) / segmentSize per cell, in the
  /// output's cells i = 1 .. segmentSize / 2 + 1. With X the transform of a windowed segment, the power at frequency f
  /// plus that at -f (0 and 1/2 have one only), summed over the segments:
  ///   power = sum |X|^2 / (2 k sum(w^2)),   with ScalingWindow also over sum(w)^2 / sum(w^2)
  /// It is not divided by the segment's length: white noise of variance s^2 gives 2 s^2, and s^2 at both ends.
  /// With m = segmentSize / 2 and `overlap`, segments begin every m cells and k = floor(ceil(n / m) / 2); otherwise
  /// they begin every segmentSize cells and k = ceil(ceil(n / segmentSize) / 2). The copy is padded by a ramp from its
  /// last cell back to its first one (PadVectorLinearly) to what the segments need; the quotients are formed in float.
  /// Does nothing, silently, for a null vector and a segmentSize that is no power of two (such as 0 or a negative one).
  /// Throws NCError "Power spectrum could not be computed.", level 0, with the output unchanged: a power that is NaN,
  /// infinite or denormal as a float; k = 0, which means an empty signal or, with `overlap`, one of at most half a
  /// segment; segmentSize 1; an unknown window; no memory for work buffers. A power too small for a denormal float, or
  /// denormal and below 2^-48 of the sum of all (as rounding leaves it), is 0 and no error. Throws std::bad_alloc if
  /// memory lacks for the copy of the signal or for the output.
  /// Cost: k transforms of segmentSize cells: two real segments go through one complex transform.
  /// Source: Welch (1967), IEEE Trans. Audio Electroacoust. 15, 70-73.
  static void PowerSpectrum(const NCDataVector<float>* input, int segmentSize, bool overlap, FFT::DetrendMode detrend,
                            FFT::ScalingMode scaling, FFT::DataWindowMode window, NCDataVector<float>* output);

 protected:
  /// Removes the trend in place. `mean` receives the mean or the line's intercept, `slope` its slope. They stay
  /// unwritten if the mode has none, and for a line through fewer than two present cells.
  static void DetrendVector(NCDataVector<float>* vector, FFT::DetrendMode mode, long double& mean, long double& slope);
  /// Subtracts the mean of all cells, then divides by the root of the sum of squares (no standard deviation, despite
  /// the name) if that is above 0. Holes count as -99.
  static void DetrendVecMeanStd(NCDataVector<float>* vector);
  /// Appends zeros up to `size` cells. A size at or below the present one changes nothing, here and below.
  static void PadVectorZeros(NCDataVector<float>* vector, int size);
  /// Appends p = size - n cells: v(n) - i (v(n) - v(1)) / (p - 1) for i = 0 to p - 1, from the last cell back to the
  /// first one; for p = 1 the cell is (v(n) - v(1)) / 2. Zeros to an empty vector.
  static void PadVectorLinearly(NCDataVector<float>* vector, int size);
  /// From wrap-around order to that of lags: the last floor(count / 2) of the `size` cells, then the first
  /// ceil(count / 2), which is at most `size`: not checked. Both arrays begin with an unused cell 0 and do not overlap.
  static void ReorderFromVec(const float* const input, float* const output, int size, int count);
};
