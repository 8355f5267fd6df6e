#include "kalmia/pcapls/ModelParts.h"

namespace kalmia {

bool PartsAgree(std::initializer_list<ModelPart> parts) {
  for (const auto& [matrix, rows, columns] : parts)
    if (matrix->SizeRows() > 0 && !(rows->Takes(matrix->SizeRows()) && columns->Takes(matrix->SizeColumns())))
      return false;
  return true;
}

bool HasRowsOf(const NCDataMatrix<float>& part, int cells) {
  return part.SizeRows() == 0 || part.SizeColumns() == cells;
}

NCDataMatrix<float> OrMissingRows(const NCDataMatrix<float>& part, int rows, int columns) {
  return part.SizeRows() > 0 || rows == 0 ? part : NCDataMatrix<float>(rows, columns);
}

}  // namespace kalmia
