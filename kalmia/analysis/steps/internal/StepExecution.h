#pragma once

#include <string>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/steps/Signals.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

// The steps one by one; each works on the table that the step before it has made. `place` is how messages call the
// step. They throw as LearnChain does; `progress` may be null.

/// Why the step cannot work on signals of so many channels; empty if it can.
std::string WrongChannels(const Step& step, int channels);

/// Lets the step learn from the table, before it is applied.
void Learn(const std::string& place, const Signals& signals, LearntStep* step, NCProgress* progress);

/// `compress` is the wavelet-compress right before the step, which wavelet-restore needs; null after any other step.
void Apply(const LearntStep& step, const LearntStep* compress, const std::string& place, Signals* signals,
           NCProgress* progress);

}  // namespace kalmia::analysis
