#include "kalmia/analysis/validation/ClassFigures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "kalmia/analysis/model/DiscriminantRule.h"

namespace kalmia::analysis {

namespace {

using Confusion = std::vector<std::vector<int>>;

double Rate(int found, int all) { return all > 0 ? static_cast<double>(found) / all : kNotANumber; }

/// Rows of the class that are assigned to another, of others that are assigned to it, and so on.
struct ClassCounts {
  int own = 0, ownFound = 0, others = 0, othersTaken = 0;
};

ClassCounts CountsOf(const Confusion& confusion, std::size_t number) {
  ClassCounts counts;
  for (std::size_t g = 0; g < confusion.size(); ++g) {
    for (std::size_t h = 0; h < confusion.size(); ++h) {
      const int rows = confusion[g][h];
      (g == number ? counts.own : counts.others) += rows;
      if (h == number) (g == number ? counts.ownFound : counts.othersTaken) += rows;
    }
  }
  return counts;
}

double MeanOfNumbers(const std::vector<double>& values) {
  double sum = 0.0;
  int count = 0;
  for (const double value : values) {
    if (std::isnan(value)) continue;
    sum += value;
    ++count;
  }
  return count > 0 ? sum / count : kNotANumber;
}

void AddRates(ClassFigures* figures) {
  int found = 0, all = 0;
  for (std::size_t g = 0; g < figures->confusion.size(); ++g) {
    const ClassCounts counts = CountsOf(figures->confusion, g);
    figures->sensitivity.push_back(Rate(counts.ownFound, counts.own));
    figures->specificity.push_back(Rate(counts.others - counts.othersTaken, counts.others));
    found += counts.ownFound;
    all += counts.own;
  }
  figures->accuracy = Rate(found, all);
  figures->balancedAccuracy = MeanOfNumbers(figures->sensitivity);
}

}  // namespace

ClassFigures JudgeClasses(const std::vector<int>& classOfRow, const RealMatrix& values) {
  ClassFigures figures;
  figures.confusion.assign(values.columns, std::vector<int>(values.columns, 0));
  const std::vector<int> assigned = AssignedClasses(values);
  for (std::size_t i = 0; i < classOfRow.size(); ++i) {
    if (classOfRow[i] < 0) continue;
    if (assigned[i] < 0) {
      ++figures.unpredictedRows;
    } else {
      ++figures.confusion[static_cast<std::size_t>(classOfRow[i])][static_cast<std::size_t>(assigned[i])];
    }
  }
  AddRates(&figures);
  const RealMatrix odds = LogOdds(values);
  for (std::size_t g = 0; g < values.columns; ++g) {
    std::vector<double> scores(classOfRow.size(), kNotANumber);
    std::vector<bool> isPositive(classOfRow.size(), false);
    for (std::size_t i = 0; i < classOfRow.size(); ++i) {
      if (classOfRow[i] >= 0) scores[i] = odds(i, g);
      isPositive[i] = classOfRow[i] == static_cast<int>(g);
    }
    figures.auc.push_back(AreaUnderCurve(scores, isPositive));
  }
  return figures;
}

void WithoutAuc(ClassFigures* figures) { figures->auc.assign(figures->auc.size(), kNotANumber); }

double AreaUnderCurve(const std::vector<double>& scores, const std::vector<bool>& isPositive) {
  std::vector<std::pair<double, bool>> rows;
  for (std::size_t i = 0; i < scores.size(); ++i) {
    if (!std::isnan(scores[i])) rows.emplace_back(scores[i], isPositive[i]);
  }
  std::sort(rows.begin(), rows.end());
  double negatives = 0.0, positives = 0.0, pairs = 0.0;  // those before, and pairs in which the positive one is higher
  for (std::size_t first = 0; first < rows.size();) {
    double equalNegatives = 0.0, equalPositives = 0.0;
    std::size_t i = first;
    for (; i < rows.size() && rows[i].first == rows[first].first; ++i) {
      (rows[i].second ? equalPositives : equalNegatives) += 1.0;
    }
    pairs += equalPositives * (negatives + equalNegatives / 2.0);
    negatives += equalNegatives;
    positives += equalPositives;
    first = i;
  }
  return positives > 0.0 && negatives > 0.0 ? pairs / (positives * negatives) : kNotANumber;
}

}  // namespace kalmia::analysis
