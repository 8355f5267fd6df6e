#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/analysis/table/CsvMarks.h"

namespace kalmia::analysis {

std::string ClusterText(const ClusterResult& result);
std::string ClusterJson(const CsvTable& table, const ClusterResult& result,
                        const std::vector<std::string>& written);
/// name,cluster of each row.
std::string ClusterCsv(const ClusterResult& result, const CsvMarks& marks);
/// The merges in the columns of a linkage matrix: two clusters, the smaller number first, height, rows.
std::string MergesCsv(const ClusterResult& result, const CsvMarks& marks);
/// The tree in the Newick format. The length of a branch is the difference between the heights of its ends.
std::string NewickText(const ClusterResult& result);

}  // namespace kalmia::analysis
