#include "app/ChannelSpacing.h"

#include <cmath>
#include <string_view>

#include "app/CellNumber.h"

namespace kalmia::app {

namespace {

constexpr double kTolerance = 0.01;  ///< of the distance: names are often rounded

struct NumberedName {
  std::string_view before;
  double number = 0.0;
  std::string_view behind;
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
  return NumberedName{name.substr(0, first), value.value, name.substr(first + digits.size())};
}

}  // namespace

std::optional<double> ChannelSpacing(const std::vector<std::string>& names) {
  if (names.size() < 2) return std::nullopt;
  const auto first = Divide(names.front());
  const auto last = Divide(names.back());
  if (!first || !last) return std::nullopt;
  const double spacing = (last->number - first->number) / static_cast<double>(names.size() - 1);
  if (spacing == 0.0) return std::nullopt;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto name = Divide(names[i]);
    if (!name || name->before != first->before || name->behind != first->behind) return std::nullopt;
    const double expected = first->number + static_cast<double>(i) * spacing;
    if (std::fabs(name->number - expected) > kTolerance * std::fabs(spacing)) return std::nullopt;
  }
  return spacing;
}

}  // namespace kalmia::app
