#include "kalmia/analysis/report/PreprocessReport.h"

#include "kalmia/analysis/report/internal/StepChainReport.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

std::string PreprocessText(const PreprocessedTable& result, const PreprocessFiles& files) {
  const Signals& signals = result.signals;
  std::string text = std::string(result.restored ? "Restored " : "Preprocessed ") +
                     Counted(signals.rowPlaces.size(), "row") + " of " + signals.table + ", " +
                     Counted(result.InputNames().size(), "column") + ", into " + OneLine(files.out) + ", " +
                     Counted(signals.names.size(), "column") + "\n";
  text += ChainText(result.chain, result.restored ? result.chain.steps.size() - 1 : 0);
  if (!files.saved.empty()) text += "\nSaved the steps as " + OneLine(files.saved) + "\n";
  return text;
}

std::string PreprocessJson(const Table& table, const PreprocessedTable& result, const PreprocessFiles& files) {
  Json json = JsonHeader("kalmia-preprocess");
  json["table"] = result.signals.table;
  json["rows"] = RowNames(table, result.idColumn);
  json["columns"] = result.InputNames();
  json["restored"] = result.restored;
  json["steps"] = ChainJson(result.chain);
  json["out"] = files.out;
  json["outColumns"] = result.signals.names;
  json["saved"] = TextOrNull(files.saved);
  json["notes"] = result.notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
