#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "kalmia/analysis/validation/internal/PLSLanes.h"

namespace kalmia::analysis {

/// The rounds of a validation in their order, of which eight at a time are fitted side by side.
class LaneRounds {
 public:
  /// Whether tables of so many rows and columns, and series of so many models, are worth it: their vectors need not
  /// more than some hundred million bytes.
  static bool Serves(std::size_t rows, std::size_t columns, std::size_t yColumns, int models);

  /// `round` is asked for each of the rounds 0, 1, ..., count - 1 when its turn comes.
  LaneRounds(LaneTable table, std::size_t count, std::function<LaneRound(std::size_t)> round)
      : table_(std::move(table)), count_(count), round_(std::move(round)) {}

  /// See PLSLanes::Figures. Fastest where rounds are asked for one after the other. `proceed` is told of the share of
  /// the work that is done for the rounds that are fitted now. Throws Stopped.
  std::optional<RoundFigures> Figures(std::size_t round, const RoundQuestions& asked,
                                      WorkProgress* progress, const Proceed& proceed);

 private:
  LaneTable table_;
  std::size_t count_;
  std::function<LaneRound(std::size_t)> round_;
  std::size_t first_ = 0;             ///< round of the lanes
  std::unique_ptr<PLSLanes> lanes_;
};

}  // namespace kalmia::analysis
