#include "kalmia/analysis/steps/StepChain.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "kalmia/analysis/steps/internal/ChannelSpacing.h"
#include "kalmia/analysis/steps/internal/StepExecution.h"
#include "kalmia/analysis/steps/internal/WaveletSteps.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/signal/SignalLength.h"

namespace kalmia::analysis {

namespace {

std::string Place(std::size_t i, const Step& step) { return "step " + std::to_string(i + 1) + ", " + StepText(step); }

/// The wavelet-compress right before step i, if that is what stands there.
const LearntStep* CompressBefore(const std::vector<LearntStep>& steps, std::size_t i) {
  return i > 0 && steps[i - 1].step.kind == StepKind::WaveletCompress ? &steps[i - 1] : nullptr;
}

/// Whether these steps leave wavelet coefficients: each wavelet-restore undoes one wavelet-compress.
bool LeaveCoefficients(const std::vector<LearntStep>& steps) {
  const auto count = [&steps](StepKind kind) {
    const auto isOfKind = [kind](const LearntStep& learnt) { return learnt.step.kind == kind; };
    return std::count_if(steps.begin(), steps.end(), isOfKind);
  };
  return count(StepKind::WaveletCompress) > count(StepKind::WaveletRestore);
}

float SpacingOf(const Signals& signals, bool areCoefficients, const std::string& place, Notes* notes) {
  const auto spacing = areCoefficients ? std::nullopt : ChannelSpacing(signals.names, signals.decimalComma);
  if (spacing) return static_cast<float>(*spacing);
  notes->Add(place + ": per channel, for " +
             (areCoefficients ? "wavelet coefficients have no distance from one another"
                              : "the names of the columns are no equally spaced numbers"));
  return 1.0F;
}

void NoteEmptyColumns(const Signals& signals, Notes* notes) {
  std::vector<std::string> empty;
  for (int c = 0; c < signals.cells.Columns(); ++c) {
    const std::vector<double> cells = signals.cells.Column(c);
    const bool isEmpty = std::all_of(cells.begin(), cells.end(), [](double cell) { return std::isnan(cell); });
    if (isEmpty) empty.push_back(signals.names[static_cast<std::size_t>(c)]);
  }
  if (!empty.empty()) notes->Add("no cell, but taken as a channel: " + Listed(empty, kColumnsNamed));
}

/// Whether the step could have learnt this from signals of so many channels.
bool CouldLearn(const LearntStep& learnt, int channels) {
  if (!IsValid(learnt.step) || !WrongChannels(learnt.step, channels).empty()) return false;
  const bool isSpaced = learnt.step.kind == StepKind::Derivative;
  if (isSpaced ? !std::isfinite(learnt.spacing) || learnt.spacing == 0.0F : learnt.spacing != 1.0F) return false;
  const std::vector<int>& positions = learnt.positions;
  if (learnt.step.kind != StepKind::WaveletCompress) return positions.empty();
  const bool rise = std::adjacent_find(positions.begin(), positions.end(), std::greater_equal<>()) == positions.end();
  return static_cast<int>(positions.size()) == learnt.step.Whole(0) && rise && positions.front() >= 1 &&
         positions.back() <= kalmia::PowerLength(channels);
}

/// As a table has them: all different, none empty.
bool AreColumnNames(const std::vector<std::string>& names) {
  const std::unordered_set<std::string_view> set(names.begin(), names.end());
  return set.size() == names.size() && set.count("") == 0;
}

/// A chain without its cells: columns come and go, as in Apply.
class NameWalk {
 public:
  explicit NameWalk(const std::vector<std::string>& names) : names_(names) {}

  bool Pass(const std::vector<LearntStep>& steps, std::size_t i) {
    const LearntStep& step = steps[i];
    if (!CouldLearn(step, static_cast<int>(names_.size()))) return false;
    if (step.step.kind == StepKind::WaveletCompress) {
      fullNames_ = std::exchange(names_, CoefficientNames(step));
    } else if (step.step.kind == StepKind::WaveletRestore) {
      if (CompressBefore(steps, i) == nullptr) return false;
      names_ = std::exchange(fullNames_, {});
    }
    return true;
  }

