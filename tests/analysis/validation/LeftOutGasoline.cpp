#include "validation/LeftOutGasoline.h"

#include "TestTables.h"

using kalmia::analysis::JudgeLeftOutRows;
using kalmia::analysis::RealMatrix;

namespace {

constexpr int kMostComponents = 6;

}  // namespace

LeftOutGasoline ReadLeftOutGasoline(const std::string& scaling) {
  const kalmia::analysis::Table table = CsvAt(KALMIA_ANALYSIS_DATA_DIR "/left_out_gasoline.csv");
  LeftOutGasoline gasoline;
  gasoline.octane = NumbersOf(table, "octane");
  gasoline.t2 = NumbersOf(table, "t2");
  std::vector<RealMatrix> predicted;
  for (int a = 0; a <= kMostComponents; ++a) {
    predicted.push_back(ColumnOf(NumbersOf(table, scaling + std::to_string(a))));
  }
  gasoline.errors = JudgeLeftOutRows(ColumnOf(gasoline.octane), {predicted});
  return gasoline;
}

RealMatrix ColumnOf(const std::vector<double>& cells) {
  RealMatrix column(cells.size(), 1);
  column.cells = cells;
  return column;
}
