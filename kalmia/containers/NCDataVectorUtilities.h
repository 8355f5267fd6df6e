#pragma once

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Straight-line interpolation between spectra and along curves. Instantiated for `float` and `double`.
///
/// Both forms take the value at x of the line through (x1, y1) and (x2, y2). Abscissas count as equal where they differ
/// by no more than 2^-23 of the power of two above the larger one (CompareWithTolerance); equal abscissas give y1.
/// Where one of the four numbers is missing, the result is y1 if x equals x1, otherwise y2 if x equals x2, otherwise
/// -99.
namespace NCDataVectorUtilities {

/// The spectrum at abscissa x between spectrum u at a and spectrum v at b: cell i is the line through (a, u[i]) and
/// (b, v[i]) at x. Outside a .. b the nearer spectrum holds with `clamp`; without, the line goes on.
/// Shape: `v` has the size of `u`, not checked. Throws nothing.
template <class T>
KALMIA_EXPORT NCDataVector<T> InterPolate(float a, float b, const NCDataVector<T>& u, const NCDataVector<T>& v, float x,
                                          bool clamp);

/// For each cell of x, in order, the value there of the piecewise line through the points (xs, ys); x ascends, the
/// points may come in any order. A point whose ys is missing, or whose xs is NaN, is no point.
/// Beyond an end: a single outermost cell goes on along the line from the end point to the far point of its neighbour's
/// bracket; where several cells lie beyond, all take the value of the end point.
/// Degenerate: xs and ys of different sizes, or fewer than 2 cells in any of the three, give an empty vector. A cell
/// without a bracket (x not ascending, x NaN, no point at all) is missing. Throws nothing.
/// Cost: (n + m) log m for n cells and m points.
template <class T>
KALMIA_EXPORT NCDataVector<T> InterPolate(const NCDataVector<T>& x, const NCDataVector<T>& xs,
                                          const NCDataVector<T>& ys);

}  // namespace NCDataVectorUtilities
