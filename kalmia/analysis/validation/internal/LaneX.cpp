#include "kalmia/analysis/validation/internal/LaneX.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/table/internal/SingleCells.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kColumnsOfAPart = 256;
constexpr std::size_t kRowsOfAPart = 16;
constexpr std::size_t kCellsForThreads = 100000;  ///< below which one thread is faster than several
constexpr double kMostDeviations = 1000;          ///< of a mean from 0; beyond it cells of other rows lose digits
// Factors beyond these say nothing about the data any more, as in NCScale.
constexpr double kLargestFactor = 1e35;
constexpr double kSmallestFactor = 1e-35;

std::size_t PartsOf(std::size_t positions, std::size_t ofPart) { return (positions + ofPart - 1) / ofPart; }

}  // namespace

LaneNumbers PartSums::Total(std::size_t sum) const {
  LaneNumbers total{};
  for (std::size_t begin = sum * kLanes; begin < cells_.size(); begin += sums_ * kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) total[l] += cells_[begin + l];
  }
  return total;
}

void AddLaneDots(const double* a, const double* b, std::size_t begin, std::size_t end, double* sums) {
  for (std::size_t i = begin * kLanes; i < end * kLanes; i += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) sums[l] += a[i + l] * b[i + l];
  }
}

LaneX::LaneX(std::vector<const float*> rows, std::size_t columns,
             const std::vector<std::vector<std::size_t>>& fittedRows, NCScale::Scaling scaling,
             WorkProgress* progress)
    : rows_(std::move(rows)),
      columns_(columns),
      progress_(progress),
      mask_(rows_.size() * kLanes, 0.0),
      centres_(columns * kLanes, 0.0),
      factors_(columns * kLanes, 0.0) {
  for (std::size_t l = 0; l < fittedRows.size(); ++l) {
    for (const std::size_t row : fittedRows[l]) mask_[row * kLanes + l] = 1.0;
    fittedRows_[l] = static_cast<double>(fittedRows[l].size());
  }
  PartSums sums(ColumnParts(), 2);
  ForColumns([&](const LanePart& part) { Learn(part, scaling, sums.Of(part, 0), sums.Of(part, 1)); });
  sumsOfSquares_ = sums.Total(0);
  const LaneNumbers unsound = sums.Total(1);
  for (std::size_t l = 0; l < kLanes; ++l) {
    isSound_[l] = fittedRows_[l] > 1.0 && unsound[l] == 0.0 && sumsOfSquares_[l] > 0.0;
  }
}

void LaneX::Learn(const LanePart& columns, NCScale::Scaling scaling, double* sumsOfSquares, double* unsound) {
  const std::size_t count = columns.end - columns.begin;
  std::vector<const float*> rows;
  for (const float* row : rows_) rows.push_back(row + columns.begin);
  const auto rowCount = static_cast<int>(rows.size()), n = static_cast<int>(count);
  std::vector<double> means(count * kLanes, 0.0), squares(count * kLanes, 0.0);
  AddProductsSideBySide(rows.data(), rowCount, mask_.data(), n, means.data());
  for (std::size_t c = 0; c < means.size(); ++c) {
    const double mean = fittedRows_[c % kLanes] > 0.0 ? means[c] / fittedRows_[c % kLanes] : 0.0;
    means[c] = static_cast<double>(static_cast<float>(mean));  // as NCScale has centres
  }
  AddSquaresSideBySide(rows.data(), rowCount, mask_.data(), means.data(), n, squares.data());
  for (std::size_t k = 0; k < count; ++k) {
    for (std::size_t l = 0; l < kLanes; ++l) {
      const std::size_t c = k * kLanes + l, place = columns.begin * kLanes + c;
      if (squares[c] == 0.0) continue;  // all cells are the mean
      centres_[place] = means[c];
      const double factor = LearnColumn(columns.begin + k, l, squares[c], scaling);
      if (std::isnan(factor)) {
        ++unsound[l];
        continue;
      }
      factors_[place] = factor;
      if (!Centres(scaling)) {
        centres_[place] = 0.0;
        squares[c] += fittedRows_[l] * means[c] * means[c];
      }
      sumsOfSquares[l] += factor * factor * squares[c];
    }
  }
}

