#pragma once

#include <vector>

namespace kalmia::analysis {

/// A rectangle of a picture, in pixels from the upper left corner.
struct Box {
  double left, top, right, bottom;
};

/// Which pixels of a picture texts and marks take.
class TakenPixels {
 public:
  TakenPixels(double width, double height);

  /// Whether the box lies within the picture, and on no pixel that is taken.
  bool IsFree(const Box& box) const;
  void Take(const Box& box);  ///< as much of it as lies within the picture

 private:
  int width_, height_;
  std::vector<bool> taken_;  ///< row after row
};

}  // namespace kalmia::analysis
