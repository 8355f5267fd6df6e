#pragma once

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Straight-line interpolation between spectra and along curves. Instantiated for `float` and `double`.
///
/// Both forms take the value at x of the line through (x1, y1) and (x2, y2). Abscissas are equal if they differ by at
/// most 2^-23 of the power of two above the larger one (CompareWithTolerance); equal abscissas give y1. If one of the
/// four numbers is missing, the result is y1 if x equals x1, otherwise y2 if x equals x2, otherwise -99.
namespace NCDataVectorUtilities {

/// The spectrum at abscissa x between spectrum u at a and spectrum v at b: cell i is the line through (a, u[i]) and
/// (b, v[i]) at x. Outside a .. b, `clamp` gives the nearer spectrum; without it the line goes on.
/// Shape: `v` has the size of `u`, not checked. Throws nothing.
template <class T>
KALMIA_EXPORT NCDataVector<T> InterPolate(float a, float b, const NCDataVector<T>& u, const NCDataVector<T>& v, float x,
                                          bool clamp);

/// The value of the piecewise line through the points (xs, ys) at each cell of x. x ascends; the points may come in any
/// order. Points with a missing ys or a NaN as xs are ignored.
/// Beyond an end: several cells take the value of the end point; a single one continues the line from the end point to
/// the far point of its neighbour's bracket.
/// Degenerate: xs and ys of different sizes, or fewer than 2 cells in any of the three, give an empty vector. A cell
/// without a bracket (x not ascending, x NaN, no points) is missing. Throws nothing.
/// Cost: (n + m) log m for n cells and m points.
template <class T>
KALMIA_EXPORT NCDataVector<T> InterPolate(const NCDataVector<T>& x, const NCDataVector<T>& xs,
                                          const NCDataVector<T>& ys);

}  // namespace NCDataVectorUtilities
