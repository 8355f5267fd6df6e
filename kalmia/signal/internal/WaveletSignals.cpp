#include "kalmia/signal/internal/WaveletSignals.h"

#include <memory>
#include <vector>

#include "kalmia/signal/internal/OutOrNew.h"

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

struct CollectedTrends {
  CollectedTrends(const Trends& trends, int signals)
      : means(HasMeans(trends), trends.means, signals), slopes(HasSlopes(trends), trends.slopes, signals) {}
  void HandOver() {
    means.HandOver();
    slopes.HandOver();
  }

  Collected means, slopes;
};

bool Fits(bool wanted, const Vector* given, int signals) { return !wanted || !given || given->Size() == signals; }

bool TrendsFit(const Trends& trends, int signals) {
  return Fits(HasMeans(trends), trends.means, signals) && Fits(HasSlopes(trends), trends.slopes, signals);
}

bool EveryRowHasPresentCell(const Matrix& in) {
  for (int r = 1; r <= in.SizeRows(); ++r)
    if (!HasPresentCell(&in[r])) return false;
  return true;
}

/// A table of the right size takes the rows one by one, be it the input itself; any other gives way to a new one.
void FillRows(const Matrix& in, int length, const SignalTransform& transform, CollectedTrends& trends, Matrix& out) {
  const int signals = in.SizeRows();
  const bool fits = out.SizeRows() == signals && out.SizeColumns() == length;
  Matrix fresh(0, length);
  if (!fits) fresh.ReserveRows(signals);
  for (int r = 1; r <= signals; ++r) {
    long double mean = 0, slope = 0;
    Vector coefficients;
    transform(in[r], mean, slope, coefficients);
    fits ? out.SetRow(r, coefficients) : static_cast<void>(fresh.push_back(coefficients));
    trends.means.Set(r, mean);
    trends.slopes.Set(r, slope);
  }
  if (!fits) out = fresh;
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

NCDataMatrix<float>* TransformRows(const NCDataMatrix<float>* in, int length, const Trends& trends,
                                   NCDataMatrix<float>* out, const SignalTransform& transform) {
  if (!in || !TrendsFit(trends, in->SizeRows()) || !EveryRowHasPresentCell(*in)) return nullptr;
  CollectedTrends collected(trends, in->SizeRows());
  OutOrNew<Matrix> result(out);
  FillRows(*in, length, transform, collected, *result);
  collected.HandOver();
  return result.HandOver();
}

/// Through transposed tables, which are walked in squares: column by column every cell would cost a line of the cache.
NCDataMatrix<float>* TransformColumns(const NCDataMatrix<float>* in, int length, const Trends& trends,
                                      NCDataMatrix<float>* out, const SignalTransform& transform) {
  if (!in || !TrendsFit(trends, in->SizeColumns())) return nullptr;
  Matrix turned, rows;
  turned.CopyContent(*in);  // not a share: others may read the table at the same time
  turned.Transpose();
  if (!EveryRowHasPresentCell(turned)) return nullptr;
  CollectedTrends collected(trends, turned.SizeRows());
  OutOrNew<Matrix> result(out);
  FillRows(turned, length, transform, collected, rows);
  turned.Clear();  // its memory may be wanted
  rows.Transpose();
  *result = rows;
  collected.HandOver();
  return result.HandOver();
}

}  // namespace kalmia
