#include "app/CellNumber.h"

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

#include "app/Numbers.h"
#include "app/TextParts.h"

namespace kalmia::app {

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

/// Whether the double may lie halfway between two floats: those have one bit more than a float.
bool MayBeHalfway(double value) {
  constexpr std::uint64_t kBeyondHalfway = (std::uint64_t{1} << 28U) - 1;
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof(bits));
  return (bits & kBeyondHalfway) == 0 && value != static_cast<double>(static_cast<float>(value));
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

CellValue ReadCell(std::string_view text, bool decimalComma, const std::vector<std::string>& missingWords) {
  text = WithoutBlanks(text);
  if (IsMissingWord(text) || Contains(missingWords, text)) return {CellKind::Missing, 0.0};
  return ReadNumber(text, decimalComma);
}

/// Powers of ten that a double holds exactly.
constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

constexpr std::array<std::uint64_t, 9> kWholePowersOfTen = {1,      10,      100,      1000,     10000,
                                                            100000, 1000000, 10000000, 100000000};

/// How many of eight bytes, from the first in memory on, are digits.
int DigitsAmong(std::uint64_t bytes) {
  constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0U, kZeros = 0x3030303030303030U, kSixes = 0x0606060606060606U;
  // A digit has 3 in its upper half, and keeps it when six is added.
  const std::uint64_t others = ((bytes & kHigh) ^ kZeros) | (((bytes + kSixes) & kHigh) ^ kZeros);
  return others == 0 ? 8 : __builtin_ctzll(others) / 8;
}

/// The number that the first `count` of eight bytes are the digits of; count >= 1. Neighbours are joined in pairs, fours
/// and all eight; zeros come in front where there are fewer.
std::uint64_t NumberOf(std::uint64_t bytes, int count) {
  bytes <<= 64 - 8 * count;
  bytes = ((bytes & 0x0F0F0F0F0F0F0F0FU) * 2561) >> 8U;
  bytes = ((bytes & 0x00FF00FF00FF00FFU) * 6553601) >> 16U;
  return ((bytes & 0x0000FFFF0000FFFFU) * 42949672960001U) >> 32U;
}

/// Reads digits as far as they go and appends them to a whole number, which wraps around behind 19 of them. The place
/// behind them. Eight bytes at a time, as nobody foresees where digits end; the last bytes of a text are left.
const char* TakeManyDigits(const char* at, const char* end, std::uint64_t* number) {
  while (end - at >= 8) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof(bytes));
    const int count = DigitsAmong(bytes);
    if (count == 0) break;
    *number = *number * kWholePowersOfTen[static_cast<std::size_t>(count)] + NumberOf(bytes, count);
    at += count;
    if (count < 8) break;
  }
  return at;
}

#else

const char* TakeManyDigits(const char* at, const char* /*end*/, std::uint64_t* /*number*/) { return at; }

#endif

/// The same byte by byte, to the end.
const char* TakeDigits(const char* at, const char* end, std::uint64_t* number) {
  std::uint64_t digits = *number;
  for (; at != end; ++at) {
    const unsigned digit = static_cast<unsigned char>(*at) - static_cast<unsigned>('0');
    if (digit > 9) break;
    digits = 10 * digits + digit;
  }
  *number = digits;
  return at;
}

/// Reads an exponent, if one follows, and adds it. The place behind it; null if its digits are missing or too many.
const char* TakeExponent(const char* at, const char* end, int* exponent) {
  if (at == end || (*at != 'e' && *at != 'E')) return at;
  ++at;
  const bool negative = at != end && *at == '-';
  if (at != end && (*at == '-' || *at == '+')) ++at;
  std::uint64_t digits = 0;
  const char* const behind = TakeDigits(at, end, &digits);
  if (behind == at || behind - at > 3) return nullptr;
  *exponent += (negative ? -1 : 1) * static_cast<int>(digits);
  return behind;
}

}  // namespace

CellValue ReadCell(std::string_view text, const CellFormat& format) {
  return ReadCell(text, format.decimalComma, format.missingWords);
}

CellValue ReadCell(std::string_view text, bool decimalComma) { return ReadCell(text, decimalComma, {}); }

PlainNumber ReadPlainNumber(const char* begin, const char* end, char mark) {
  constexpr std::ptrdiff_t kSafeDigits = 19;  // cannot exceed 64 bits
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53U;
  constexpr std::array<double, 2> kSigns = {1.0, -1.0};
  if (begin == end) return {};
  // Signs come at random: they are counted and multiplied in, as no processor foresees a branch on them.
  const int negative = static_cast<int>(*begin == '-');
  const char* const first = begin + (negative | static_cast<int>(*begin == '+'));
  std::uint64_t digits = 0;
  const char* at = TakeDigits(first, end, &digits);
  std::ptrdiff_t count = at - first;
  PlainNumber number;
  number.hasMark = at != end && *at == mark;
  std::ptrdiff_t decimals = 0;
  if (number.hasMark) {
    const char* const behindMark = at + 1;
    at = TakeDigits(TakeManyDigits(behindMark, end, &digits), end, &digits);
    decimals = at - behindMark;
    count += decimals;
  }
  if (count == 0 || count > kSafeDigits || digits > kExactIntegers) return {};
  auto exponent = -static_cast<int>(decimals);
  at = TakeExponent(at, end, &exponent);
  if (at == nullptr || std::abs(exponent) >= static_cast<int>(kPowersOfTen.size())) return {};
  const double power = kPowersOfTen[static_cast<std::size_t>(std::abs(exponent))];
  const auto whole = static_cast<double>(static_cast<std::int64_t>(digits));
  const double value = exponent < 0 ? whole / power : whole * power;  // exact operands: rounded once
  if (MayBeHalfway(value)) return {};
  number.value = value * kSigns[static_cast<std::size_t>(negative)];
  number.end = at;
  return number;
}

std::string CellText(float value, bool decimalComma) {
  std::string number = Shortest(value);
  if (decimalComma) std::replace(number.begin(), number.end(), '.', ',');
  return number;
}

}  // namespace kalmia::app
