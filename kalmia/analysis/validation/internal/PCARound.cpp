#include "kalmia/analysis/validation/internal/PCARound.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kRowsBetweenQuestions = 64;

void Subtract(const std::vector<double>& part, std::vector<double>* whole) {
  for (std::size_t c = 0; c < part.size(); ++c) (*whole)[c] -= part[c];
}

std::vector<double> SumOf(const std::vector<std::vector<double>>& parts, std::size_t size) {
  std::vector<double> sum(size, 0.0);
  for (const std::vector<double>& part : parts) {
    for (std::size_t c = 0; c < size; ++c) sum[c] += part[c];
  }
  return sum;
}

}  // namespace

PCARound::PCARound(const std::vector<std::string>& names, const RealColumns& x, NCScale::Scaling scaling, int most,
                   int columnGroups, WorkProgress* progress)
    : x_(names, x, scaling, progress) {
  const ColumnFolds folds = MakeColumnFolds(names.size(), columnGroups);
  groups_ = static_cast<std::size_t>(folds.groups);
  for (const std::size_t place : x_.Places()) {
    groupOfColumn_.push_back(static_cast<std::size_t>(folds.groupOfColumn[place]));
  }
  for (const std::vector<double>& column : x) means_.push_back(MeanOf(column));
  progress->Ask();
  if (!x_.Empty()) Extract(std::min({most, RowCount(x) - 1, x_.Columns()}), progress);
}

void PCARound::Extract(int most, WorkProgress* progress) {
  const NCDataMatrix<float>& x = x_.Fitted();
  NCPCA model(&x, kMaxIterations);
  int components = 0;
  while (components < most) {
    progress->Ask();
    try {
      model.NextComponent(progress->SilentBar(), /*groups=*/nullptr, /*group=*/0, /*start=*/nullptr);
    } catch (const NCError&) {
      progress->Ask();
      break;  // nothing is left of X
    }
    model.CalculateResiduals();
    ++components;
    if (!(DescribedShare(x, *model.GetResiduals()) < 1.0 - kExhausted)) break;
  }
  components_ = static_cast<std::size_t>(components);
  TakeLoadings(*model.GetPprim());
  NoteDeviations(x, progress);
}

/// With what complete rows have in common.
void PCARound::TakeLoadings(const NCDataMatrix<float>& p) {
  const std::size_t columns = x_.Places().size();
  loadings_.resize(columns * components_);
  grams_.assign(groups_, Cells(components_ * components_, 0.0));
  for (std::size_t k = 0; k < columns; ++k) {
    for (std::size_t a = 0; a < components_; ++a) {
      loadings_[k * components_ + a] = PresentOrZero(p[static_cast<int>(a) + 1][static_cast<int>(k) + 1]);
    }
    AddGram(k, &grams_[groupOfColumn_[k]]);
  }
  gram_ = SumOf(grams_, components_ * components_);
  allColumns_ = std::make_unique<NestedScores>(gram_, components_);
  for (const Cells& own : grams_) {
    Cells others = gram_;
    Subtract(own, &others);
    outside_.emplace_back(std::move(others), components_);
  }
  solved_ = loadings_;
  for (std::size_t k = 0; components_ > 0 && k < columns; ++k) {
    outside_[groupOfColumn_[k]].Solve(solved_.data() + k * components_);
  }
}

/// Its lower triangle.
void PCARound::AddGram(std::size_t column, Cells* gram) const {
  const double* p = LoadingsOf(column);
  for (std::size_t a = 0; a < components_; ++a) {
    for (std::size_t b = 0; b <= a; ++b) (*gram)[a * components_ + b] += p[a] * p[b];
  }
}

/// Of the columns with a say; a hole is not a number. Rows count from 1.
PCARound::Cells PCARound::CellsOf(const NCDataMatrix<float>& x, int row) const {
  Cells cells;
  const NCDataVector<float>& from = x[row];
  for (int k = 1; k <= from.Size(); ++k) cells.push_back(IsMissing(from[k]) ? kNotANumber : from[k]);
  return cells;
}

PCARound::Sums PCARound::SumsOf(const Cells& cells) const {
  Sums sums;
  sums.products.assign(groups_, Cells(components_, 0.0));
  if (std::any_of(cells.begin(), cells.end(), [](double cell) { return std::isnan(cell); })) {
    sums.grams.assign(groups_, Cells(components_ * components_, 0.0));
  }
  for (std::size_t k = 0; k < cells.size(); ++k) {
    if (std::isnan(cells[k])) continue;
    const double* p = LoadingsOf(k);
    Cells& products = sums.products[groupOfColumn_[k]];
    for (std::size_t a = 0; a < components_; ++a) products[a] += cells[k] * p[a];
    if (!sums.grams.empty()) AddGram(k, &sums.grams[groupOfColumn_[k]]);
  }
  return sums;
}

