#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/pcapls/NCScale.h"

namespace kalmia::analysis {

/// A cluster tree of the rows of a table. Columns are named as RequireColumns takes them.
struct ClusterRecipe {
  std::string method = "ward";           ///< or single, for single linkage
  std::string id;                        ///< column that names the rows; empty: they are numbered
  std::vector<std::string> x;            ///< empty: all columns of numbers but those to exclude
  std::vector<std::string> exclude;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
  int cut = 0;                           ///< clusters to cut the tree into; 0: it is not cut, or at `height`
  std::optional<double> height;          ///< merges above it are undone
  std::optional<std::uint64_t> memory;   ///< bytes for the distances; nothing: what the machine has free
  std::string temporaryFolder;           ///< of distances that find no room in memory; empty: that of TMPDIR, or /tmp
  std::string temporaryFolderName;       ///< how messages call it; empty: as it is

  bool IsCutAsked() const { return cut > 0 || height.has_value(); }
};

}  // namespace kalmia::analysis
