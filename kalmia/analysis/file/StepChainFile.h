#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <string_view>

#include "kalmia/analysis/steps/GivenSteps.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The bytes of a file that keeps a chain: docs/command/info.md describes them.
KALMIA_EXPORT std::string StepChainFileBytes(const StepChain& chain);

/// The steps in a file, of either kind: the text of ParseSteps, or a chain. Throws BadRequest for a text that makes no
/// sense, BadFile for damaged bytes. `name` is how messages call the file.
KALMIA_EXPORT GivenSteps ReadStepsFile(std::string_view bytes, const std::string& name);

/// The chain in the bytes of such a file. Throws BadFile for damaged ones.
KALMIA_EXPORT StepChain ReadStepChainFile(std::string_view bytes, const std::string& name);

/// A chain as the content of a file, or of an entry of one; without steps it has no names either. Reading is false, and
/// never throws, on bytes that hold no chain which could have been learnt, or more than it.
KALMIA_EXPORT void WriteStepChain(const StepChain& chain, std::ostream& stream);
KALMIA_EXPORT bool ReadStepChain(std::istream& stream, StepChain* chain);

}  // namespace kalmia::analysis
