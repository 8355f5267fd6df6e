#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/validation/RandomDraws.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// Which rows stay out of the model in which round of a validation. Rows, groups and repeats count from 0.

enum class FoldScheme {
  Interleaved,  ///< row i (from 1) in group i mod G, as GetDeafultCVGroupsVector has it
  Blocks,       ///< neighbours together: N div G rows a group, in the first N mod G groups one more
  Random,       ///< the rows in random order, dealt to the groups in turn; another order in each repeat
  LeaveOneOut   ///< each row a group of its own
};

/// The words for the schemes, in their order: interleaved, blocks, random and leave-one-out. Nothing for another word.
KALMIA_EXPORT const std::vector<std::string>& FoldSchemeWords();
KALMIA_EXPORT std::optional<FoldScheme> FoldSchemeOfWord(const std::string& word);
KALMIA_EXPORT const std::string& WordOfFoldScheme(FoldScheme scheme);

/// How rows are dealt to groups.
struct FoldDealing {
  FoldScheme scheme = FoldScheme::Interleaved;
  int repeats = 1;         ///< more than one for Random alone
  std::uint64_t seed = 1;  ///< read for Random alone, of RandomUse::Folds
};

struct FoldRecipe : FoldDealing {
  int groups = 7;  ///< at least 2; not read for LeaveOneOut
};

/// Partitions of N rows into groups. A round of the validation is a group of a repeat.
struct Folds {
  int groups = 0;                             ///< of each repeat; none is empty
  std::vector<std::vector<int>> groupOfRow;   ///< a vector of N groups for each repeat, one at least
  std::vector<std::string> names;             ///< of the groups, where they come from labels; otherwise none

  std::size_t Rows() const { return groupOfRow.front().size(); }
  int Repeats() const { return static_cast<int>(groupOfRow.size()); }
  int Rounds() const { return groups * Repeats(); }
};

/// Folds of so many rows; more groups than rows become as many groups as rows, each of one row.
/// Throws BadRequest for fewer than 2 groups, fewer than 1 repeat and for several repeats of a scheme that would do the
/// same in each; BadData for fewer than 2 rows.
KALMIA_EXPORT Folds MakeFolds(std::size_t rows, const FoldRecipe& recipe);

/// Random folds within classes: the rows of each class in random order, class after class, dealt to the groups in
/// turn, so that each group has of each class either of two neighbouring numbers. The class of a row is a number from
/// 0 on, or -1 for none; rows without a class are dealt last. Reads groups, repeats and seed, whatever the scheme.
/// Throws as MakeFolds does.
KALMIA_EXPORT Folds MakeFoldsWithinClasses(const std::vector<int>& classOfRow, const FoldRecipe& recipe);

/// Folds by labels: a group has the rows of one label. Groups are numbered in the order in which they appear.
/// Throws BadData where there are fewer than two labels.
KALMIA_EXPORT Folds FoldsOfLabels(const std::vector<std::string>& labels);

/// The rows that stay out in a round, ascending.
KALMIA_EXPORT std::vector<std::size_t> RowsOfGroup(const Folds& folds, int repeat, int group);
/// The rows that the model of a round is fitted to, ascending.
KALMIA_EXPORT std::vector<std::size_t> RowsOutsideGroup(const Folds& folds, int repeat, int group);

/// A class without a row in the model of a round: its rows, all of which are left out, cannot be found.
struct AbsentClass {
  int classNumber;
  int repeat;
  int group;
};

/// All of them, by repeat and class. Classes of the rows as MakeFoldsWithinClasses takes them.
KALMIA_EXPORT std::vector<AbsentClass> ClassesAbsentInRounds(const Folds& folds, const std::vector<int>& classOfRow);

}  // namespace kalmia::analysis
