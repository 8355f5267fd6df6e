#include "kalmia/analysis/steps/internal/StepExecution.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "kalmia/analysis/steps/internal/RowByRow.h"
#include "kalmia/analysis/steps/internal/WaveletSteps.h"
#include "kalmia/analysis/steps/internal/WindowStep.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"

namespace kalmia::analysis {

namespace {

using Cells = std::vector<double>;

constexpr double kLargestFloat = std::numeric_limits<float>::max();

/// Rows and columns from 0.
std::string CellPlace(const Signals& signals, int row, int column) {
  return signals.rowPlaces[static_cast<std::size_t>(row)] + ", column " +
         Quoted(signals.names[static_cast<std::size_t>(column)]);
}

[[noreturn]] void Refuse(const Signals& signals, const std::string& place, const std::string& message,
                         FailurePlace failurePlace = {}) {
  throw BadData(signals.table + ": " + place + ": " + message, std::move(failurePlace));
}

/// Row of the table, from 0.
int RowOfTable(const Signals& signals, int row) {
  return signals.rows.empty() ? row : signals.rows[static_cast<std::size_t>(row)];
}

/// Refuses the cell of row and column from 0, whose text is that of the table only before the first step.
[[noreturn]] void RefuseCell(const Signals& signals, const std::string& place, int row, int column,
                             const std::string& what) {
  Refuse(signals, place, CellPlace(signals, row, column) + what,
         InCell(RowOfTable(signals, row), signals.names[static_cast<std::size_t>(column)]));
}

/// To 44 of its 53 binary digits: logarithms, exponentials and powers differ in their last ones from processor to
/// processor. Source: Dekker (1971), Numer. Math. 18, 224-242.
double To44Digits(double value) {
  const double stretched = 513.0 * value;
  return stretched - (stretched - value);
}

/// A parameter stands for the number that its fewest digits name, 0.1 for 0.1F: so it was written.
double ParameterOf(const Step& step, std::size_t i) { return ShortestDouble(static_cast<float>(step.parameters[i])); }

/// The transformation of a cell, not a number where there is none: outside its domain, and beyond single precision,
/// which models work in.
double Calculated(const Step& step, double x) {
  const bool isPower = step.kind == StepKind::Power;  // c stands first, it is the one that has to be said
  const double a = ParameterOf(step, isPower ? 1 : 0), b = ParameterOf(step, isPower ? 2 : 1);
  double value = a * x + b;
  switch (step.kind) {
    case StepKind::Log: value = std::log10(value); break;
    case StepKind::NegLog: value = -std::log10(value); break;
    case StepKind::Logit: value = std::log10((x - a) / (b - x)); break;
    case StepKind::Exp: value = std::exp(value); break;
    case StepKind::Power: value = std::pow(value, ParameterOf(step, 0)); break;
    default: return value;  // linear
  }
  const bool isThere = (std::isnormal(value) || value == 0.0) && std::fabs(value) <= kLargestFloat;
  return isThere ? To44Digits(value) : std::numeric_limits<double>::quiet_NaN();
}

CellRows Transformed(const Step& step, const std::string& place, const Signals& signals, WorkProgress* progress) {
  const int columns = signals.cells.Columns();
  return RowByRow(signals.cells, columns, progress, [&](int r, const double* row) {
    Cells cells(row, row + columns);
    for (int c = 0; c < columns; ++c) {
      if (std::isnan(row[c])) continue;
      double& cell = cells[static_cast<std::size_t>(c)];
      cell = Calculated(step, row[c]);
      if (std::isnan(cell)) {
        RefuseCell(signals, place, r, c, " is " + Shortest(row[c]) + ", of which the step makes no number");
      }
    }
    return cells;
  });
}

/// y = mean + slope (i - place) by least squares over the places i of the present cells, from 0, of which there is one
/// at least. A line needs two cells; where there is only one, or none is asked for, the mean is all there is.
struct Trend {
  double mean = 0.0;
  double slope = 0.0;
  double place = 0.0;

