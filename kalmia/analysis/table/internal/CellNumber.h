#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalmia::analysis {

/// The kinds of cells of a table.
enum class CellKind {
  Missing,  ///< empty, NA, NaN, nan, or one of the words that the user calls missing
  Number,
  Infinite,  ///< inf or infinity, in any case and with any sign
  TooLarge,  ///< a number beyond the largest float
  Word
};

/// Whether the text is a number, perhaps one too large for a float.
inline bool IsNumber(CellKind kind) { return kind == CellKind::Number || kind == CellKind::TooLarge; }

/// A number whose rounding to float is the float nearest to the text.
struct CellValue {
  CellKind kind = CellKind::Missing;
  /// Of a Number: the nearest double. Where that lies halfway between two floats, and would round to the float further
  /// from the text: the next double on the text's side.
  double value = 0.0;
};

/// How the cells of a table are written.
struct CellFormat {
  bool decimalComma = false;
  std::vector<std::string> missingWords;  ///< beside NA, NaN and nan
};

/// Reads a cell as a number: digits with an optional sign, decimal mark and exponent, nothing else (no grouping of
/// digits, no hexadecimals). The mark is a point, or with `decimalComma` a comma and nothing but a comma. Blanks around
/// the cell are ignored, and so is the locale. Throws nothing but std::bad_alloc.
CellValue ReadCell(std::string_view text, const CellFormat& format);
CellValue ReadCell(std::string_view text, bool decimalComma, const std::vector<std::string>& missingWords);
/// The same without further words for missing cells.
CellValue ReadCell(std::string_view text, bool decimalComma);

/// The number as a cell: as few digits as bring the same double back, with that decimal mark.
std::string CellText(double value, bool decimalComma);

}  // namespace kalmia::analysis
