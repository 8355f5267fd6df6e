#include "kalmia/analysis/validation/internal/RowSpaceRefit.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/ColumnMoments.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kRowsOfATask = 32;
constexpr std::size_t kColumnsAtOnce = 4;  ///< that a block of products takes in while it is in the cache
/// Share of a sum of squares that is rounding, and so nothing: some of the 2^-53 of each cell, squared.
constexpr double kRounding = 1e-24;
constexpr int kMostTurns = 500;       ///< of a power iteration, as rounds of NIPALS
constexpr double kTurnsEqual = 1e-20; ///< squared change of a vector of unit length

/// Rows of numbers, one every `stride`.
struct Rows {
  const double* cells;
  std::size_t stride;
};

/// Adds factor[0] row[0] + factor[1] row[1] + ... to `sum`, row by row: lanes run along the `width` of the rows, so
/// that no sum depends on how many of them there are. Factors lie `apart` from each other.
void AddRows(const double* factors, std::size_t apart, std::size_t count, const Rows& rows, std::size_t width,
             double* sum) {
  std::size_t k = 0;
  for (; k + 4 <= count; k += 4) {
    const double f0 = factors[k * apart], f1 = factors[(k + 1) * apart];
    const double f2 = factors[(k + 2) * apart], f3 = factors[(k + 3) * apart];
    const double* r0 = rows.cells + k * rows.stride;
    const double* r1 = r0 + rows.stride;
    const double* r2 = r1 + rows.stride;
    const double* r3 = r2 + rows.stride;
    for (std::size_t p = 0; p < width; ++p) sum[p] = sum[p] + f0 * r0[p] + f1 * r1[p] + f2 * r2[p] + f3 * r3[p];
  }
  for (; k < count; ++k) {
    const double factor = factors[k * apart];
    const double* row = rows.cells + k * rows.stride;
    for (std::size_t p = 0; p < width; ++p) sum[p] += factor * row[p];
  }
}

bool HasSpread(const ColumnMoments& moments) { return moments.min < moments.max && moments.standardDeviation > 0.0; }

double FactorOf(const ColumnMoments& moments, NCScale::Scaling scaling) {
  if (scaling == NCScale::ScalingUnitVariance) return 1.0 / moments.standardDeviation;
  return scaling == NCScale::ScalingPareto ? 1.0 / std::sqrt(moments.standardDeviation) : 1.0;
}

}  // namespace

RowSpaceRefit::RowSpaceRefit(const SplitX& x, NCScale::Scaling scaling, const Proceed& proceed)
    : rows_(x.fitted.empty() ? 0 : x.fitted.front().size()), columns_(0, rows_) {
  if (!x.leftOut.empty()) columns_.columns += x.leftOut.front().size();
  for (std::size_t k = 0; k < x.fitted.size(); ++k) {
    const ColumnMoments moments = MomentsOf(x.fitted[k]);
    if (!HasSpread(moments)) continue;
    const double centre = Centres(scaling) ? moments.mean : 0.0, factor = FactorOf(moments, scaling);
    for (const std::vector<double>* cells : {&x.fitted[k], &x.leftOut[k]}) {
      for (const double cell : *cells) columns_.cells.push_back((cell - centre) * factor);
    }
    ++columns_.rows;
  }
  if (2 * columns_.rows >= rows_) FormProducts(proceed);
}

void RowSpaceRefit::FormProducts(const Proceed& proceed) {
  products_ = RealMatrix(columns_.columns, rows_);
  const std::size_t tasks = (products_.rows + kRowsOfATask - 1) / kRowsOfATask;
  ShareWork(tasks, proceed, [this](std::size_t task) {
    const std::size_t begin = task * kRowsOfATask;
    const std::size_t end = std::min(products_.rows, begin + kRowsOfATask);
    for (std::size_t k = 0; k < columns_.rows; k += kColumnsAtOnce) {
      const std::size_t count = std::min(kColumnsAtOnce, columns_.rows - k);
      const double* cells = &columns_.cells[k * columns_.columns];
      for (std::size_t i = begin; i < end; ++i) {
        AddRows(cells + i, columns_.columns, count, {cells, columns_.columns}, std::min(rows_, end), &products_(i, 0));
      }
    }
  });
  for (std::size_t i = 0; i < rows_; ++i) {
    for (std::size_t j = i + 1; j < rows_; ++j) products_(i, j) = products_(j, i);
  }
}

