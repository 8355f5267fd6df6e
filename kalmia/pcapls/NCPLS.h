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
/// NextComponent, then whatever needs the tables with this component still in them (PLSCrossValidation), then
/// CalculateResiduals. The model works on copies of X and Y, which the caller has scaled.
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
  /// The tables are shared until the first write. Shape: X N x K, y N cells or Y N x M, K and M at least 1; not
  /// checked. `maxIterations` limits the rounds of one component; the first round always runs.
  NCPLS(const NCDataMatrix<float>* X, const NCDataVector<float>* y, int maxIterations);
  NCPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int maxIterations);
  /// Restores a model with a component for each row of P, from the deflated X and Y and the result matrices in the
  /// order C, P, W, U, T; shapes are not checked. Each may be absent, that is without rows, and result matrices may
  /// lack rows. The model can be stored and read; with X and Y it can be extended, and parts that lacked rows get
  /// missing ones. Operations that need an absent row do nothing or throw NCError.
  NCPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const NCDataMatrix<float>* C,
        const NCDataMatrix<float>* P, const NCDataMatrix<float>* W, const NCDataMatrix<float>* U,
        const NCDataMatrix<float>* T, int maxIterations);
  NCPLS(const NCPLS&) = delete;
  NCPLS& operator=(const NCPLS&) = delete;
  ~NCPLS() override;

  /// Appends one component, computed from the working X and Y. It does not change them: without CalculateResiduals in
  /// between, a second call appends the same component again.
  ///
  /// With one Y variable there is exactly one round. With more, rounds end when u moves by at most 1e-5 of its length
  /// (relative squared change d <= 1e-10) or at the limit, which is no failure. u starts from `start`, or as the column
  /// of Y of largest sum of squares.
  /// Shape: `start` has K cells, for instance the w of a similar model, or is null. Not read with one Y variable.
  /// Missing: holes leave every sum; a coefficient's denominator never falls below a third of the full sum of squares.
  /// Progress: `progress` may be null. Unless `quiet`, the bar runs from -m to 0, with m = (log10 d + 10) * 10; without
  /// a caller's bar one is opened. After its range is set, only `strict` moves it.
  /// Throws: NCError of level 0 if X and Y are absent, differ in their numbers of rows, or do not match the shapes of
  /// the components.
  /// Throws, only if `strict`: NCError of level 1 if X and u are as good as unrelated,
  ///   |w| |u| / |X| < 1e-6 / sqrt(K) for w not normalised yet, or not a normal number;
  /// of level 2 if the bar says stop, of level 0 if the bar says stop at the end of the loop (a caller's bar is asked
  /// even if `quiet`). The model is then unchanged, as after std::bad_alloc.
  /// If not strict, the call neither fails nor stops; a component that could not be computed is appended as it is.
  void NextComponent(NCProgress* progress, const NCDataVector<float>* start, bool quiet, bool strict);

  /// Takes the newest component out of the working matrices: X -= t p', Y -= t c'. Called twice, it subtracts twice.
  /// Does nothing if the model has no row GetComponents(). std::bad_alloc leaves both tables unchanged.
  void CalculateResiduals();

  /// W*, the weights that apply to the original X, T = X W*: row a is
  /// w_a - sum over j < a of (p_j' w_a) w*_j, which is W (P'W)^-1.
  /// Shape: W and P A x K, result A x K. Only the first A - 1 rows of P are read; NCError if P has fewer. Columns are
  /// not checked.
  /// Missing: a hole of w*_j makes the cell of later rows missing.
  static NCDataMatrix<float> GetWStarPrim(const NCDataMatrix<float>& W, const NCDataMatrix<float>& P);
  NCDataMatrix<float> GetWStarPrim() const;

  /// B = W* C', so that Y is estimated as X B in the scaled units: one row per X variable, one column per Y variable.
  /// Throws NCError if W and C differ in their numbers of rows, or if P has too few, as above.
  static NCDataMatrix<float> GetRegressionCoefficients(const NCDataMatrix<float>& P, const NCDataMatrix<float>& W,
                                                       const NCDataMatrix<float>& C);
  /// Of the first `components` components; -1 for all. NCError if the model has fewer weights w or c.
  NCDataMatrix<float> GetRegressionCoefficients(int components) const;

  /// Turns the sign of a component, from 1: c, p, w, u and t times -1, as far as present. Coefficients and residuals
  /// stay the same.
  void FlipComponent(int component);

  /// Reorders the rows of Y for a permutation test: row i becomes the old row order[i], i from 1 to N. order[0] is not
  /// read; the others are not checked. Only before the first component; NCError otherwise.
  void ShuffleYResiduals(int* order);

  /// Components appended since construction; after restoring, or reading version 1, with those of the stored model. A
  /// version 2 read keeps the number, 0 on a new object: count the rows of P, and restore the model to extend it.
  int GetComponents() const { return components_; }
  int GetIterations() const { return iterations_; }  ///< rounds of the newest component

  const NCDataMatrix<float>* GetCprim() const { return &cprim_; }            ///< A x M
  const NCDataMatrix<float>* GetPprim() const { return &pprim_; }            ///< A x K
  const NCDataMatrix<float>* GetWprim() const { return &wprim_; }            ///< A x K
  const NCDataMatrix<float>* GetTprim() const { return &tprim_; }            ///< A x N
  const NCDataMatrix<float>* GetUprim() const { return &uprim_; }            ///< A x N
  const NCDataMatrix<float>* GetXResiduals() const { return &xResiduals_; }  ///< the working X, N x K
  const NCDataMatrix<float>* GetYResiduals() const { return &yResiduals_; }  ///< the working Y, N x M

  // Persistence: magic "NCPLS", version 2; version 1 is read. The read returns false (version 1 may throw
  // VexStreamError) and leaves an empty model if the stream is cut, or if its matrices differ in observations or
  // variables (one without rows fits any).
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
  /// A bound that |X| = sqrt(xResiduals_.GetSS()) never exceeds. Iterate() measures |X| only where the bound decides
  /// nothing; CalculateResiduals() carries the bound on, which takes no pass over X.
  double xLengthAtMost_ = std::numeric_limits<double>::infinity();
};
