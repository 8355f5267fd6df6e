#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/kernels/SideBySideSums.h"
#include "kalmia/pcapls/NCScale.h"

namespace kalmia::analysis {

/// How many models are fitted side by side, each in its lane.
constexpr std::size_t kLanes = kSideBySide;

/// A number of each lane.
using LaneNumbers = std::array<double, kLanes>;

/// Positions begin, ..., end - 1 of which one task takes care.
struct LanePart {
  std::size_t number, begin, end;
};

/// Sums over the parts of a table: those of each part first, then these in their order. So they do not depend on who
/// works on which part.
class PartSums {
 public:
  PartSums(std::size_t parts, std::size_t sums) : sums_(sums), cells_(parts * sums * kLanes, 0.0) {}

  /// Number `sum` of a part, a number of each lane.
  double* Of(const LanePart& part, std::size_t sum) { return &cells_[(part.number * sums_ + sum) * kLanes]; }
  LaneNumbers Total(std::size_t sum) const;

 private:
  std::size_t sums_;
  std::vector<double> cells_;
};

/// sums[l] += sum over begin <= i < end of a[i][l] b[i][l]
void AddLaneDots(const double* a, const double* b, std::size_t begin, std::size_t end, double* sums);

/// A complete table X of N rows and K columns as up to eight models see it, each of which is fitted to other rows. X
/// stays as it is: centres m and factors f of a lane, learnt from its rows, go into the vectors that X meets, as
///
///   scaled X v = X (f v) - sum of m f v,   scaled X' t = f (X' t - m sum of t),
///
/// so that one pass over X serves all lanes. Vectors of all lanes lie side by side: cell i of lane l at 8 i + l.
/// A column without two different cells in the rows of a lane has the factor 0 there.
class LaneX {
 public:
  /// The cells of the rows; for each lane which of them it is fitted to. Throws Stopped, as all that goes over X.
  LaneX(std::vector<const float*> rows, std::size_t columns, const std::vector<std::vector<std::size_t>>& fittedRows,
        NCScale::Scaling scaling, WorkProgress* progress);

  std::size_t Rows() const { return rows_.size(); }
  std::size_t Columns() const { return columns_; }
  std::size_t FittedRows(std::size_t lane) const { return static_cast<std::size_t>(fittedRows_[lane]); }
  /// Whether the sums are as exact as cells that are centred and scaled one by one, by the same rows, would make them.
  bool IsSound(std::size_t lane) const { return isSound_[lane]; }
  double Centre(std::size_t column, std::size_t lane) const { return centres_[column * kLanes + lane]; }
  double Factor(std::size_t column, std::size_t lane) const { return factors_[column * kLanes + lane]; }
  bool HasSpread(std::size_t column, std::size_t lane) const { return Factor(column, lane) > 0.0; }
  /// 1 of a row that a lane is fitted to; else 0.
  const std::vector<double>& Mask() const { return mask_; }
  /// Sums of squares of the scaled cells of the rows that each lane is fitted to.
  /// Whether to stop: throws Stopped.
  void Ask() const { progress_->Ask(); }
  const LaneNumbers& SumsOfSquares() const { return sumsOfSquares_; }
  /// Of the scaled cells of one row.
  double SumOfSquares(std::size_t row, std::size_t lane) const;

  /// X' t of the columns of a part, scaled, into their places of `products`; `sums` are those of t.
  void MultiplyColumns(const LanePart& columns, const std::vector<double>& t, const LaneNumbers& sums,
                       double* products) const;
  /// f v of the columns of a part, into their places, and the sum of m f v, which is added to `offset`.
  void Prepare(const LanePart& columns, const std::vector<double>& v, std::vector<double>* prepared,
               double* offset) const;
  /// X v of the rows of a part, scaled, into their places; of a vector that was prepared.
  void MultiplyRows(const LanePart& rows, const std::vector<double>& prepared, const LaneNumbers& offset,
                    double* products) const;

  // On all threads where the table is worth it. Parts do not depend on the threads.
  std::size_t ColumnParts() const;
  void ForColumns(const std::function<void(const LanePart&)>& work) const;
  void ForRows(const std::function<void(const LanePart&)>& work) const;

 private:
  void ForParts(std::size_t positions, std::size_t ofPart, const std::function<void(const LanePart&)>& work) const;
  void Learn(const LanePart& columns, NCScale::Scaling scaling, double* sumsOfSquares, double* unsound);
  /// Returns the factor; not a number where a lane cannot have the column.
  double LearnColumn(std::size_t k, std::size_t lane, double squares, NCScale::Scaling scaling) const;

  std::vector<const float*> rows_;
  std::size_t columns_;
  WorkProgress* progress_;
  std::vector<double> mask_;
  LaneNumbers fittedRows_{};
  std::vector<double> centres_, factors_;
  LaneNumbers sumsOfSquares_{};
  std::array<bool, kLanes> isSound_{};
};

}  // namespace kalmia::analysis
