#include "kalmia/pcapls/ComponentRows.h"

namespace kalmia {

NCDataMatrix<float> WithoutRows(int columns) {
  NCDataMatrix<float> matrix;
  matrix.SetSize(0, columns);
  return matrix;
}

NCDataMatrix<float> WithRow(const NCDataMatrix<float>& rows, int at, const NCDataVector<float>& row) {
  NCDataMatrix<float> longer = rows;
  longer.InsertRow(at, row);
  return longer;
}

}  // namespace kalmia
