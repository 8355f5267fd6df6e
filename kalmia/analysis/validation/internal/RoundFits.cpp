#include "kalmia/analysis/validation/internal/RoundFits.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "kalmia/analysis/validation/internal/RoundModel.h"

namespace kalmia::analysis {

RoundFits::RoundFits(const RefittedModel& model, const SeriesLimits& limits, NCProgress* progress, WorkProgress* work)
    : model_(model), limits_(limits), progress_(progress), work_(work) {
  for (const std::string& name : model_.data.xNames) placeOf_.emplace(name, placeOf_.size());
  if (ServesLanes()) FormLanes();
}

bool RoundFits::IsComplete() const {
  if (model_.data.x.GetNumMisVal() > 0) return false;
  const std::vector<std::vector<double>>& y = model_.data.measuredY;
  return std::none_of(y.begin(), y.end(), [](const std::vector<double>& column) {
    return std::any_of(column.begin(), column.end(), [](double cell) { return std::isnan(cell); });
  });
}

bool RoundFits::ServesLanes() const {
  const std::size_t rows = model_.data.rows.size(), columns = model_.data.xNames.size();
  const std::size_t yColumns = model_.data.yNames.size();
  if (!model_.family.HasModelsOfPLS(yColumns) || LearnsAnew(model_.recipe)) return false;
  const auto most = static_cast<int>(std::min(rows, columns));
  return IsComplete() &&
         LaneRounds::Serves(rows, columns, yColumns, std::min({limits_.models, limits_.components, most}));
}

void RoundFits::FormLanes() {
  LaneTable table;
  for (const std::size_t row : model_.xRows) {
    table.x.push_back(std::as_const(model_.data.x)[static_cast<int>(row) + 1].begin());
  }
  table.xShifts = model_.data.xShifts;
  table.xNames = model_.data.xNames;
  table.y = model_.data.measuredY;
  table.yNames = model_.data.yNames;
  table.scaling = model_.recipe.scaling;
  const auto rounds = static_cast<std::size_t>(model_.folds.Rounds());
  lanes_.emplace(std::move(table), rounds + 1, [this](std::size_t round) { return RowsOf(round); });
}

LaneRound RoundFits::RowsOf(std::size_t round) const {
  if (round == 0) {
    std::vector<std::size_t> all(model_.data.rows.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return {std::move(all), {}, limits_};
  }
  const int repeat = static_cast<int>(round - 1) / model_.folds.groups;
  const int group = static_cast<int>(round - 1) % model_.folds.groups;
  return {RowsOutsideGroup(model_.folds, repeat, group), RowsOfGroup(model_.folds, repeat, group), limits_};
}

RoundFigures RoundFits::Figures(std::size_t round, const SeriesLimits& limits, int first) {
  limits_ = limits;
  if (lanes_) {
    const RoundQuestions questions{model_.data.classes.has_value(), first, model_.family.Importances()};
    std::optional<RoundFigures> figures = lanes_->Figures(round, questions, work_, [&](double share) {
      if (round == 0) work_->MoveTo(share);  // later on the bar shows the rounds
    });
    if (figures) return std::move(*figures);
  }
  return FitAlone(RowsOf(round), first);
}

/// Where no column is shifted, in all rows and in these, their cells are those of the whole table.
RoundFigures RoundFits::FitAlone(const LaneRound& rows, int first) {
  const ModelData& data = model_.data;
  const NCScale::Scaling scaling = model_.recipe.scaling;
  if (data.xShifts.empty() && !LearnsAnew(model_.recipe)) {
    const NCDataMatrix<float> fitted = SingleRows(rows.fitted);
    if (ArePlain(fitted, scaling)) {
      work_->Ask();
      return FitSplit(RoundX(data.xNames, fitted, scaling), data.xNames, rows, fitted, SingleRows(rows.leftOut), first);
    }
  }
  if (!source_) source_ = std::make_unique<SourceX>(model_.table, model_.recipe, data, progress_);
  const SplitX x = source_->Split(rows.fitted, rows.leftOut, work_->SilentBar());
  return FitSplit(RoundX(x.names, x.fitted, scaling, work_), x.names, rows, x.fitted, x.leftOut, first);
}

/// Shares the cells of the table.
NCDataMatrix<float> RoundFits::SingleRows(const std::vector<std::size_t>& rows) const {
  NCDataMatrix<float> taken(0, model_.data.x.SizeColumns());
  taken.ReserveRows(static_cast<int>(rows.size()));
  for (const std::size_t row : rows) {
    taken.push_back(std::as_const(model_.data.x)[static_cast<int>(model_.xRows[row]) + 1]);
  }
  return taken;
}

template <class Rows>
RoundFigures RoundFits::FitSplit(RoundX scaled, const std::vector<std::string>& names, const LaneRound& rows,
                                 const Rows& fitted, const Rows& leftOut, int first) {
  const ModelData& data = model_.data;
  const RoundModel model(model_.family, std::move(scaled), data.yNames, RowsOfColumns(data.measuredY, rows.fitted),
                         model_.recipe.scaling, limits_, work_);
  RoundFigures figures;
  figures.lastModel = model.LastModel();
  if (model.Series() != nullptr) {
    figures.block = model.Series()->Block();
    figures.r2x = model.Series()->R2X();
    figures.r2y = model.Series()->R2Y();
  }
  figures.columnsWithoutSpread = model.ColumnsWithoutSpread();
  figures.leftOut = model.Predict(leftOut, work_, first);
  if (data.classes) figures.fitted = model.Predict(fitted, work_);
  figures.coefficients = model.Coefficients(PlacesOf(names), placeOf_.size(), first);
  figures.importances = model.Importances(PlacesOf(names), placeOf_.size());
  return figures;
}

/// In the order of X, of which the model may have other columns where steps were learnt anew.
std::vector<std::size_t> RoundFits::PlacesOf(const std::vector<std::string>& names) const {
  std::vector<std::size_t> places;
  for (const std::string& name : names) {
    const auto place = placeOf_.find(name);
    places.push_back(place != placeOf_.end() ? place->second : RoundModel::kNowhere);
  }
  return places;
}

}  // namespace kalmia::analysis
