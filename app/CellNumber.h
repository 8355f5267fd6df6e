#pragma once

#include <string>
#include <string_view>

namespace kalmia::app {

/// What a cell of a table turns out to be.
enum class CellKind {
  Missing,  ///< empty, NA, NaN or nan
  Number,
  Infinite,  ///< inf or infinity, in any case and with any sign
  TooLarge,  ///< a number beyond the largest float
  Word
};

struct CellValue {
  CellKind kind = CellKind::Missing;
  float value = 0.0F;  ///< of a Number: the nearest float, which is 0 for what is too small for one
};

/// Reads a cell as a number: digits with an optional sign, decimal mark and exponent, nothing else (no grouping of
/// digits, no hexadecimals). The mark is a point, or with `decimalComma` a comma and nothing but a comma. The locale
/// has no say. Throws nothing.
CellValue ReadCell(std::string_view text, bool decimalComma);

/// The number as a cell: as few digits as bring the same float back, with that decimal mark.
std::string CellText(float value, bool decimalComma);

}  // namespace kalmia::app
