#include "kalmia/o2pls/NCO2PLS.h"

#include <cstddef>
#include <utility>

#include "kalmia/o2pls/internal/ClearAll.h"

// The model as a value: made, copied, cleared, asked for its matrices.

using kalmia::DeepCopy;

const std::array<NCO2PLS::Result NCO2PLS::*, 18> NCO2PLS::kResults = {
    &NCO2PLS::t_,  &NCO2PLS::u_,  &NCO2PLS::p_,  &NCO2PLS::w_,      &NCO2PLS::c_,       &NCO2PLS::q_,
    &NCO2PLS::to_, &NCO2PLS::wo_, &NCO2PLS::po_, &NCO2PLS::uo_,     &NCO2PLS::co_,      &NCO2PLS::qo_,
    &NCO2PLS::r_,  &NCO2PLS::s_,  &NCO2PLS::lambda_, &NCO2PLS::xLambda_, &NCO2PLS::xResiduals_, &NCO2PLS::yResiduals_};

NCO2PLS::NCO2PLS() = default;

NCO2PLS::NCO2PLS(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, bool checkDimensions, int maxIterations)
    : x_(X),
      y_(Y),
      maxIterations_(maxIterations),
      ssX_(static_cast<float>(X.GetSS())),
      ssY_(static_cast<float>(Y.GetSS())),
      checkDimensions_(checkDimensions) {
  if (X.SizeRows() != Y.SizeRows())
    throw NCError("Internal error in NCO2PLS\nX and Y matrices have different number of rows.");
  if (X.GetNumMisVal() > 0 || Y.GetNumMisVal() > 0)
    throw NCError("Internal error in NCO2PLS\nThe X and Y matrices can not contain missing values.");
}

NCO2PLS::NCO2PLS(const NCO2PLS& other) = default;

NCO2PLS::NCO2PLS(NCO2PLS&& other) : NCO2PLS() { swap(other); }

NCO2PLS NCO2PLS::SharingBlocks() const {
  NCO2PLS copy;
  copy.x_ = x_.AsValue();
  copy.y_ = y_.AsValue();
  for (const auto result : kResults) copy.*result = this->*result;
  copy.maxIterations_ = maxIterations_;
  copy.ssX_ = ssX_;
  copy.ssY_ = ssY_;
  copy.checkDimensions_ = checkDimensions_;
  return copy;
}

NCO2PLS& NCO2PLS::operator=(const NCO2PLS& other) {
  NCO2PLS(other).swap(*this);
  return *this;
}

void NCO2PLS::swap(NCO2PLS& other) {
  x_.swap(other.x_);
  y_.swap(other.y_);
  for (const auto result : kResults) (this->*result).swap(other.*result);
  std::swap(maxIterations_, other.maxIterations_);
  std::swap(ssX_, other.ssX_);
  std::swap(ssY_, other.ssY_);
  std::swap(checkDimensions_, other.checkDimensions_);
}

void NCO2PLS::UnFit() {
  std::array<NCDataMatrix<float>*, kResults.size()> results;
  for (std::size_t i = 0; i < results.size(); ++i) results[i] = &(this->*kResults[i]);
  kalmia::ClearAll(results);
}

void NCO2PLS::EndFit() { kalmia::ClearAll(std::array<NCDataMatrix<float>*, 2>{&xResiduals_, &yResiduals_}); }

NCDataMatrix<float> NCO2PLS::GetT() const { return DeepCopy(t_); }
NCDataMatrix<float> NCO2PLS::GetU() const { return DeepCopy(u_); }
NCDataMatrix<float> NCO2PLS::GetP() const { return DeepCopy(p_); }
NCDataMatrix<float> NCO2PLS::GetW() const { return DeepCopy(w_); }
NCDataMatrix<float> NCO2PLS::GetC() const { return DeepCopy(c_); }
NCDataMatrix<float> NCO2PLS::GetQ() const { return DeepCopy(q_); }
NCDataMatrix<float> NCO2PLS::GetTo() const { return DeepCopy(to_); }
NCDataMatrix<float> NCO2PLS::GetUo() const { return DeepCopy(uo_); }
NCDataMatrix<float> NCO2PLS::GetPo() const { return DeepCopy(po_); }
NCDataMatrix<float> NCO2PLS::GetWo() const { return DeepCopy(wo_); }
NCDataMatrix<float> NCO2PLS::GetCo() const { return DeepCopy(co_); }
NCDataMatrix<float> NCO2PLS::GetQo() const { return DeepCopy(qo_); }
NCDataMatrix<float> NCO2PLS::GetLambda() const { return DeepCopy(lambda_); }
NCDataMatrix<float> NCO2PLS::GetXLambda() const { return DeepCopy(xLambda_); }
NCDataMatrix<float> NCO2PLS::GetR() const { return DeepCopy(r_); }
NCDataMatrix<float> NCO2PLS::GetS() const { return DeepCopy(s_); }
