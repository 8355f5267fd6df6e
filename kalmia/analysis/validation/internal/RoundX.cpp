#include "kalmia/analysis/validation/internal/RoundX.h"

#include <cmath>
#include <utility>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/table/SingleCells.h"

namespace kalmia::analysis {

RoundX::RoundX(const std::vector<std::string>& names, const RealColumns& fitted, NCScale::Scaling scaling) {
  std::vector<std::vector<float>> taken;
  std::vector<std::string> takenNames;
  int ofWholeTable = 0;  // moved cells, of which the fit of all rows has told
  for (std::size_t k = 0; k < fitted.size(); ++k) {
    const double shift = Centres(scaling) ? ShiftOf(fitted[k]) : 0.0;
    std::vector<float> cells = SingleCells(fitted[k], shift, &ofWholeTable);
    if (IsConstant(cells)) {
      withoutSpread_.push_back(names[k]);
      continue;
    }
    places_.push_back(k);
    takenNames.push_back(names[k]);
    shifts_.push_back(shift);
    taken.push_back(std::move(cells));
  }
  if (Empty()) return;
  fitted_ = MatrixOf(taken, RowCount(fitted));
  scaling_ = ScaleColumns(scaling, takenNames, &fitted_, shifts_);
}

NCDataMatrix<float> RoundX::Shifted(const RealColumns& rows) const {
  std::vector<std::vector<float>> taken;
  int ofWholeTable = 0;
  for (std::size_t k = 0; k < places_.size(); ++k) {
    taken.push_back(SingleCells(rows[places_[k]], shifts_[k], &ofWholeTable));
  }
  return MatrixOf(taken, RowCount(rows));
}

NCDataMatrix<float> RoundX::Scaled(const RealColumns& rows) const {
  NCDataMatrix<float> single = Shifted(rows);
  ApplyScale(scaling_, &single);
  return single;
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
