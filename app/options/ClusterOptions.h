#pragma once

#include <string>

#include "app/Analysis.h"
#include "app/options/TableOptions.h"
#include "kalmia/analysis/cluster/ClusterRecipe.h"

namespace kalmia::app {

class CommandOptions;

struct ClusterOptions {
  std::string table;
  ReadOptions reading;
  ClusterRecipe recipe;
  std::string svg;  ///< this and those below: empty for no file
  std::string merges;
  std::string newick;
  std::string csv;
  CsvMarkOptions csvMarks;
  bool json = false;
};

void DeclareCluster(CommandOptions* command, ClusterOptions* options);

}  // namespace kalmia::app
