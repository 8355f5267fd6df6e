#include "kalmia/statistics/OneDimMinimum.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/support/NCProgress.h"

namespace {

constexpr double kGoldenRatio = 1.618034;
constexpr double kSmallestDenominator = 1e-20;  ///< of the parabola's vertex, before it is doubled
constexpr double kLargestStep = 100.0;          ///< of a parabolic step, in last steps
constexpr double kLongSection = 0.61803399;
constexpr double kShortSection = 0.38196601;

bool LiesBetween(float x, float a, float b) { return a < b ? a < x && x < b : b < x && x < a; }

/// `limit` lies beyond `c` as seen from `b`, or all three coincide.
bool IsAtOrBeyond(float x, float limit, float b, float c) { return c >= b ? x >= limit : x <= limit; }

float StepBeyond(float from, float to) { return static_cast<float>(to + kGoldenRatio * (to - from)); }

/// The vertex of the parabola through (a, fa), (b, fb), (c, fc).
float Vertex(float a, float b, float c, float fa, float fb, float fc) {
  const float r = (b - a) * (fb - fc);
  const float q = (b - c) * (fb - fa);
  const double magnitude = 2.0 * std::max<double>(std::fabs(q - r), kSmallestDenominator);
  const double denominator = q - r > 0 ? magnitude : -magnitude;
  return static_cast<float>(b - ((b - c) * q - (b - a) * r) / denominator);
}

float Between(float near, float far) { return static_cast<float>(kLongSection * near + kShortSection * far); }

}  // namespace

void OneDimMinimum::BracketMinimum(CallBack* f, float* a, float* b, float* c, float* fa, float* fb, float* fc) {
  *fa = f->Evaluate(*a);
  *fb = f->Evaluate(*b);
  if (*fa < *fb) {
    std::swap(*a, *b);
    std::swap(*fa, *fb);
  }
  *c = StepBeyond(*a, *b);
  *fc = f->Evaluate(*c);
  while (*fb > *fc) {
    float u = Vertex(*a, *b, *c, *fa, *fb, *fc);
    const auto limit = static_cast<float>(*b + kLargestStep * (*c - *b));
    float fu;
    if (LiesBetween(u, *b, *c)) {
      fu = f->Evaluate(u);
      if (fu < *fc) {
        *a = std::exchange(*b, u);
        *fa = std::exchange(*fb, fu);
        return;
      }
      if (fu > *fb) {
        *c = u;
        *fc = fu;
        return;
      }
      u = StepBeyond(*b, *c);
      fu = f->Evaluate(u);
    } else if (LiesBetween(u, *c, limit)) {
      fu = f->Evaluate(u);
      if (fu < *fc) {
        *b = std::exchange(*c, u);
        u = StepBeyond(*b, u);
        *fb = std::exchange(*fc, fu);
        fu = f->Evaluate(u);
      }
    } else {
      u = IsAtOrBeyond(u, limit, *b, *c) ? limit : StepBeyond(*b, *c);
      fu = f->Evaluate(u);
    }
    *a = std::exchange(*b, std::exchange(*c, u));
    *fa = std::exchange(*fb, std::exchange(*fc, fu));
  }
}

float OneDimMinimum::GoldenSectionSearch(CallBack* f, float a, float b, float c, float tolerance, float* xMinimum) {
  const float goal = -std::log(tolerance);
  NCProgress progress("Golden Section Search", goal, goal, false, true, true, nullptr);
  float x0 = a, x3 = c;
  const bool upperIsLonger = std::fabs(c - b) > std::fabs(b - a);
  float x1 = upperIsLonger ? b : static_cast<float>(b - kShortSection * (b - a));
  float x2 = upperIsLonger ? static_cast<float>(b + kShortSection * (c - b)) : b;
  float f1 = f->Evaluate(x1);
  float f2 = f->Evaluate(x2);
  bool moved = true;
  while (moved && std::fabs(x3 - x0) > tolerance * (std::fabs(x1) + std::fabs(x2))) {
    if (!progress.SetValue(-std::log(std::fabs(x3 - x0) / (std::fabs(x1) + std::fabs(x2))))) break;
    const float formerX1 = x1, formerX2 = x2;
    if (f2 < f1) {
      x0 = std::exchange(x1, x2);
      x2 = Between(x2, x3);
      f1 = std::exchange(f2, f->Evaluate(x2));
    } else {
      x3 = std::exchange(x2, x1);
      x1 = Between(x1, x0);
      f2 = std::exchange(f1, f->Evaluate(x1));
    }
    moved = x1 != formerX1 || x2 != formerX2;
  }
  *xMinimum = f1 < f2 ? x1 : x2;
  return f1 < f2 ? f1 : f2;
}