RealMatrix RowSpaceRefit::Product(std::size_t begin, std::size_t end, const RealMatrix& vectors) const {
  RealMatrix result(end - begin, vectors.columns);
  const Rows rows{vectors.cells.data(), vectors.columns};
  if (products_.rows > 0) {
    for (std::size_t i = begin; i < end; ++i) {
      AddRows(&products_.cells[i * rows_], 1, rows_, rows, vectors.columns,
              &result.cells[(i - begin) * result.columns]);
    }
    return result;
  }
  RealMatrix sums(columns_.rows, vectors.columns);  // X' by the vectors
  for (std::size_t k = 0; k < columns_.rows; ++k) {
    AddRows(&columns_.cells[k * columns_.columns], 1, rows_, rows, vectors.columns, &sums.cells[k * sums.columns]);
  }
  for (std::size_t i = begin; i < end; ++i) {
    AddRows(&columns_.cells[i], columns_.columns, columns_.rows, {sums.cells.data(), sums.columns}, sums.columns,
            &result.cells[(i - begin) * result.columns]);
  }
  return result;
}

/// Of one call of Fit: n fitted rows, R runs, M columns of Y a run. Matrices of R columns have one for each run.
class RowSpaceRefit::Models {
 public:
  Models(const RowSpaceRefit& x, const RealMatrix& y, std::size_t runs, NCScale::Scaling scaling)
      : x_(x), n_(y.rows), runs_(runs), columns_(y.columns / runs), left_(y), weights_(n_, y.columns) {
    Scale(scaling);
    whole_ = SquaresOfRuns(left_);
    components_.assign(runs_, 0);
  }

  void Extract(int components) {
    for (int a = 0; a < components; ++a) NextComponent();
  }

  Predictions Take(const RealMatrix& y) const {
    Predictions result{y, x_.Product(n_, x_.columns_.columns, weights_), means_, components_};
    for (std::size_t i = 0; i < n_; ++i) {
      for (std::size_t p = 0; p < means_.size(); ++p) result.fitted(i, p) -= left_(i, p) * deviations_[p];
    }
    for (std::size_t i = 0; i < result.leftOut.rows; ++i) {
      for (std::size_t p = 0; p < means_.size(); ++p) {
        result.leftOut(i, p) = means_[p] + result.leftOut(i, p) * deviations_[p];
      }
    }
    return result;
  }

 private:
  void Scale(NCScale::Scaling scaling) {
    std::vector<double> column(n_);
    for (std::size_t p = 0; p < left_.columns; ++p) {
      for (std::size_t i = 0; i < n_; ++i) column[i] = left_(i, p);
      const ColumnMoments moments = MomentsOf(column);
      const bool hasSpread = HasSpread(moments);
      means_.push_back(hasSpread ? moments.mean : column.front());
      deviations_.push_back(hasSpread && scaling == NCScale::ScalingUnitVariance ? moments.standardDeviation : 1.0);
      for (std::size_t i = 0; i < n_; ++i) left_(i, p) = (left_(i, p) - means_[p]) / deviations_[p];
    }
  }

  std::size_t ColumnOf(std::size_t j, std::size_t r) const { return j * runs_ + r; }

  /// Of n rows with one cell or more for each run.
  std::vector<double> SquaresOfRuns(const RealMatrix& matrix) const {
    std::vector<double> sums(runs_, 0.0);
    for (std::size_t begin = 0; begin < matrix.cells.size(); begin += runs_) {
      for (std::size_t r = 0; r < runs_; ++r) sums[r] += matrix.cells[begin + r] * matrix.cells[begin + r];
    }
    return sums;
  }

  void NextComponent() {
    const RealMatrix products = x_.Product(0, n_, left_);
    const RealMatrix q = YWeights(products);
    RealMatrix t = Combined(products, q), v = Combined(left_, q);
    const std::vector<double> before = SquaresOfRuns(t);
    for (int time = 0; time < 2; ++time) {  // what once leaves of the earlier scores, a second time takes away
      for (std::size_t b = 0; b < t_.size(); ++b) TakeOff(b, &t, &v);
    }
    Normalise(before, &t, &v);
    for (std::size_t j = 0; j < columns_; ++j) Deflate(j, t, v);
    t_.push_back(std::move(t));
    v_.push_back(std::move(v));
  }

  /// M x R.
  RealMatrix YWeights(const RealMatrix& products) const {
    RealMatrix q(columns_, runs_, 1.0);
    if (columns_ == 1) return q;
    for (std::size_t r = 0; r < runs_; ++r) {
      RealMatrix s(columns_, columns_);
      for (std::size_t i = 0; i < n_; ++i) {
        for (std::size_t j = 0; j < columns_; ++j) {
          for (std::size_t h = 0; h < columns_; ++h) s(j, h) += left_(i, ColumnOf(j, r)) * products(i, ColumnOf(h, r));
        }
      }
      const std::vector<double> vector = DominantEigenvector(s);
      for (std::size_t j = 0; j < columns_; ++j) q(j, r) = vector[j];
    }
    return q;
  }

