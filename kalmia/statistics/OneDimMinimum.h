#pragma once

#include "kalmia/support/Export.h"

/// Finds a minimum of a function of one variable without derivatives, in single precision: first a bracket, then a
/// search inside it. Exceptions of the function pass through.
/// Source: Brent (1973), Algorithms for Minimization without Derivatives, chapter 5; Kiefer (1953), Proc. Amer. Math.
/// Soc. 4, 502-506 (golden section).
class KALMIA_EXPORT OneDimMinimum {
 public:
  /// The function to minimise.
  struct CallBack {
    virtual ~CallBack() = default;
    virtual float Evaluate(float x) = 0;
  };

  /// Walks downhill from the start points `a` and `b`, with parabolic steps, until f(b) is not above f(a) and f(c), and
  /// fills in the three values. Never ends for a function without a minimum, unless the function throws.
  static void BracketMinimum(CallBack* f, float* a, float* b, float* c, float* fa, float* fb, float* fc);

  /// Golden section search inside a bracket a, b, c (b between a and c, f(b) not above f(a) and f(c)). Ends when the
  /// bracket is narrower than `tolerance` times the sum of the inner points' magnitudes, or when the inner points no
  /// longer move. Returns the smaller value of the two inner points, and its place in `xMinimum`. Opens a bar, through
  /// which the user may stop the search; the result is then the best so far. A `tolerance` below about 3e-4, the root
  /// of the spacing of floats, gains nothing.
  static float GoldenSectionSearch(CallBack* f, float a, float b, float c, float tolerance, float* xMinimum);
};
