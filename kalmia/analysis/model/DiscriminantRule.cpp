#include "kalmia/analysis/model/DiscriminantRule.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/kernels/NCSVD.h"

namespace kalmia::analysis {

namespace {

constexpr double kLeastShare = 1e-8;  ///< of the trace of the total covariance
/// Of the trace, where dummies are 0 and 1: the rounding of a mean leaves less, and what tells classes apart more.
constexpr double kRounding = 1e-20;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool HasAllCells(const RealMatrix& matrix, std::size_t row) {
  for (std::size_t c = 0; c < matrix.columns; ++c) {
    if (!std::isfinite(matrix(row, c))) return false;
  }
  return true;
}

/// Learns a rule from the rows that take part.
class Learning {
 public:
  Learning(const RealMatrix& fitted, const std::vector<int>& classOfRow)
      : fitted_(fitted), classOfRow_(classOfRow), classes_(fitted.columns), counts_(classes_, 0.0) {
    for (std::size_t i = 0; i < fitted.rows; ++i) {
      if (classOfRow[i] < 0 || !HasAllCells(fitted, i)) continue;
      rows_.push_back(i);
      counts_[ClassOf(i)] += 1.0;
    }
  }

  DiscriminantRule Learn(ClassPriors priors) {
    FindMeans();
    const RealMatrix total = Covariance(RealMatrix(classes_, classes_), static_cast<double>(rows_.size()) - 1.0);
    const RealMatrix within = Covariance(Differences(), static_cast<double>(rows_.size()) - ClassesPresent());
    DiscriminantRule rule;
    rule.logPriors = LogPriors(priors);
    rule.directions = Whitened(BasisOf(total), within, kLeastShare * TraceOf(total));
    rule.centres = RealMatrix(classes_, rule.directions.rows);
    for (std::size_t g = 0; g < classes_; ++g) {
      for (std::size_t d = 0; d < rule.directions.rows; ++d) {
        for (std::size_t c = 0; c < classes_; ++c) rule.centres(g, d) += rule.directions(d, c) * means_(g, c);
      }
    }
    return rule;
  }

 private:
  std::size_t ClassOf(std::size_t row) const { return static_cast<std::size_t>(classOfRow_[row]); }

  double ClassesPresent() const {
    return static_cast<double>(std::count_if(counts_.begin(), counts_.end(), [](double count) { return count > 0; }));
  }

  /// Of all rows and of each class; a class without rows has the mean of all, where nothing is asked of it.
  void FindMeans() {
    RealMatrix sums(classes_, classes_);
    mean_.assign(classes_, 0.0);
    for (const std::size_t i : rows_) {
      for (std::size_t c = 0; c < classes_; ++c) sums(ClassOf(i), c) += fitted_(i, c);
    }
    for (std::size_t g = 0; g < classes_; ++g) {
      for (std::size_t c = 0; c < classes_; ++c) mean_[c] += sums(g, c) / static_cast<double>(rows_.size());
    }
    means_ = RealMatrix(classes_, classes_);
    for (std::size_t g = 0; g < classes_; ++g) {
      for (std::size_t c = 0; c < classes_; ++c) means_(g, c) = counts_[g] > 0.0 ? sums(g, c) / counts_[g] : mean_[c];
    }
  }

  /// The classes' means about that of all rows.
  RealMatrix Differences() const {
    RealMatrix differences = means_;
    for (std::size_t g = 0; g < classes_; ++g) {
      for (std::size_t c = 0; c < classes_; ++c) differences(g, c) -= mean_[c];
    }
    return differences;
  }

  /// Of the rows about the mean of all and what is given of their class.
  RealMatrix Covariance(const RealMatrix& ofClass, double degrees) const {
    RealMatrix covariance(classes_, classes_);
    std::vector<double> row(classes_);
    for (const std::size_t i : rows_) {
      for (std::size_t c = 0; c < classes_; ++c) row[c] = fitted_(i, c) - mean_[c] - ofClass(ClassOf(i), c);
      for (std::size_t c = 0; c < classes_; ++c) {
        for (std::size_t d = 0; d < classes_; ++d) covariance(c, d) += row[c] * row[d];
      }
    }
    for (double& cell : covariance.cells) cell /= std::max(1.0, degrees);
    return covariance;
  }

  std::vector<double> LogPriors(ClassPriors priors) const {
    std::vector<double> logPriors;
    for (const double count : counts_) {
      const double share = priors == ClassPriors::Shares ? count / static_cast<double>(rows_.size())
                                                         : (count > 0.0 ? 1.0 / ClassesPresent() : 0.0);
      logPriors.push_back(share > 0.0 ? std::log(share) : -kInfinity);
    }
    return logPriors;
  }

  static double TraceOf(const RealMatrix& matrix) {
    double trace = 0.0;
    for (std::size_t c = 0; c < matrix.rows; ++c) trace += matrix(c, c);
    return trace;
  }