  /// Of a symmetric matrix without negative eigenvalues, by powers, from its longest column on.
  static std::vector<double> DominantEigenvector(const RealMatrix& s) {
    std::size_t longest = 0;
    for (std::size_t j = 1; j < s.rows; ++j) {
      if (s(j, j) > s(longest, longest)) longest = j;
    }
    std::vector<double> vector(s.rows, 0.0);
    vector[longest] = 1.0;
    for (int turn = 0; turn < kMostTurns; ++turn) {
      std::vector<double> next(s.rows, 0.0);
      double squares = 0.0;
      for (std::size_t j = 0; j < s.rows; ++j) {
        for (std::size_t h = 0; h < s.rows; ++h) next[j] += s(j, h) * vector[h];
        squares += next[j] * next[j];
      }
      if (squares == 0.0) return vector;
      double change = 0.0;
      for (std::size_t j = 0; j < s.rows; ++j) {
        next[j] /= std::sqrt(squares);
        change += (next[j] - vector[j]) * (next[j] - vector[j]);
      }
      vector = std::move(next);
      if (change < kTurnsEqual) break;
    }
    return vector;
  }

  RealMatrix Combined(const RealMatrix& ofColumns, const RealMatrix& q) const {
    RealMatrix sum(n_, runs_);
    for (std::size_t i = 0; i < n_; ++i) {
      for (std::size_t j = 0; j < columns_; ++j) {
        const double* cells = &ofColumns.cells[i * ofColumns.columns + j * runs_];
        for (std::size_t r = 0; r < runs_; ++r) sum(i, r) += q(j, r) * cells[r];
      }
    }
    return sum;
  }

  void TakeOff(std::size_t b, RealMatrix* t, RealMatrix* v) const {
    std::vector<double> share(runs_, 0.0);
    for (std::size_t i = 0; i < n_; ++i) {
      for (std::size_t r = 0; r < runs_; ++r) share[r] += t_[b](i, r) * (*t)(i, r);
    }
    for (std::size_t i = 0; i < n_; ++i) {
      for (std::size_t r = 0; r < runs_; ++r) {
        (*t)(i, r) -= share[r] * t_[b](i, r);
        (*v)(i, r) -= share[r] * v_[b](i, r);
      }
    }
  }

  /// To unit length; to nothing in runs where nothing but rounding is left of X or Y.
  void Normalise(const std::vector<double>& before, RealMatrix* t, RealMatrix* v) {
    std::vector<double> factors = SquaresOfRuns(*t);
    const std::vector<double> ofY = SquaresOfRuns(left_);
    for (std::size_t r = 0; r < runs_; ++r) {
      const bool isNothing = !(factors[r] > kRounding * before[r]) || !(ofY[r] > kRounding * whole_[r]);
      factors[r] = isNothing ? 0.0 : 1.0 / std::sqrt(factors[r]);
      if (!isNothing || whole_[r] == 0.0 || x_.columns_.rows == 0) ++components_[r];
    }
    for (RealMatrix* matrix : {t, v}) {
      for (std::size_t i = 0; i < n_; ++i) {
        for (std::size_t r = 0; r < runs_; ++r) (*matrix)(i, r) *= factors[r];
      }
    }
  }

  void Deflate(std::size_t j, const RealMatrix& t, const RealMatrix& v) {
    std::vector<double> c(runs_, 0.0);
    for (std::size_t i = 0; i < n_; ++i) {
      const double* f = &left_.cells[i * left_.columns + j * runs_];
      for (std::size_t r = 0; r < runs_; ++r) c[r] += t(i, r) * f[r];
    }
    for (std::size_t i = 0; i < n_; ++i) {
      double* f = &left_.cells[i * left_.columns + j * runs_];
      double* weights = &weights_.cells[i * weights_.columns + j * runs_];
      for (std::size_t r = 0; r < runs_; ++r) {
        f[r] -= t(i, r) * c[r];
        weights[r] += v(i, r) * c[r];
      }
    }
  }

  const RowSpaceRefit& x_;
  std::size_t n_;
  std::size_t runs_;
  std::size_t columns_;
  RealMatrix left_;     ///< n x M R: of the scaled Y
  RealMatrix weights_;  ///< n x M R: predictions are X X' by these
  std::vector<double> means_;
  std::vector<double> deviations_;  ///< that Y was divided by
  std::vector<double> whole_;       ///< sum of squares of the scaled Y of each run
  std::vector<int> components_;     ///< of each run
  std::vector<RealMatrix> t_, v_;   ///< n x R of each component
};

RowSpaceRefit::Predictions RowSpaceRefit::Fit(const RealMatrix& y, std::size_t runs, NCScale::Scaling scalingOfY,
                                              int components) const {
  Models models(*this, y, runs, scalingOfY);
  models.Extract(components);
  return models.Take(y);
}

}  // namespace kalmia::analysis