  double At(int i) const { return mean + slope * (i - place); }
};

Trend TrendOf(const double* row, int columns, bool withSlope) {
  Trend trend;
  double n = 0.0;
  for (int c = 0; c < columns; ++c) {
    if (std::isnan(row[c])) continue;
    n += 1.0;
    trend.mean += row[c];
    trend.place += c;
  }
  trend.mean /= n;
  trend.place /= n;
  if (!withSlope || n < 2.0) return trend;
  double products = 0.0;
  double squares = 0.0;
  for (int c = 0; c < columns; ++c) {
    if (std::isnan(row[c])) continue;
    products += (c - trend.place) * (row[c] - trend.mean);
    squares += (c - trend.place) * (c - trend.place);
  }
  trend.slope = products / squares;
  return trend;
}

CellRows Detrended(const Step& step, const CellRows& signals, WorkProgress* progress) {
  const bool withSlope = step.Whole(0) == Wavelet::DetrendLinear;
  return RowByRow(signals, signals.Columns(), progress, [&](int /*r*/, const double* row) {
    const Trend trend = TrendOf(row, signals.Columns(), withSlope);
    Cells cells(row, row + signals.Columns());
    for (std::size_t c = 0; c < cells.size(); ++c) cells[c] -= trend.At(static_cast<int>(c));
    return cells;
  });
}

/// Whether no two of the cells differ, but for missing ones.
bool AreEqual(const double* row, int columns) {
  double first = std::numeric_limits<double>::quiet_NaN();
  for (int c = 0; c < columns; ++c) {
    if (std::isnan(row[c])) continue;
    if (std::isnan(first)) first = row[c];
    if (row[c] != first) return false;
  }
  return true;
}

/// A row of cells so small that their squares underflow, times a power of two, which the standardised row does not see;
/// any other row as it is.
Cells WithoutUnderflow(const double* row, int columns) {
  constexpr double kSmall = 0x1p-400, kFactor = 0x1p600;
  Cells cells(row, row + columns);
  const bool isSmall = std::none_of(cells.begin(), cells.end(), [](double cell) { return std::fabs(cell) > kSmall; });
  for (double& cell : cells) cell *= isSmall ? kFactor : 1.0;
  return cells;
}

/// (x - mean) / s with s^2 = sum (x - mean)^2 / (n - 1).
CellRows Standardised(const std::string& place, const Signals& signals, WorkProgress* progress) {
  const int columns = signals.cells.Columns();
  return RowByRow(signals.cells, columns, progress, [&](int r, const double* row) {
    if (AreEqual(row, columns)) {
      Refuse(signals, place, signals.rowPlaces[static_cast<std::size_t>(r)] + " has no variance",
             InRow(RowOfTable(signals, r)));
    }
    Cells cells = WithoutUnderflow(row, columns);
    const double mean = TrendOf(cells.data(), columns, /*withSlope=*/false).mean;
    double squares = 0.0;
    double n = 0.0;
    for (const double cell : cells) {
      if (std::isnan(cell)) continue;
      squares += (cell - mean) * (cell - mean);
      n += 1.0;
    }
    const double deviation = std::sqrt(squares / (n - 1.0));
    for (double& cell : cells) cell = (cell - mean) / deviation;
    return cells;
  });
}

CellRows Slid(const LearntStep& learnt, const CellRows& signals, WorkProgress* progress) {
  const WindowStep window(learnt);
  return RowByRow(signals, signals.Columns(), progress, [&](int /*r*/, const double* row) {
    return window.Slid({row, row + signals.Columns()}, progress);
  });
}

/// Models work in single precision: a number beyond it is none.
void RequireFinite(const std::string& place, const Signals& signals) {
  for (int r = 0; r < signals.cells.Rows(); ++r) {
    const double* const row = signals.cells.Row(r);
    for (int c = 0; c < signals.cells.Columns(); ++c) {
      if (!(std::fabs(row[c]) > kLargestFloat)) continue;
      RefuseCell(signals, place, r, c, " becomes no finite number");
    }
  }
}

}  // namespace

std::string WrongChannels(const Step& step, int channels) {
  const std::string counted = Counted(static_cast<std::size_t>(channels), "channel");
  if (step.kind == StepKind::Smooth || step.kind == StepKind::Derivative) {
    return step.Window() > channels ? "the window is wider than the signals, which have " + counted : "";
  }
  const int coefficients = kalmia::PowerLength(channels);
  if (step.kind == StepKind::WaveletCompress && step.Whole(0) > coefficients) {
    return "signals of " + counted + " have no more than " +
           Counted(static_cast<std::size_t>(coefficients), "coefficient");
  }
  return "";
}

void Learn(const std::string& place, const Signals& signals, LearntStep* step, NCProgress* progress) {
  const std::string wrong = WrongChannels(step->step, signals.cells.Columns());
  if (!wrong.empty()) Refuse(signals, place, wrong);
  if (step->step.kind != StepKind::WaveletCompress) return;
  WorkProgress work(progress);
  work.Begin(place);
  step->positions = LargestCoefficients(step->step, signals.cells, &work);
}

void Apply(const LearntStep& learnt, const LearntStep* compress, const std::string& place, Signals* signals,
           NCProgress* progress) {
  WorkProgress work(progress);
  work.Begin(place);
  CellRows& cells = signals->cells;
  switch (learnt.step.kind) {
    case StepKind::Snv: cells = Standardised(place, *signals, &work); break;
    case StepKind::Detrend: cells = Detrended(learnt.step, cells, &work); break;
    case StepKind::Smooth:
    case StepKind::Derivative: cells = Slid(learnt, cells, &work); break;
    case StepKind::WaveletDenoise: cells = Denoised(learnt.step, cells, &work); break;
    case StepKind::WaveletCompress:
      cells = Compressed(learnt, cells, &work);
      signals->fullNames = std::exchange(signals->names, CoefficientNames(learnt));
      break;
    case StepKind::WaveletRestore:
      cells = Restored(*compress, static_cast<int>(signals->fullNames.size()), cells, &work);
      signals->names = std::exchange(signals->fullNames, {});
      break;
    default: cells = Transformed(learnt.step, place, *signals, &work);
  }
  RequireFinite(place, *signals);
}

}  // namespace kalmia::analysis
