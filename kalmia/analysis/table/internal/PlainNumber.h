#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace kalmia::analysis {

/// A plain decimal number at the beginning of a text.
struct PlainNumber {
  const char* end = nullptr;  ///< the byte after the number; null without one, or where only ReadCell reads it
  double value = 0.0;         ///< as ReadCell gives it
  bool hasMark = false;       ///< whether it has a decimal mark
};

/// Whether the double may lie halfway between two floats: those have one bit more than a float.
inline bool MayBeHalfway(double value) {
  constexpr std::uint64_t kBeyondHalfway = (std::uint64_t{1} << 28U) - 1;
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof(bits));
  return (bits & kBeyondHalfway) == 0 && value != static_cast<double>(static_cast<float>(value));
}

/// Powers of ten that a double holds exactly.
inline constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

inline constexpr std::array<std::uint64_t, 9> kWholePowersOfTen = {1,      10,      100,      1000,     10000,
                                                                   100000, 1000000, 10000000, 100000000};

/// How many of eight bytes, from the first in memory on, are digits.
inline int DigitsAmong(std::uint64_t bytes) {
  constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0U, kZeros = 0x3030303030303030U, kSixes = 0x0606060606060606U;
  // A digit has 3 in its upper half, and keeps it when six is added.
  const std::uint64_t others = ((bytes & kHigh) ^ kZeros) | (((bytes + kSixes) & kHigh) ^ kZeros);
  return others == 0 ? 8 : __builtin_ctzll(others) / 8;
}

/// The whole number that the first `count` of eight bytes spell, 1 <= count <= 8. Zeros fill up the front; then digits
/// are joined to pairs, pairs to fours, fours to eight.
inline std::uint64_t NumberOf(std::uint64_t bytes, int count) {
  bytes <<= 64 - 8 * count;
  bytes = ((bytes & 0x0F0F0F0F0F0F0F0FU) * 2561) >> 8U;
  bytes = ((bytes & 0x00FF00FF00FF00FFU) * 6553601) >> 16U;
  return ((bytes & 0x0000FFFF0000FFFFU) * 42949672960001U) >> 32U;
}

/// Appends the digits from `at` on to a whole number, which wraps around after 19 digits, and returns the place after
/// them. Takes eight bytes at a time, which avoids a wrong guess of where digits end; leaves the last bytes of the
/// text.
inline const char* TakeManyDigits(const char* at, const char* end, std::uint64_t* number) {
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

inline const char* TakeManyDigits(const char* at, const char* /*end*/, std::uint64_t* /*number*/) { return at; }

#endif

/// The same byte by byte, to the end.
inline const char* TakeDigits(const char* at, const char* end, std::uint64_t* number) {
  std::uint64_t digits = *number;
  for (; at != end; ++at) {
    const unsigned digit = static_cast<unsigned char>(*at) - static_cast<unsigned>('0');
    if (digit > 9) break;
    digits = 10 * digits + digit;
  }
  *number = digits;
  return at;
}

/// Adds the exponent, if one follows, and returns the place after it; null if its digits are missing or too many.
inline const char* TakeExponent(const char* at, const char* end, int* exponent) {
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

/// Reads sign, digits, decimal mark and exponent as far as they go, where few digits make the result exact by one
/// multiplication or division: several times faster than ReadCell. Anything may follow [begin, end). Inline, since a
/// call for each cell of a table slows its reading by a tenth.
inline PlainNumber TakePlainNumber(const char* begin, const char* end, char mark) {
  constexpr std::ptrdiff_t kSafeDigits = 19;  // cannot exceed 64 bits
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53U;
  constexpr std::array<double, 2> kSigns = {1.0, -1.0};
  if (begin == end) return {};
  // Signs are multiplied in: they come at random, so that a branch on them would often be guessed wrong.
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

}  // namespace kalmia::analysis
