#include "kalmia/analysis/validation/LeftOutErrors.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

using Repeats = std::vector<std::vector<RealMatrix>>;

double DeviationOf(const std::vector<double>& values) {
  if (values.size() < 2) return 0.0;
  // The mean of values alike need not be their value, by a rounding.
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  if (*least == *most) return 0.0;
  double sum = 0.0;
  for (const double value : values) sum += value;
  const double mean = sum / static_cast<double>(values.size());
  double squares = 0.0;
  for (const double value : values) squares += (value - mean) * (value - mean);
  return std::sqrt(squares / static_cast<double>(values.size() - 1));
}

/// 1 - left / whole
double Share(double left, double whole) { return whole > 0.0 ? 1.0 - left / whole : kNotANumber; }

class Judgement {
 public:
  Judgement(const RealMatrix& y, const Repeats& repeats, NCProgress* progress)
      : y_(y), repeats_(repeats), work_(progress) {}

  LeftOutErrors Judge() {
    WeighColumns();
    FindPredictedRows();
    for (std::size_t a = 0; a < repeats_.front().size(); ++a) AverageRepeats(a);
    FindRowErrors();
    SumColumns();
    return std::move(errors_);
  }

 private:
  /// Looks whether to stop, at one place in some thousand.
  void AskAt(std::size_t place) {
    if (place % 4096 == 0) work_.Ask();
  }

  void WeighColumns() {
    errors_.deviations = ColumnDeviations(y_);
    for (std::size_t j = 0; j < y_.columns; ++j) {
      if (errors_.deviations[j] == 0.0) errors_.columnsWithoutSpread.push_back(j);
    }
    if (errors_.columnsWithoutSpread.size() == y_.columns) throw BadData("no Y column has any variance");
  }

  void FindPredictedRows() {
    isPredicted_.resize(y_.rows);
    for (std::size_t i = 0; i < y_.rows; ++i) {
      AskAt(i);
      isPredicted_[i] = IsPredicted(i);
      if (!isPredicted_[i]) ++errors_.unpredictedRows;
    }
  }

  bool IsPredicted(std::size_t row) const {
    for (const std::vector<RealMatrix>& repeat : repeats_) {
      for (const RealMatrix& predicted : repeat) {
        for (std::size_t j = 0; j < y_.columns; ++j) {
          if (!std::isfinite(predicted(row, j))) return false;
        }
      }
    }
    return true;
  }

  bool Counts(std::size_t row, std::size_t column) const {
    return isPredicted_[row] && errors_.deviations[column] > 0.0 && !std::isnan(y_(row, column));
  }

  void AverageRepeats(std::size_t a) {
    RealMatrix predicted(y_.rows, y_.columns), squares(y_.rows, y_.columns);
    for (const std::vector<RealMatrix>& repeat : repeats_) {
      for (std::size_t c = 0; c < y_.cells.size(); ++c) {
        AskAt(c);
        const double error = y_.cells[c] - repeat[a].cells[c];
        predicted.cells[c] += repeat[a].cells[c];
        squares.cells[c] += error * error;
      }
    }
    const auto count = static_cast<double>(repeats_.size());
    for (double& cell : predicted.cells) cell = std::isfinite(cell) ? cell / count : kNotANumber;
    for (std::size_t i = 0; i < y_.rows; ++i) {
      for (std::size_t j = 0; j < y_.columns; ++j) {
        squares(i, j) = Counts(i, j) ? squares(i, j) / count : kNotANumber;
      }
    }
    errors_.predicted.push_back(std::move(predicted));
    errors_.squaredErrors.push_back(std::move(squares));
  }

  bool HasError(std::size_t row) const {
    for (std::size_t j = 0; j < y_.columns; ++j) {
      if (Counts(row, j)) return true;
    }
    return false;
  }

  void FindRowErrors() {
    const std::size_t numbers = errors_.squaredErrors.size();
    errors_.rowErrors = RealMatrix(y_.rows, numbers, kNotANumber);
    bool isAny = false;
    for (std::size_t i = 0; i < y_.rows; ++i) {
      AskAt(i);
      if (!HasError(i)) continue;
      isAny = true;
      for (std::size_t a = 0; a < numbers; ++a) errors_.rowErrors(i, a) = RowError(i, a);
    }
    if (!isAny) throw BadData("no row with a Y value can be predicted while it is left out");
    SumRowErrors(&errors_);
  }

  double RowError(std::size_t row, std::size_t a) const {
    double sum = 0.0;
    for (std::size_t j = 0; j < y_.columns; ++j) {
      const double s = errors_.deviations[j];
      if (Counts(row, j)) sum += errors_.squaredErrors[a](row, j) / (s * s);
    }
    return sum;
  }

  void SumColumns() {
    const std::size_t numbers = errors_.squaredErrors.size();
    errors_.rmsecv = RealMatrix(numbers, y_.columns, kNotANumber);
    errors_.q2PerY = RealMatrix(numbers, y_.columns, kNotANumber);
    for (std::size_t j = 0; j < y_.columns; ++j) SumColumn(j);
  }

  void SumColumn(std::size_t j) {
    std::vector<double> sums(errors_.squaredErrors.size(), 0.0);
    std::size_t cells = 0;
    for (std::size_t i = 0; i < y_.rows; ++i) {
      AskAt(i);
      if (!Counts(i, j)) continue;
      ++cells;
      for (std::size_t a = 0; a < sums.size(); ++a) sums[a] += errors_.squaredErrors[a](i, j);
    }
    if (cells == 0) return;
    for (std::size_t a = 0; a < sums.size(); ++a) {
      errors_.rmsecv(a, j) = std::sqrt(sums[a] / static_cast<double>(cells));
      errors_.q2PerY(a, j) = Share(sums[a], sums.front());
    }
  }

  const RealMatrix& y_;
  const Repeats& repeats_;
  WorkProgress work_;
  std::vector<bool> isPredicted_;
  LeftOutErrors errors_;
};

}  // namespace

void SumRowErrors(RowErrors* errors) {
  const RealMatrix& rows = errors->rowErrors;
  errors->press.assign(rows.columns, 0.0);
  for (std::size_t i = 0; i < rows.rows; ++i) {
    if (std::isnan(rows(i, 0))) continue;
    for (std::size_t a = 0; a < rows.columns; ++a) errors->press[a] += rows(i, a);
  }
  errors->q2.clear();
  for (const double press : errors->press) errors->q2.push_back(Share(press, errors->press.front()));
}

std::vector<double> ColumnDeviations(const RealMatrix& y) {
  std::vector<double> deviations;
  for (std::size_t j = 0; j < y.columns; ++j) {
    std::vector<double> measured;
    for (std::size_t i = 0; i < y.rows; ++i) {
      if (!std::isnan(y(i, j))) measured.push_back(y(i, j));
    }
    deviations.push_back(DeviationOf(measured));
  }
  return deviations;
}

LeftOutErrors JudgeLeftOutRows(const RealMatrix& y, const std::vector<std::vector<RealMatrix>>& predictions,
                               NCProgress* progress) {
  return Judgement(y, predictions, progress).Judge();
}

}  // namespace kalmia::analysis
