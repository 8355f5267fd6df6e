#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Analysis.h"
#include "app/options/FigureOptions.h"
#include "app/options/TableOptions.h"
#include "app/options/ValidationOptions.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/FitRecipes.h"

namespace kalmia::app {

class CommandOptions;

/// What is to be told of single columns in rows; O2PLS has no contributions.
struct ColumnsOfRows {
  std::vector<std::string> contributions;  ///< rows, by name or number, whose columns are told one by one
  bool residuals = false;                  ///< whether X residuals are among the CSV files
};

/// What commands that fit a model take beside the recipe: the table, the steps, which are read later, and where the
/// results go.
struct FitOptions {
  std::string table;
  ReadOptions reading;
  std::string steps;      ///< of the preprocessing of X, as text; empty: a file has them, or there are none
  std::string stepsFile;
  std::string save;       ///< empty: the model is not stored
  bool noRows = false;    ///< leave the training rows out of it
  bool keepTable = false;
  bool json = false;
  std::string csvFolder;  ///< empty: no CSV files
  CsvMarkOptions csvMarks;
  ColumnsOfRows columns;
  FigureOptions figures;
  std::string commandLine;  ///< that gave these options, for the page

  ModelParts Parts() const { return {!noRows, keepTable}; }
};

struct PLSOptions : FitOptions {
  PLSRecipe recipe;
  ValidationOptions validation;
};

struct PCAOptions : FitOptions {
  PCARecipe recipe;
  ValidationOptions validation;
};

struct OPLSOptions : FitOptions {
  OPLSRecipe recipe;
  ValidationOptions validation;
  std::string saveCv;  ///< empty: the cross-validation is not stored
  std::string resume;  ///< file of a cross-validation to go on from; empty: it starts anew
};

/// `table` is of the X block; there are no steps.
struct O2PLSOptions : FitOptions {
  O2PLSRecipe recipe;  ///< but for the numbers of components
  ValidationOptions validation;
  std::string yTable;
  std::optional<int> joint, xUnique, yUnique;  ///< all three or none: as many as cross-validation finds
  bool automatic = false;  ///< says that none is given
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
  ColumnsOfRows columns;
  FigureOptions figures;
};

struct FillOptions {
  std::string table;
  ReadOptions reading;
  FillRecipe recipe;
  std::string out;
  bool report = false;  ///< the old name of --check
  bool json = false;
  CsvMarkOptions csvMarks;
};

struct FilterOptions {
  std::string table;
  ReadOptions reading;
  FilterRecipe recipe;
  std::string model;  ///< a stored filter to apply; empty: one is made
  std::string out;
  std::string save;   ///< empty: the filter is not stored
  bool noRows = false;
  bool keepTable = false;
  bool json = false;
  CsvMarkOptions csvMarks;
};

// Declare the commands to the parser.

void DeclarePLS(CommandOptions* command, PLSOptions* options);
void DeclarePCA(CommandOptions* command, PCAOptions* options);
void DeclareOPLS(CommandOptions* command, OPLSOptions* options);
void DeclareO2PLS(CommandOptions* command, O2PLSOptions* options);
void DeclarePredict(CommandOptions* command, PredictOptions* options);
void DeclareFill(CommandOptions* command, FillOptions* options);
void DeclareFilter(CommandOptions* command, FilterOptions* options);

}  // namespace kalmia::app
