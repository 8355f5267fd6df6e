#include "app/CellNumber.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

#include "app/Numbers.h"
#include "app/TextParts.h"

namespace kalmia::app {

namespace {

constexpr long long kBeyondAnyDigits = 1'000'000'000'000;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsMissingWord(std::string_view text) { return text.empty() || text == "NA" || text == "NaN" || text == "nan"; }

bool IsInfinityWord(std::string_view unsignedText) {
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

/// Reads digits with a decimal point; the text begins with a digit or the point.
CellValue ReadPlainNumber(std::string_view text, bool negative) {
  float value = 0.0F;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ptr != text.data() + text.size() || result.ec == std::errc::invalid_argument) {
    return {CellKind::Word, 0.0F};
  }
  if (result.ec == std::errc::result_out_of_range) {
    if (!IsBelowOne(text)) return {CellKind::TooLarge, 0.0F};
    value = 0.0F;
  }
  return {CellKind::Number, negative ? -value : value};
}

}  // namespace

CellValue ReadCell(std::string_view text, bool decimalComma) {
  text = WithoutBlanks(text);
  if (IsMissingWord(text)) return {CellKind::Missing, 0.0F};
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  if (IsInfinityWord(text)) return {CellKind::Infinite, 0.0F};
  const char mark = decimalComma ? ',' : '.';
  if (text.empty() || (!IsDigit(text.front()) && text.front() != mark)) return {CellKind::Word, 0.0F};
  if (!decimalComma) return ReadPlainNumber(text, negative);
  if (text.find('.') != std::string_view::npos) return {CellKind::Word, 0.0F};
  std::string pointed(text);
  const std::size_t comma = pointed.find(',');
  if (comma != std::string::npos) pointed[comma] = '.';
  return ReadPlainNumber(pointed, negative);
}

std::string CellText(float value, bool decimalComma) {
  std::string number = Shortest(value);
  if (decimalComma) std::replace(number.begin(), number.end(), '.', ',');
  return number;
}

}  // namespace kalmia::app
