#include "kalmia/o2pls/internal/OrthogonalSearch.h"

#include <cstddef>

#include "kalmia/o2pls/SignificanceE.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/NCError.h"

namespace kalmia {

namespace {

double SquaresOf(const NCDataMatrix<float>& table) { return static_cast<double>(table.GetSS()); }

/// Takes the models of the first rounds back to where they were.
void Restore(std::vector<NCO2PLS>* backup, std::vector<O2PLSRound>* rounds) {
  for (std::size_t g = 0; g < backup->size(); ++g) (*rounds)[g].model.swap((*backup)[g]);
}

/// One more orthogonal component in the model; false where it cannot be computed.
bool AddOrthogonalComponent(bool xSide, NCProgress* progress, NCO2PLS* model) try {
  model->NextOrthogonalComponent(xSide, model->SizePredComps(), progress);
  model->CalculatePredictiveComps(model->SizePredComps(), progress);
  model->Finalise();
  model->EndFit();
  return true;
} catch (const NCError&) {
  return false;
}

}  // namespace

void OrthogonalSearch::Run(int* found, NCDataVector<float>* q2Series, NCIntegralVector<int, -99>* significance) try {
  *found = 0;
  if (most < 1) return;
  bar_.SetRange(0.0F, static_cast<float>(rounds_.size() - 1));
  while (*found < most && TryOneMore(q2Series, significance)) ++*found;
} catch (const CString& text) {
  throw NCError(text);
} catch (const NCError&) {
  throw NCError(
      "Cross validation could not be computed.\nThis can be due to low variance/missing values in the X and/or Y "
      "matrices.");
}

bool OrthogonalSearch::TryOneMore(NCDataVector<float>* q2Series, NCIntegralVector<int, -99>* significance) {
  double press = 0.0;
  std::vector<NCO2PLS> backup;
  backup.reserve(rounds_.size());
  for (O2PLSRound& round : rounds_) {
    backup.push_back(round.model.SharingBlocks());
    if (!AddOrthogonalComponent(xSide, ofModels_, &round.model)) {
      Restore(&backup, &rounds_);
      return false;
    }
    press += SquaresOf(xSide ? ErrorsOfY(round) : ErrorsOfX(round));
    if (!bar_.GoesOn()) throw CString("Computations aborted");
    bar_.SetValue(static_cast<float>(backup.size()));
  }
  const double newQ2 = 1.0 - press / static_cast<double>(totalSS);
  const double gain = newQ2 - q2;
  q2Series->push_back(static_cast<float>(newQ2));
  significance->push_back(gain > leastGain ? SignificanceE::R1 : SignificanceE::NS);
  if (isSearch && gain < leastGain) {  // a gain that equals the limit is kept, though not significant
    Restore(&backup, &rounds_);
    return false;
  }
  q2 = newQ2;
  return true;
}

}  // namespace kalmia