double LaneX::LearnColumn(std::size_t k, std::size_t lane, double squares, NCScale::Scaling scaling) const {
  if (fittedRows_[lane] < 2.0 || !std::isfinite(squares)) return kNotANumber;
  if (!Centres(scaling)) return 1.0;
  const double deviation = std::sqrt(squares / (fittedRows_[lane] - 1.0));
  const double centre = Centre(k, lane);
  if (std::fabs(centre) > kMostDeviations * deviation || IsMissing(static_cast<float>(centre))) return kNotANumber;
  if (scaling == NCScale::ScalingCentre) return 1.0;
  const double factor = 1.0 / (scaling == NCScale::ScalingPareto ? std::sqrt(deviation) : deviation);
  if (!(factor < kLargestFactor && factor > kSmallestFactor)) return kNotANumber;
  return static_cast<double>(static_cast<float>(factor));
}

double LaneX::SumOfSquares(std::size_t row, std::size_t lane) const {
  double sum = 0.0;
  for (std::size_t k = 0; k < columns_; ++k) {
    const double cell = (rows_[row][k] - Centre(k, lane)) * Factor(k, lane);
    sum += cell * cell;
  }
  return sum;
}

void LaneX::MultiplyColumns(const LanePart& columns, const std::vector<double>& t, const LaneNumbers& sums,
                            double* products) const {
  const std::size_t begin = columns.begin * kLanes, end = columns.end * kLanes;
  std::fill(products + begin, products + end, 0.0);
  std::vector<const float*> rows;
  for (const float* row : rows_) rows.push_back(row + columns.begin);
  AddProductsSideBySide(rows.data(), static_cast<int>(rows.size()), t.data(),
                        static_cast<int>(columns.end - columns.begin), products + begin);
  for (std::size_t c = begin; c < end; c += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) {
      products[c + l] = (products[c + l] - centres_[c + l] * sums[l]) * factors_[c + l];
    }
  }
}

void LaneX::Prepare(const LanePart& columns, const std::vector<double>& v, std::vector<double>* prepared,
                    double* offset) const {
  for (std::size_t c = columns.begin * kLanes; c < columns.end * kLanes; c += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) {
      const double cell = v[c + l] * factors_[c + l];
      (*prepared)[c + l] = cell;
      offset[l] += cell * centres_[c + l];
    }
  }
}

void LaneX::MultiplyRows(const LanePart& rows, const std::vector<double>& prepared, const LaneNumbers& offset,
                         double* products) const {
  DotsSideBySide(&rows_[rows.begin], static_cast<int>(rows.end - rows.begin), prepared.data(),
                 static_cast<int>(columns_), products + rows.begin * kLanes);
  for (std::size_t i = rows.begin * kLanes; i < rows.end * kLanes; i += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) products[i + l] -= offset[l];
  }
}

std::size_t LaneX::ColumnParts() const { return PartsOf(columns_, kColumnsOfAPart); }

void LaneX::ForColumns(const std::function<void(const LanePart&)>& work) const {
  ForParts(columns_, kColumnsOfAPart, work);
}

void LaneX::ForRows(const std::function<void(const LanePart&)>& work) const { ForParts(Rows(), kRowsOfAPart, work); }

void LaneX::ForParts(std::size_t positions, std::size_t ofPart,
                     const std::function<void(const LanePart&)>& work) const {
  const auto partOf = [&](std::size_t number) {
    return LanePart{number, number * ofPart, std::min(positions, (number + 1) * ofPart)};
  };
  const std::size_t parts = PartsOf(positions, ofPart);
  if (Rows() * columns_ >= kCellsForThreads && parts > 1) {
    ShareWork(parts, [this](double) { progress_->Ask(); }, [&](std::size_t number) { work(partOf(number)); });
    return;
  }
  for (std::size_t number = 0; number < parts; ++number) {
    progress_->Ask();
    work(partOf(number));
  }
}

}  // namespace kalmia::analysis
