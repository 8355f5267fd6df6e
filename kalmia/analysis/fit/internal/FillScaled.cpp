#include "kalmia/analysis/fit/internal/FillScaled.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

constexpr int kMaxIterations = 500;

struct Place {
  int row;
  int column;
};

std::vector<Place> HolesOf(const NCDataMatrix<float>& table) {
  std::vector<Place> holes;
  holes.reserve(static_cast<std::size_t>(table.GetNumMisVal()));
  for (int r = 1; r <= table.SizeRows(); ++r) {
    for (int c = 1; c <= table.SizeColumns(); ++c) {
      if (table[r][c] == kMissingCell<float>) holes.push_back({r, c});
    }
  }
  return holes;
}

/// A table around the means of its columns.
struct CentredTable {
  explicit CentredTable(const NCDataMatrix<float>& table) : cells(table) {
    for (int c = 1; c <= table.SizeColumns(); ++c) {
      means.push_back(static_cast<double>(table.GetColumnMean(c)));
      cells.SubtractFromColumn(c, means.back());
    }
  }

  NCDataMatrix<float> cells;
  std::vector<double> means;
};

/// What the components of a model, each times its share, make of a cell around its mean; a missing score or loading
/// adds nothing.
float Estimate(const NCPCA& model, const std::vector<double>& shares, double mean, const Place& place) {
  double sum = mean;
  for (int a = 1; a <= static_cast<int>(shares.size()); ++a) {
    const float t = (*model.GetTprim())[a][place.row];
    const float p = (*model.GetPprim())[a][place.column];
    if (t != kMissingCell<float> && p != kMissingCell<float>) {
      sum += shares[static_cast<std::size_t>(a) - 1] * static_cast<double>(t) * static_cast<double>(p);
    }
  }
  return AvoidMissingValue(static_cast<float>(sum));
}

class Filling {
 public:
  Filling(const NCDataMatrix<float>& table, FillModel* model, NCProgress* progress)
      : table_(table), filled_(table), holes_(HolesOf(table)), progress_(progress), model_(model) {}

  NCDataMatrix<float> Run(int components) {
    EstimateFromPresentCells(components);
    while (model_->components > 0 && model_->rounds < kMostRounds) {
      Refit();
      if (model_->Settled()) break;
    }
    return filled_;
  }

 private:
  /// The components of the table with its holes, and their estimates.
  void EstimateFromPresentCells(int components) {
    NCPCA model(&table_, kMaxIterations);
    for (int a = 1; a <= std::min(components, MostFillComponents(table_)); ++a) {
      if (!Extract(&model, nullptr, "component " + std::to_string(a))) break;
      model.CalculateResiduals();
      scores_.push_back(model.GetTprim()->back());
    }
    model_->components = static_cast<int>(scores_.size());
    const std::vector<double> whole(scores_.size(), 1.0);
    TakeEstimates(model, whole, std::vector<double>(static_cast<std::size_t>(table_.SizeColumns()), 0.0));
  }

  /// False if the model has no further component.
  bool Extract(NCPCA* model, const NCDataVector<float>* start, const std::string& label) {
    progress_.Begin(label);
    try {
      return model->NextComponent(progress_.Bar(), nullptr, 0, start);
    } catch (const NCError& error) {
      progress_.Ask();
      model_->endedEarly = OneLine(static_cast<const char*>(error.GetMessage()));
      return false;
    }
  }

  /// One round: the components of the filled table, shrunk, give new estimates.
  void Refit() {
    const CentredTable centred(filled_);
    NCPCA model(&centred.cells, kMaxIterations);
    const std::string label = "round " + std::to_string(++model_->rounds) + ", component ";
    std::vector<NCDataVector<float>> scores;
    for (std::size_t a = 0; a < scores_.size(); ++a) {
      // The former scores are nearly these. Where a row had none there is nothing to start from.
      const NCDataVector<float>* start = scores_[a].GetNumMisVal() == 0 ? &scores_[a] : nullptr;
      if (!Extract(&model, start, label + std::to_string(a + 1))) break;
      model.CalculateResiduals();
      scores.push_back(model.GetTprim()->back());
    }
    model_->lastMove = TakeEstimates(model, Shares(model), centred.means);
    scores_ = std::move(scores);
    model_->components = static_cast<int>(scores_.size());
  }

  /// s_a of each component.
  std::vector<double> Shares(const NCPCA& model) const {
    const int components = model.GetTprim()->SizeRows();
    const std::int64_t rows = table_.SizeRows();
    const std::int64_t columns = table_.SizeColumns();
    const std::int64_t freedom =
        (rows - 1 - components) * (columns - components) - static_cast<std::int64_t>(holes_.size());
    const double variance = static_cast<double>(model.GetResiduals()->GetSS()) /
                            static_cast<double>(std::max<std::int64_t>(freedom, 1));
    const double noise = static_cast<double>(std::max(rows - 1, columns)) * variance;
    std::vector<double> shares;
    for (const NCDataVector<float>& t : *model.GetTprim()) {
      const double ss = static_cast<double>(t.GetSS());
      shares.push_back(ss > noise ? 1.0 - noise / ss : 0.0);
    }
    return shares;
  }

  /// Puts estimates into the holes; the largest change of any of them.
  double TakeEstimates(const NCPCA& model, const std::vector<double>& shares, const std::vector<double>& means) {
    double move = 0.0;
    const NCDataMatrix<float>& before = filled_;
    for (const Place& hole : holes_) {
      const float estimate = Estimate(model, shares, means[static_cast<std::size_t>(hole.column) - 1], hole);
      move = std::max(move, std::abs(static_cast<double>(estimate) - before[hole.row][hole.column]));
      filled_(hole.row, hole.column, estimate);
    }
    return move;
  }

  const NCDataMatrix<float>& table_;
  NCDataMatrix<float> filled_;
  std::vector<Place> holes_;
  std::vector<NCDataVector<float>> scores_;  ///< of the components of the last round
  WorkProgress progress_;
  FillModel* model_;
};

}  // namespace

int MostFillComponents(const NCDataMatrix<float>& table) {
  return std::max(std::min(table.SizeRows(), table.SizeColumns()) - 1, 0);
}

NCDataMatrix<float> FillScaled(const NCDataMatrix<float>& table, int components, FillModel* model,
                               NCProgress* progress) {
  return Filling(table, model, progress).Run(components);
}

}  // namespace kalmia::analysis