  /// Eigenvectors of the covariance, a row each. In shares of its trace no cell can be taken for a missing one.
  RealMatrix BasisOf(const RealMatrix& covariance) const {
    const double trace = TraceOf(covariance);
    RealMatrix basis(0, classes_);
    if (!(trace > kRounding)) return basis;
    const auto size = static_cast<int>(classes_);
    NCDataMatrix<double> shares(size, size);
    for (int r = 1; r <= size; ++r) {
      for (int c = 1; c <= size; ++c) {
        shares(r, c, covariance(static_cast<std::size_t>(r) - 1, static_cast<std::size_t>(c) - 1) / trace);
      }
    }
    const std::unique_ptr<NCSVD<double>> svd(shares.GetSVD());
    if (svd->GetStatus() != NCSVD<double>::StatusSuccess) throw BadData("the fitted classes are too large");
    svd->Sort();
    for (int d = 1; d < size && (*svd->GetW())[d] > kLeastShare; ++d) {
      ++basis.rows;
      for (int c = 1; c <= size; ++c) basis.cells.push_back((*svd->GetV())[c][d]);
    }
    return basis;
  }

  /// The basis in which S, with `ridge` on its diagonal, is the unit matrix: L^-1 E for S = L L' in the basis E.
  static RealMatrix Whitened(const RealMatrix& basis, const RealMatrix& within, double ridge) {
    RealMatrix lower = InBasis(basis, within);
    RealMatrix whitened = basis;
    for (std::size_t r = 0; r < basis.rows; ++r) {
      lower(r, r) += ridge;
      for (std::size_t c = 0; c < r; ++c) {
        for (std::size_t k = 0; k < c; ++k) lower(r, c) -= lower(r, k) * lower(c, k);
        lower(r, c) /= lower(c, c);
        lower(r, r) -= lower(r, c) * lower(r, c);
        for (std::size_t g = 0; g < basis.columns; ++g) whitened(r, g) -= lower(r, c) * whitened(c, g);
      }
      lower(r, r) = std::sqrt(std::max(lower(r, r), ridge));  // the ridge is what rounding may have taken
      for (std::size_t g = 0; g < basis.columns; ++g) whitened(r, g) /= lower(r, r);
    }
    return whitened;
  }

  static RealMatrix InBasis(const RealMatrix& basis, const RealMatrix& covariance) {
    RealMatrix result(basis.rows, basis.rows);
    for (std::size_t r = 0; r < basis.rows; ++r) {
      for (std::size_t s = 0; s < basis.rows; ++s) {
        for (std::size_t c = 0; c < basis.columns; ++c) {
          for (std::size_t d = 0; d < basis.columns; ++d) result(r, s) += basis(r, c) * covariance(c, d) * basis(s, d);
        }
      }
    }
    return result;
  }

  const RealMatrix& fitted_;
  const std::vector<int>& classOfRow_;
  std::size_t classes_;
  std::vector<double> counts_;     ///< rows of each class
  std::vector<std::size_t> rows_;  ///< that take part
  std::vector<double> mean_;
  RealMatrix means_;  ///< a row for each class
};

/// ln sum of exp over the values of a row but that of one class.
double LogSumOfOthers(const RealMatrix& values, std::size_t row, std::size_t left) {
  double most = -kInfinity;
  for (std::size_t h = 0; h < values.columns; ++h) {
    if (h != left) most = std::max(most, values(row, h));
  }
  if (most == -kInfinity) return most;
  double sum = 0.0;
  for (std::size_t h = 0; h < values.columns; ++h) {
    if (h != left) sum += std::exp(values(row, h) - most);
  }
  return most + std::log(sum);
}

}  // namespace

DiscriminantRule LearnDiscriminantRule(const RealMatrix& fitted, const std::vector<int>& classOfRow,
                                       ClassPriors priors) {
  return Learning(fitted, classOfRow).Learn(priors);
}

RealMatrix DiscriminantValues(const DiscriminantRule& rule, const RealMatrix& dummies) {
  RealMatrix values(dummies.rows, dummies.columns, kNotANumber);
  std::vector<double> place(rule.directions.rows);
  for (std::size_t i = 0; i < dummies.rows; ++i) {
    if (!HasAllCells(dummies, i)) continue;
    for (std::size_t d = 0; d < place.size(); ++d) {
      place[d] = 0.0;
      for (std::size_t c = 0; c < dummies.columns; ++c) place[d] += rule.directions(d, c) * dummies(i, c);
    }
    for (std::size_t g = 0; g < dummies.columns; ++g) {
      double distance = 0.0;
      for (std::size_t d = 0; d < place.size(); ++d) {
        distance += (place[d] - rule.centres(g, d)) * (place[d] - rule.centres(g, d));
      }
      values(i, g) = rule.logPriors[g] - distance / 2.0;
    }
  }
  return values;
}

std::vector<int> AssignedClasses(const RealMatrix& values) {
  std::vector<int> assigned(values.rows, -1);
  for (std::size_t i = 0; i < values.rows; ++i) {
    if (values.columns == 0 || std::isnan(values(i, 0))) continue;
    std::size_t best = 0;
    for (std::size_t g = 1; g < values.columns; ++g) {
      if (values(i, g) > values(i, best)) best = g;
    }
    assigned[i] = static_cast<int>(best);
  }
  return assigned;
}

RealMatrix LogOdds(const RealMatrix& values) {
  RealMatrix odds(values.rows, values.columns, kNotANumber);
  for (std::size_t i = 0; i < values.rows; ++i) {
    for (std::size_t g = 0; g < values.columns; ++g) {
      if (!std::isnan(values(i, g))) odds(i, g) = values(i, g) - LogSumOfOthers(values, i, g);
    }
  }
  return odds;
}

}  // namespace kalmia::analysis
