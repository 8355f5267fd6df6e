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

/// Smooths an equally spaced signal and takes its derivatives: fits a polynomial by least squares to the cells of a
/// window, which slides along the signal, and evaluates it in the middle of the window. Only for `float`.
///
/// Positions in a window are whole numbers around its middle, -half to half with half = window / 2; the unit of a
/// derivative is that of the signal over that of `spacing`. With d = x - xMean the polynomial of a window is
///   yMean + c0 d + c1 (d^2 - x2Mean) + c2 (d^3 - x3Mean),
/// with means over the window's present cells. A position of -99 (windows of 199 cells or more) is an ordinary number.
///
/// Windows without holes share one linear filter, computed by the constructor; each costs order * window
/// multiplications. A window with holes is fitted to its present cells. It gives -99 if at most `order` cells are
/// present, if they do not determine the polynomial, or if c0 is exactly -99. Sums run in double, coefficients and
/// means are float.
///
/// Edges: the signal keeps its length. The first and the last `half` cells come from the polynomials of the first and
/// the last full window, as in scipy.signal.savgol_filter with mode='interp' and polyorder 2 or 3 (SciPy does not
/// handle holes; its other modes pad the signal).
///
/// Not checked: the window must be odd, for the formulas above to hold without holes, and longer than the order; the
/// results of a shorter window mean nothing. A window below 1, or longer than the signal, fits nothing.
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
  /// Shape: `output` gets the size of the input, and may be the input. If the signal is shorter than the window, the
  /// cells are those after SetSize: missing, or unchanged if the size was right.
  /// Missing: if the first window fails, cells 1 to half are missing; if the last one fails, cells n - half to n - 1
  /// are, and cell n is as after SetSize.
  /// Unless spacing is 1, all cells of `output` are multiplied by spacing^-order in the end.
  /// Throws Exception "Illegal derivate order" for another order if a window was fitted (`output` is then as after
  /// SetSize), or if spacing is not 1.
  void DoDerivate(const NCDataVector<T>& input, NCDataVector<T>& output, int order, float spacing) const;

  /// The fitted signal. Shape, edges and holes as above.
  void Smooth(const NCDataVector<T>& input, NCDataVector<T>& output) const;

  /// Place of the minimum, or the maximum, of the polynomial of the first `window` cells, as a distance: the first cell
  /// lies at `spacing`, the second at 2 spacing. -99 if there are fewer cells, if the fit fails, if the parabola has no
  /// such optimum, or if it lies above `window` or, with limitBelow, below 1.
  /// The vertex is that of c0 and c1 alone, also for a cubic.
  /// height: the polynomial at the vertex. Written whenever the optimum is of the wanted kind, whatever is returned. A
  /// c2 of exactly 0 is left out, even at an infinite vertex.
  /// With holes: x = -c0 / (2 c1) is a d, so the vertex is at x + xMean; but the height is taken at x, and the place at
  /// x - xMean, which is 2 xMean below the vertex.
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
