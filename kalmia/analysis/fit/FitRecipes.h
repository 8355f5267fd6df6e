#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/steps/GivenSteps.h"
#include "kalmia/pcapls/NCScale.h"

namespace kalmia::analysis {

// What is fitted to a table: its columns, what is done to them, how many components there are and how they are judged.
// Columns are named as RequireColumns takes them.
//
// What every fit takes of a table: columns without numbers, constant and empty X columns, rows without any X cell, and
// constant Y columns among others that vary are left out, each kind with one note. Steps see constant and empty
// columns; columns that come out of them constant or empty are left out.
// What every fit throws: BadRequest for a recipe that makes no sense, whatever the table. BadData for a column that is
// not there; a cell that is no number; a Y of text, without values or without any variance; fewer than two classes, a
// class of a single row; no X column or no X cell left; X that the steps cannot take; a row without a group, fewer than
// two groups; a column that cannot be scaled; where not even one of the components asked for can be computed. Stopped
// where the progress wants to stop.

/// The X of a table.
struct XRecipe {
  std::string id;              ///< column that names the rows; empty: they are numbered
  std::vector<std::string> x;  ///< empty: all other columns of numbers
  std::vector<std::string> exclude;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
};

/// What all models of one table have in common.
struct FitRecipe : XRecipe {
  std::optional<GivenSteps> steps;  ///< of the preprocessing of X
  std::optional<int> components;    ///< nothing: as many as cross-validation finds
  int groups = 7;           ///< of any validation
  std::string groupColumn;  ///< of labels that make the groups; empty: `groups` groups, as the validation deals rows
  /// Whether each component is cross-validated on what the components before it left. Otherwise `components` are given,
  /// nothing is said of what they predict, and nobody calls them significant.
  bool judgeComponents = true;
  /// Where nothing judges the components, their records go on to so many, as far as X has them, and tell what
  /// components beyond those of the model would describe. Of PLS and PCA.
  int describedComponents = 0;
};

struct PCARecipe : FitRecipe {};  // 0 `components` are a model too, the mean

/// A model of Y: of columns of numbers, or of the classes of the rows. Classes are modelled by their dummies, a column
/// of 0 and 1 for each; rows without a class have none.
struct YRecipe : FitRecipe {
  std::vector<std::string> y;  ///< one column of texts alone: its texts are the classes
  std::string classes;         ///< column whose texts, or numbers as texts, are the classes; stands in for `y`
  std::vector<std::string> classNames;  ///< that the column may hold, such as those of a stored model; empty: any
  ClassPriors priors = ClassPriors::Equal;
};

struct PLSRecipe : YRecipe {};  // 0 `components` are a model too, the mean of Y

struct OPLSRecipe : YRecipe {  // `components` are the orthogonal ones
  /// Nothing: as many as Y and X have in common. 0, without orthogonal ones: the mean of Y, which is a model too.
  std::optional<int> predictive;
};

/// How many components an O2PLS model has of each kind.
struct O2PLSNumbers {
  int joint = 0;
  int xUnique = 0;
  int yUnique = 0;
};

/// A model of two tables: each block is of one.
struct O2PLSRecipe {
  std::string id;  ///< column of both tables that names the rows and matches them; empty: rows match by their places
  std::vector<std::string> x;  ///< empty: all columns of numbers
  std::vector<std::string> y;  ///< the same of the Y table
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;  ///< of both blocks
  std::optional<O2PLSNumbers> numbers;  ///< nothing: those that cross-validation finds
  bool fill = false;                    ///< whether missing cells are estimated, each from the other block
  int groups = 7;
  /// Whether cross-validation judges given numbers. It finds those that are not given in any case.
  bool judgeComponents = true;
  std::string groupColumn;  ///< column of the X table whose labels make the groups; empty: `groups` groups
};

/// A filter of X.
struct FilterRecipe : XRecipe {
  std::vector<std::string> y;  ///< columns whose variation the filter must keep
  std::optional<int> components;  ///< nothing: up to 15
};

/// The filling of the missing cells of a table.
struct FillRecipe {
  std::string id;  ///< it takes no part; empty: rows are numbered
  std::vector<std::string> exclude;
  std::optional<int> components;  ///< nothing: as many as bring hidden cells back best
  bool check = false;             ///< whether a trial tells how well hidden cells come back
};

}  // namespace kalmia::analysis
