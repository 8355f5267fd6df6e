#pragma once

namespace kalmia {

/// The smallest sum of squares that counts as variance where a component is judged.
constexpr double kSmallestVariance = 1.1754943508222875e-37;

/// The largest factor by which one component may raise the unexplained part of a cumulated Q2: a single bad component
/// does not drive it far down.
constexpr double kLargestUnexplainedRatio = 1.1;

/// How well a component predicts what it has not seen: 1 - press / ss, and the same over all components so far.
struct Q2 {
  float value;
  float cumulated;
};

/// Q2 of one variable. `press` is its sum of squared prediction errors, `ss` its sum of squares before the component,
/// `cumulated` the cumulated Q2 so far, `ssOriginal` its sum of squares before the first component.
/// Degenerate: without variance left (ss too small, or -99) the value is 0 and the cumulated one 1 if there was
/// variance at the start, else 0.
Q2 JudgeVariable(double ss, double press, float cumulated, float ssOriginal);

/// Q2 over all variables together. Degenerate: without variance left 0, and cumulated 1.
Q2 Q2OfAllVariables(double ss, double press, float cumulated);

}  // namespace kalmia
