#include "app/Steps.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <optional>
#include <string_view>
#include <system_error>

#include "app/CellNumber.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Numbers.h"
#include "app/StepLimits.h"

namespace kalmia::app {

namespace {

/// How the word of a parameter is read.
enum class Reading { Real, Whole, OddWhole, Mode, Family, WaveletOrder };

struct Parameter {
  const char* name;
  Reading reading;
  double lowest;
  double highest;
  const char* otherwise;  ///< its default; null for none
};

struct Kind {
  StepKind kind;
  const char* name;
  const char* whatItDoes;
  std::vector<Parameter> parameters;
};

constexpr double kAny = FLT_MAX;
constexpr double kMostWindow = 100001;
constexpr double kMostCells = 1 << 30;

const Parameter kA = {"a", Reading::Real, -kAny, kAny, "1"};
const Parameter kB = {"b", Reading::Real, -kAny, kAny, "0"};
const Parameter kPolynomial = {"polynomial", Reading::Whole, 2, 3, "2"};
const Parameter kFamily = {"family", Reading::Family, 0, 0, "symmlet"};
const Parameter kOrder = {"filter", Reading::WaveletOrder, 0, 0, "8"};

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
  if (cell.value == 0.0F && exact != 0.0) return std::nullopt;
  return cell.value;
}

/// What the word stands for, if it is one that the parameter takes.
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

/// "order: a whole number from 1 to 3 (1)", its default in brackets.
std::string RangeHelp(const Parameter& parameter) {
  const std::string otherwise = parameter.otherwise == nullptr ? "" : " (" + std::string(parameter.otherwise) + ")";
  std::string range = RangeText(parameter, {});
  if (parameter.reading == Reading::Real) range = "a number";
  if (parameter.reading == Reading::Family) range = "one of those below";
  return std::string(parameter.name) + ": " + range + otherwise;
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

/// "smooth:WINDOW[:POLYNOMIAL]", defaults in square brackets.
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

std::string Trimmed(std::string_view text) {
  constexpr auto kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return "";
  return std::string(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (std::size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, begin)) {
    parts.push_back(Trimmed(std::string_view(text).substr(begin, end - begin)));
    begin = end + 1;
  }
  parts.push_back(Trimmed(std::string_view(text).substr(begin)));
  return parts;
}

/// Why the parameters, each good for itself, do not go together; empty if they do.
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

/// Reads one step after the other.
class StepReader {
 public:
  explicit StepReader(const std::string& source) : source_(source) {}

  Step Read(const std::string& text) {
    ++number_;
    text_ = text;
    std::vector<std::string> words = Split(text, ':');
    const Kind* kind = FindKind(words.front());
    if (kind == nullptr) Refuse("there is no such step; there are " + KindNames());
    if (words.size() - 1 > kind->parameters.size()) Refuse("it takes the form " + Form(*kind));
    Step step{kind->kind, {}};
    for (std::size_t i = 0; i < kind->parameters.size(); ++i) {
      const bool isGiven = i + 1 < words.size();
      step.parameters.push_back(ReadParameter(*kind, kind->parameters[i], isGiven ? words[i + 1] : "", isGiven, step));
    }
    const std::string disagreement = Disagreement(step);
    if (!disagreement.empty()) Refuse(disagreement);
    return step;
  }

 private:
  double ReadParameter(const Kind& kind, const Parameter& parameter, const std::string& word, bool isGiven,
                       const Step& step) const {
    if (!isGiven && parameter.otherwise == nullptr) {
      Refuse("its " + std::string(parameter.name) + " is not said; it takes the form " + Form(kind));
    }
    const auto value = ValueOf(parameter, isGiven ? word : parameter.otherwise, !isGiven, step.parameters);
    if (!value) {
      Refuse("its " + std::string(parameter.name) + " is " + Quoted(word) + ", not " +
             RangeText(parameter, step.parameters));
    }
    return *value;
  }

  static std::string KindNames() {
    std::vector<std::string> names;
    for (const Kind& kind : Kinds()) names.emplace_back(kind.name);
    return Listed(names);
  }

  [[noreturn]] void Refuse(const std::string& reason) const {
    const std::string place = source_ + ": step " + std::to_string(number_) + ", " + Quoted(text_);
    throw Failure(ExitCode::Usage, place + ": " + reason);
  }

  const std::string& source_;
  std::string text_;
  int number_ = 0;
};

/// Lines without what follows a #, as steps with commas between them. Line ends are those of any system, and a byte
/// order mark is dropped.
std::string WithoutComments(std::string text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) text.erase(0, kByteOrderMark.size());
  std::replace(text.begin(), text.end(), '\r', '\n');
  std::string steps;
  for (const std::string& line : Split(text, '\n')) steps += line.substr(0, line.find('#')) + ",";
  return steps;
}

void RequireOrder(const std::vector<Step>& steps, const std::string& source) {
  bool compressed = false;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const bool restores = steps[i].kind == StepKind::WaveletRestore;
    if (restores && !compressed) {
      throw Failure(ExitCode::Usage, source + ": step " + std::to_string(i + 1) +
                                         ", 'wavelet-restore': it has to stand right after a wavelet-compress");
    }
    compressed = steps[i].kind == StepKind::WaveletCompress;
  }
}

