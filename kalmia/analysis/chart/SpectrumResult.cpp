#include "kalmia/analysis/chart/SpectrumResult.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "kalmia/analysis/table/internal/MeasuredColumn.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/signal/FFT.h"
#include "kalmia/signal/WindowedPower.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

constexpr int kMostLags = 30;  ///< unless asked for more
constexpr int kLargestSegment = 128;
constexpr int kSmallestSegment = 2;

// In the order of the words.
constexpr FFT::DataWindowMode kWindows[] = {FFT::WindowHann, FFT::WindowWelch, FFT::WindowBartlett};
constexpr FFT::DetrendMode kDetrends[] = {FFT::DetrendNone, FFT::DetrendMean, FFT::DetrendLinear};

template <class Mode, std::size_t count>
Mode ModeOf(const Mode (&modes)[count], const std::vector<std::string>& words, const char* setting,
            const std::string& what, const std::string& word) {
  const auto place = std::find(words.begin(), words.end(), word);
  if (place == words.end()) {
    throw BadRequest("the " + what + " of a spectrum is " + Either(words) + ", not " + Quoted(word),
                     InSetting(setting));
  }
  return modes[place - words.begin()];
}

FFT::DataWindowMode WindowOf(const SpectrumRecipe& recipe) {
  return ModeOf(kWindows, WindowWords(), "window", "window", recipe.window);
}

FFT::DetrendMode DetrendOf(const SpectrumRecipe& recipe) {
  return ModeOf(kDetrends, DetrendWords(), "detrend", "detrending", recipe.detrend);
}

/// The largest power of two up to `most`, which is at least 1, and up to 2^30.
int PowerOfTwoUpTo(std::int64_t most) {
  std::int64_t power = 1;
  while (2 * power <= most) power *= 2;
  return static_cast<int>(std::min<std::int64_t>(power, 1 << 30));
}

/// The largest segment for a column of so many rows, at least 2: more than half of it has to be there.
int LargestSegment(int rows) { return PowerOfTwoUpTo(2 * static_cast<std::int64_t>(rows) - 1); }

struct Signal {
  std::string name;
  std::string where;  ///< for messages
  NCDataVector<float> cells;
};

Signal ReadSignal(const Table& table, const std::string& column, Notes* notes) {
  Signal signal = {column, table.Name() + ": the column " + Quoted(column), ReadMeasurements(table, column, notes)};
  float smallest = 0.0F, largest = 0.0F;
  signal.cells.GetMinMax(smallest, largest);
  if (smallest == largest) {
    throw BadData(signal.where + " does not vary: it has neither correlations nor a spectrum");
  }
  const int missing = signal.cells.GetNumMisVal();
  if (missing > 0) {
    notes->Add(Counted(static_cast<std::size_t>(missing), "missing cell") + " of " + Quoted(column) +
               (missing == 1 ? " is" : " are") + " filled along straight lines between the neighbours");
  }
  return signal;
}

int LagsFor(const SpectrumRecipe& recipe, const Signal& signal) {
  const int rows = signal.cells.Size();
  if (recipe.lags < 0) return std::min(kMostLags, std::max(1, rows / 4));
  if (recipe.lags <= rows) return recipe.lags;
  throw BadData(signal.where + " has " + std::to_string(rows) + " rows: its correlations go to lag " +
                    std::to_string(rows) + ", not " + std::to_string(recipe.lags),
                InSetting("lags"));
}

/// A column that varies has two rows at least.
int SegmentFor(const SpectrumRecipe& recipe, const Signal& signal) {
  const int rows = signal.cells.Size(), most = LargestSegment(rows);
  if (recipe.segment == 0) return std::min(kLargestSegment, std::max(kSmallestSegment, PowerOfTwoUpTo(rows / 2)));
  if (recipe.segment <= most) return recipe.segment;
  throw BadData(signal.where + " has " + std::to_string(rows) + " rows: a segment takes up to " +
                    std::to_string(most) + ", not " + std::to_string(recipe.segment),
                InSetting("segment"));
}

std::vector<double> Doubles(const NCDataVector<float>& cells) { return {cells.begin(), cells.end()}; }

[[noreturn]] void RefusePower(const Signal& signal) {
  throw BadData(signal.where +
                " has a power beyond single precision: its values are too large or "
                "too small, change their unit");
}

/// Whether anything is left without the trend. A straight line whose cells are rounded to floats is off
/// by up to 2^-24 of its largest cell, that of least squares through it by less, and filled cells by as much again.
bool HasRest(const Signal& signal, FFT::DetrendMode detrend) {
  if (detrend != FFT::DetrendLinear) return true;  // the column varies
  NCDataVector<float> rest(signal.cells);
  rest.InterpolateMisVals(nullptr);
  long double mean = 0, slope = 0;
  rest.DetrendLinear(mean, slope);
  float smallest = 0.0F, largest = 0.0F;
  signal.cells.GetMinMax(smallest, largest);
  const float rounding = std::ldexp(std::max(std::fabs(smallest), std::fabs(largest)), -22);
  return std::any_of(rest.begin(), rest.end(), [=](float cell) { return std::fabs(cell) > rounding; });
}

