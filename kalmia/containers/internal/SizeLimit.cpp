#include "kalmia/containers/internal/SizeLimit.h"

#include "kalmia/support/NCError.h"

void kalmia::RequireVectorSize(std::int64_t cells) {
  if (CanBeVector(cells)) return;
  CString message;
  message.Format("A vector cannot have %lld cells: the most is %d.", static_cast<long long>(cells), kMostCells);
  throw NCError(message);
}

void kalmia::RequireTableSize(std::int64_t rows, std::int64_t columns) {
  if (CanBeTable(rows, columns)) return;
  CString message;
  message.Format("A table cannot have %lld rows and %lld columns: the most is %d cells.", static_cast<long long>(rows),
                 static_cast<long long>(columns), kMostCells);
  throw NCError(message);
}
