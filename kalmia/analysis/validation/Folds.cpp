#include "kalmia/analysis/validation/Folds.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

/// How many groups of a recipe the rows fill.
int GroupsOf(std::size_t rows, int groups) {
  if (groups < 2) throw BadRequest("validation takes two groups or more, not " + std::to_string(groups));
  if (rows < 2) throw BadData("validation takes two rows or more");
  return static_cast<int>(std::min(rows, static_cast<std::size_t>(groups)));
}

void CheckRepeats(const FoldRecipe& recipe) {
  const int repeats = recipe.repeats;
  if (repeats < 1) throw BadRequest("validation takes one repeat or more, not " + std::to_string(repeats));
  if (repeats > 1 && recipe.scheme != FoldScheme::Random) {
    throw BadRequest("only random groups differ from repeat to repeat");
  }
}

std::vector<int> Interleaved(std::size_t rows, int groups) {
  std::vector<int> groupOfRow(rows);
  for (std::size_t i = 0; i < rows; ++i) groupOfRow[i] = static_cast<int>((i + 1) % static_cast<std::size_t>(groups));
  return groupOfRow;
}

std::vector<int> Blocks(std::size_t rows, int groups) {
  std::vector<int> groupOfRow;
  groupOfRow.reserve(rows);
  const auto count = static_cast<std::size_t>(groups);
  for (std::size_t g = 0; g < count; ++g) {
    groupOfRow.insert(groupOfRow.end(), rows / count + (g < rows % count ? 1 : 0), static_cast<int>(g));
  }
  return groupOfRow;
}

std::vector<int> Dealt(const std::vector<std::size_t>& order, int groups) {
  std::vector<int> groupOfRow(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) {
    groupOfRow[order[k]] = static_cast<int>(k % static_cast<std::size_t>(groups));
  }
  return groupOfRow;
}

std::vector<int> OnePartition(std::size_t rows, int groups, FoldScheme scheme, RandomDraws* draws) {
  switch (scheme) {
    case FoldScheme::Interleaved: return Interleaved(rows, groups);
    case FoldScheme::Random: return Dealt(draws->Order(rows), groups);
    case FoldScheme::Blocks:
    case FoldScheme::LeaveOneOut: break;  // blocks of one row
  }
  return Blocks(rows, groups);
}

/// The rows of each class in turn, those without one last.
std::vector<std::vector<std::size_t>> RowsByClass(const std::vector<int>& classOfRow) {
  const int classes = classOfRow.empty() ? 0 : *std::max_element(classOfRow.begin(), classOfRow.end()) + 1;
  std::vector<std::vector<std::size_t>> rows(static_cast<std::size_t>(classes) + 1);
  for (std::size_t i = 0; i < classOfRow.size(); ++i) {
    rows[static_cast<std::size_t>(classOfRow[i] < 0 ? classes : classOfRow[i])].push_back(i);
  }
  return rows;
}

std::vector<std::size_t> RowsWhere(const Folds& folds, int repeat, int group, bool isInside) {
  const std::vector<int>& groupOfRow = folds.groupOfRow[static_cast<std::size_t>(repeat)];
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < groupOfRow.size(); ++i) {
    if ((groupOfRow[i] == group) == isInside) rows.push_back(i);
  }
  return rows;
}

}  // namespace

const std::vector<std::string>& FoldSchemeWords() {
  static const std::vector<std::string> words = {"interleaved", "blocks", "random", "leave-one-out"};
  return words;
}

std::optional<FoldScheme> FoldSchemeOfWord(const std::string& word) {
  const std::vector<std::string>& words = FoldSchemeWords();
  const auto found = std::find(words.begin(), words.end(), word);
  if (found == words.end()) return std::nullopt;
  return static_cast<FoldScheme>(found - words.begin());
}

const std::string& WordOfFoldScheme(FoldScheme scheme) { return FoldSchemeWords()[static_cast<std::size_t>(scheme)]; }

Folds MakeFolds(std::size_t rows, const FoldRecipe& recipe) {
  CheckRepeats(recipe);
  const bool oneByOne = recipe.scheme == FoldScheme::LeaveOneOut;
  Folds folds;
  folds.groups = GroupsOf(rows, oneByOne ? std::max(2, static_cast<int>(rows)) : recipe.groups);
  RandomDraws draws(recipe.seed, RandomUse::Folds);
  for (int repeat = 0; repeat < recipe.repeats; ++repeat) {
    folds.groupOfRow.push_back(OnePartition(rows, folds.groups, recipe.scheme, &draws));
  }
  return folds;
}

Folds MakeFoldsWithinClasses(const std::vector<int>& classOfRow, const FoldRecipe& recipe) {
  FoldRecipe random = recipe;
  random.scheme = FoldScheme::Random;
  CheckRepeats(random);
  Folds folds;
  folds.groups = GroupsOf(classOfRow.size(), recipe.groups);
  RandomDraws draws(recipe.seed, RandomUse::Folds);
  const std::vector<std::vector<std::size_t>> byClass = RowsByClass(classOfRow);
  for (int repeat = 0; repeat < recipe.repeats; ++repeat) {
    std::vector<std::size_t> order;
    for (std::vector<std::size_t> rows : byClass) {
      draws.Shuffle(&rows);
      order.insert(order.end(), rows.begin(), rows.end());
    }
    folds.groupOfRow.push_back(Dealt(order, folds.groups));
  }
  return folds;
}

Folds FoldsOfLabels(const std::vector<std::string>& labels) {
  Folds folds;
  folds.groupOfRow.emplace_back();
  std::unordered_map<std::string, int> numberOf;
  for (const std::string& label : labels) {
    const auto [place, isNew] = numberOf.emplace(label, static_cast<int>(numberOf.size()));
    if (isNew) folds.names.push_back(label);
    folds.groupOfRow.front().push_back(place->second);
  }
  folds.groups = static_cast<int>(folds.names.size());
  if (folds.groups < 2) throw BadData("all rows have the same group: validation takes two groups or more");
  return folds;
}

std::vector<std::size_t> RowsOfGroup(const Folds& folds, int repeat, int group) {
  return RowsWhere(folds, repeat, group, /*isInside=*/true);
}

std::vector<std::size_t> RowsOutsideGroup(const Folds& folds, int repeat, int group) {
  return RowsWhere(folds, repeat, group, /*isInside=*/false);
}

std::vector<AbsentClass> ClassesAbsentInRounds(const Folds& folds, const std::vector<int>& classOfRow) {
  const std::vector<std::vector<std::size_t>> byClass = RowsByClass(classOfRow);
  std::vector<AbsentClass> absent;
  for (int repeat = 0; repeat < folds.Repeats(); ++repeat) {
    const std::vector<int>& groupOfRow = folds.groupOfRow[static_cast<std::size_t>(repeat)];
    for (std::size_t c = 0; c + 1 < byClass.size(); ++c) {
      const std::vector<std::size_t>& rows = byClass[c];
      const auto isElsewhere = [&](std::size_t row) { return groupOfRow[row] != groupOfRow[rows.front()]; };
      if (rows.empty() || std::any_of(rows.begin(), rows.end(), isElsewhere)) continue;
      absent.push_back({static_cast<int>(c), repeat, groupOfRow[rows.front()]});
    }
  }
  return absent;
}

}  // namespace kalmia::analysis
