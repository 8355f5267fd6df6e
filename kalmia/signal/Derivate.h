#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

namespace kalmia {
class FitterWithHoles;
struct WindowFit;
}  // namespace kalmia

/// Smooths an equally spaced signal and takes its derivatives: a polynomial is fitted by least squares to the cells of
/// a window, which slides along the signal, and evaluated in the middle of the window. For `float` alone.
///
/// Positions in a window are whole numbers around its middle, -half to half with half = window / 2; the unit of a
/// derivative is that of the signal over that of `spacing`. With d = x - xMean the polynomial of a window is
///   yMean + c0 d + c1 (d^2 - x2Mean) + c2 (d^3 - x3Mean),
/// the means being those over the window's present cells. A position of -99, in a window of 199 cells or more, is a
/// number like any other.
///
/// Windows without holes share one linear filter, which the constructor computes; they cost order * window
/// multiplications each. A window with holes gets a fit of its own from the cells it has; it fails where no more than
/// `order` cells are present or they do not determine the polynomial, and then gives -99. So does a fit whose c0 is
/// exactly -99. Sums run in double, coefficients and means are float.
///
/// Edges: the signal is not cut. The first half and the last half of its cells come from the polynomials of the first
/// and the last full window, as in scipy.signal.savgol_filter with mode='interp'; inside, both are the same filter of
/// polyorder 2 or 3. (SciPy knows no holes, and its other modes pad the signal instead.)
///
/// Not checked: that the window is odd, as it has to be for the formulas above to hold in a window without holes, and
/// longer than the order. Of a window that is too short the normal matrix has no inverse, and what comes out means
/// nothing. A window below 1 fits nothing, as one longer than the signal.
/// Source: Savitzky & Golay (1964), Anal. Chem. 36, 1627-1639; edges: Gorry (1990), Anal. Chem. 62, 570-573.
template <class T>
class KALMIA_EXPORT Derivate {
 public:
  enum PolynomialOrder : int { Quadratic = 2, Cubic = 3 };  ///< any other value counts as Quadratic

  Derivate(PolynomialOrder order, int window);
  Derivate(const Derivate& other);
  Derivate& operator=(const Derivate& other);
  ~Derivate();

  /// The derivative of the given order: 1, 2, or, with a cubic only, 3 (a quadratic gives 0).
  /// Shape: `output` gets the size of the input, which it may be. A signal shorter than the window leaves the cells as
  /// SetSize makes them: missing, or what they were where the size was right.
  /// Missing: where the first window fails, cells 1 to half are missing; where the last one fails, cells n - half to
  /// n - 1, while cell n stays as SetSize made it.
  /// The result is multiplied by spacing^-order in the end, unless spacing is 1: all of `output`, cells that no window
  /// reached included.
  /// Throws Exception "Illegal derivate order" for another order: if a window was fitted, `output` having its new size
  /// and the cells that SetSize gives it; or, with a spacing other than 1, in any case.
  void DoDerivate(const NCDataVector<T>& input, NCDataVector<T>& output, int order, float spacing) const;

  /// The fitted signal. Shape, edges and holes as above.
  void Smooth(const NCDataVector<T>& input, NCDataVector<T>& output) const;

  /// Place of the minimum, or else the maximum, of the polynomial of the first `window` cells, as a distance: the first
  /// cell lies at `spacing`, the second at 2 spacing. -99 if there are not so many cells, the fit fails, the parabola
  /// has no optimum of that kind, or it lies above `window`, or, with limitBelow, below 1.
  /// The vertex is that of c0 and c1: c2 of a cubic takes no part in it.
  /// height: the polynomial at the vertex; written as soon as the optimum is of the wanted kind, whatever is returned.
  /// A c2 of exactly 0 takes no part in it, however far away that is.
  /// With holes -c0 / (2 c1), which is a d, is taken as x. The vertex is at x + xMean; the height is that at x, and the
  /// place that of x - xMean, so that it lies 2 xMean below the vertex.
  float GetOptima(const NCDataVector<T>& input, float spacing, bool minimum, bool limitBelow, float& height) const;

 private:
  struct Wanted;
  struct Batch;

  /// Writes what is wanted of each window to the place of its middle, and along the edges.
  void Slide(const NCDataVector<T>& input, NCDataVector<T>& output, const Wanted& wanted) const;
  /// The fit to the window that begins at y; `fitter` takes care of holes.
  kalmia::WindowFit Fit(const T* y, kalmia::FitterWithHoles& fitter) const;
  /// What is wanted in the middles of neighbouring windows without holes, the first of which begins at y.
  void FillMiddles(const T* y, const Wanted& wanted, Batch& batch, T* middles) const;
  const double* GetFilter(int k) const { return filter_.data() + static_cast<std::ptrdiff_t>(k) * window_; }

  PolynomialOrder order_;
  int window_;
  std::vector<double> filter_;  ///< order rows of window cells, each a float: c_k = row k times the centred window
  float meanSquare_ = 0;        ///< of the positions in the window
};

extern template class Derivate<float>;
