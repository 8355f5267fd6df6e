#include "kalmia/containers/NCDataVectorUtilities.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "kalmia/support/CompareWithTolerance.h"

using kalmia::kMissing;

namespace {

constexpr double kTolerance = 1.1920928955078125e-7;  ///< 2^-23: a unit in the last place of a float

bool Equal(double a, double b) { return CompareWithTolerance(a, b, kTolerance) == 0; }

/// Value at x of the line through (x1, y1) and (x2, y2); the order of the rules matters.
double Line(double x1, double x2, double y1, double y2, double x, bool clamp) {
  if (y1 == kMissing || y2 == kMissing || x1 == kMissing || x2 == kMissing)
    return Equal(x, x1) ? y1 : Equal(x, x2) ? y2 : kMissing;
  if (Equal(x1, x2)) return y1;
  if (clamp && x < x1 && x < x2) return x1 < x2 ? y1 : y2;
  if (clamp && x > x1 && x > x2) return x1 > x2 ? y1 : y2;
  return y1 + (y2 - y1) / (x2 - x1) * (x - x1);
}

constexpr int kNoPoint = -1;

/// The points on both sides of an abscissa.
struct Bracket {
  int low;   ///< the point with the largest abscissa at or below
  int high;  ///< the point with the smallest abscissa at or above
};

/// The points of a curve by abscissa.
template <class T>
class Curve {
 public:
  Curve(const NCDataVector<T>& xs, const NCDataVector<T>& ys) {
    for (int k = 1; k <= xs.Size(); ++k)
      if (ys[k] != kMissing && !std::isnan(xs[k])) points_.push_back({xs[k], k});
    std::stable_sort(points_.begin(), points_.end(), IsBelow);
    // Of equal abscissas only the first one found counts.
    const auto sameAbscissa = [](const Point& a, const Point& b) { return a.x == b.x; };
    points_.erase(std::unique(points_.begin(), points_.end(), sameAbscissa), points_.end());
  }

  Bracket At(T x) const {
    if (std::isnan(x)) return {kNoPoint, kNoPoint};
    const auto atOrAbove = std::lower_bound(points_.begin(), points_.end(), Point{x, 0}, IsBelow);
    Bracket bracket{kNoPoint, kNoPoint};
    if (atOrAbove != points_.end()) bracket.high = atOrAbove->k;
    if (atOrAbove != points_.end() && atOrAbove->x == x)
      bracket.low = atOrAbove->k;
    else if (atOrAbove != points_.begin())
      bracket.low = (atOrAbove - 1)->k;
    return bracket;
  }

 private:
  struct Point {
    T x;
    int k;
  };
  static bool IsBelow(const Point& a, const Point& b) { return a.x < b.x; }

  std::vector<Point> points_;  ///< abscissas ascending, no two equal
};

/// Gives the cells in front of the first point and behind the last one a bracket: each hands the bracket of its
/// neighbour one place on towards the end. At least two brackets.
void CloseEnds(std::vector<Bracket>& brackets) {
  for (std::size_t j = 0; j < brackets.size() && brackets[j].low == kNoPoint; ++j) {
    brackets[j].low = brackets.front().high;
    brackets.front().high = brackets[1].high;
  }
  const std::size_t last = brackets.size() - 1;
  for (std::size_t j = brackets.size(); j > 0 && brackets[j - 1].high == kNoPoint; --j) {
    brackets[j - 1].high = brackets[last].low;
    brackets[last].low = brackets[last - 1].low;
  }
}

}  // namespace

namespace NCDataVectorUtilities {

template <class T>
NCDataVector<T> InterPolate(float a, float b, const NCDataVector<T>& u, const NCDataVector<T>& v, float x,
                            bool clamp) {
  NCDataVector<T> result(u.Size());
  for (int i = 1; i <= u.Size(); ++i) result(i, static_cast<T>(Line(a, b, u[i], v[i], x, clamp)));
  return result;
}

template <class T>
NCDataVector<T> InterPolate(const NCDataVector<T>& x, const NCDataVector<T>& xs, const NCDataVector<T>& ys) {
  NCDataVector<T> result;
  if (xs.Size() != ys.Size() || x.Size() < 2 || xs.Size() < 2) return result;
  const Curve<T> curve(xs, ys);
  std::vector<Bracket> brackets;
  for (int i = 1; i <= x.Size(); ++i) brackets.push_back(curve.At(x[i]));
  CloseEnds(brackets);

  result.Reserve(x.Size());
  int i = 0;
  for (const auto& [low, high] : brackets) {
    ++i;
    const bool bracketed = low != kNoPoint && high != kNoPoint;
    result.push_back(static_cast<T>(
        bracketed ? Line(xs[low], xs[high], ys[low], ys[high], x[i], /*clamp=*/false) : kMissing));
  }
  return result;
}

template NCDataVector<float> InterPolate(float, float, const NCDataVector<float>&, const NCDataVector<float>&, float,
                                         bool);
template NCDataVector<double> InterPolate(float, float, const NCDataVector<double>&, const NCDataVector<double>&,
                                          float, bool);
template NCDataVector<float> InterPolate(const NCDataVector<float>&, const NCDataVector<float>&,
                                         const NCDataVector<float>&);
template NCDataVector<double> InterPolate(const NCDataVector<double>&, const NCDataVector<double>&,
                                          const NCDataVector<double>&);

}  // namespace NCDataVectorUtilities
