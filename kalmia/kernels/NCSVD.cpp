#include "kalmia/kernels/NCSVD.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

using kalmia::kMissing;

template <class T>
NCSVD<T>::~NCSVD() {
  delete v_;
  delete w_;
  delete u_;
}

template <class T>
void NCSVD<T>::Sort() {
  if (sorted_ || status_ != StatusSuccess || w_ == nullptr) return;
  std::vector<int> order(static_cast<std::size_t>(w_->Size()));
  std::iota(order.begin(), order.end(), 1);
  std::stable_sort(order.begin(), order.end(), [this](int a, int b) { return (*w_)[a] > (*w_)[b]; });
  const NCIntegralVector<int, -99> indices(order.data(), static_cast<int>(order.size()));
  w_->Reduce(indices);
  u_->ReduceColumns(indices);
  v_->ReduceColumns(indices);
  sorted_ = true;
}

template <class T>
void NCSVD<T>::RemoveZeroSingularValues() {
  if (status_ != StatusSuccess || w_ == nullptr) return;
  Sort();
  const int size = w_->Size();
  int kept = size;
  while (kept > 0 && (*w_)[kept] == 0) --kept;
  w_->RemoveValues(kept + 1, size - kept);
  u_->RemoveColumns(kept + 1, size - kept);
  v_->RemoveColumns(kept + 1, size - kept);
}

template <class T>
NCDataMatrix<T>* NCSVD<T>::GetInverse(float maxCondition) {
  if (status_ != StatusSuccess || w_ == nullptr) return nullptr;
  Sort();
  if (maxCondition != kMissing) {
    RemoveZeroSingularValues();
    const int size = w_->Size();
    if (size == 0 || v_->SizeRows() != v_->SizeColumns()) return nullptr;
    if (static_cast<double>((*w_)[1]) / (*w_)[size] > maxCondition) return nullptr;
  }
  const int rows = v_->SizeRows(), columns = u_->SizeRows(), terms = w_->Size();
  auto inverse = std::make_unique<NCDataMatrix<T>>(rows, columns);
  std::vector<double> vOverW(static_cast<std::size_t>(terms) + 1);
  for (int i = 1; i <= rows; ++i) {
    const NCDataVector<T>& v = (*v_)[i];
    for (int k = 1; k <= terms; ++k) vOverW[k] = static_cast<double>(v[k]) / (*w_)[k];
    for (int j = 1; j <= columns; ++j) {
      const NCDataVector<T>& u = (*u_)[j];
      double sum = 0;
      for (int k = 1; k <= terms; ++k) sum += vOverW[k] * u[k];
      (*inverse)(i, j, static_cast<T>(sum));
    }
  }
  return inverse.release();
}

template class NCSVD<float>;
template class NCSVD<double>;
