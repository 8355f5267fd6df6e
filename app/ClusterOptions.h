#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/CsvMarks.h"
#include "app/ReadOptions.h"
#include "kalmia/pcapls/NCScale.h"

namespace kalmia::app {

class CommandOptions;

struct ClusterOptions {
  std::string table;
  ReadOptions reading;
  std::string method;  ///< ward or single
  std::string id;      ///< empty: rows are numbered
  std::vector<std::string> x;  ///< empty: all columns but those to exclude
  std::vector<std::string> exclude;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
  int cut = 0;  ///< clusters to cut the tree into; 0: it is not cut, or at `height`
  std::optional<double> height;
  std::string svg;  ///< this and those below: empty for no file
  std::string merges;
  std::string newick;
  std::string csv;
  CsvMarkOptions csvMarks;
  std::optional<std::uint64_t> memory;  ///< bytes for the distances; nothing: what the machine has free
  std::string temp;                     ///< folder of temporary files; empty: TMPDIR, or /tmp
  bool json = false;
};

void DeclareCluster(CommandOptions* command, ClusterOptions* options);

}  // namespace kalmia::app
