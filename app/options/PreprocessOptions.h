#pragma once

#include <string>

#include "app/Analysis.h"
#include "app/options/TableOptions.h"
#include "kalmia/analysis/steps/PreprocessedTable.h"

namespace kalmia::app {

class CommandOptions;

struct PreprocessOptions {
  std::string table;
  ReadOptions reading;
  PreprocessRecipe recipe;  ///< all but its steps
  std::string out;
  std::string steps;      ///< as text; empty where a file has them
  std::string stepsFile;  ///< of text, or of a chain that --save has written
  std::string save;       ///< empty: the chain is not stored
  CsvMarkOptions csvMarks;
  bool json = false;
};

/// Declares the command to the parser.
void DeclarePreprocess(CommandOptions* command, PreprocessOptions* options);

}  // namespace kalmia::app
