#include "kalmia/analysis/steps/internal/StepKinds.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <system_error>

#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr double kAny = FLT_MAX;
constexpr double kMostWindow = 100001;  ///< sums of sixth powers of its places are well within the floats
constexpr double kMostCells = 1 << 30;  ///< the largest power of two that is an int: signals are padded to one

const Parameter kA = {"a", Reading::Real, -kAny, kAny, "1"};
const Parameter kB = {"b", Reading::Real, -kAny, kAny, "0"};
const Parameter kPolynomial = {"polynomial", Reading::Whole, 2, 3, "2"};
const Parameter kFamily = {"family", Reading::Family, 0, 0, "symmlet"};
const Parameter kOrder = {"filter", Reading::WaveletOrder, 0, 0, "8"};

const std::array<const char*, 10> kFamilies = {"beylkin",       "coiflet",       "daubechies",    "symmlet",
                                               "biorthogonal1", "biorthogonal2", "biorthogonal3", "biorthogonal4",
                                               "biorthogonal5", "biorthogonal6"};
const std::array<const char*, 2> kModes = {"mean", "linear"};  // from Wavelet::DetrendMean = 1 on

Wavelet::WaveletFunctionType FamilyOf(double number) {
  return static_cast<Wavelet::WaveletFunctionType>(static_cast<int>(number));
}

template <std::size_t Count>
std::optional<double> PlaceOf(const std::string& word, const std::array<const char*, Count>& words, int first) {
  const auto place = std::find_if(words.begin(), words.end(), [&word](const char* other) { return word == other; });
  if (place == words.end()) return std::nullopt;
  return static_cast<double>(first + (place - words.begin()));
}

template <std::size_t Count>
std::string Choices(const std::array<const char*, Count>& words) {
  return Either({words.begin(), words.end()});
}

std::vector<std::string> OrderNames(double family) {
  std::vector<std::string> names;
  const int orders = Wavelet::GetNumFunctionOrder(FamilyOf(family));
  for (int order = 1; order <= orders; ++order) {
    names.emplace_back(Wavelet::GetFunctionOrderName(FamilyOf(family), order));
  }
  return names;
}

/// The order of the family that bears the name; where the name is only the default, and the family has none of it, its
/// last one.
std::optional<double> OrderOf(const std::string& word, double family, bool isDefault) {
  const int order = Wavelet::GetFunctionOrderIndex(FamilyOf(family), word.c_str());
  if (order > 0) return order;
  if (!isDefault) return std::nullopt;
  return Wavelet::GetNumFunctionOrder(FamilyOf(family));
}

bool IsInRange(const Parameter& parameter, double value) {
  if (!(value >= parameter.lowest && value <= parameter.highest)) return false;
  if (parameter.reading == Reading::Real) return true;
  if (std::floor(value) != value) return false;
  return parameter.reading != Reading::OddWhole || std::fmod(value, 2.0) == 1.0;
}

/// The number that the word is: a real one as the nearest float, unless that makes 0 of it, a whole one digit by digit.
std::optional<double> NumberOf(const std::string& word, Reading reading) {
  const CellValue cell = ReadCell(word, false);
  if (cell.kind != CellKind::Number) return std::nullopt;
  const char* const begin = word.data() + (word.front() == '+' ? 1 : 0);
  double exact = 0.0;
  if (std::from_chars(begin, word.data() + word.size(), exact).ec != std::errc()) return std::nullopt;
  if (reading != Reading::Real) return exact;
  const auto nearest = static_cast<double>(static_cast<float>(cell.value));
  if (nearest == 0.0 && exact != 0.0) return std::nullopt;
  return nearest;
}

bool IsNumberOf(double value, int first, int last) {
  return value >= first && value <= last && std::floor(value) == value;
}

}  // namespace

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kinds = {
      {StepKind::Linear, "linear", "a x + b", {kA, kB}},
      {StepKind::Log, "log", "log10(a x + b)", {kA, kB}},
      {StepKind::NegLog, "neglog", "-log10(a x + b): absorbance from transmittance", {kA, kB}},
      {StepKind::Logit, "logit", "log10((x - a) / (b - x)), a < x < b",
       {{"a", Reading::Real, -kAny, kAny, "0"}, {"b", Reading::Real, -kAny, kAny, "1"}}},
      {StepKind::Exp, "exp", "exp(a x + b)", {kA, kB}},
      {StepKind::Power, "power", "(a x + b)^c", {{"c", Reading::Real, -kAny, kAny, nullptr}, kA, kB}},
      {StepKind::Snv, "snv", "each row less its mean, divided by its standard deviation", {}},
      {StepKind::Detrend, "detrend", "each row less its mean, or its straight line",
       {{"mode", Reading::Mode, 0, 0, "linear"}}},
      {StepKind::Smooth, "smooth", "a polynomial fitted in a sliding window",
       {{"window", Reading::OddWhole, 3, kMostWindow, "11"}, kPolynomial}},
      {StepKind::Derivative, "derivative",
       "of that polynomial, per unit of the channel names where they are equally spaced numbers",
       {{"order", Reading::Whole, 1, 3, "1"}, {"window", Reading::OddWhole, 3, kMostWindow, "11"}, kPolynomial}},
      {StepKind::WaveletDenoise, "wavelet-denoise",
       "details shrunk towards 0 by s sqrt(2 ln n), s the noise of n channels that the finest show", {kFamily, kOrder}},
      {StepKind::WaveletCompress, "wavelet-compress",
       "instead of the signals the coefficients of largest mean square over all rows",
       {{"count", Reading::Whole, 1, kMostCells, nullptr}, kFamily, kOrder}},
      {StepKind::WaveletRestore, "wavelet-restore", "after wavelet-compress: signals again from what it kept", {}}};
  return kinds;
}

