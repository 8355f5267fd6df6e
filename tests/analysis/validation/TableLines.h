#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"

/// The lines of a table as text, to make tables of some of its rows.
struct TableLines {
  explicit TableLines(const std::string& text) {
    std::istringstream in(text);
    std::getline(in, header);
    for (std::string line; std::getline(in, line);) rows.push_back(line);
  }
  kalmia::analysis::Table SmallTable(const std::vector<std::size_t>& places) const {
    std::string text = header + "\n";
    for (const std::size_t place : places) text += rows[place] + "\n";
    return {text, "t.csv"};
  }
  std::string header;
  std::vector<std::string> rows;
};

/// Validates the recipe by so many groups, dealt as the scheme says.
template <class Recipe>
auto ValidateBy(kalmia::analysis::FoldScheme scheme, int groups, Recipe recipe, const kalmia::analysis::Table& table) {
  recipe.groups = groups;
  kalmia::analysis::ValidationRecipe validation;
  validation.folds.scheme = scheme;
  return Validate(recipe, table, validation);
}
