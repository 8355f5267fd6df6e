#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/ColumnFolds.h"
#include "kalmia/analysis/validation/internal/NestedScores.h"
#include "kalmia/analysis/validation/internal/RoundX.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

/// Principal components of some rows of a table, which predict cells of other rows: those of each group of columns from
/// the cells outside the group. Shifts, centres, factors and loadings are learnt from the rows alone, as Fit learns
/// them.
class PCARound {
 public:
  /// `most` components at the most; fewer where there are fewer rows less one, or columns with two different cells, or
  /// nothing is left of X. Throws BadData where a column cannot be scaled; Stopped.
  PCARound(const std::vector<std::string>& names, const RealColumns& x, NCScale::Scaling scaling, int most,
           int columnGroups, WorkProgress* progress);

  int Components() const { return static_cast<int>(components_); }
  const std::vector<std::string>& ColumnsWithoutSpread() const { return x_.ColumnsWithoutSpread(); }

  /// What the models of 0, 1, ... components say of one row that was left out.
  struct LeftOutRow {
    RealMatrix errors;  ///< all columns by models, in the units of the table; not a number where there is no cell, or
                        ///< the rows that the models come from have none in the column
    std::vector<double> distances;  ///< of each model, normalised, see DistanceToModel
  };

  /// `rows` of all columns, in the order of those that the models come from; `use` is called for each, from 0.
  template <class Use>
  void JudgeRows(const RealColumns& rows, WorkProgress* progress, const Use& use) const {
    if (RowCount(rows) == 0) return;
    const NCDataMatrix<float> scaled = x_.Empty() ? NCDataMatrix<float>() : x_.Scaled(rows);
    LeftOutRow row;
    for (std::size_t i = 0; i < static_cast<std::size_t>(RowCount(rows)); ++i) {
      progress->Ask();
      JudgeRow(rows, scaled, i, &row);
      use(i, row);
    }
  }

 private:
  using Cells = std::vector<double>;

  /// Of the cells of a row, group after group of columns.
  struct Sums {
    std::vector<Cells> products;  ///< sum x p
    std::vector<Cells> grams;     ///< sum p p'; empty for a complete row
  };

  void Extract(int most, WorkProgress* progress);
  void TakeLoadings(const NCDataMatrix<float>& p);
  const double* LoadingsOf(std::size_t column) const { return loadings_.data() + column * components_; }
  void AddGram(std::size_t column, Cells* gram) const;
  Cells CellsOf(const NCDataMatrix<float>& x, int row) const;
  Sums SumsOf(const Cells& cells) const;
  void NoteDeviations(const NCDataMatrix<float>& x, WorkProgress* progress);
  Cells LeftAfterEach(const Cells& cells, const Sums& sums) const;
  void JudgeRow(const RealColumns& rows, const NCDataMatrix<float>& scaled, std::size_t i, LeftOutRow* row) const;
  void PredictCells(const Cells& cells, const Sums& sums, RealMatrix* errors) const;

  RoundX x_;
  std::vector<std::size_t> groupOfColumn_;  ///< of the columns with a say
  std::size_t groups_ = 0;
  std::vector<double> means_;  ///< of all columns; not a number without a cell
  std::size_t components_ = 0;
  std::vector<double> loadings_;              ///< columns with a say by components
  std::vector<Cells> grams_;                  ///< of each group of columns, where no cell is missing
  Cells gram_;                                ///< of all columns
  std::unique_ptr<NestedScores> allColumns_;  ///< of a complete row
  std::vector<NestedScores> outside_;         ///< of a complete row without the columns of each group
  std::vector<double> solved_;                ///< for each column v of its loadings, with the factor outside its group
  std::vector<double> pooledDeviations_;      ///< of each model
};

}  // namespace kalmia::analysis
