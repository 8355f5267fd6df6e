#include <algorithm>
#include <cmath>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/MeasuredColumn.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"
#include "app/SpectrumResult.h"
#include "app/WorkProgress.h"
#include "kalmia/signal/FFT.h"
#include "kalmia/signal/WindowedPower.h"
#include "kalmia/support/NCError.h"

namespace kalmia::app {

namespace {

constexpr int kMostLags = 30;      ///< unless asked for more
constexpr int kLargestSegment = 128;

FFT::DetrendMode DetrendModeOf(const std::string& word) {
  if (word == "none") return FFT::DetrendNone;
  return word == "linear" ? FFT::DetrendLinear : FFT::DetrendMean;
}

FFT::DataWindowMode WindowOf(const std::string& word) {
  if (word == "bartlett") return FFT::WindowBartlett;
  return word == "welch" ? FFT::WindowWelch : FFT::WindowHann;
}

/// The largest power of two that is at most `most`, which is at least 1.
int PowerOfTwoUpTo(std::int64_t most) {
  std::int64_t power = 1;
  while (2 * power <= most) power *= 2;
  return static_cast<int>(std::min<std::int64_t>(power, 1 << 30));
}

void CheckSegment(int segment) {
  if (segment == 0 || PowerOfTwoUpTo(segment) == segment) return;
  throw BadRequest("spectrum: --segment takes a power of two, such as " + std::to_string(PowerOfTwoUpTo(segment)) +
                   ", not " + std::to_string(segment) + "; see kalmia spectrum --help");
}

struct Signal {
  std::string name;
  std::string where;  ///< for messages
  NCDataVector<float> cells;
};

Signal ReadSignal(const CsvTable& table, const std::string& column, Notes* notes) {
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

int LagsFor(const SpectrumOptions& options, const Signal& signal) {
  const int rows = signal.cells.Size();
  if (options.lags < 0) return std::min(kMostLags, std::max(1, rows / 4));
  if (options.lags <= rows) return options.lags;
  throw BadData(signal.where + " has " + std::to_string(rows) + " rows: --lags takes 0 to " + std::to_string(rows) +
                ", not " + std::to_string(options.lags));
}

/// The library needs more than half a segment. A column that varies has two rows at least.
int SegmentFor(const SpectrumOptions& options, const Signal& signal) {
  const int rows = signal.cells.Size();
  if (options.segment == 0) return std::min(kLargestSegment, std::max(2, PowerOfTwoUpTo(rows / 2)));
  if (options.segment / 2 < rows) return options.segment;
  const int most = PowerOfTwoUpTo(2 * static_cast<std::int64_t>(rows) - 1);
  throw BadData(signal.where + " has " + std::to_string(rows) + " rows: --segment takes a power of two from 2 to " +
                std::to_string(most) + ", not " + std::to_string(options.segment));
}

std::vector<double> Doubles(const NCDataVector<float>& cells) { return {cells.begin(), cells.end()}; }

[[noreturn]] void RefusePower(const Signal& signal) {
  throw BadData(signal.where +
                " has a power beyond single precision: its values are too large or "
                "too small, change their unit");
}

/// Whether anything is left without what --detrend takes off. A straight line whose cells are rounded to floats is off
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

ColumnSpectrum SpectrumOf(const Signal& signal, int segment, const SpectrumOptions& options) try {
  NCDataVector<float> power;
  const FFT::DetrendMode detrend = DetrendModeOf(options.detrend);
  if (!HasRest(signal, detrend)) {
    return {signal.name, signal.cells.GetNumMisVal(), std::vector<double>(static_cast<std::size_t>(segment / 2) + 1)};
  }
  FFT::PowerSpectrum(&signal.cells, segment, /*overlap=*/true, detrend, FFT::ScalingPlain, WindowOf(options.window),
                     &power);
  const bool hasPower = std::any_of(power.begin(), power.end(), [](float cell) { return cell != 0.0F; });
  if (!hasPower) RefusePower(signal);
  return {signal.name, signal.cells.GetNumMisVal(), Doubles(power)};
} catch (const NCError&) {
  RefusePower(signal);
}

SpectrumResult Analyse(const std::vector<Signal>& signals, const SpectrumOptions& options) {
  const Signal &first = signals.front(), &last = signals.back();
  SpectrumResult result = {};
  result.rows = first.cells.Size();
  result.detrend = options.detrend;
  result.window = options.window;
  result.lags = LagsFor(options, first);
  result.segment = SegmentFor(options, first);
  result.segments = 2 * kalmia::CutIntoSegments(result.rows, result.segment / 2, /*overlap=*/true).rounds;
  NCDataVector<float> correlations;
  const FFT::DetrendMode detrend = DetrendModeOf(options.detrend);
  if (signals.size() > 1) {
    FFT::CrossCorrelation(&first.cells, &last.cells, detrend, result.lags, &correlations);
  } else {
    FFT::AutoCorrelation(&first.cells, detrend, result.lags, &correlations);
  }
  result.correlations = Doubles(correlations);
  for (const Signal& signal : signals) {
    if (!HasRest(signal, detrend)) std::fill(result.correlations.begin(), result.correlations.end(), 0.0);
  }
  for (const Signal& signal : signals) result.parts.push_back(SpectrumOf(signal, result.segment, options));
  return result;
}

std::vector<FilePlace> OutputsOf(const SpectrumOptions& options) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, {"correlation.csv", "power.csv"});
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  return places;
}

void WriteFiles(const SpectrumOptions& options, const SpectrumResult& result) {
  OutputFiles files;
  if (!options.csvFolder.empty()) {
    files.MakeFolder(options.csvFolder);
    for (const CsvFile& file : SpectrumCsvFiles(result, MarksOf(options.csvMarks))) {
      files.Stage(options.csvFolder + "/" + file.name, file.bytes);
    }
  }
  if (!options.svg.empty()) files.Stage(options.svg, SpectrumSvg(result));
  files.Commit();
}

}  // namespace

std::string RunCommand(const SpectrumOptions& options, Notes* notes) {
  CheckSegment(options.segment);
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  const CsvTable table = ReadTable(options.table, options.reading);
  std::vector<Signal> signals = {ReadSignal(table, options.column, notes)};
  if (!options.with.empty()) signals.push_back(ReadSignal(table, options.with, notes));
  TerminalBar bar;
  WorkProgress(bar.Get()).Begin("computing correlations and spectra");
  SpectrumResult result = Analyse(signals, options);
  result.table = table.Name();
  WriteFiles(options, result);
  return options.json ? SpectrumJson(result, *notes) : SpectrumText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
