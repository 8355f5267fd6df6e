#include "kalmia/analysis/table/internal/CellNumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "kalmia/analysis/table/internal/PlainNumber.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextParts.h"

namespace kalmia::analysis {

namespace {

constexpr long long kBeyondAnyDigits = 1'000'000'000'000;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsMissingWord(std::string_view text) { return text.empty() || text == "NA" || text == "NaN" || text == "nan"; }

bool IsInfinityWord(std::string_view unsignedText) {
  if (unsignedText.empty() || (unsignedText.front() | 0x20) != 'i') return false;
  std::string lower(unsignedText);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower == "inf" || lower == "infinity";
}

long long ExponentOf(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  if (!text.empty() && !IsDigit(text.front())) text.remove_prefix(1);
  long long exponent = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), exponent).ec == std::errc::result_out_of_range) {
    exponent = kBeyondAnyDigits;
  }
  return negative ? -exponent : exponent;
}

/// Whether a number that no float can hold is too small rather than too large: its first digit that counts stands
/// behind the decimal point.
bool IsBelowOne(std::string_view number) {
  const std::size_t e = number.find_first_of("eE");
  const long long exponent = e == std::string_view::npos ? 0 : ExponentOf(number.substr(e + 1));
  const std::string_view digits = number.substr(0, e);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t first = digits.find_first_of("123456789");
  const long long place = static_cast<long long>(point) - static_cast<long long>(first);  // 1 is the place of the ones
  return exponent + (place > 0 ? place - 1 : place) < 0;
}

/// Moves a double from halfway between two floats to the side on which the text lies, if it lies on one.
double OffHalfway(double value, std::string_view text) {
  float nearest = 0.0F;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), nearest);
  if (result.ec == std::errc::result_out_of_range) return value;
  return static_cast<float>(value) == nearest ? value : std::nextafter(value, static_cast<double>(nearest));
}

/// Reads digits with a decimal point; the text begins with a digit or the point.
CellValue ReadUnsigned(std::string_view text) {
  double value = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ptr != text.data() + text.size() || result.ec == std::errc::invalid_argument) {
    return {CellKind::Word, 0.0};
  }
  if (result.ec == std::errc::result_out_of_range) {
    if (!IsBelowOne(text)) return {CellKind::TooLarge, 0.0};
    value = 0.0;
  }
  if (MayBeHalfway(value)) value = OffHalfway(value, text);
  if (std::isinf(static_cast<float>(value))) return {CellKind::TooLarge, 0.0};
  return {CellKind::Number, value};
}

bool Contains(const std::vector<std::string>& words, std::string_view text) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

CellValue ReadNumber(std::string_view text, bool decimalComma) {
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  if (IsInfinityWord(text)) return {CellKind::Infinite, 0.0};
  const char mark = decimalComma ? ',' : '.';
  if (text.empty() || (!IsDigit(text.front()) && text.front() != mark)) return {CellKind::Word, 0.0};
  CellValue cell;
  if (!decimalComma) {
    cell = ReadUnsigned(text);
  } else if (text.find('.') == std::string_view::npos) {
    std::string pointed(text);
    const std::size_t comma = pointed.find(',');
    if (comma != std::string::npos) pointed[comma] = '.';
    cell = ReadUnsigned(pointed);
  } else {
    return {CellKind::Word, 0.0};
  }
  if (negative) cell.value = -cell.value;
  return cell;
}

}  // namespace

CellValue ReadCell(std::string_view text, bool decimalComma, const std::vector<std::string>& missingWords) {
  text = WithoutBlanks(text);
  if (IsMissingWord(text) || Contains(missingWords, text)) return {CellKind::Missing, 0.0};
  return ReadNumber(text, decimalComma);
}

CellValue ReadCell(std::string_view text, const CellFormat& format) {
  return ReadCell(text, format.decimalComma, format.missingWords);
}

CellValue ReadCell(std::string_view text, bool decimalComma) { return ReadCell(text, decimalComma, {}); }

std::string CellText(double value, bool decimalComma) {
  std::string number = Shortest(value);
  if (decimalComma) std::replace(number.begin(), number.end(), '.', ',');
  return number;
}

}  // namespace kalmia::analysis
