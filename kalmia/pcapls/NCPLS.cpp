#include "kalmia/pcapls/NCPLS.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/kernels/passes/ComponentPasses.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/pcapls/internal/ConvergenceBar.h"
#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"

namespace {

/// Below this over sqrt(K), |w| |u| / |X| says that X and u have nothing in common but rounding.
constexpr double kSmallestRelation = 1e-6;

/// A deflation rounds cells to float: that lengthens X by less than this factor.
constexpr double kRoomForRounding = 1.00001;

/// NaN where every cell is missing.
double Length(const NCDataVector<float>& v) { return std::sqrt(static_cast<double>(v.GetSS())); }

/// Whether the weights w, not normalised yet, that u gave are too small for an X of this length, or not a number to go
/// on with.
bool IsUnrelated(const NCDataVector<float>& w, const NCDataVector<float>& u, double lengthOfX) {
  const double relation = Length(w) * Length(u) / lengthOfX;
  const int kind = std::fpclassify(relation);
  if (kind == FP_NAN || kind == FP_INFINITE || kind == FP_SUBNORMAL) return true;
  return kSmallestRelation / std::sqrt(static_cast<double>(w.Size())) > relation;
}

/// m of a round, see kalmia::MeasureOfChange. A change that could not be measured (-99) ends the loop too.
double ConvergenceMeasure(double change) {
  return change >= kalmia::kNoChange ? kalmia::MeasureOfChange(change) : kalmia::kConverged;
}

NCDataMatrix<float> AsMatrix(const NCDataVector<float>& column) {
  NCDataMatrix<float> matrix;
  matrix.InsertColumn(1, column);
  return matrix;
}

[[noreturn]] void RefuseComponents() { throw NCError("Weights and loadings are not of the same components."); }

/// The first rows, all of which have to be there.
NCDataMatrix<float> RowsUpTo(const NCDataMatrix<float>& matrix, int rows) {
  if (rows < 0 || rows > matrix.SizeRows()) RefuseComponents();
  return matrix.GetRowSubMatrix(1, rows);
}

/// The same cells with their missing ones counted anew.
NCDataVector<float> Recounted(const NCDataVector<float>& v) {
  NCDataVector<float> counted;
  if (v.Size() > 0) counted.CopyZeroBasedVector(v.begin(), v.Size());
  return counted;
}

}  // namespace

/// One component, each vector of its final size so that the iteration allocates nothing.
struct NCPLS::Component {
  Component(int observations, int xVariables, int yVariables)
      : w(xVariables), p(xVariables), t(observations), c(yVariables) {}

  NCDataVector<float> w;
  NCDataVector<float> p;
  NCDataVector<float> t;
  NCDataVector<float> c;
  NCDataVector<float> u;
  int rounds = 0;
};

/// What the user sees of the iteration and how a stop comes in.
class NCPLS::RoundsBar {
 public:
  RoundsBar(NCProgress* bar, int component, bool quiet, bool strict)
      : bar_(bar), component_(component), quiet_(quiet), strict_(strict) {}

  void Report(double measure, int round);
  void ThrowIfStopped();

 private:
  kalmia::ConvergenceBar bar_;
  int component_;
  bool quiet_;
  bool strict_;
};

void NCPLS::RoundsBar::Report(double measure, int round) {
  if (quiet_) return;
  const float m = static_cast<float>(measure);
  if (!bar_.Get()) return bar_.Open(10047, component_, m);
  if (round == 1) bar_.Get()->SetRange(measure == 0.0 ? 1.0F : -m, 0.0F);
  if (strict_ && !bar_.Get()->SetValue(-m)) throw NCError(LanguageString::Get(10160), NCError::Level2);
}

void NCPLS::RoundsBar::ThrowIfStopped() {
  if (strict_ && bar_.Get() && bar_.Get()->IsBreakPressed())
    throw NCError(LanguageString::Get(10161), NCError::Level0);
}

NCPLS::NCPLS() = default;

NCPLS::NCPLS(const NCDataMatrix<float>* X, const NCDataVector<float>* y, int maxIterations)
    : xResiduals_(*X), yResiduals_(AsMatrix(*y)), maxIterations_(maxIterations) {
  InitialiseResults();
}

NCPLS::NCPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int maxIterations)
    : xResiduals_(*X), yResiduals_(*Y), maxIterations_(maxIterations) {
  InitialiseResults();
}

