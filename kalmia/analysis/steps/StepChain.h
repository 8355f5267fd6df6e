#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/steps/Signals.h"
#include "kalmia/analysis/steps/Steps.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Steps of preprocessing as they are applied to one table after the other.
struct StepChain {
  std::vector<std::string> inputNames;  ///< columns that the steps take, at least one
  std::vector<LearntStep> steps;

  bool Empty() const { return steps.empty(); }
};

/// Applies the steps to the table in place, in double, one after the other, and keeps what they learn of it. Missing
/// cells: those of column transformations, snv and detrend stay missing; a window makes do with the cells it has;
/// wavelets see them filled along straight lines, and wavelet-denoise leaves them missing. A row without a cell stays
/// so.
/// Notes columns without a cell, and where the spacing of a derivative is 1 for want of numbers in the names.
/// `progress` may be null. Throws Stopped where the bar wants to stop.
/// Throws BadData that names table, row, column and step: a cell that the step cannot take, or of which it
/// makes no finite number; a row without variance for snv; a window wider than the signals; more coefficients to keep
/// than there are.
KALMIA_EXPORT StepChain LearnChain(const std::vector<Step>& steps, Signals* signals, Notes* notes,
                                   NCProgress* progress = nullptr);

/// The same steps with what they have learnt. The columns are those of chain.inputNames. Throws as LearnChain.
KALMIA_EXPORT void ApplyChain(const StepChain& chain, Signals* signals, NCProgress* progress = nullptr);

/// Names of the columns that come out of the chain.
KALMIA_EXPORT std::vector<std::string> OutputNames(const StepChain& chain);

/// Whether the last step is wavelet-compress.
KALMIA_EXPORT bool EndsCompressed(const StepChain& chain);

/// Brings the signals before a last wavelet-compress back, from what it has kept of them: columns are
/// OutputNames(chain). Coefficients that were not kept are 0, a missing one too; a row without any stays so.
KALMIA_EXPORT void RestoreSignals(const StepChain& chain, Signals* signals, NCProgress* progress = nullptr);

/// "derivative:1:15:2, channels 2 apart": the step with what it has learnt, for a reader.
KALMIA_EXPORT std::string LearntText(const LearntStep& step);

/// The columns of these names, all of which are there, in their order: as places, from 0.
KALMIA_EXPORT std::vector<int> PlacesOf(const Signals& signals, const std::vector<std::string>& names);

/// Whether the chain, read from a file, could have been learnt.
KALMIA_EXPORT bool IsConsistent(const StepChain& chain);

/// Whether the step learns from the cells of the rows: other rows would have made another step of it.
KALMIA_EXPORT bool LearnsOfRows(const Step& step);

/// Says which steps have learnt from the cells of all rows: a cross-validation that comes after them does not see that.
KALMIA_EXPORT void NoteLearntOfAllRows(const StepChain& chain, Notes* notes);

}  // namespace kalmia::analysis
