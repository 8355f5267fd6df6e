#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

KALMIA_EXPORT std::string ClusterText(const ClusterResult& result);
KALMIA_EXPORT std::string ClusterJson(const Table& table, const ClusterResult& result,
                        const std::vector<std::string>& written);
/// name,cluster of each row.
KALMIA_EXPORT std::string ClusterCsv(const ClusterResult& result, const CsvMarks& marks);
/// The merges in the columns of a linkage matrix: two clusters, the smaller number first, height, rows.
KALMIA_EXPORT std::string MergesCsv(const ClusterResult& result, const CsvMarks& marks);
/// The tree in the Newick format. The length of a branch is the difference between the heights of its ends.
KALMIA_EXPORT std::string NewickText(const ClusterResult& result);

}  // namespace kalmia::analysis