  const std::vector<std::string>& Names() const { return names_; }
  /// Right after a wavelet-compress: the names before it.
  const std::vector<std::string>& FullNames() const { return fullNames_; }

 private:
  std::vector<std::string> names_;
  std::vector<std::string> fullNames_;
};

NameWalk Walked(const StepChain& chain) {
  NameWalk walk(chain.inputNames);
  for (std::size_t i = 0; i < chain.steps.size(); ++i) walk.Pass(chain.steps, i);
  return walk;
}

}  // namespace

StepChain LearnChain(const std::vector<Step>& steps, Signals* signals, Notes* notes, NCProgress* progress) {
  RequireValid(steps, "the steps");
  StepChain chain;
  chain.inputNames = signals->names;
  NoteEmptyColumns(*signals, notes);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const std::string place = Place(i, steps[i]);
    LearntStep learnt;
    learnt.step = steps[i];
    if (steps[i].kind == StepKind::Derivative) {
      learnt.spacing = SpacingOf(*signals, LeaveCoefficients(chain.steps), place, notes);
    }
    Learn(place, *signals, &learnt, progress);
    chain.steps.push_back(std::move(learnt));
    Apply(chain.steps.back(), CompressBefore(chain.steps, i), place, signals, progress);
  }
  return chain;
}

void ApplyChain(const StepChain& chain, Signals* signals, NCProgress* progress) {
  for (std::size_t i = 0; i < chain.steps.size(); ++i) {
    Apply(chain.steps[i], CompressBefore(chain.steps, i), Place(i, chain.steps[i].step), signals, progress);
  }
}

std::vector<std::string> OutputNames(const StepChain& chain) { return Walked(chain).Names(); }

bool EndsCompressed(const StepChain& chain) {
  return !chain.Empty() && chain.steps.back().step.kind == StepKind::WaveletCompress;
}

void RestoreSignals(const StepChain& chain, Signals* signals, NCProgress* progress) {
  signals->fullNames = Walked(chain).FullNames();
  LearntStep restore;
  restore.step.kind = StepKind::WaveletRestore;
  Apply(restore, &chain.steps.back(), "restoring, " + StepText(chain.steps.back().step), signals,
        progress);
}

std::string LearntText(const LearntStep& step) {
  std::string text = StepText(step.step);
  if (step.step.kind == StepKind::Derivative) text += ", channels " + Shortest(step.spacing) + " apart";
  return text;
}

std::vector<int> PlacesOf(const Signals& signals, const std::vector<std::string>& names) {
  std::unordered_map<std::string_view, int> placeOf;
  for (std::size_t c = 0; c < signals.names.size(); ++c) placeOf.emplace(signals.names[c], static_cast<int>(c));
  std::vector<int> places;
  for (const std::string& name : names) places.push_back(placeOf.at(name));
  return places;
}

bool IsConsistent(const StepChain& chain) {
  if (chain.inputNames.empty() || chain.steps.empty() || !AreColumnNames(chain.inputNames)) return false;
  NameWalk walk(chain.inputNames);
  for (std::size_t i = 0; i < chain.steps.size(); ++i) {
    if (!walk.Pass(chain.steps, i)) return false;
  }
  return true;
}

bool LearnsOfRows(const Step& step) { return step.kind == StepKind::WaveletCompress; }

void NoteLearntOfAllRows(const StepChain& chain, Notes* notes) {
  for (std::size_t i = 0; i < chain.steps.size(); ++i) {
    const Step& step = chain.steps[i].step;
    if (!LearnsOfRows(step)) continue;
    notes->Add("step " + std::to_string(i + 1) + ", " + StepText(step) +
               ": chosen from all rows, those left out in cross-validation too: judge the model by new rows");
  }
}

}  // namespace kalmia::analysis
