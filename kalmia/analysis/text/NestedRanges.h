#pragma once

#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The nested ranges of a calculation on one bar from 0 to 1. The bar never goes back, though a convergence may become
/// worse, and a step may end before its range does.
class KALMIA_EXPORT NestedRanges {
 public:
  /// The range of the innermost level.
  void SetRange(double from, double to);
  /// Fills the bar up to a value of the innermost level.
  void MoveTo(double value);
  /// A level onto [from, to] of the innermost one; its own range is 0 to 1 at first.
  void Push(double from, double to);
  /// Closes the innermost level, but never the outermost.
  void Pop();

  bool IsOutermost() const { return levels_.size() == 1; }
  double Share() const { return share_; }  ///< of the bar that is filled

 private:
  /// The range of one level, and the part of the bar that it fills.
  struct Level {
    double from, to;
    double begin, end;
    double ShareAt(double value) const;
  };

  void FillUpTo(double share);

  double share_ = 0.0;
  std::vector<Level> levels_ = {{0.0, 1.0, 0.0, 1.0}};
};

}  // namespace kalmia::analysis