NCPLS::NCPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const NCDataMatrix<float>* C,
             const NCDataMatrix<float>* P, const NCDataMatrix<float>* W, const NCDataMatrix<float>* U,
             const NCDataMatrix<float>* T, int maxIterations)
    : cprim_(*C),
      pprim_(*P),
      wprim_(*W),
      uprim_(*U),
      tprim_(*T),
      xResiduals_(*X),
      yResiduals_(*Y),
      components_(P->SizeRows()),
      maxIterations_(maxIterations) {}

NCPLS::~NCPLS() = default;

void NCPLS::InitialiseResults() {
  cprim_ = kalmia::EmptyMatrix(yResiduals_.SizeColumns());
  pprim_ = kalmia::EmptyMatrix(xResiduals_.SizeColumns());
  wprim_ = kalmia::EmptyMatrix(xResiduals_.SizeColumns());
  uprim_ = kalmia::EmptyMatrix(xResiduals_.SizeRows());
  tprim_ = kalmia::EmptyMatrix(xResiduals_.SizeRows());
}

void NCPLS::RequireTablesOfTheModel() const {
  const int observations = xResiduals_.SizeRows();
  // Scores without cells are those of tables without rows, which are there then.
  const bool areAbsent = observations == 0 && !kalmia::HasAnyOf({&tprim_, &uprim_}) &&
                         kalmia::HasAnyOf({&pprim_, &wprim_, &cprim_});
  if (areAbsent || yResiduals_.SizeRows() != observations || !kalmia::HasRowsOf(tprim_, observations) ||
      !kalmia::HasRowsOf(uprim_, observations) || !kalmia::HasRowsOf(pprim_, xResiduals_.SizeColumns()) ||
      !kalmia::HasRowsOf(wprim_, xResiduals_.SizeColumns()) || !kalmia::HasRowsOf(cprim_, yResiduals_.SizeColumns()))
    throw NCError("PLS: X, Y and the components of the model do not belong together.");
}

void NCPLS::NextComponent(NCProgress* progress, const NCDataVector<float>* start, bool quiet, bool strict) {
  RequireTablesOfTheModel();
  RoundsBar bar(progress, components_ + 1, quiet, strict);
  Component component = Iterate(start, strict, &bar);
  bar.ThrowIfStopped();
  if (yResiduals_.SizeColumns() != 1) xResiduals_.Result(&component.p).SpecialNipalsRegressColumnsFix(component.t);
  Append(component);
}

NCDataVector<float> NCPLS::StartOfU(const NCDataVector<float>* start) const {
  if (!start || yResiduals_.SizeColumns() <= 1) return yResiduals_.GetNIPALSStartColumn();
  const NCDataVector<float> t = xResiduals_.SpecialNipalsRegressRowsFix(*start, nullptr, 0);
  const NCDataVector<float> c = yResiduals_.SpecialNipalsRegressColumnsFix(t);
  return yResiduals_.SpecialNipalsRegressRowsFix(c, nullptr, 0);
}

NCPLS::Component NCPLS::Iterate(const NCDataVector<float>* start, bool strict, RoundsBar* bar) {
  Component component(xResiduals_.SizeRows(), xResiduals_.SizeColumns(), yResiduals_.SizeColumns());
  auto& [w, p, t, c, u, rounds] = component;
  u = StartOfU(start);
  NCDataVector<float> nextU(xResiduals_.SizeRows());
  const bool oneY = yResiduals_.SizeColumns() == 1;
  double measure = 0.0;
  do {
    xResiduals_.Result(&w).SpecialNipalsRegressColumnsFix(u);
    if (strict && IsUnrelated(w, u, xLengthAtMost_)) {  // to a longer X perhaps: the length itself decides
      xLengthAtMost_ = std::sqrt(static_cast<double>(xResiduals_.GetSS()));
      if (IsUnrelated(w, u, xLengthAtMost_)) throw NCError(LanguageString::Get(10159), NCError::Level1);
    }
    w.Normalise();
    if (oneY)
      kalmia::CalcScoresAndLoadings(xResiduals_, w, &t, &p);  // the only round
    else
      xResiduals_.Result(&t).SpecialNipalsRegressRowsFix(w, nullptr, 0);
    yResiduals_.Result(&c).SpecialNipalsRegressColumnsFix(t);
    yResiduals_.Result(&nextU).SpecialNipalsRegressRowsFix(c, nullptr, 0);
    measure = oneY ? 0.0 : ConvergenceMeasure(static_cast<double>(nextU.Difference(u)));
    std::swap(u, nextU);
    bar->Report(measure, ++rounds);
  } while (measure > 0.0 && rounds < maxIterations_);
  return component;
}

