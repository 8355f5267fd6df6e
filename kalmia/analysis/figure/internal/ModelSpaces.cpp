#include "kalmia/analysis/figure/internal/ModelSpaces.h"

#include "kalmia/analysis/model/TrainingRows.h"

namespace kalmia::analysis {

namespace {

void Name(const std::string& symbol, int count, ScoreSpace* space) {
  for (int a = 1; a <= count; ++a) space->symbols.push_back(symbol + std::to_string(a));
}

template <class Model>
ScoreSpace SpaceOfModel(const Model& model) {
  ScoreSpace space;
  space.rows = ListOf("rows", model.rowNames);
  for (const auto& record : model.components) space.shares.push_back(record.r2x);
  space.trainingRows = model.rows;
  if (model.rowTerms) space.moments = model.rowTerms->scores;
  space.scores = RealMatrix(0, static_cast<std::size_t>(model.Components()));
  return space;
}

}  // namespace

ScoreSpace SpaceOf(const StoredPCA& model) {
  ScoreSpace space = SpaceOfModel(model);
  Name("t", model.Components(), &space);
  if (!model.rowNames.empty()) space.scores = TrainingScores(model);
  return space;
}

ScoreSpace SpaceOf(const StoredPLS& model) {
  ScoreSpace space = SpaceOfModel(model);
  Name("t", model.Components(), &space);
  if (!model.rowNames.empty()) space.scores = TrainingScores(model);
  return space;
}

ScoreSpace SpaceOf(const StoredOPLS& model) {
  ScoreSpace space = SpaceOfModel(model);
  Name("t", model.Predictive(), &space);
  Name("to", model.Orthogonal(), &space);
  if (!model.rowNames.empty()) space.scores = TrainingScores(model);
  return space;
}

ScoreSpace SpaceOf(const StoredO2PLS& model) {
  ScoreSpace space = SpaceOfModel(model);
  space.shares.clear();  // records are of both blocks
  Name("t", model.Joint(), &space);
  Name("to", model.XUnique(), &space);
  std::vector<std::vector<double>> vectors = VectorsOf(model.o2pls.t);
  for (std::vector<double>& unique : VectorsOf(model.o2pls.to)) vectors.push_back(std::move(unique));
  if (model.rowNames.empty()) return space;
  space.scores = RealMatrix(model.rowNames.size(), vectors.size());
  for (std::size_t a = 0; a < vectors.size(); ++a) {
    for (std::size_t i = 0; i < vectors[a].size(); ++i) space.scores(i, a) = vectors[a][i];
  }
  return space;
}

void TakeClasses(const std::optional<ClassFit>& classes, ScoreSpace* space) {
  if (!classes) return;
  space->classes = classes->classes.classOfRow;
  space->classNames = classes->classes.names;
}

FigureAxes AxesOf(const FigureRecipe& recipe, const StoredOPLS& model) {
  const auto components = static_cast<std::size_t>(model.Components());
  return AxesOf(recipe, components, 0, model.Orthogonal() > 0 ? static_cast<std::size_t>(model.Predictive()) : 1);
}

}  // namespace kalmia::analysis
