#include "kalmia/pcapls/NCPCA.h"

#include <algorithm>
#include <utility>

#include "kalmia/kernels/passes/ComponentPasses.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/pcapls/internal/ConvergenceBar.h"
#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"

struct NCPCA::Component {
  NCDataVector<float> p;
  NCDataVector<float> t;
  int rounds = 0;
};

/// The variables that take no part: those whose group is `group`.
struct NCPCA::Excluded {
  const NCIntegralVector<int, -99>* groups;  ///< null: none
  int group;
};

namespace {

/// m of the change that a round made, see kalmia::MeasureOfChange. Throws where it cannot be told.
double MeasureOrThrow(long double change) {
  if (change == kalmia::kMissing) throw NCError("PCA component could not be computed.");
  const double d = static_cast<double>(change);
  return d > kalmia::kNoChange ? kalmia::MeasureOfChange(d) : kalmia::kConverged;
}

/// Shows a round's m. The first round only settles the range; from the second on the user may stop.
void Report(kalmia::ConvergenceBar* bar, int component, int round, double measure) {
  const float m = static_cast<float>(measure);
  if (!bar->Get()) return bar->Open(10041, component, m);
  if (round == 1) return bar->Get()->SetRange(-m, 0.0F);
  if (!bar->Get()->SetValue(-m)) throw NCError(LanguageString::Get(10147));
}

}  // namespace

NCPCA::NCPCA() = default;

NCPCA::NCPCA(const NCDataMatrix<float>* X, int maxIterations)
    : pprim_(kalmia::EmptyMatrix(X->SizeColumns())),
      tprim_(kalmia::EmptyMatrix(X->SizeRows())),
      residuals_(*X),
      maxIterations_(maxIterations) {}

NCPCA::NCPCA(const NCDataMatrix<float>* X, const NCDataMatrix<float>* P, const NCDataMatrix<float>* T,
             int maxIterations)
    : pprim_(*P), tprim_(*T), residuals_(*X), components_(P->SizeRows()), maxIterations_(maxIterations) {}

NCPCA::~NCPCA() = default;

void NCPCA::RequireTableOfTheModel() const {
  // Scores without cells are those of a table without rows, which is there then.
  const bool isAbsent = !kalmia::HasAnyOf({&residuals_, &tprim_}) && kalmia::HasAnyOf({&pprim_});
  if (isAbsent || !kalmia::HasRowsOf(pprim_, residuals_.SizeColumns()) ||
      !kalmia::HasRowsOf(tprim_, residuals_.SizeRows()))
    throw NCError("PCA: the table does not belong to the components of the model.");
}

bool NCPCA::NextComponent(NCProgress* progress, const NCIntegralVector<int, -99>* groups, int group,
                          const NCDataVector<float>* start) {
  ++components_;
  RequireTableOfTheModel();
  const bool isOneRow = residuals_.SizeRows() == 1;
  if (!isOneRow && ((groups && groups->Size() != residuals_.SizeColumns()) ||
                    (start && start->Size() != residuals_.SizeRows())))
    throw NCError("PCA: groups or start are not of the table's size.");
  Append(isOneRow ? OfOneRow() : Iterate({groups, group}, start, progress));
  return true;
}

NCPCA::Component NCPCA::OfOneRow() const {
  Component component;
  component.p = residuals_[1];
  const float norm = static_cast<float>(component.p.Normalise());
  component.t.Resize(1, norm);
  component.rounds = 1;
  return component;
}

NCPCA::Component NCPCA::Iterate(const Excluded& excluded, const NCDataVector<float>* start,
                                NCProgress* progress) const {
  kalmia::ConvergenceBar bar(progress);
  Component component;
  auto& [p, t, rounds] = component;
  t = start ? *start : residuals_.GetNIPALSStartColumn();
  NCDataVector<float> nextT;
  NCDataVector<float> nextP = residuals_.SpecialNipalsRegressColumnsFix(t, excluded.groups, excluded.group);
  double measure = 0.0;
  do {
    std::swap(p, nextP);
    p.Normalise();
    kalmia::CalcScoresAndLoadings(residuals_, p, excluded.groups, excluded.group, &nextT, &nextP);
    measure = MeasureOrThrow(nextT.Difference(t));
    std::swap(t, nextT);
    Report(&bar, components_, ++rounds, measure);
  } while (measure > 0.0 && rounds < maxIterations_);
  return component;
}

void NCPCA::Append(const Component& component) {
  const int stored = std::max(pprim_.SizeRows(), tprim_.SizeRows());
  const auto longer = [this, stored](const NCDataMatrix<float>& rows, const NCDataVector<float>& newest) {
    return kalmia::WithRow(kalmia::FilledUpTo(stored, newest.Size(), rows), components_, newest);
  };
  NCDataMatrix<float> pprim = longer(pprim_, component.p);
  NCDataMatrix<float> tprim = longer(tprim_, component.t);
  pprim_.swap(pprim);
  tprim_.swap(tprim);
  iterations_ = component.rounds;
}

void NCPCA::CalculateResiduals() {
  if (components_ < 1 || components_ > tprim_.SizeRows() || components_ > pprim_.SizeRows()) return;
  residuals_.AddVprimV(tprim_[components_], pprim_[components_], -1.0F);
}