void NCPLS::Append(const Component& component) {
  const int row = components_ + 1;
  const int stored = std::max({wprim_.SizeRows(), pprim_.SizeRows(), tprim_.SizeRows(), uprim_.SizeRows(),
                               cprim_.SizeRows()});
  const auto longer = [row, stored](const NCDataMatrix<float>& rows, const NCDataVector<float>& newest) {
    return kalmia::WithRow(kalmia::FilledUpTo(stored, newest.Size(), rows), row, newest);
  };
  NCDataMatrix<float> wprim = longer(wprim_, component.w);
  NCDataMatrix<float> pprim = longer(pprim_, component.p);
  NCDataMatrix<float> tprim = longer(tprim_, component.t);
  NCDataMatrix<float> uprim = longer(uprim_, component.u);
  NCDataMatrix<float> cprim = longer(cprim_, component.c);
  wprim_.swap(wprim);
  pprim_.swap(pprim);
  tprim_.swap(tprim);
  uprim_.swap(uprim);
  cprim_.swap(cprim);
  components_ = row;
  iterations_ = component.rounds;
}

bool NCPLS::HasNewestComponent() const {
  return components_ >= 1 && components_ <= tprim_.SizeRows() && components_ <= pprim_.SizeRows() &&
         components_ <= cprim_.SizeRows();
}

void NCPLS::CalculateResiduals() {
  if (!HasNewestComponent()) return;
  const NCDataVector<float> t = tprim_[components_], p = pprim_[components_];
  yResiduals_.ForceUnlink();  // memory for Y is taken before X changes
  xResiduals_.AddVprimV(t, p, -1.0F);
  yResiduals_.AddVprimV(t, cprim_[components_], -1.0F);
  // |X - t p'| is at most |X| + |t| |p|, whichever t and p, and however often they are taken out.
  xLengthAtMost_ = (xLengthAtMost_ + Length(t) * Length(p)) * kRoomForRounding;
}

NCDataMatrix<float> NCPLS::GetWStarPrim(const NCDataMatrix<float>& W, const NCDataMatrix<float>& P) {
  if (P.SizeRows() < W.SizeRows() - 1) RefuseComponents();
  NCDataMatrix<float> wStar = W;
  for (int a = 2; a <= W.SizeRows(); ++a) {
    NCDataVector<float> row = W[a];
    for (int j = 1; j < a; ++j) row.TransformTo_Sub_d_x_Vt(static_cast<double>(P[j] * W[a]), wStar[j]);
    wStar.SetRow(a, Recounted(row));
  }
  return wStar;
}

NCDataMatrix<float> NCPLS::GetWStarPrim() const { return GetWStarPrim(wprim_, pprim_); }

NCDataMatrix<float> NCPLS::GetRegressionCoefficients(const NCDataMatrix<float>& P, const NCDataMatrix<float>& W,
                                                     const NCDataMatrix<float>& C) {
  if (W.SizeRows() != C.SizeRows()) RefuseComponents();
  return GetWStarPrim(W, P).MatrixMultiply(C, /*transposeThis=*/true, /*transposeOther=*/false);
}

NCDataMatrix<float> NCPLS::GetRegressionCoefficients(int components) const {
  if (components == -1 || components == pprim_.SizeRows()) return GetRegressionCoefficients(pprim_, wprim_, cprim_);
  return GetRegressionCoefficients(pprim_, RowsUpTo(wprim_, components), RowsUpTo(cprim_, components));
}

void NCPLS::FlipComponent(int component) {
  for (NCDataMatrix<float>* rows : {&cprim_, &pprim_, &wprim_, &uprim_, &tprim_})
    if (component >= 1 && component <= rows->SizeRows()) rows->MultiplyRow(component, -1.0F);
}

void NCPLS::ShuffleYResiduals(int* order) {
  if (components_ >= 1) throw NCError(LanguageString::Get(10162));
  NCDataMatrix<float> shuffled = kalmia::EmptyMatrix(yResiduals_.SizeColumns(), yResiduals_.SizeRows());
  for (int i = 1; i <= yResiduals_.SizeRows(); ++i) shuffled.push_back(Recounted(yResiduals_[order[i]]));
  yResiduals_.swap(shuffled);
}
