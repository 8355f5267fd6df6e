#include "kalmia/signal/WaveletSignals.h"

#include <memory>
#include <vector>

#include "kalmia/signal/OutOrNew.h"

namespace kalmia {
namespace {

using Vector = NCDataVector<float>;
using Matrix = NCDataMatrix<float>;

/// A vector that collects a number per signal: the caller's, or a new one that becomes the caller's at the end.
class Collected {
 public:
  Collected(bool wanted, Vector*& callers, int signals)
      : callers_(callers),
        made_(wanted && !callers ? std::make_unique<Vector>(signals) : nullptr),
        cells_(!wanted ? nullptr : callers ? callers : made_.get()) {}

  void Set(int signal, long double value) {
    if (cells_) (*cells_)(signal, static_cast<float>(value));
  }
  void HandOver() {
    if (made_) callers_ = made_.release();
  }

 private:
  Vector*& callers_;
  std::unique_ptr<Vector> made_;
  Vector* cells_;
};

bool HasMeans(const Trends& trends) { return trends.mode != Wavelet::DetrendNone; }
bool HasSlopes(const Trends& trends) { return trends.mode == Wavelet::DetrendLinear; }

bool Fits(bool wanted, const Vector* given, int signals) { return !wanted || !given || given->Size() == signals; }

bool EveryRowHasPresentCell(const Matrix& in) {
  for (int r = 1; r <= in.SizeRows(); ++r)
    if (!HasPresentCell(&in[r])) return false;
  return true;
}

}  // namespace

bool HasPresentCell(const NCDataVector<float>* signal) { return signal && signal->Size() > signal->GetNumMisVal(); }

bool IsComplete(const Wavelet::WaveletFilters& filters) { return filters.highPass && filters.lowPass; }

NCDataVector<float> ColumnOf(const NCDataMatrix<float>& table, int c) {
  std::vector<float> cells;
  cells.reserve(static_cast<std::size_t>(table.SizeRows()));
  for (const Vector& row : table) cells.push_back(row[c]);
  Vector column;
  column.CopyZeroBasedVector(cells.data(), table.SizeRows());
  return column;
}

/// A table of the right size takes the rows one by one, be it the input itself; any other gives way to a new one.
NCDataMatrix<float>* TransformRows(const NCDataMatrix<float>* in, int length, const Trends& trends,
                                   NCDataMatrix<float>* out, const SignalTransform& transform) {
  if (!in) return nullptr;
  const int signals = in->SizeRows();
  if (!Fits(HasMeans(trends), trends.means, signals) || !Fits(HasSlopes(trends), trends.slopes, signals) ||
      !EveryRowHasPresentCell(*in))
    return nullptr;

  Collected means(HasMeans(trends), trends.means, signals), slopes(HasSlopes(trends), trends.slopes, signals);
  const bool fits = out && out->SizeRows() == signals && out->SizeColumns() == length;
  Matrix fresh(0, length);
  if (!fits) fresh.ReserveRows(signals);
  for (int r = 1; r <= signals; ++r) {
    long double mean = 0, slope = 0;
    Vector coefficients;
    transform((*in)[r], mean, slope, coefficients);
    fits ? out->SetRow(r, coefficients) : static_cast<void>(fresh.push_back(coefficients));
    means.Set(r, mean);
    slopes.Set(r, slope);
  }
  OutOrNew<Matrix> result(out);
  if (!fits) *result = fresh;
  means.HandOver();
  slopes.HandOver();
  return result.HandOver();
}

/// Through transposed tables, which are walked in squares: column by column every cell would cost a line of the cache.
NCDataMatrix<float>* TransformColumns(const NCDataMatrix<float>* in, int length, const Trends& trends,
                                      NCDataMatrix<float>* out, const SignalTransform& transform) {
  if (!in) return nullptr;
  auto turned = std::make_unique<Matrix>();
  turned->CopyContent(*in);  // not a share: others may read the table at the same time
  turned->Transpose();
  auto result = std::make_unique<Matrix>();
  if (!TransformRows(turned.get(), length, trends, result.get(), transform)) return nullptr;
  turned.reset();
  result->Transpose();
  if (!out) return result.release();
  *out = *result;
  return out;
}

}  // namespace kalmia
