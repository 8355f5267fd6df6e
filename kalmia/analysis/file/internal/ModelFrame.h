#pragma once

#include <istream>
#include <limits>
#include <ostream>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

// Entries that every kind of model has, in files of all versions.

/// How many scores T2 counts; O2PLS has no T2.
inline std::size_t ScoresOf(const StoredPLS& model) { return model.components.size(); }
inline std::size_t ScoresOf(const StoredPCA& model) { return model.components.size(); }
inline std::size_t ScoresOf(const StoredOPLS& model) { return model.components.size(); }
inline std::size_t ScoresOf(const StoredO2PLS& /*model*/) { return 0; }

/// Makes an empty model of the kind with that number; false where no kind has it.
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

// An absent entry is null; readers return false for it where the kind of model needs the entry.

/// Names and scaling of Y: PCA has neither, a filter only the names.
bool ReadBlockOfY(std::istream* names, std::istream* scaling, YModelInfo* model);
bool ReadBlockOfY(std::istream* names, std::istream* scaling, StoredPCA* model);
bool ReadBlockOfY(std::istream* names, std::istream* scaling, StoredFilter* model);

/// The pooled deviation of X, of O2PLS then that of Y.
bool ReadDeviations(std::istream* entry, ModelInfo* model);
bool ReadDeviations(std::istream* entry, StoredO2PLS* model);

/// A stored number of a scaling; false for any other number.
bool ReadScaling(std::istream& stream, NCScale::Scaling* scaling);

/// The chain of steps behind X; false where its output lacks a column of X.
bool ReadChain(std::istream& stream, ModelInfo* model);

// Shifts of X come first, then those of Y; a filter and PCA have no shifts of Y.

inline std::vector<ColumnScaling*> ShiftedBlocks(YModelInfo* model) { return {&model->xScaling, &model->yScaling}; }
inline std::vector<ColumnScaling*> ShiftedBlocks(ModelInfo* model) { return {&model->xScaling}; }

template <class Kind>
bool HasShifts(const Kind& model) {
  bool any = false;
  for (const ColumnScaling* scaling : ShiftedBlocks(const_cast<Kind*>(&model))) any |= !scaling->shifts.empty();
  return any;
}

/// For each block a count, 0 or its number of columns, then the shifts.
void WriteShifts(const std::vector<ColumnScaling*>& blocks, std::ostream& entry);
/// Takes blocks whose scaling is read already. False where no column is shifted.
bool ReadShifts(std::istream& entry, const std::vector<ColumnScaling*>& blocks);

/// The model in the content of a file before version 5. False on bytes that no such version has written.
bool ReadOldContent(int version, std::istream& stream, StoredModel* model);

}  // namespace kalmia::analysis