/// The sum of squares that each model leaves of the row.
PCARound::Cells PCARound::LeftAfterEach(const Cells& cells, const Sums& sums) const {
  double left = 0.0;
  for (const double cell : cells) left += std::isnan(cell) ? 0.0 : cell * cell;
  Cells z = SumOf(sums.products, components_);
  if (sums.grams.empty()) {
    allColumns_->Solve(z.data());
  } else {
    NestedScores(SumOf(sums.grams, components_ * components_), components_).Solve(z.data());
  }
  Cells leftAfter(1, left);
  for (const double score : z) {
    left = std::max(0.0, left - score * score);
    leftAfter.push_back(left);
  }
  return leftAfter;
}

namespace {

double SumOfSquares(const std::vector<RowResidual>& rows) {
  double sum = 0.0;
  for (const RowResidual& row : rows) sum += row.sumOfSquares;
  return sum;
}

}  // namespace

void PCARound::NoteDeviations(const NCDataMatrix<float>& x, WorkProgress* progress) {
  std::vector<std::vector<RowResidual>> residuals(components_ + 1);
  for (int row = 1; row <= x.SizeRows(); ++row) {
    if (static_cast<std::size_t>(row) % kRowsBetweenQuestions == 0) progress->Ask();
    const Cells cells = CellsOf(x, row);
    const int present = x.SizeColumns() - x[row].GetNumMisVal();
    const Cells left = LeftAfterEach(cells, SumsOf(cells));
    for (std::size_t a = 0; a <= components_; ++a) residuals[a].push_back({left[a], present});
  }
  const double whole = SumOfSquares(residuals.front());
  for (std::size_t a = 0; a <= components_; ++a) {
    const bool isNothingLeft = SumOfSquares(residuals[a]) <= kRoundings * whole;
    pooledDeviations_.push_back(isNothingLeft ? kNotANumber : PooledDeviation(residuals[a], static_cast<int>(a)));
  }
}

void PCARound::JudgeRow(const RealColumns& rows, const NCDataMatrix<float>& scaled, std::size_t i,
                        LeftOutRow* row) const {
  row->errors = RealMatrix(rows.size(), components_ + 1);
  row->distances.assign(components_ + 1, kNotANumber);
  for (std::size_t k = 0; k < rows.size(); ++k) {
    for (std::size_t a = 0; a <= components_; ++a) row->errors(k, a) = rows[k][i] - means_[k];
  }
  if (x_.Empty()) return;
  const int number = static_cast<int>(i) + 1;
  const Cells cells = CellsOf(scaled, number);
  const Sums sums = SumsOf(cells);
  PredictCells(cells, sums, &row->errors);
  const int present = scaled.SizeColumns() - scaled[number].GetNumMisVal();
  if (present == 0) return;
  const Cells left = LeftAfterEach(cells, sums);
  for (std::size_t a = 0; a <= components_; ++a) {
    row->distances[a] = ResidualDeviation({left[a], present}, static_cast<int>(a)) / pooledDeviations_[a];
  }
}

void PCARound::PredictCells(const Cells& cells, const Sums& sums, RealMatrix* errors) const {
  const Cells product = SumOf(sums.products, components_);
  const bool isComplete = sums.grams.empty();
  const Cells gram = isComplete ? gram_ : SumOf(sums.grams, components_ * components_);
  std::vector<Cells> z;
  std::vector<NestedScores> ofRow;
  for (std::size_t h = 0; h < groups_; ++h) {
    z.push_back(product);
    Subtract(sums.products[h], &z.back());
    if (!isComplete) {
      Cells others = gram;
      Subtract(sums.grams[h], &others);
      ofRow.emplace_back(std::move(others), components_);
    }
    (isComplete ? outside_ : ofRow)[h].Solve(z.back().data());
  }
  Cells ofCell;
  for (std::size_t k = 0; k < cells.size(); ++k) {
    if (std::isnan(cells[k])) continue;
    const std::size_t h = groupOfColumn_[k];
    const double factor = FactorOf(x_.Scaling(), static_cast<int>(k) + 1);
    const double* v = solved_.data() + k * components_;
    if (!isComplete) {
      ofCell.assign(LoadingsOf(k), LoadingsOf(k) + components_);
      ofRow[h].Solve(ofCell.data());
      v = ofCell.data();
    }
    double left = cells[k];
    const std::size_t place = x_.Places()[k];
    for (std::size_t a = 0; a < components_; ++a) {
      left -= z[h][a] * v[a];
      (*errors)(place, a + 1) = left / factor;
    }
  }
}

}  // namespace kalmia::analysis
