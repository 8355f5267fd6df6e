#pragma once

#include "kalmia/support/Export.h"

/// A minimum of a function of one variable, without derivatives: first a bracket, then a search inside it. In single
/// precision. An exception of the function passes through.
/// Source: Brent (1973), Algorithms for Minimization without Derivatives, chapter 5; Kiefer (1953), Proc. Amer. Math.
/// Soc. 4, 502-506 (golden section).
class KALMIA_EXPORT OneDimMinimum {
 public:
  /// The function to minimise.
  struct CallBack {
    virtual ~CallBack() = default;
    virtual float Evaluate(float x) = 0;
  };

  /// Walks downhill from the start points `a` and `b`, with parabolic steps, until f(b) is not above f(a) and f(c); the
  /// three values are filled in. A function that falls for ever keeps it walking: throw from the function to end that.
  static void BracketMinimum(CallBack* f, float* a, float* b, float* c, float* fa, float* fb, float* fc);

  /// Golden section search inside a bracket a, b, c (b between the others, f(b) not above theirs), until it is narrower
  /// than `tolerance` times the sum of the inner points' magnitudes, or the inner points no longer move. Returns the
  /// smaller value of the last two inner points, and its place in `xMinimum`. The user may stop the search through a
  /// bar of its own: the result is the best so far. `tolerance` below about 3e-4, the root of the spacing of floats,
  /// buys nothing.
  static float GoldenSectionSearch(CallBack* f, float a, float b, float c, float tolerance, float* xMinimum);
};
