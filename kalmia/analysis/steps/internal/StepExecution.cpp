#include "kalmia/analysis/steps/internal/StepExecution.h"

#include <cmath>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/steps/internal/RowByRow.h"
#include "kalmia/analysis/steps/internal/WaveletSteps.h"
#include "kalmia/analysis/steps/internal/WindowStep.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/signal/NCTransform.h"
#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"

namespace kalmia::analysis {

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Cells = std::vector<float>;

constexpr auto kMissingCell = kalmia::kMissingCell<float>;

/// Rows and columns from 1.
std::string CellPlace(const Signals& signals, int row, int column) {
  return signals.rowPlaces[static_cast<std::size_t>(row) - 1] + ", column " +
         Quoted(signals.names[static_cast<std::size_t>(column) - 1]);
}

[[noreturn]] void Refuse(const Signals& signals, const std::string& place, const std::string& message) {
  throw BadData(signals.table + ": " + place + ": " + message);
}

TransformE::Transform TransformOf(StepKind kind) {
  switch (kind) {
    case StepKind::Log: return TransformE::TransformLog;
    case StepKind::NegLog: return TransformE::TransformNegLog;
    case StepKind::Logit: return TransformE::TransformLogit;
    case StepKind::Exp: return TransformE::TransformExp;
    case StepKind::Power: return TransformE::TransformPower;
    default: return TransformE::TransformLinear;
  }
}

TransformStruct TransformOf(const Step& step) {
  TransformStruct transform;
  transform.SetTransform(TransformOf(step.kind));
  const bool isPower = step.kind == StepKind::Power;  // c stands first, it is the one that has to be said
  for (std::size_t i = 0; i < step.parameters.size(); ++i) {
    const std::size_t constant = isPower ? (i == 0 ? 3 : i) : i + 1;
    transform.SetConstant(static_cast<int>(constant), static_cast<float>(step.parameters[i]));
  }
  return transform;
}

Matrix Transformed(const Step& step, const std::string& place, const Signals& signals, WorkProgress* progress) {
  const TransformStruct transform = TransformOf(step);
  return RowByRow(signals.cells, signals.cells.SizeColumns(), progress, [&](int r, const Vector& row) {
    Cells cells(row.begin(), row.end());
    for (int c = 1; c <= row.Size(); ++c) {
      if (row[c] == kMissingCell) continue;
      float& cell = cells[static_cast<std::size_t>(c) - 1];
      if (transform.TransformValue(&cell) != NCTransformError::ErrorNone) {
        Refuse(signals, place,
               CellPlace(signals, r, c) + " is " + Shortest(row[c]) + ", of which the step makes no number");
      }
      cell = AvoidMissingValue(cell);
    }
    return cells;
  });
}

Matrix Standardised(const std::string& place, const Signals& signals, WorkProgress* progress) {
  return RowByRow(signals.cells, signals.cells.SizeColumns(), progress, [&](int r, const Vector& row) {
    if (IsConstant(row.begin(), row.end())) {
      Refuse(signals, place, signals.rowPlaces[static_cast<std::size_t>(r) - 1] + " has no variance");
    }
    const Vector standardised = row.SNV();
    Cells cells(standardised.begin(), standardised.end());
    for (int c = 1; c <= row.Size(); ++c) {
      float& cell = cells[static_cast<std::size_t>(c) - 1];
      if (row[c] != kMissingCell) cell = AvoidMissingValue(cell);
    }
    return cells;
  });
}

/// Of the cells of a row that has one. The row's own mean is none where they sum to -99.
long double MeanOf(const Vector& row) {
  long double sum = 0;
  for (const float cell : row) sum += cell == kMissingCell ? 0.0F : cell;
  return sum / (row.Size() - row.GetNumMisVal());
}

/// What stands at place i on the trend of a row that has a cell.
std::function<long double(int)> TrendOf(const Step& step, const Vector& row) {
  long double intercept = MeanOf(row);
  long double slope = 0;
  // A line needs two cells; where there is only one the mean is all there is.
  if (step.Whole(0) == Wavelet::DetrendLinear) row.LeastSquare(nullptr, intercept, slope);
  return [=](int i) { return i * slope + intercept; };
}

Matrix Detrended(const Step& step, const Matrix& signals, WorkProgress* progress) {
  return RowByRow(signals, signals.SizeColumns(), progress, [&](int /*r*/, const Vector& row) {
    const auto trend = TrendOf(step, row);
    Cells cells(row.begin(), row.end());
    int place = 0;
    for (float& cell : cells) {
      ++place;
      if (cell != kMissingCell) cell = AvoidMissingValue(static_cast<float>(cell - trend(place)));
    }
    return cells;
  });
}

Matrix Slid(const LearntStep& learnt, const Matrix& signals, WorkProgress* progress) {
  const WindowStep window(learnt);
  return RowByRow(signals, signals.SizeColumns(), progress,
                  [&](int /*r*/, const Vector& row) { return window.Slid(row, progress); });
}

void RequireFinite(const std::string& place, const Signals& signals) {
  for (int r = 1; r <= signals.cells.SizeRows(); ++r) {
    const Vector& row = signals.cells[r];
    for (int c = 1; c <= row.Size(); ++c) {
      if (std::isfinite(row[c])) continue;
      Refuse(signals, place, CellPlace(signals, r, c) + " becomes no finite number");
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
  const std::string wrong = WrongChannels(step->step, signals.cells.SizeColumns());
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
  Matrix& cells = signals->cells;
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