ColumnSpectrum SpectrumOf(const Signal& signal, int segment, const SpectrumRecipe& recipe) try {
  NCDataVector<float> power;
  const FFT::DetrendMode detrend = DetrendOf(recipe);
  if (!HasRest(signal, detrend)) {
    return {signal.name, signal.cells.GetNumMisVal(), std::vector<double>(static_cast<std::size_t>(segment / 2) + 1)};
  }
  FFT::PowerSpectrum(&signal.cells, segment, /*overlap=*/true, detrend, FFT::ScalingPlain, WindowOf(recipe),
                     &power);
  const bool hasPower = std::any_of(power.begin(), power.end(), [](float cell) { return cell != 0.0F; });
  if (!hasPower) RefusePower(signal);
  return {signal.name, signal.cells.GetNumMisVal(), Doubles(power)};
} catch (const NCError&) {
  RefusePower(signal);
}

std::vector<double> CorrelationsOf(const std::vector<Signal>& signals, int lags, FFT::DetrendMode detrend) {
  const Signal &first = signals.front(), &last = signals.back();
  NCDataVector<float> correlations;
  if (signals.size() > 1) {
    FFT::CrossCorrelation(&first.cells, &last.cells, detrend, lags, &correlations);
  } else {
    FFT::AutoCorrelation(&first.cells, detrend, lags, &correlations);
  }
  const auto hasRest = [detrend](const Signal& signal) { return HasRest(signal, detrend); };
  if (std::all_of(signals.begin(), signals.end(), hasRest)) return Doubles(correlations);
  return std::vector<double>(static_cast<std::size_t>(correlations.Size()));
}

}  // namespace

const std::vector<std::string>& WindowWords() {
  static const std::vector<std::string> words = {"hann", "welch", "bartlett"};
  return words;
}

const std::vector<std::string>& DetrendWords() {
  static const std::vector<std::string> words = {"none", "mean", "linear"};
  return words;
}

double SpectrumResult::CorrelationLimit() const { return 1.96 / std::sqrt(static_cast<double>(rows)); }

std::optional<int> SpectrumResult::Peak(const ColumnSpectrum& part) {
  const auto peak = std::max_element(part.power.begin() + 1, part.power.end());
  if (*peak == 0.0) return std::nullopt;
  return static_cast<int>(peak - part.power.begin());
}

std::optional<int> SpectrumResult::PeakLag() const {
  const auto isZero = [](double power) { return power == 0.0; };
  for (const ColumnSpectrum& part : parts) {
    if (std::all_of(part.power.begin(), part.power.end(), isZero)) return std::nullopt;
  }
  const auto nearer = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto peak = std::max_element(correlations.begin(), correlations.end(), nearer);
  return FirstLag() + static_cast<int>(peak - correlations.begin());
}

std::string SpectrumResult::Title() const {
  return OneLine(parts[0].column) + (IsCross() ? " and " + OneLine(parts[1].column) : "") + " of " + OneLine(table);
}

void CheckSpectrum(const SpectrumRecipe& recipe) {
  WindowOf(recipe);
  DetrendOf(recipe);
  const int segment = recipe.segment, likely = PowerOfTwoUpTo(std::max(segment, kSmallestSegment));
  if (segment == 0 || segment == likely) return;
  throw BadRequest("a segment of a spectrum has a power of two of rows, such as " + std::to_string(likely) + ", not " +
                       std::to_string(segment),
                   InSetting("segment"));
}

SpectrumResult ComputeSpectrum(const SpectrumRecipe& recipe, const Table& table, NCProgress* progress) {
  CheckSpectrum(recipe);
  WorkProgress(progress).Begin("computing correlations and spectra");
  SpectrumResult result = {};
  std::vector<Signal> signals = {ReadSignal(table, recipe.column, &result.notes)};
  if (!recipe.with.empty()) signals.push_back(ReadSignal(table, recipe.with, &result.notes));
  result.table = table.Name();
  result.rows = table.Rows();
  result.detrend = recipe.detrend;
  result.window = recipe.window;
  result.lags = LagsFor(recipe, signals.front());
  result.segment = SegmentFor(recipe, signals.front());
  result.segments = 2 * kalmia::CutIntoSegments(result.rows, result.segment / 2, /*overlap=*/true).rounds;
  result.correlations = CorrelationsOf(signals, result.lags, DetrendOf(recipe));
  for (const Signal& signal : signals) result.parts.push_back(SpectrumOf(signal, result.segment, recipe));
  return result;
}

}  // namespace kalmia::analysis
