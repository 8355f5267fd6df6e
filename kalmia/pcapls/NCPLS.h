#pragma once

#include <limits>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"
#include "kalmia/support/VexStream.h"

namespace kalmia {
struct ModelFields;
}

/// Partial least squares by NIPALS on tables with holes, one component at a time. For each component the caller calls
/// NextComponent, then whatever has to see the tables with that component still in them (PLSCrossValidation), then
/// CalculateResiduals, and stops when it has enough. The model works on copies of X and Y, which the caller has scaled.
///
/// Symbols, for N observations, K variables in X and M in Y: weights w of unit length (K), scores t (N), loadings
/// p = X't / t't (K), Y weights c = Y't / t't (M) and Y scores u = Yc / c'c (N). Neither p nor c is normalised. A
/// component takes t p' out of X and t c' out of Y; there is no inner relation. Names that end in `prim` hold one
/// component per row.
/// Source: Wold, Sjoestroem & Eriksson (2001), Chemom. Intell. Lab. Syst. 58, 109-130.
///
/// A model belongs to one thread at a time. It cannot be copied.
class KALMIA_EXPORT NCPLS : public kalmia::Persistent<NCPLS> {
 public:
  NCPLS();  ///< empty, to be read from a stream
  /// The tables are shared until the first write. Shape: X N x K, y N cells or Y N x M, K and M at least 1; nothing is
  /// checked. `maxIterations` limits the rounds of one component; the first round always runs.
  NCPLS(const NCDataMatrix<float>* X, const NCDataVector<float>* y, int maxIterations);
  NCPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int maxIterations);
  /// Restores a model of as many components as P has rows, from the deflated X and Y and the result matrices in the
  /// order C, P, W, U, T, whose shapes are not checked. It can be extended. Any of them may be absent, that is without
  /// rows, and the result matrices may lack rows: such a model is stored and read like any other, and is extended if X
  /// and Y are there; the parts that lacked rows then have missing ones for the components before. What has to read a
  /// row that is not there does nothing or throws NCError.
  NCPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const NCDataMatrix<float>* C,
        const NCDataMatrix<float>* P, const NCDataMatrix<float>* W, const NCDataMatrix<float>* U,
        const NCDataMatrix<float>* T, int maxIterations);
  NCPLS(const NCPLS&) = delete;
  NCPLS& operator=(const NCPLS&) = delete;
  ~NCPLS() override;

  /// Appends one component, computed from the working X and Y. It takes nothing out of them: called twice without
  /// CalculateResiduals in between, it appends the same component twice.
  ///
  /// With one Y variable there is exactly one round. With more, rounds go on until u moves by at most 1e-5 of its
  /// length (relative squared change d <= 1e-10) or the limit is reached, which is no failure. u starts as the column
  /// of Y of largest sum of squares, or from `start`.
  /// Shape: `start` has K cells, for instance the w of a similar model; it is not looked at with one Y variable. May
  /// be null.
  /// Missing: holes leave every sum; a coefficient's denominator never falls below a third of the full sum of squares.
  /// Progress: `progress` may be null; unless `quiet`, the bar runs from -m to 0, with m = (log10 d + 10) * 10, and
  /// without a caller's bar one is opened. Only `strict` moves it after its range is set.
  /// Throws: NCError of level 0 where X and Y are absent or have not the same number of rows, or not the shapes that
  /// the components tell.
  /// Throws, only if `strict`: NCError of level 1 if X and u are as good as unrelated,
  ///   |w| |u| / |X| < 1e-6 / sqrt(K) for w not normalised yet, or not a normal number;
  /// of level 2 if the bar says stop, of level 0 if a stop was asked for by the end of the loop (a caller's bar is
  /// asked even if `quiet`). The model is then as it was before the call; so it is after std::bad_alloc.
  /// Otherwise, if not strict, the call neither fails nor stops, and a component that could not be computed is appended
  /// as it is.
  void NextComponent(NCProgress* progress, const NCDataVector<float>* start, bool quiet, bool strict);

  /// Takes the newest component out of the working matrices: X -= t p', Y -= t c'. Called twice, it subtracts twice.
  /// Does nothing where the model has no row GetComponents(). After std::bad_alloc both tables are as they were.
  void CalculateResiduals();

  /// W*, the weights that give the scores from the X before any component was taken out, T = X W*: row a is
  /// w_a - sum over j < a of (p_j' w_a) w*_j, which is W (P'W)^-1.
  /// Shape: W and P A x K, result A x K; the last row of P is not read and may be left out, more rows of P than of W
  /// are not read either. NCError where P has fewer rows; the columns are not checked.
  /// Missing: a hole of w*_j makes the cell of later rows missing.
  static NCDataMatrix<float> GetWStarPrim(const NCDataMatrix<float>& W, const NCDataMatrix<float>& P);
  NCDataMatrix<float> GetWStarPrim() const;

  /// B = W* C', so that Y is estimated as X B in the scaled units: one row per X variable, one column per Y variable.
  /// Throws NCError where W and C have not the same number of rows, or P has fewer than W*, see above.
  static NCDataMatrix<float> GetRegressionCoefficients(const NCDataMatrix<float>& P, const NCDataMatrix<float>& W,
                                                       const NCDataMatrix<float>& C);
  /// Of the first `components` components; -1 for all. NCError where the model has not so many weights w and c.
  NCDataMatrix<float> GetRegressionCoefficients(int components) const;

  /// Turns the sign of a component, from 1: c, p, w, u and t times -1, as far as they are there. The products t p' and
  /// t c' stay as they are, and so do coefficients and residuals.
  void FlipComponent(int component);

  /// Puts the rows of Y into another order, for a permutation test: row i becomes the old row order[i], i from 1 to N;
  /// order[0] is not looked at, and the others are not checked. Before the first component only: NCError otherwise.
  void ShuffleYResiduals(int* order);

  /// Components appended since construction, after restoring or reading version 1 those of the stored model too. A
  /// version 2 read leaves the number as it was, 0 on a new object: count the rows of P, and restore to extend.
  int GetComponents() const { return components_; }
  int GetIterations() const { return iterations_; }  ///< rounds of the newest component

  const NCDataMatrix<float>* GetCprim() const { return &cprim_; }            ///< A x M
  const NCDataMatrix<float>* GetPprim() const { return &pprim_; }            ///< A x K
  const NCDataMatrix<float>* GetWprim() const { return &wprim_; }            ///< A x K
  const NCDataMatrix<float>* GetTprim() const { return &tprim_; }            ///< A x N
  const NCDataMatrix<float>* GetUprim() const { return &uprim_; }            ///< A x N
  const NCDataMatrix<float>* GetXResiduals() const { return &xResiduals_; }  ///< the working X, N x K
  const NCDataMatrix<float>* GetYResiduals() const { return &yResiduals_; }  ///< the working Y, N x M

  // Persistence: magic "NCPLS", version 2; version 1 is read. A stream that is cut, or whose matrices disagree in their
  // numbers of observations or variables (one without rows agrees with any), makes the read fail and leaves an empty
  // model; damage within a matrix of a version 1 stream may also throw VexStreamError, with an empty model too.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  struct Component;
  class RoundsBar;

  /// Throws NCError where X and Y are absent, or have other shapes than the components tell.
  void RequireTablesOfTheModel() const;
  void InitialiseResults();                        ///< five result matrices without rows
  NCDataVector<float> StartOfU(const NCDataVector<float>* start) const;
  /// Whether |w| |u| / |X| is too small, or not a normal number.
  bool AreUnrelated(const NCDataVector<float>& w, const NCDataVector<float>& u);
  Component Iterate(const NCDataVector<float>* start, bool strict, RoundsBar* bar);
  void Append(const Component& component);         ///< all or nothing
  bool HasNewestComponent() const;
  kalmia::ModelFields Fields();                    ///< in the order of the stream form, which is that of the members
  void Swap(NCPLS* other);
  bool ShapesAgree() const;

  NCDataMatrix<float> cprim_;
  NCDataMatrix<float> pprim_;
  NCDataMatrix<float> wprim_;
  NCDataMatrix<float> uprim_;
  NCDataMatrix<float> tprim_;
  NCDataMatrix<float> xResiduals_;
  NCDataMatrix<float> yResiduals_;
  int components_ = 0;
  int maxIterations_ = 0;
  int iterations_ = 0;
  double xLengthAtMost_ = std::numeric_limits<double>::infinity();  ///< not below sqrt(xResiduals_.GetSS())
};
