#include "kalmia/analysis/steps/internal/ChannelSpacing.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

namespace kalmia::analysis {

namespace {

constexpr double kTolerance = 0.01;      ///< of the distance
constexpr double kMostTolerance = 0.24;  ///< the same; a gap in a row of four channels comes to a fourth
constexpr double kMostChance = 0.1;      ///< that names pass for rounded which are not
constexpr int kMostExponent = 400;       ///< beyond that of any double

struct NumberedName {
  std::string_view before;
  double number = 0.0;
  std::string_view behind;
  int lastPlace = 0;  ///< the power of 10 that the last digit counts
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) > 0x7F;  // of any alphabet
}

/// Where the number with its first digit at `digit` begins: a point and a sign are part of it where no letter or digit
/// stands before them, as in "wl -.5", but not in "x-5" or "x.5".
std::size_t BeginOfNumber(std::string_view name, std::size_t digit) {
  const auto leads = [&name](std::size_t i) { return i == 0 || (!IsLetter(name[i - 1]) && !IsDigit(name[i - 1])); };
  std::size_t begin = digit;
  if (begin > 0 && name[begin - 1] == '.' && leads(begin - 1) && (begin == 1 || name[begin - 2] != '.')) --begin;
  if (begin > 0 && (name[begin - 1] == '-' || name[begin - 1] == '+') && leads(begin - 1)) --begin;
  return begin;
}

/// The power of 10 that the last digit of a number counts: -2 for "1.25", 2 for "1.0E+03".
int LastPlace(std::string_view number) {
  const std::size_t e = std::min(number.find_first_of("eE"), number.size());
  const std::size_t point = std::min(number.find('.'), e);
  int exponent = 0;
  if (e < number.size()) {
    const char* begin = number.data() + e + (number[e + 1] == '+' ? 2 : 1);
    std::from_chars(begin, number.data() + number.size(), exponent);
  }
  const auto decimals = point < e ? static_cast<int>(e - point) - 1 : 0;
  return std::clamp(exponent, -kMostExponent, kMostExponent) - decimals;
}

/// Goes from number to number of a name.
class NumberWalk {
 public:
  explicit NumberWalk(std::string_view name) : name_(name) {}

  /// The name around its next number; nothing behind the last one, and of what only looks like one: 1.2.2020.
  std::optional<NumberedName> Next() {
    const std::size_t digit = name_.find_first_of("0123456789", end_);
    if (digit == std::string_view::npos) return std::nullopt;
    const std::size_t begin = BeginOfNumber(name_, digit);
    const bool isNegative = name_[begin] == '-';
    const char* const first = name_.data() + begin + (isNegative || name_[begin] == '+' ? 1 : 0);
    double number = 0.0;
    const auto read = std::from_chars(first, name_.data() + name_.size(), number);
    end_ = static_cast<std::size_t>(read.ptr - name_.data());
    const bool goesOn = end_ + 1 < name_.size() && name_[end_] == '.' && IsDigit(name_[end_ + 1]);
    if (read.ec != std::errc() || goesOn) return std::nullopt;
    return NumberedName{name_.substr(0, begin), isNegative ? -number : number, name_.substr(end_),
                        LastPlace(name_.substr(begin, end_ - begin))};
  }

 private:
  std::string_view name_;
  std::size_t end_ = 0;  ///< of the number before
};

/// Which of their numbers, from 1, two names do not share; 1 if they share all.
int NumberThatDiffers(std::string_view a, std::string_view b) {
  NumberWalk walkA(a);
  NumberWalk walkB(b);
  for (int which = 1;; ++which) {
    const auto ofA = walkA.Next();
    const auto ofB = walkB.Next();
    if (!ofA || !ofB) return 1;
    if (ofA->number != ofB->number) return which;
  }
}

/// The name around its number `which`, from 1.
std::optional<NumberedName> Divide(std::string_view name, int which) {
  NumberWalk walk(name);
  std::optional<NumberedName> divided;
  do {
    divided = walk.Next();
  } while (divided && --which > 0);
  return divided;
}

bool IsFloat(double distance) { return distance >= FLT_TRUE_MIN && distance <= FLT_MAX; }

/// What so many names, rounded at that place, may be off. Of few names that are no more than unequal numbers too many
/// would be so near: anywhere within half a distance to both sides, all but the first and the last of them are within
/// the tolerance t with a chance of (2 t / distance)^(names - 2).
double Tolerance(double spacing, int lastPlace, std::size_t names) {
  const double distance = std::fabs(spacing);
  const double rounding = std::min(std::pow(10.0, lastPlace), kMostTolerance * distance);
  const double chance = std::pow(2 * rounding / distance, static_cast<double>(names) - 2);
  return std::max(kTolerance * distance, chance < kMostChance ? rounding : 0.0);
}

/// The name with points for decimal commas, and with the minus of keyboards for that of typesetters, U+2212.
std::string Plain(const std::string& name, bool decimalComma) {
  const std::string minus = "\xE2\x88\x92";
  std::string plain;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name.compare(i, minus.size(), minus) == 0) {
      plain += '-';
      i += minus.size() - 1;
    } else {
      plain += decimalComma && name[i] == ',' ? '.' : name[i];
    }
  }
  return plain;
}

}  // namespace

std::optional<double> ChannelSpacing(std::vector<std::string> names, bool decimalComma) {
  const std::optional<Channels> channels = ChannelsOf(std::move(names), decimalComma);
  return channels ? std::optional<double>(channels->spacing) : std::nullopt;
}

std::optional<Channels> ChannelsOf(std::vector<std::string> names, bool decimalComma) {
  if (names.size() < 2) return std::nullopt;
  for (std::string& name : names) name = Plain(name, decimalComma);
  const int which = NumberThatDiffers(names.front(), names.back());
  const auto first = Divide(names.front(), which);
  const auto last = Divide(names.back(), which);
  if (!first || !last) return std::nullopt;
  const double spacing = (last->number - first->number) / static_cast<double>(names.size() - 1);
  if (!IsFloat(std::fabs(spacing))) return std::nullopt;
  Channels channels = {spacing, {}, std::string(first->before), std::string(first->behind)};
  int lastPlace = std::numeric_limits<int>::max();
  double farthest = 0.0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto name = Divide(names[i], which);
    if (!name || name->before != first->before || name->behind != first->behind) return std::nullopt;
    const double expected = first->number + static_cast<double>(i) * spacing;
    farthest = std::max(farthest, std::fabs(name->number - expected));
    lastPlace = std::min(lastPlace, name->lastPlace);
    channels.numbers.push_back(name->number);
  }
  if (farthest > Tolerance(spacing, lastPlace, names.size())) return std::nullopt;
  return channels;
}

}  // namespace kalmia::analysis
