#pragma once

#include <istream>
#include <limits>
#include <ostream>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

// What all kinds of models have in a file, whatever its version.

/// The number of components that T2 takes: none of O2PLS.
inline std::size_t ScoresOf(const StoredPLS& model) { return model.components.size(); }
inline std::size_t ScoresOf(const StoredPCA& model) { return model.components.size(); }
inline std::size_t ScoresOf(const StoredOPLS& model) { return model.components.size(); }
inline std::size_t ScoresOf(const StoredO2PLS& /*model*/) { return 0; }

/// The model of the kind with that number, as yet without content; false for a number that no kind has.
template <std::size_t Index = 0>
bool MakeKind(int kind, StoredModel* model) {
  if constexpr (Index < std::variant_size_v<StoredModel>) {
    if (kind != std::variant_alternative_t<Index, StoredModel>::kKind) return MakeKind<Index + 1>(kind, model);
    model->emplace<Index>();
    return true;
  }
  return false;
}

/// Version of the command, table, column of row names.
bool ReadSources(std::istream& entry, ModelInfo* model);

// From entries that may be absent, which is a failure where the kind of model needs them.

/// Names and scaling of Y: PCA has neither, a filter only the names.
bool ReadBlockOfY(std::istream* names, std::istream* scaling, YModelInfo* model);
bool ReadBlockOfY(std::istream* names, std::istream* scaling, StoredPCA* model);
bool ReadBlockOfY(std::istream* names, std::istream* scaling, StoredFilter* model);

/// The pooled deviation of X, of O2PLS then that of Y.
bool ReadDeviations(std::istream* entry, ModelInfo* model);
bool ReadDeviations(std::istream* entry, StoredO2PLS* model);

/// A stored word for a scaling; false for a number that is none.
bool ReadScaling(std::istream& stream, NCScale::Scaling* scaling);

/// The chain that makes X, which is among the columns that come out of it.
bool ReadChain(std::istream& stream, ModelInfo* model);

// Shifts of Y stand behind those of X; a filter and PCA have none of Y.

inline std::vector<ColumnScaling*> ShiftedBlocks(YModelInfo* model) { return {&model->xScaling, &model->yScaling}; }
inline std::vector<ColumnScaling*> ShiftedBlocks(ModelInfo* model) { return {&model->xScaling}; }

template <class Kind>
bool HasShifts(const Kind& model) {
  bool any = false;
  for (const ColumnScaling* scaling : ShiftedBlocks(const_cast<Kind*>(&model))) any |= !scaling->shifts.empty();
  return any;
}

/// Of each block a count, 0 or its columns, and the shifts.
void WriteShifts(const std::vector<ColumnScaling*>& blocks, std::ostream& entry);
/// The columns have their scaling already; one of them is shifted at least.
bool ReadShifts(std::istream& entry, const std::vector<ColumnScaling*>& blocks);

/// The model in the content of a file before version 5. False on bytes that no such version has written.
bool ReadOldContent(int version, std::istream& stream, StoredModel* model);

}  // namespace kalmia::analysis
