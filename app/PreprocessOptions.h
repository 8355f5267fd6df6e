#pragma once

#include <string>
#include <vector>

#include "app/CsvMarks.h"
#include "app/ReadOptions.h"

namespace kalmia::app {

class CommandOptions;

struct PreprocessOptions {
  std::string table;
  ReadOptions reading;
  std::string out;
  std::string steps;      ///< as text; empty where a file has them
  std::string stepsFile;  ///< of text, or of a chain that --save has written
  std::string id;         ///< empty: rows are numbered
  std::vector<std::string> x;  ///< arguments for RequireColumns; empty: all other columns of numbers
  std::vector<std::string> exclude;
  std::string save;       ///< empty: the chain is not stored
  bool restore = false;   ///< signals of the coefficients that the stored chain has kept
  CsvMarkOptions csvMarks;
  bool json = false;
};

/// Declares the command to the parser.
void DeclarePreprocess(CommandOptions* command, PreprocessOptions* options);

}  // namespace kalmia::app
