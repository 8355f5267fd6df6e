#pragma once

#include <optional>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/NCError.h"

// Related tables with holes, and PLSMissingValueEstimator once more, as plainly as it can be written.
namespace filling {

using Table = NCDataMatrix<float>;

struct Tables {
  Table X;
  Table Y;
};

/// `latent` directions that X and Y have in common, each weaker than the one before, and noise of this size.
Tables RelatedTables(int rows, int xVariables, int yVariables, int latent, float noise);

/// 120 rows, so that any Q2 above 0 passes, and two scores at right angles whose signs change every row and every
/// second row. X has each of them in two columns; of Y's two columns `share` of the second's sum of squares is due to
/// the second score, and the first column is `weight` times as large as the second.
Tables TwoScores(float share, float weight);

/// The table with these holes, a share `holes` of the cells, always the same for the same seed.
Table WithHoles(Table table, double holes, unsigned seed);

/// What ended the search for the number of components.
enum class End { Q2, LackOfFit, NoComponent };

struct Search {
  int components;
  End end;
};

/// The model's components that count, found in the plainest way: each rule as it is said, with sums of its own.
Search CountComponents(NCPLS* model, const Table& Y);

/// X filled by the model's first components.
Table FilledBy(const NCPLS& model, int components, Table X);

/// X filled from Y: by the plain search, or by the estimator.
Table FilledByTwin(const Table& X, const Table& Y, Search* search = nullptr);
Table Filled(Table X, Table Y);

/// The level of the NCError that the call ends with; none where it ends well.
template <class Call>
std::optional<NCError::Level> LevelOf(const Call& call) {
  try {
    call();
  } catch (const NCError& error) {
    return error.GetLevel();
  }
  return std::nullopt;
}

}  // namespace filling
