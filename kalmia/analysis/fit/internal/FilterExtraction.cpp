#include "kalmia/analysis/fit/internal/FilterExtraction.h"

#include <algorithm>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

/// A component of zeros, or of no numbers, takes nothing out.
bool HasScores(const NCDataVector<float>& scores, const NCDataMatrix<float>& x) {
  return scores.GetNumMisVal() < scores.Size() && scores.GetSS() > kExhausted * x.GetSS();
}

/// One more component; throws NCError where there is none.
void AddComponent(const NCDataMatrix<float>& x, NCYOrthogonalPLS* filter, NCProgress* bar) {
  filter->NextComponent(bar);
  if (HasScores((*filter->GetTprim())[filter->GetComponents()], x)) return;
  filter->RemoveComponent();
  throw NCError(kNothingLeft);
}

}  // namespace

FilterComponents ExtractFilter(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int components,
                               NCProgress* progress) {
  WorkProgress work(progress);
  FilterComponents fit;
  double removed = 0.0;
  try {
    fit.filter = std::make_unique<NCYOrthogonalPLS>(&x, &y, kMaxIterations, /*maxPLSComponents=*/0);
    for (int a = 1; a <= components; ++a) {
      work.Begin(ComponentText(a), static_cast<double>(a - 1) / components);
      AddComponent(x, fit.filter.get(), work.SilentBar());
      FilterComponentRecord record;
      record.r2xCum = DescribedShare(x, *fit.filter->GetXResiduals());
      record.r2x = record.r2xCum - removed;
      record.angle = fit.filter->GetYAngle(&(*fit.filter->GetTprim())[a]);
      removed = record.r2xCum;
      fit.components.push_back(record);
    }
  } catch (const NCError& error) {
    fit.endedEarly = OneLine(static_cast<const char*>(error.GetMessage()));
    if (fit.components.empty()) {
      throw BadData("no component can be computed: " + fit.endedEarly);
    }
  }
  return fit;
}

}  // namespace kalmia::analysis
