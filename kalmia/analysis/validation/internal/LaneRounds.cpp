#include "kalmia/analysis/validation/internal/LaneRounds.h"

#include <algorithm>
#include <vector>

namespace kalmia::analysis {

namespace {

constexpr double kMostBytes = 512e6;
// What is done between two questions whether to stop takes a tenth of a second at most.
constexpr double kMostRows = 2e5;
constexpr double kMostProducts = 1e7;  ///< of scores of Y columns, in one round of a component
constexpr std::size_t kMostYColumns = 32;  ///< beyond them the loop of NIPALS over the tables is faster

}  // namespace

bool LaneRounds::Serves(std::size_t rows, std::size_t columns, std::size_t yColumns, int models) {
  const auto n = static_cast<double>(rows), k = static_cast<double>(columns), m = static_cast<double>(yColumns);
  const double vectors = models;
  return yColumns <= kMostYColumns && n <= kMostRows && n * m * (m + 1) <= kMostProducts &&
         sizeof(double) * kLanes * (n * (vectors + 2 * m + 4) + k * (3 * vectors + m + 4)) < kMostBytes;
}

std::optional<RoundFigures> LaneRounds::Figures(std::size_t round, const RoundQuestions& asked,
                                                WorkProgress* progress, const Proceed& proceed) {
  if (!lanes_ || round < first_ || round >= first_ + kLanes) {
    lanes_.reset();
    first_ = round / kLanes * kLanes;
    std::vector<LaneRound> rounds;
    for (std::size_t r = first_; r < std::min(count_, first_ + kLanes); ++r) rounds.push_back(round_(r));
    lanes_ = std::make_unique<PLSLanes>(table_, std::move(rounds), progress, proceed);
  }
  return lanes_->Figures(round - first_, asked);
}

}  // namespace kalmia::analysis
