#include "app/StepWork.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Numbers.h"
#include "app/Scaling.h"
#include "app/WaveletSteps.h"
#include "app/WindowStep.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/signal/NCTransform.h"
#include "kalmia/signal/Wavelet.h"

namespace kalmia::app {

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr auto kMissingCell = kalmia::kMissingCell<float>;

/// Rows and columns from 1.
std::string CellPlace(const Signals& signals, int row, int column) {
  return signals.rowPlaces[static_cast<std::size_t>(row) - 1] + ", column " +
         Quoted(signals.names[static_cast<std::size_t>(column) - 1]);
}

[[noreturn]] void Refuse(const Signals& signals, const std::string& place, const std::string& message) {
  throw Failure(ExitCode::BadData, signals.table + ": " + place + ": " + message);
}

/// A cell that was there, and has become the missing value as a number, becomes the next one.
void KeepPresent(const Vector& before, Vector* row) {
  for (int c = 1; c <= row->Size(); ++c) {
    if (before[c] != kMissingCell && (*row)[c] == kMissingCell) (*row)(c, UnlessMissing(kMissingCell));
  }
}

/// Every row by its own: `work` turns a row with a cell in it into another one.
template <class Work>
void EachRow(Signals* signals, const Work& work) {
  Matrix result;
  result.ReserveRows(signals->cells.SizeRows());
  for (int r = 1; r <= signals->cells.SizeRows(); ++r) {
    Vector row(signals->cells[r]);
    if (row.GetNumMisVal() < row.Size()) work(r, &row);
    result.push_back(row);
  }
  signals->cells = result;
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

void Transform(const Step& step, const std::string& place, Signals* signals) {
  const Matrix before = signals->cells;
  NCTransform transform(before.SizeColumns());
  for (int c = 1; c <= before.SizeColumns(); ++c) transform[c] = TransformOf(step);
  const std::unique_ptr<NCTransformErrors> errors(transform.TransformMatrixNoBreak(&signals->cells));
  if (errors) {
    const NCTransformError& first = *errors->GetFirstError();
    Refuse(*signals, place, CellPlace(*signals, first.Row, first.Column) + " is " +
                                Shortest(before[first.Row][first.Column]) + ", of which the step makes no number");
  }
  for (int r = 1; r <= before.SizeRows(); ++r) {
    for (int c = 1; c <= before.SizeColumns(); ++c) {
      if (before[r][c] == kMissingCell || signals->cells[r][c] != kMissingCell) continue;
      signals->cells(r, c, UnlessMissing(kMissingCell));
    }
  }
}

/// No two of its cells differ.
bool IsConstant(const Vector& row) {
  const auto isPresent = [](float cell) { return cell != kMissingCell; };
  const auto first = std::find_if(row.begin(), row.end(), isPresent);
  return std::all_of(first, row.end(), [&](float cell) { return !isPresent(cell) || cell == *first; });
}

void StandardNormalVariate(const std::string& place, Signals* signals) {
  EachRow(signals, [&](int r, Vector* row) {
    if (IsConstant(*row)) {
      Refuse(*signals, place, signals->rowPlaces[static_cast<std::size_t>(r) - 1] + " has no variance");
    }
    const Vector before(*row);
    *row = row->SNV();
    KeepPresent(before, row);
  });
}

/// What stands at place i on the trend of a row that has a cell.
std::function<long double(int)> TrendOf(const Step& step, const Vector& row) {
  long double intercept = row.GetMean();
  long double slope = 0;
  // A line needs two cells; where there is only one the mean is all there is.
  if (step.Whole(0) == Wavelet::DetrendLinear) row.LeastSquare(nullptr, intercept, slope);
  return [=](int i) { return i * slope + intercept; };
}

void Detrend(const Step& step, Signals* signals) {
  EachRow(signals, [&](int /*r*/, Vector* row) {
    const auto trend = TrendOf(step, *row);
    for (int c = 1; c <= row->Size(); ++c) {
      const float cell = (*row)[c];
      if (cell != kMissingCell) (*row)(c, UnlessMissing(static_cast<float>(cell - trend(c))));
    }
  });
}

void Slide(const LearntStep& learnt, Signals* signals) {
  const WindowStep window(learnt);
  EachRow(signals, [&](int /*r*/, Vector* row) { *row = window.Slid(*row); });
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
  if (step.kind == StepKind::WaveletCompress && step.Whole(0) > Coefficients(channels)) {
    return "signals of " + counted + " have no more than " + std::to_string(Coefficients(channels)) + " coefficients";
  }
  return "";
}

void Learn(const std::string& place, const Signals& signals, LearntStep* step) {
  const std::string wrong = WrongChannels(step->step, signals.cells.SizeColumns());
  if (!wrong.empty()) Refuse(signals, place, wrong);
  if (step->step.kind == StepKind::WaveletCompress) step->positions = LargestCoefficients(step->step, signals.cells);
}

void Apply(const LearntStep& learnt, const LearntStep* compress, const std::string& place, Signals* signals) {
  switch (learnt.step.kind) {
    case StepKind::Snv: StandardNormalVariate(place, signals); break;
    case StepKind::Detrend: Detrend(learnt.step, signals); break;
    case StepKind::Smooth:
    case StepKind::Derivative: Slide(learnt, signals); break;
    case StepKind::WaveletDenoise: signals->cells = Denoised(learnt.step, signals->cells); break;
    case StepKind::WaveletCompress:
      signals->cells = Compressed(learnt, signals->cells);
      signals->fullNames = std::move(signals->names);
      signals->names = CoefficientNames(learnt);
      break;
    case StepKind::WaveletRestore:
      signals->cells = Restored(*compress, static_cast<int>(signals->fullNames.size()), signals->cells);
      signals->names = std::move(signals->fullNames);
      signals->fullNames.clear();
      break;
    default: Transform(learnt.step, place, signals);
  }
  RequireFinite(place, *signals);
}

}  // namespace kalmia::app
