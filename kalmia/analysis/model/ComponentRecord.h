#pragma once

#include <cmath>
#include <vector>

#include "kalmia/o2pls/SignificanceE.h"

namespace kalmia::analysis {

/// How much of Y one component describes and predicts; shares of 1. Not a number where nothing can be said.
struct YShare {
  double r2 = 0.0;     ///< of the sum of squares of Y, described by this component
  double r2Cum = 0.0;  ///< by all components up to this one
  double q2 = 0.0;     ///< of what was left of Y, predicted in cross-validation
  double q2Cum = 0.0;  ///< over all components up to this one
};

/// What is known of one component.
struct ComponentRecord {
  bool kept = false;
  bool significant = false;  ///< Q2 is strictly above its limit
  int iterations = 0;
  double r2x = 0.0;  ///< share of the sum of squares of X
  double r2xCum = 0.0;
  YShare y;  ///< of all Y columns together
  double q2Limit = 0.0;
  std::vector<YShare> perY;  ///< of each Y column

  /// Whether cross-validation has judged it; otherwise its Q2 and their limit are not numbers.
  bool IsJudged() const { return !std::isnan(q2Limit); }
};

/// What is known of one component of an OPLS model; shares of 1. The predictive components are judged together.
struct OPLSComponentRecord {
  bool orthogonal = false;
  bool kept = false;
  bool significant = false;  ///< Q2 is strictly above its limit
  double r2x = 0.0;          ///< share of the sum of squares of X that it takes off
  double r2y = 0.0;          ///< the same of Y
  double q2 = 0.0;           ///< what it adds to the cross-validated Q2 of the model; of the predictive ones, theirs
  double q2Cum = 0.0;        ///< of the model with the orthogonal components up to this one
  double q2Limit = 0.0;

  /// Whether cross-validation has judged it; otherwise its Q2 and their limit are not numbers.
  bool IsJudged() const { return !std::isnan(q2Limit); }
};

/// What is known of one component of an O2PLS model; shares of 1.
struct O2PLSComponentRecord {
  enum Kind { Joint, XUnique, YUnique };

  Kind kind = Joint;
  bool kept = false;
  SignificanceE::Significance verdict = SignificanceE::NA;  ///< of cross-validation
  double r2x = 0.0;      ///< share of the sum of squares of X that it takes off; not a number where it is not kept
  double r2y = 0.0;      ///< the same of Y
  double q2 = 0.0;       ///< of Y (of a component unique to Y: of X), with the components of its kind up to this one
  double q2Limit = 0.0;  ///< what it has to gain

  /// Whether cross-validation has looked at components; otherwise Q2 and its limit are not numbers.
  bool IsJudged() const { return !std::isnan(q2Limit); }
};

/// What is known of one principal component; shares of 1. Not a number where nothing can be said.
struct PCAComponentRecord {
  bool kept = false;
  bool significant = false;  ///< cross-validation: Q2 is strictly above its limit
  bool enoughLeft = false;   ///< the rule on what is left of X: more than kSmallestShareLeft before this component
  int iterations = 0;
  double r2x = 0.0;  ///< share of the sum of squares of X
  double r2xCum = 0.0;
  double q2 = 0.0;     ///< of what was left of X, predicted in cross-validation
  double q2Cum = 0.0;  ///< over all components up to this one
  double q2Limit = 0.0;

  /// Whether cross-validation has judged it; otherwise its Q2 and their limit are not numbers.
  bool IsJudged() const { return !std::isnan(q2Limit); }
};

/// What is known of one component of a filter; shares of 1.
struct FilterComponentRecord {
  double r2x = 0.0;  ///< share of the sum of squares of X that it takes out
  double r2xCum = 0.0;
  double angle = 0.0;  ///< of its scores to the principal scores of Y: 90 has nothing to do with them
};

/// A principal component is not worth computing where less than this share of the sum of squares of X is left.
constexpr float kSmallestShareLeft = 0.001F;

}  // namespace kalmia::analysis
