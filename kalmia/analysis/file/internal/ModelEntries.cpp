#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

bool ReadNames(std::istream* entry, std::vector<std::string>* names) {
  return entry != nullptr && ReadNames(*entry, names);
}

bool ReadObject(std::istream* entry, VexStreamBase* object) {
  if (entry == nullptr) return false;
  try {
    return !(*entry >> *object).fail();
  } catch (const VexStreamError&) {
    return false;
  }
}

void WriteMatrices(const ConstMatrices& matrices, std::ostream& stream) {
  for (const NCDataMatrix<float>* matrix : matrices) stream << *matrix;
}

bool ReadMatrices(const Matrices& matrices, std::istream& stream) {
  for (NCDataMatrix<float>* matrix : matrices) {
    if (!ReadObject(&stream, matrix)) return false;
  }
  return true;
}

bool HasShape(const NCDataMatrix<float>* matrix, std::size_t rows, std::size_t columns) {
  return static_cast<std::size_t>(matrix->SizeRows()) == rows &&
         static_cast<std::size_t>(matrix->SizeColumns()) == columns;
}

bool HasRows(const NCDataMatrix<float>& matrix, std::size_t rows, std::size_t columns) {
  return rows == 0 ? matrix.SizeRows() == 0 : HasShape(&matrix, rows, columns);
}

bool HasShapeOrNoRows(const NCDataMatrix<float>& matrix, std::size_t rows, std::size_t columns) {
  return matrix.SizeRows() == 0 || HasShape(&matrix, rows, columns);
}

NCDataMatrix<float> LeftOf(NCDataMatrix<float> table, const ColumnScaling& scaling,
                           const std::vector<ScoresAndLoadings>& components) {
  ApplyScale(scaling, &table);
  for (const auto& [scores, loadings] : components) {
    for (int a = 1; a <= scores->SizeRows(); ++a) table.AddVprimV((*scores)[a], (*loadings)[a], -1.0F);
  }
  return table;
}

}  // namespace kalmia::analysis
