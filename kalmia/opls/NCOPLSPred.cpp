#include "kalmia/opls/NCOPLSPred.h"

#include <utility>

#include "kalmia/kernels/passes/SequentialScores.h"
#include "kalmia/opls/internal/OPLSBlocks.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/support/NCError.h"

namespace {

/// The variables of Y, of a model whose matrices belong to X. A model has no blocks before its first component.
int SizeYColumns(const NCDataMatrix<float>& X, const kalmia::OPLSBlocks& blocks) {
  if (blocks.W->empty() || blocks.P->empty() || blocks.C->empty())
    throw NCError("OPLS prediction: the model has no components.");
  const int yColumns = blocks.C->front().SizeColumns();
  const int xColumns = X.SizeRows() > 0 ? X.SizeColumns() : blocks.W->front().SizeColumns();
  kalmia::RequireWholeBlocks(blocks, xColumns, yColumns);
  return yColumns;
}

}  // namespace

NCOPLSPred::NCOPLSPred(const NCDataMatrix<float>* X, NCOPLS* model)
    : NCOPLSPred(X, model->GetWMatrices(), model->GetPMatrices(), model->GetCMatrices(), model->GetWOprim(),
                 model->GetPOprim(), model->GetCOprim()) {}

NCOPLSPred::NCOPLSPred(const NCDataMatrix<float>* X, const std::vector<NCDataMatrix<float>>* W,
                       const std::vector<NCDataMatrix<float>>* P, const std::vector<NCDataMatrix<float>>* C,
                       const NCDataMatrix<float>* WO, const NCDataMatrix<float>* PO, const NCDataMatrix<float>* CO)
    : xOrthoResiduals_(kalmia::DeepCopy(*X)),
      yPred_(NCDataMatrix<float>(X->SizeRows(), SizeYColumns(*X, {W, P, C, WO, PO, CO}), 0.0F)),
      wMatrices_(kalmia::DeepCopy(*W)),
      pMatrices_(kalmia::DeepCopy(*P)),
      cMatrices_(kalmia::DeepCopy(*C)),
      woprim_(kalmia::DeepCopy(*WO)),
      poprim_(kalmia::DeepCopy(*PO)),
      coprim_(kalmia::DeepCopy(*CO)) {
  Finalise();
}

NCOPLSPred::NCOPLSPred(const NCOPLSPred& other) = default;

NCOPLSPred& NCOPLSPred::operator=(const NCOPLSPred& other) {
  if (this == &other) return *this;
  NCOPLSPred copy(other);
  for (const auto member : {&NCOPLSPred::xOrthoResiduals_, &NCOPLSPred::yPred_, &NCOPLSPred::woprim_,
                            &NCOPLSPred::poprim_, &NCOPLSPred::coprim_, &NCOPLSPred::tPred_, &NCOPLSPred::toPred_})
    (this->*member).swap(copy.*member);
  wMatrices_.swap(copy.wMatrices_);
  pMatrices_.swap(copy.pMatrices_);
  cMatrices_.swap(copy.cMatrices_);
  return *this;
}

NCOPLSPred::~NCOPLSPred() = default;

/// Adds the predictive part, as the newest block has it, to what stands in yPred_.
void NCOPLSPred::Finalise() {
  const NCDataMatrix<float>& C = cMatrices_[Block()];
  tPred_ = kalmia::SequentialScores(xOrthoResiduals_, wMatrices_[Block()], pMatrices_[Block()]);
  for (int a = 1; a <= tPred_.SizeRows(); ++a) yPred_.AddVprimV(tPred_[a], C[a], 1.0F);
}

void NCOPLSPred::CalcNextComponent() {
  const int next = toPred_.SizeRows() + 1;
  const NCDataMatrix<float>& W = wMatrices_[Block()];
  const NCDataMatrix<float> along = kalmia::WithRow(W, W.SizeRows() + 1, woprim_[next]);
  toPred_.InsertRow(next, kalmia::SequentialScores(xOrthoResiduals_, along, W).back());
  xOrthoResiduals_.AddVprimV(toPred_[next], poprim_[next], -1.0F);
  yPred_.SetAllValues(0.0F);
  for (int o = 1; o <= next; ++o) yPred_.AddVprimV(toPred_[o], coprim_[o], 1.0F);
  Finalise();
}
