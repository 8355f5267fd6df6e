#include "kalmia/pcapls/internal/ModelParts.h"

#include <algorithm>

namespace kalmia {

bool PartsAgree(std::initializer_list<ModelPart> parts) {
  for (const auto& [matrix, columns, rows] : parts) {
    if (matrix->SizeRows() == 0) continue;
    if (!columns->Takes(matrix->SizeColumns()) || (rows && !rows->Takes(matrix->SizeRows()))) return false;
  }
  return true;
}

bool HasRowsOf(const NCDataMatrix<float>& part, int cells) {
  return part.SizeRows() == 0 || part.SizeColumns() == cells;
}

bool HasAnyOf(std::initializer_list<const NCDataMatrix<float>*> parts) {
  return std::any_of(parts.begin(), parts.end(), [](const auto* part) { return part->SizeRows() > 0; });
}

NCDataMatrix<float> FilledUpTo(int rows, int columns, const NCDataMatrix<float>& part) {
  if (part.SizeRows() >= rows) return part;
  NCDataMatrix<float> filled(rows, columns);
  for (int a = 1; a <= part.SizeRows(); ++a) filled.SetRow(a, part[a]);
  return filled;
}

}  // namespace kalmia
