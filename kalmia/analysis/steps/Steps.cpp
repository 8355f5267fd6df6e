#include "kalmia/analysis/steps/Steps.h"

#include <algorithm>
#include <string_view>

#include "kalmia/analysis/steps/internal/StepKinds.h"
#include "kalmia/analysis/steps/internal/StepLimits.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/TextParts.h"

namespace kalmia::analysis {

namespace {

/// The parts between the separators, without blanks around them.
std::vector<std::string> Words(const std::string& text, char separator) {
  std::vector<std::string> words = Split(text, separator);
  for (std::string& word : words) word = std::string(WithoutBlanks(word));
  return words;
}

/// Reads one step after the other.
class StepReader {
 public:
  explicit StepReader(const std::string& source) : source_(source) {}

  Step Read(const std::string& text) {
    ++number_;
    text_ = text;
    std::vector<std::string> words = Words(text, ':');
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
    throw BadRequest(place + ": " + reason, FailurePlace{{}, {}, text_});
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
      throw BadRequest(source + ": step " + std::to_string(i + 1) +
                       ", 'wavelet-restore': it has to stand right after a wavelet-compress",
                       FailurePlace{{}, {}, "wavelet-restore"});
    }
    compressed = steps[i].kind == StepKind::WaveletCompress;
  }
}

}  // namespace

std::vector<Step> ParseSteps(const std::string& text, const std::string& source) {
  std::vector<Step> steps;
  StepReader reader(source);
  for (const std::string& word : Words(WithoutComments(text), ',')) {
    if (!word.empty()) steps.push_back(reader.Read(word));
  }
  if (steps.empty()) throw BadRequest(source + ": there is no step");
  RequireOrder(steps, source);
  return steps;
}

std::string StepText(const Step& step) {
  const Kind& kind = *FindKind(step.kind);
  std::string text = kind.name;
  std::vector<double> before;
  for (std::size_t i = 0; i < kind.parameters.size(); ++i) {
    text += ":" + WordOf(kind.parameters[i], step.parameters[i], before);
    before.push_back(step.parameters[i]);
  }
  return text;
}

bool IsValid(const Step& step) {
  const Kind* kind = FindKind(step.kind);
  if (kind == nullptr || step.parameters.size() != kind->parameters.size()) return false;
  std::vector<double> before;
  for (std::size_t i = 0; i < step.parameters.size(); ++i) {
    if (!IsValueOf(kind->parameters[i], step.parameters[i], before)) return false;
    before.push_back(step.parameters[i]);
  }
  return Disagreement(step).empty();
}

std::string StepsHelp() {
  std::string help = "Steps, taken in their order; what stands in square brackets may be left out:\n";
  for (const Kind& kind : Kinds()) {
    help += "  " + Form(kind) + "\n      " + kind.whatItDoes + "\n";
    std::string ranges;
    for (const Parameter& parameter : kind.parameters) {
      const std::string range = RangeHelp(parameter);
      if (!range.empty()) ranges += (ranges.empty() ? "" : "; ") + range;
    }
    if (!ranges.empty()) help += "      " + ranges + "\n";
    const std::string limits = StepLimits(kind.kind);
    if (!limits.empty()) help += "      " + limits + "\n";
  }
  help += CommonStepLimits();
  help += "Families and their filters (8, or the last one of a family that has no 8):\n" + FamiliesHelp();
  return help;
}

void RequireValid(const std::vector<Step>& steps, const std::string& source) {
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (IsValid(steps[i])) continue;
    throw BadRequest(source + ": step " + std::to_string(i + 1) + " is none, or its parameters are out of range");
  }
  RequireOrder(steps, source);
}

}  // namespace kalmia::analysis
