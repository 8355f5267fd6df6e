#include "kalmia/analysis/validation/internal/RoundX.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kColumnsOfAPart = 64;
constexpr std::size_t kColumnsAtOnce = 512;       ///< whose least and largest cells stay in the cache
constexpr std::size_t kCellsForThreads = 100000;  ///< below which one thread is faster than several

/// A column in single precision.
struct SingleColumn {
  double shift = 0.0;
  std::vector<float> cells;
  bool isConstant = false;
};

SingleColumn Single(const std::vector<double>& cells, bool isCentred) {
  SingleColumn column;
  int ofWholeTable = 0;  // moved cells, of which the fit of all rows has told
  column.shift = isCentred ? ShiftOf(cells) : 0.0;
  column.cells = SingleCells(cells, column.shift, &ofWholeTable);
  column.isConstant = IsConstant(column.cells);
  return column;
}

}  // namespace

RoundX::RoundX(const std::vector<std::string>& names, const RealColumns& fitted, NCScale::Scaling scaling,
               WorkProgress* progress) {
  std::vector<SingleColumn> columns(fitted.size());
  const auto take = [&](std::size_t part) {
    const std::size_t end = std::min(fitted.size(), (part + 1) * kColumnsOfAPart);
    for (std::size_t k = part * kColumnsOfAPart; k < end; ++k) columns[k] = Single(fitted[k], Centres(scaling));
  };
  const std::size_t parts = (fitted.size() + kColumnsOfAPart - 1) / kColumnsOfAPart;
  if (fitted.size() * static_cast<std::size_t>(RowCount(fitted)) >= kCellsForThreads) {
    ShareWork(parts, [progress](double) { progress->Ask(); }, take);
  } else {
    for (std::size_t part = 0; part < parts; ++part) take(part);
  }
  std::vector<std::vector<float>> taken;
  std::vector<std::string> takenNames;
  for (std::size_t k = 0; k < fitted.size(); ++k) {
    if (columns[k].isConstant) {
      withoutSpread_.push_back(names[k]);
      continue;
    }
    places_.push_back(k);
    takenNames.push_back(names[k]);
    shifts_.push_back(columns[k].shift);
    taken.push_back(std::move(columns[k].cells));
  }
  if (Empty()) return;
  progress->Ask();
  fitted_ = MatrixOf(taken, RowCount(fitted));
  progress->Ask();
  scaling_ = ScaleColumns(scaling, takenNames, &fitted_, shifts_);
}

RoundX::RoundX(const std::vector<std::string>& names, NCDataMatrix<float> plain, NCScale::Scaling scaling)
    : places_(names.size()), shifts_(names.size(), 0.0), fitted_(std::move(plain)) {
  std::iota(places_.begin(), places_.end(), std::size_t{0});
  scaling_ = ScaleColumns(scaling, names, &fitted_, shifts_);
}

NCDataMatrix<float> RoundX::Shifted(const RealColumns& rows) const {
  std::vector<std::vector<float>> taken;
  int ofWholeTable = 0;
  for (std::size_t k = 0; k < places_.size(); ++k) {
    taken.push_back(SingleCells(rows[places_[k]], shifts_[k], &ofWholeTable));
  }
  return MatrixOf(taken, RowCount(rows));
}

NCDataMatrix<float> RoundX::Scaled(const RealColumns& rows) const { return Scaled(Shifted(rows)); }

NCDataMatrix<float> RoundX::Scaled(NCDataMatrix<float> shifted) const {
  ApplyScale(scaling_, &shifted);
  return shifted;
}

bool ArePlain(const NCDataMatrix<float>& rows, NCScale::Scaling scaling) {
  const auto columns = static_cast<std::size_t>(rows.SizeColumns());
  std::vector<float> least(columns, std::numeric_limits<float>::infinity());
  std::vector<float> largest(columns, -std::numeric_limits<float>::infinity());
  for (std::size_t begin = 0; begin < columns; begin += kColumnsAtOnce) {
    const std::size_t end = std::min(columns, begin + kColumnsAtOnce);
    for (int i = 1; i <= rows.SizeRows(); ++i) {
      const float* cells = rows[i].begin();
      for (std::size_t k = begin; k < end; ++k) {
        const float cell = cells[k];
        const bool isPresent = cell != kMissingCell<float>;
        least[k] = isPresent && cell < least[k] ? cell : least[k];
        largest[k] = isPresent && cell > largest[k] ? cell : largest[k];
      }
    }
  }
  const double ratio = LargestRatioWithoutShift(rows.SizeRows());
  for (std::size_t k = 0; k < columns; ++k) {
    const double min = least[k], max = largest[k];
    if (!(min < max)) return false;
    if (Centres(scaling) && !(std::max(std::fabs(min), std::fabs(max)) < ratio * (max - min))) return false;
  }
  return true;
}

double MeanOf(const std::vector<double>& cells) {
  double sum = 0.0;
  int present = 0;
  for (const double cell : cells) {
    if (std::isnan(cell)) continue;
    sum += cell;
    ++present;
  }
  return present > 0 ? sum / present : kNotANumber;
}

int RowCount(const RealColumns& columns) {
  return columns.empty() ? 0 : static_cast<int>(columns.front().size());
}

}  // namespace kalmia::analysis