std::string ParameterText(const Kind& kind, const Step& step, std::size_t i) {
  const double value = step.parameters[i];
  switch (kind.parameters[i].reading) {
    case Reading::Mode: return kModes[static_cast<std::size_t>(value) - Wavelet::DetrendMean];
    case Reading::Family: return kFamilies[static_cast<std::size_t>(value)];
    case Reading::WaveletOrder: return OrderNames(step.parameters[i - 1])[static_cast<std::size_t>(value) - 1];
    case Reading::Real: return Shortest(static_cast<float>(value));
    default: return std::to_string(step.Whole(i));
  }
}

bool IsNumberOf(double value, int first, int last) {
  return value >= first && value <= last && std::floor(value) == value;
}

bool IsValidParameter(const Kind& kind, const Step& step, std::size_t i) {
  const double value = step.parameters[i];
  switch (kind.parameters[i].reading) {
    case Reading::Mode: return IsNumberOf(value, Wavelet::DetrendMean, Wavelet::DetrendLinear);
    case Reading::Family: return IsNumberOf(value, Wavelet::FunctionBeylkin, Wavelet::FunctionBiorthogonal6);
    case Reading::WaveletOrder:
      return IsNumberOf(value, 1, Wavelet::GetNumFunctionOrder(FamilyOf(step.parameters[i - 1])));
    case Reading::Real: return IsInRange(kind.parameters[i], value) && static_cast<float>(value) == value;
    default: return IsInRange(kind.parameters[i], value);
  }
}

}  // namespace

std::vector<Step> ParseSteps(const std::string& text, const std::string& source) {
  std::vector<Step> steps;
  StepReader reader(source);
  for (const std::string& word : Split(WithoutComments(text), ',')) {
    if (!word.empty()) steps.push_back(reader.Read(word));
  }
  if (steps.empty()) throw Failure(ExitCode::Usage, source + ": there is no step");
  RequireOrder(steps, source);
  return steps;
}

std::string StepText(const Step& step) {
  const Kind& kind = *FindKind(step.kind);
  std::string text = kind.name;
  for (std::size_t i = 0; i < kind.parameters.size(); ++i) text += ":" + ParameterText(kind, step, i);
  return text;
}

bool IsValid(const Step& step) {
  const Kind* kind = FindKind(step.kind);
  if (kind == nullptr || step.parameters.size() != kind->parameters.size()) return false;
  for (std::size_t i = 0; i < step.parameters.size(); ++i) {
    if (!IsValidParameter(*kind, step, i)) return false;
  }
  return Disagreement(step).empty();
}

std::string StepsHelp() {
  std::string help = "Steps, taken in their order; what stands in square brackets may be left out:\n";
  for (const Kind& kind : Kinds()) {
    help += "  " + Form(kind) + "\n      " + kind.whatItDoes + "\n";
    std::string ranges;
    for (const Parameter& parameter : kind.parameters) {
      if (parameter.reading != Reading::WaveletOrder) ranges += (ranges.empty() ? "" : "; ") + RangeHelp(parameter);
    }
    if (!ranges.empty()) help += "      " + ranges + "\n";
    const std::string limits = StepLimits(kind.kind);
    if (!limits.empty()) help += "      " + limits + "\n";
  }
  help += CommonStepLimits();
  help += "Families and their filters (8, or the last one of a family that has no 8):\n";
  for (std::size_t family = 0; family < kFamilies.size(); ++family) {
    help += "  " + std::string(kFamilies[family]) + ": " + Either(OrderNames(static_cast<double>(family))) + "\n";
  }
  return help;
}

}  // namespace kalmia::app
