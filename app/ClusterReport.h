#pragma once

#include <string>
#include <vector>

#include "app/ClusterResult.h"
#include "app/CsvMarks.h"
#include "app/Json.h"
#include "app/Notes.h"

namespace kalmia::app {

std::string ClusterText(const ClusterResult& result);
std::string ClusterJson(const CsvTable& table, const ClusterResult& result, const Notes& notes,
                        const std::vector<std::string>& written);
/// name,cluster of each row.
std::string ClusterCsv(const ClusterResult& result, const CsvMarks& marks);
/// The merges in the columns of a linkage matrix: two clusters, the smaller number first, height, rows.
std::string MergesCsv(const ClusterResult& result, const CsvMarks& marks);

}  // namespace kalmia::app
