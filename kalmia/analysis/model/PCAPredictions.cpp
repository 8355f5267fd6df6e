#include "kalmia/analysis/model/PCAPredictions.h"

#include <utility>

#include "kalmia/analysis/table/internal/SingleCells.h"

namespace kalmia::analysis {

PCAPredictions PredictTable(const StoredPCA& model, const Table& /*table*/, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  PCAPredictions result;
  result.rows = std::move(rows);
  NoteMovedCells(result.rows.moved, notes);
  result.scores = ScoreRows(model, result.rows.x, progress);
  result.diagnosis = Diagnose(model, result.scores, notes);
  return result;
}

}  // namespace kalmia::analysis
