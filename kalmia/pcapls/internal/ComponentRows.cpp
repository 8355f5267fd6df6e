#include "kalmia/pcapls/internal/ComponentRows.h"

namespace kalmia {

NCDataMatrix<float> EmptyMatrix(int columns, int room) {
  NCDataMatrix<float> matrix;
  matrix.SetSize(0, columns);
  matrix.ReserveRows(room);
  return matrix;
}

NCDataMatrix<float> WithRow(const NCDataMatrix<float>& rows, int at, const NCDataVector<float>& row) {
  NCDataMatrix<float> longer = rows;
  longer.InsertRow(at, row);
  return longer;
}

}  // namespace kalmia
