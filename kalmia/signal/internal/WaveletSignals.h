#pragma once

#include <functional>

#include "kalmia/signal/Wavelet.h"

namespace kalmia {

bool HasPresentCell(const NCDataVector<float>* signal);
bool IsComplete(const Wavelet::WaveletFilters& filters);  ///< both filters are there

/// Column c of a table that others may read at the same time, which rules out GetColumn: it takes the result target.
NCDataVector<float> ColumnOf(const NCDataMatrix<float>& table, int c);

/// Transforms one signal; trend numbers that the mode does not ask for stay unwritten.
using SignalTransform = std::function<void(const NCDataVector<float>& signal, long double& mean, long double& slope,
                                           NCDataVector<float>& result)>;

/// Where the trends of the signals of a table go: null stands for a new vector, where the mode asks for one.
struct Trends {
  Wavelet::DetrendMode mode;
  NCDataVector<float>*& means;
  NCDataVector<float>*& slopes;
};

/// Every row of `in` transformed, `length` cells each, in `out` or, if that is null, in a new matrix. Null, and nothing
/// is written, if `in` is null, a row has no present cell, or a vector of trends has a wrong length.
NCDataMatrix<float>* TransformRows(const NCDataMatrix<float>* in, int length, const Trends& trends,
                                   NCDataMatrix<float>* out, const SignalTransform& transform);
/// The same with the columns.
NCDataMatrix<float>* TransformColumns(const NCDataMatrix<float>* in, int length, const Trends& trends,
                                      NCDataMatrix<float>* out, const SignalTransform& transform);

}  // namespace kalmia
