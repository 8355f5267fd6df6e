#pragma once

#include <string>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/steps/Signals.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

// The steps one by one. Each takes the table as the former step has left it and leaves it to the next one. `place` is
// how messages call the step. They throw Failure as LearnChain says; `progress` may be null.

/// Why the step cannot work on signals of so many channels; empty if it can.
std::string WrongChannels(const Step& step, int channels);

/// Takes from the table what the step has to learn, before it is applied.
void Learn(const std::string& place, const Signals& signals, LearntStep* step, NCProgress* progress);

/// `compress` is the wavelet-compress right before the step, null if something else stands there: wavelet-restore needs
/// it.
void Apply(const LearntStep& step, const LearntStep* compress, const std::string& place, Signals* signals,
           NCProgress* progress);

}  // namespace kalmia::analysis
