#include "kalmia/analysis/validation/PermutationTest.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace kalmia::analysis {

namespace {

struct Point {
  double x;
  double y;
};

/// Sums of squares and products about the means.
struct Moments {
  double meanX = 0.0, meanY = 0.0, xx = 0.0, yy = 0.0, xy = 0.0;
};

Moments MomentsOf(const std::vector<Point>& points) {
  const auto n = static_cast<double>(points.size());
  Moments moments;
  for (const Point& point : points) {
    moments.meanX += point.x / n;
    moments.meanY += point.y / n;
  }
  for (const Point& point : points) {
    const double x = point.x - moments.meanX, y = point.y - moments.meanY;
    moments.xx += x * x;
    moments.yy += y * y;
    moments.xy += x * y;
  }
  return moments;
}

/// Whether the points differ in one coordinate.
bool Vary(const std::vector<Point>& points, double Point::*coordinate) {
  return std::any_of(points.begin(), points.end(),
                     [&](const Point& point) { return point.*coordinate != points.front().*coordinate; });
}

double Intercept(const std::vector<Point>& points) {
  if (!Vary(points, &Point::x)) return kNotANumber;
  const Moments moments = MomentsOf(points);
  return moments.meanY - moments.xy / moments.xx * moments.meanX;
}

double Correlation(const std::vector<Point>& points) {
  if (!Vary(points, &Point::x) || !Vary(points, &Point::y)) return kNotANumber;
  const Moments moments = MomentsOf(points);
  return moments.xy / std::sqrt(moments.xx * moments.yy);
}

constexpr double kAsGood = 1e-9;  ///< of R2, Q2 and accuracy: beyond the rounding of whichever way they were computed

double PValue(const PermutationRun& original, const std::vector<PermutationRun>& runs, double PermutationRun::*figure) {
  if (std::isnan(original.*figure)) return kNotANumber;
  int count = 0;
  for (const PermutationRun& run : runs) {
    if (!(run.*figure < original.*figure - kAsGood)) ++count;  // one that is no number, too
  }
  return (1.0 + count) / (1.0 + static_cast<double>(runs.size()));
}

double InterceptOf(const std::vector<PermutationRun>& runs, double PermutationRun::*figure) {
  std::vector<Point> points;
  for (const PermutationRun& run : runs) {
    if (!std::isnan(run.correlation) && !std::isnan(run.*figure)) {
      points.push_back({std::fabs(run.correlation), run.*figure});
    }
  }
  return Intercept(points);
}

std::vector<std::vector<std::size_t>> RowsByGroup(const std::vector<int>& groupOfRow) {
  std::vector<std::vector<std::size_t>> rows;
  for (std::size_t i = 0; i < groupOfRow.size(); ++i) {
    const auto group = static_cast<std::size_t>(groupOfRow[i]);
    if (group >= rows.size()) rows.resize(group + 1);
    rows[group].push_back(i);
  }
  return rows;
}

}  // namespace

bool AreGroupsOfOneSize(const std::vector<int>& groupOfRow) {
  const std::vector<std::vector<std::size_t>> byGroup = RowsByGroup(groupOfRow);
  return std::all_of(byGroup.begin(), byGroup.end(),
                     [&](const std::vector<std::size_t>& rows) { return rows.size() == byGroup.front().size(); });
}

std::vector<std::size_t> PermutedGroups(const std::vector<int>& groupOfRow, RandomDraws* draws) {
  const std::vector<std::vector<std::size_t>> byGroup = RowsByGroup(groupOfRow);
  const std::vector<std::size_t> order = draws->Order(byGroup.size());
  std::vector<std::size_t> sources(groupOfRow.size());
  for (std::size_t g = 0; g < byGroup.size(); ++g) {
    for (std::size_t k = 0; k < byGroup[g].size(); ++k) sources[byGroup[g][k]] = byGroup[order[g]][k];
  }
  return sources;
}

double OrdersOfGroups(const std::vector<int>& groupOfRow, const RealMatrix& y) {
  std::map<std::vector<double>, int> alike;  // groups with these cells
  for (const std::vector<std::size_t>& rows : RowsByGroup(groupOfRow)) {
    std::vector<double> cells;
    for (const std::size_t row : rows) {
      for (std::size_t j = 0; j < y.columns; ++j) {
        cells.push_back(std::isnan(y(row, j)) ? std::numeric_limits<double>::infinity() : y(row, j));
      }
    }
    ++alike[cells];
  }
  double orders = 1.0;  // g! / (m1! m2! ...), a whole number after each factor
  int groups = 0;
  for (const auto& [cells, count] : alike) {
    for (int k = 1; k <= count; ++k) orders = orders * ++groups / k;
  }
  const bool isMirrored = alike.size() == 2 && alike.begin()->second == alike.rbegin()->second;
  return isMirrored ? orders / 2.0 : orders;
}

double CorrelationWithPermuted(const RealMatrix& y, const std::vector<std::size_t>& sources) {
  double sum = 0.0;
  int columns = 0;
  for (std::size_t j = 0; j < y.columns; ++j) {
    std::vector<Point> points;
    for (std::size_t i = 0; i < y.rows; ++i) {
      const Point point = {y(i, j), y(sources[i], j)};
      if (!std::isnan(point.x) && !std::isnan(point.y)) points.push_back(point);
    }
    const double correlation = Correlation(points);
    if (std::isnan(correlation)) continue;
    sum += correlation;
    ++columns;
  }
  return columns > 0 ? sum / columns : kNotANumber;
}

PermutationJudgement JudgePermutations(const PermutationRun& original, const std::vector<PermutationRun>& runs) {
  PermutationJudgement judgement;
  judgement.pR2 = PValue(original, runs, &PermutationRun::r2);
  judgement.pQ2 = PValue(original, runs, &PermutationRun::q2);
  judgement.pAccuracy = PValue(original, runs, &PermutationRun::accuracy);
  judgement.interceptR2 = InterceptOf(runs, &PermutationRun::r2);
  judgement.interceptQ2 = InterceptOf(runs, &PermutationRun::q2);
  return judgement;
}

}  // namespace kalmia::analysis
