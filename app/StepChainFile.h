#pragma once

#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "app/StepChain.h"

namespace kalmia::app {

/// What --steps or --steps-file gives: steps that have yet to learn, or a chain that has learnt.
struct GivenSteps {
  std::string name;  ///< how messages call the source
  std::vector<Step> steps;
  std::optional<StepChain> chain;
};

/// Reads the steps in the text of --steps, or, where that is empty, those in the file of --steps-file, of either kind:
/// the text of ParseSteps, or what --save has written. Throws BadRequest for a text that makes no sense, BadFile
/// for a file that cannot be read or is damaged.
GivenSteps ReadSteps(const std::string& text, const std::string& path);

/// The bytes of a file that keeps a chain: docs/command/info.md describes them.
std::string StepChainFileBytes(const StepChain& chain);

/// The chain in the bytes of such a file. Throws BadFile for damaged ones.
StepChain ReadStepChainFile(std::string_view bytes, const std::string& name);

/// A chain as the content of a file, or of an entry of one; without steps it has no names either. Reading is false, and
/// never throws, on bytes that hold no chain which could have been learnt, or more than it.
void WriteStepChain(const StepChain& chain, std::ostream& stream);
bool ReadStepChain(std::istream& stream, StepChain* chain);

}  // namespace kalmia::app
