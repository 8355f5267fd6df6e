#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/CsvMarks.h"
#include "app/ReadOptions.h"
#include "kalmia/pcapls/NCScale.h"

namespace kalmia::app {

class CommandOptions;

/// What all commands that fit a model take: the table, what of it is X, how X is scaled, how many components there are
/// and how they are judged, and where the results go.
struct FitOptions {
  std::string table;
  ReadOptions reading;
  std::string id;  ///< empty: rows are numbered
  std::vector<std::string> x;  ///< arguments for RequireColumns; empty: all other columns of numbers
  std::vector<std::string> exclude;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
  std::optional<int> components;  ///< nothing: as many as cross-validation finds
  std::string steps;      ///< of the preprocessing of X, as text; empty: a file has them, or there are none
  std::string stepsFile;
  int groups = 7;
  std::string groupColumn;  ///< empty: `groups` groups, every row in the one after its neighbour's
  std::string save;         ///< empty: the model is not stored
  bool json = false;
  std::string csvFolder;  ///< empty: no CSV files
  CsvMarkOptions csvMarks;

  bool HasSteps() const { return !steps.empty() || !stepsFile.empty(); }
};

struct PlsOptions : FitOptions {
  std::vector<std::string> y;  ///< arguments for RequireColumns
};

struct PcaOptions : FitOptions {};

struct OplsOptions : FitOptions {  // `components` are the orthogonal ones
  std::vector<std::string> y;     ///< as for PLS
  std::optional<int> predictive;  ///< nothing: as many as Y and X have in common
  std::string saveCv;             ///< empty: the cross-validation is not stored
  std::string resume;             ///< file of a cross-validation to go on from; empty: it starts anew
};

/// `table` and `x` are of the X block; there is no use for `exclude`, `components` and `groupColumn`.
struct O2plsOptions : FitOptions {
  std::string yTable;
  std::vector<std::string> y;  ///< as x
  std::optional<int> joint, xUnique, yUnique;  ///< all three or none: as many as cross-validation finds
  bool automatic = false;  ///< says that none is given
  bool fill = false;
};

struct PredictOptions {
  std::string model;
  std::string table;
  ReadOptions reading;
  std::string from;  ///< block that the table holds: x, y or empty
  std::string id;  ///< empty: the column that named the rows of the training table, if it is there
  bool json = false;
  std::string csvFolder;
  CsvMarkOptions csvMarks;
};

struct FillOptions {
  std::string table;
  ReadOptions reading;
  std::string out;
  std::string id;  ///< empty: rows are numbered
  std::vector<std::string> exclude;
  std::optional<int> components;  ///< nothing: as many as cross-validation finds
  bool check = false;
  bool report = false;  ///< the old name of `check`
  bool json = false;
  CsvMarkOptions csvMarks;
};

struct FilterOptions : FitOptions {  // it has no use for groups, groupColumn, csvFolder
  std::vector<std::string> y;  ///< as for PLS
  std::string model;           ///< a stored filter to apply; empty: one is made
  std::string out;
};

// Declare the commands to the parser.

void DeclarePls(CommandOptions* command, PlsOptions* options);
void DeclarePca(CommandOptions* command, PcaOptions* options);
void DeclareOpls(CommandOptions* command, OplsOptions* options);
void DeclareO2pls(CommandOptions* command, O2plsOptions* options);
void DeclarePredict(CommandOptions* command, PredictOptions* options);
void DeclareFill(CommandOptions* command, FillOptions* options);
void DeclareFilter(CommandOptions* command, FilterOptions* options);

}  // namespace kalmia::app
