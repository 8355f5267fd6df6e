#include "kalmia/analysis/fit/PredictResult.h"

#include <algorithm>
#include <string>
#include <utility>

#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/PredictionErrors.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"

namespace kalmia::analysis {

namespace {

/// A model of one block without components says that rows lie at the mean, unless it is what is left where none was
/// kept; one of two blocks says nothing.
template <class Model>
bool PredictsNothing(const Model& model) {
  return model.Components() == 0 && !model.rowTerms;
}
bool PredictsNothing(const StoredO2PLS& model) { return model.Components() == 0; }

/// What measured values of Y should not be taken for.
void NoteErrors(const YModelInfo& model, const PLSPredictions& result, Notes* notes) {
  NoteUncovered(model, result, notes);
  NoteOwnRows(model, result.rows, result.diagnosis, notes);
}
void NoteErrors(const StoredPCA& model, const PCAPredictions& result, Notes* notes) {
  NoteOwnRows(model, result.rows, result.diagnosis, notes);
}

/// Rows without any cell have no prediction at all, and a reason of their own.
void NoteHoles(const NCDataMatrix<float>& x, Notes* notes) {
  std::size_t rows = 0;
  int most = 0;
  for (int row = 1; row <= x.SizeRows(); ++row) {
    const int missing = x[row].GetNumMisVal();
    if (missing == 0 || missing == x.SizeColumns()) continue;
    ++rows;
    most = std::max(most, missing);
  }
  if (rows == 0) return;
  notes->Add(Counted(rows, "row") + " with missing cells, up to " + std::to_string(most) + " of " +
             std::to_string(x.SizeColumns()) +
             ": what is told of such rows is less certain than of complete ones, whose limits and intervals they have");
}

template <class Model>
auto PredictNewRows(const Model& model, const Table& table, const std::string& id, NCProgress* progress) {
  if (PredictsNothing(model)) throw BadRequest("the model has no component, and predicts nothing");
  return WithoutLibraryErrors([&] {
    Notes notes;
    NewRows rows = ReadNewRows(model, table, id, &notes, progress);
    NoteHoles(rows.x, &notes);
    auto result = PredictTable(model, table, std::move(rows), &notes, progress);
    NoteErrors(model, result, &notes);
    NoteNoDistances(model, model.Components(), &notes);
    result.notes = std::move(notes);
    return result;
  });
}

}  // namespace

PLSPredictions Predict(const StoredPLS& model, const Table& table, const std::string& id, NCProgress* progress) {
  return PredictNewRows(model, table, id, progress);
}

PLSPredictions Predict(const StoredOPLS& model, const Table& table, const std::string& id, NCProgress* progress) {
  return PredictNewRows(model, table, id, progress);
}

PLSPredictions Predict(const StoredO2PLS& model, const Table& table, const std::string& id, NCProgress* progress) {
  return PredictNewRows(model, table, id, progress);
}

PCAPredictions Predict(const StoredPCA& model, const Table& table, const std::string& id, NCProgress* progress) {
  return PredictNewRows(model, table, id, progress);
}

}  // namespace kalmia::analysis
