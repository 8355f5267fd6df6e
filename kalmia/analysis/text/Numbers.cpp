#include "kalmia/analysis/text/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kalmia::analysis {

namespace {

constexpr std::size_t kRoom = 400;       ///< the largest double has 309 digits before the point
constexpr double kSmallestPlain = 1e-4;  ///< smaller and larger numbers are easier to read with an exponent
constexpr double kLargestPlain = 1e8;

template <class T, class... Form>
std::string Text(T value, const std::string& none, Form... form) {
  if (!std::isfinite(value)) return none;
  std::array<char, kRoom> text = {};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, form...).ptr;
  return {text.data(), end};
}

double NumberIn(const std::string& text, double otherwise) {
  double number = otherwise;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

std::string Fixed(double value, int decimals, const std::string& none) {
  std::string text = Text(value, none, std::chars_format::fixed, decimals);
  // What rounds to nothing has no sign.
  const bool isZero = text.find_first_not_of("-0.") == std::string::npos && text != none;
  return isZero && text.front() == '-' ? text.substr(1) : text;
}

std::string Significant(double value, int digits, const std::string& none) {
  if (!std::isfinite(value) || value == 0.0) return Fixed(value, digits - 1, none);
  const double magnitude = std::fabs(value);
  if (magnitude < kSmallestPlain || magnitude >= kLargestPlain) {
    return Text(value, none, std::chars_format::scientific, digits - 1);
  }
  const int place = static_cast<int>(std::floor(std::log10(magnitude)));
  return Fixed(value, std::max(0, digits - 1 - place), none);
}

std::string Shortest(double value, const std::string& none) { return Text(value, none); }

std::string Shortest(float value, const std::string& none) { return Text(value, none); }

double TimesPowerOfTen(double whole, int exponent) {
  return NumberIn(Fixed(whole, 0) + "e" + std::to_string(exponent), whole);
}

double Rounded(double value, int digits) { return NumberIn(Significant(value, digits), value); }

double ShortestDouble(float value) { return std::isfinite(value) ? NumberIn(Shortest(value), value) : value; }

}  // namespace kalmia::analysis
