#pragma once

#include <string>

#include "app/StepChain.h"

namespace kalmia::app {

// The steps one by one. Each takes the table as the former step has left it and leaves it to the next one. `place` is
// how messages call the step. They throw Failure (BadData) as LearnChain says.

/// Why the step cannot work on signals of so many channels; empty if it can.
std::string WrongChannels(const Step& step, int channels);

/// Takes from the table what the step has to learn, before it is applied.
void Learn(const std::string& place, const Signals& signals, LearntStep* step);

/// `compress` is the last wavelet-compress before the step, null without one.
void Apply(const LearntStep& step, const LearntStep* compress, const std::string& place, Signals* signals);

}  // namespace kalmia::app
