#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"
#include "kalmia/support/VexStream.h"

namespace kalmia {
struct ModelFields;
}

/// Principal components of a table with holes by NIPALS, one at a time. For each component the caller calls
/// NextComponent, then whatever needs the table with this component still in it (PCACrossValidation, a validator), then
/// CalculateResiduals. The model works on a copy of the table, which the caller has scaled.
///
/// Symbols, for N observations and K variables: scores t (N) and loadings p of unit length (K), with t = Xp and p along
/// X't. A component takes t p' out of X. Its sign depends on the start. Names that end in
/// `prim` hold one component per row.
/// Source: Wold, Esbensen & Geladi (1987), Chemom. Intell. Lab. Syst. 2, 37-52.
///
/// A model belongs to one thread at a time. It cannot be copied.
class KALMIA_EXPORT NCPCA : public kalmia::Persistent<NCPCA> {
 public:
  NCPCA();  ///< empty, to be read from a stream
  /// The table (N x K) is shared until the first write. `maxIterations` limits the rounds of one component; the first
  /// round always runs.
  NCPCA(const NCDataMatrix<float>* X, int maxIterations);
  /// Restores a model with a component for each row of P, from the deflated X (N x K), P (A x K) and T (A x N); shapes
  /// are not checked. Each may be absent, that is without rows, and P or T may lack rows. The model can be stored and
  /// read; with X it can be extended, and the part that lacked rows gets missing ones. Residuals need P and T.
  NCPCA(const NCDataMatrix<float>* X, const NCDataMatrix<float>* P, const NCDataMatrix<float>* T, int maxIterations);
  NCPCA(const NCPCA&) = delete;
  NCPCA& operator=(const NCPCA&) = delete;
  ~NCPCA() override;

  /// Appends one component, computed from the working X, and returns true. It does not change X: without
  /// CalculateResiduals in between, a second call appends the same component again.
  ///
  /// Each round regresses the columns on t, which gives p, and the rows on p, which gives t. Rounds end when t moves by
  /// at most 1e-5 of its length (relative squared change d <= 1e-10) or at the limit. Reaching the limit is no failure;
  /// only GetIterations() shows it (components of nearly equal variance converge slowly). t starts as `start` or the
  /// column of X of largest sum of squares. For a table of one row, p is the row at unit length, t its length, after
  /// one round; all arguments are then ignored.
  /// Shape: `start` has N cells, `groups` K cells; NCError otherwise. Both may be null.
  /// Groups: variables whose cell in `groups` equals `group` are left out. Their loadings are missing, and so are their
  /// columns of X after CalculateResiduals.
  /// Missing: holes leave every sum; a coefficient's denominator never falls below a third of the full sum of squares.
  /// Progress: `progress` may be null; the bar runs from -m to 0, with m = (log10 d + 10) * 10, and moves from the
  /// second round on. Without a caller's bar one is opened after the first round.
  /// Throws: NCError if t and its predecessor have no cell in common or are not finite, if X is absent or does not
  /// match the shapes of P and T, or if the bar says stop; std::bad_alloc. T, P, X and GetIterations() are then
  /// unchanged, but GetComponents() is one more: discard the model, or restore it from its matrices.
  bool NextComponent(NCProgress* progress, const NCIntegralVector<int, -99>* groups, int group,
                     const NCDataVector<float>* start);

  /// Takes the newest component out of the working matrix: X -= t p'. A row without a score and a column without a
  /// loading become missing. Called twice, it subtracts twice. Does nothing if the model has no row GetComponents().
  virtual void CalculateResiduals();

  /// Components requested since construction; after restoring, or reading version 1, with those of the stored model. A
  /// version 2 read keeps the number, 0 on a new object: count the rows of P, and restore the model to extend it.
  int GetComponents() const { return components_; }
  int GetIterations() const { return iterations_; }  ///< rounds of the newest component

  const NCDataMatrix<float>* GetPprim() const { return &pprim_; }          ///< A x K
  const NCDataMatrix<float>* GetTprim() const { return &tprim_; }          ///< A x N
  const NCDataMatrix<float>* GetResiduals() const { return &residuals_; }  ///< the working X, N x K

  // Persistence: magic "NCPCA", version 2; version 1 is read. The read returns false (version 1 may throw
  // VexStreamError) and leaves an empty model if the stream is cut, or if its matrices differ in observations or
  // variables (one without rows fits any).
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  struct Component;
  struct Excluded;

  /// Throws NCError where X is absent, or has another shape than the components tell.
  void RequireTableOfTheModel() const;
  Component OfOneRow() const;
  Component Iterate(const Excluded& excluded, const NCDataVector<float>* start, NCProgress* progress) const;
  void Append(const Component& component);  ///< all or nothing
  kalmia::ModelFields Fields();             ///< in the order of the stream form
  bool ShapesAgree() const;
  void Swap(NCPCA* other);

  NCDataMatrix<float> pprim_;
  NCDataMatrix<float> tprim_;
  NCDataMatrix<float> residuals_;
  int components_ = 0;
  int maxIterations_ = 0;
  int iterations_ = 0;
};