const Kind* FindKind(const std::string& name) {
  const auto place = std::find_if(Kinds().begin(), Kinds().end(), [&](const Kind& kind) { return name == kind.name; });
  return place == Kinds().end() ? nullptr : &*place;
}

const Kind* FindKind(StepKind number) {
  const auto isIt = [number](const Kind& kind) { return kind.kind == number; };
  const auto place = std::find_if(Kinds().begin(), Kinds().end(), isIt);
  return place == Kinds().end() ? nullptr : &*place;
}

std::string Form(const Kind& kind) {
  std::string form = kind.name;
  std::string end;
  for (const Parameter& parameter : kind.parameters) {
    std::string name = parameter.name;
    if (name.size() > 1) std::transform(name.begin(), name.end(), name.begin(), ::toupper);
    form += (parameter.otherwise == nullptr ? ":" : "[:") + name;
    if (parameter.otherwise != nullptr) end += "]";
  }
  return form + end;
}

std::optional<double> ValueOf(const Parameter& parameter, const std::string& word, bool isDefault,
                              const std::vector<double>& before) {
  switch (parameter.reading) {
    case Reading::Mode: return PlaceOf(word, kModes, Wavelet::DetrendMean);
    case Reading::Family: return PlaceOf(word, kFamilies, Wavelet::FunctionBeylkin);
    case Reading::WaveletOrder: return OrderOf(word, before.back(), isDefault);
    default: break;
  }
  const std::optional<double> value = NumberOf(word, parameter.reading);
  return value && IsInRange(parameter, *value) ? value : std::nullopt;
}

std::string WordOf(const Parameter& parameter, double value, const std::vector<double>& before) {
  switch (parameter.reading) {
    case Reading::Mode: return kModes[static_cast<std::size_t>(value) - Wavelet::DetrendMean];
    case Reading::Family: return kFamilies[static_cast<std::size_t>(value)];
    case Reading::WaveletOrder: return OrderNames(before.back())[static_cast<std::size_t>(value) - 1];
    case Reading::Real: return Shortest(static_cast<float>(value));
    default: return std::to_string(static_cast<int>(value));
  }
}

bool IsValueOf(const Parameter& parameter, double value, const std::vector<double>& before) {
  switch (parameter.reading) {
    case Reading::Mode: return IsNumberOf(value, Wavelet::DetrendMean, Wavelet::DetrendLinear);
    case Reading::Family: return IsNumberOf(value, Wavelet::FunctionBeylkin, Wavelet::FunctionBiorthogonal6);
    case Reading::WaveletOrder: return IsNumberOf(value, 1, Wavelet::GetNumFunctionOrder(FamilyOf(before.back())));
    case Reading::Real: return IsInRange(parameter, value) && static_cast<float>(value) == value;
    default: return IsInRange(parameter, value);
  }
}

std::string RangeText(const Parameter& parameter, const std::vector<double>& before) {
  const std::string range = Shortest(parameter.lowest) + " to " + Shortest(parameter.highest);
  switch (parameter.reading) {
    case Reading::Real: return "a number up to 3.4e38, down to 1e-45 or 0";
    case Reading::Whole: return "a whole number from " + range;
    case Reading::OddWhole: return "an odd number from " + range;
    case Reading::Mode: return Choices(kModes);
    case Reading::Family: return Choices(kFamilies);
    case Reading::WaveletOrder: break;
  }
  return Either(OrderNames(before.back())) + ", which " +
         std::string(kFamilies[static_cast<std::size_t>(before.back())]) + " has";
}

std::string RangeHelp(const Parameter& parameter) {
  if (parameter.reading == Reading::WaveletOrder) return "";
  const std::string otherwise = parameter.otherwise == nullptr ? "" : " (" + std::string(parameter.otherwise) + ")";
  std::string range = RangeText(parameter, {});
  if (parameter.reading == Reading::Real) range = "a number";
  if (parameter.reading == Reading::Family) range = "one of those below";
  return std::string(parameter.name) + ": " + range + otherwise;
}

std::string FamiliesHelp() {
  std::string help;
  for (std::size_t family = 0; family < kFamilies.size(); ++family) {
    help += "  " + std::string(kFamilies[family]) + ": " + Either(OrderNames(static_cast<double>(family))) + "\n";
  }
  return help;
}

std::string Disagreement(const Step& step) {
  const bool slides = step.kind == StepKind::Derivative || step.kind == StepKind::Smooth;
  if (!slides) {
    return step.kind == StepKind::Logit && !(step.parameters[0] < step.parameters[1]) ? "a must lie below b" : "";
  }
  const int polynomial = step.Polynomial();
  if (step.Window() <= polynomial) {
    return "a polynomial of order " + std::to_string(polynomial) + " needs a window above it";
  }
  if (step.kind == StepKind::Derivative && step.Whole(0) > polynomial) {
    return "a polynomial of order " + std::to_string(polynomial) + " has no derivative of order " +
           std::to_string(step.Whole(0));
  }
  return "";
}

}  // namespace kalmia::analysis
