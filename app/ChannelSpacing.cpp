#include "app/ChannelSpacing.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "app/CellNumber.h"
#include "app/Numbers.h"

namespace kalmia::app {

namespace {

constexpr double kTolerance = 0.01;     ///< of the distance
constexpr double kMostTolerance = 0.24;  ///< the same; a gap in a row of four channels comes to a fourth

struct NumberedName {
  std::string_view before;
  double number = 0.0;
  std::string_view behind;
  int decimals = 0;
};

std::optional<NumberedName> Divide(std::string_view name) {
  constexpr auto kDigits = "0123456789";
  std::size_t first = name.find_first_of(kDigits);
  if (first == std::string_view::npos) return std::nullopt;
  const std::size_t end = name.find_first_not_of("0123456789.", first);
  if (first == 1 && name[0] == '-') first = 0;  // behind a word a dash is no sign
  const std::string_view digits = name.substr(first, end == std::string_view::npos ? end : end - first);
  const CellValue value = ReadCell(digits, false);
  if (value.kind != CellKind::Number) return std::nullopt;
  const std::size_t point = digits.find('.');
  const auto decimals = point == std::string_view::npos ? 0 : static_cast<int>(digits.size() - point) - 1;
  return NumberedName{name.substr(0, first), AsWritten(value.value), name.substr(first + digits.size()), decimals};
}

/// What names that are rounded to so many decimals may be off.
double Tolerance(double spacing, int decimals) {
  const double distance = std::fabs(spacing);
  return std::max(kTolerance * distance, std::min(std::pow(10.0, -decimals), kMostTolerance * distance));
}

}  // namespace

std::optional<double> ChannelSpacing(const std::vector<std::string>& names) {
  if (names.size() < 2) return std::nullopt;
  const auto first = Divide(names.front());
  const auto last = Divide(names.back());
  if (!first || !last) return std::nullopt;
  const double spacing = (last->number - first->number) / static_cast<double>(names.size() - 1);
  if (spacing == 0.0) return std::nullopt;
  int decimals = 0;
  double farthest = 0.0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto name = Divide(names[i]);
    if (!name || name->before != first->before || name->behind != first->behind) return std::nullopt;
    const double expected = first->number + static_cast<double>(i) * spacing;
    farthest = std::max(farthest, std::fabs(name->number - expected));
    decimals = std::max(decimals, name->decimals);
  }
  if (farthest > Tolerance(spacing, decimals)) return std::nullopt;
  return spacing;
}

}  // namespace kalmia::app
