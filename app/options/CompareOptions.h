#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/Analysis.h"
#include "app/options/ValidationOptions.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/ReadOptions.h"

namespace kalmia::app {

class CommandOptions;

struct CompareOptions {
  std::string table;
  std::vector<std::string> models;  ///< recipes or files of stored models, as they came
  ReadOptions reading;
  FitRecipe common;                 ///< id, groups and column of groups
  std::vector<std::string> y;
  std::string classes;              ///< column of classes, in place of y
  ValidationOptions validation;
  bool json = false;
};

/// A recipe as text: "pls" or "opls" and options of these commands that say what is fitted.
struct RecipeText {
  std::variant<PLSRecipe, OPLSRecipe> recipe;
  std::string steps;
  std::string stepsFile;
};

/// Reads a recipe; nothing where the text begins with neither of the two words and so is the name of a file. Words are
/// separated by blanks; quotation marks of either kind keep blanks. Throws BadRequest with one line for what makes no
/// sense.
std::optional<RecipeText> ReadRecipe(const std::string& text);

void DeclareCompare(CommandOptions* command, CompareOptions* options);

}  // namespace kalmia::app
