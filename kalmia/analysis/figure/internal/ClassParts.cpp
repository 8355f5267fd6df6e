// Figures of how well classes are found.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kMostCurves = 8;  ///< so that colours and dashes do not repeat

std::string OfWhich(bool areLeftOut) { return areLeftOut ? "rows while they were left out" : "fitted rows"; }

/// The curve from (0, 0) to (1, 1): rows with equal scores are passed together.
void TraceCurve(const std::vector<double>& scores, const std::vector<bool>& isPositive, FigureMark* line) {
  std::vector<std::size_t> order;
  double positives = 0.0, negatives = 0.0;
  for (std::size_t i = 0; i < scores.size(); ++i) {
    if (std::isnan(scores[i])) continue;
    order.push_back(i);
    (isPositive[i] ? positives : negatives) += 1.0;
  }
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
  double found = 0.0, mistaken = 0.0;
  line->x = line->y = {0.0};
  for (std::size_t i = 0; i < order.size(); ++i) {
    (isPositive[order[i]] ? found : mistaken) += 1.0;
    if (i + 1 < order.size() && scores[order[i + 1]] == scores[order[i]]) continue;
    line->x.push_back(mistaken / negatives);
    line->y.push_back(found / positives);
  }
}

}  // namespace

Figure ConfusionFigure(const ClassFigures& figures, const std::vector<std::string>& classNames, bool areLeftOut,
                       const std::string& subject, const FigureRecipe& recipe) {
  Figure figure = NewFigure("confusion", Figure::Kind::Other, "classes of " + OfWhich(areLeftOut), subject, recipe);
  const std::size_t classes = classNames.size();
  FigurePanel panel;
  panel.x.kind = panel.y.kind = FigureAxis::Kind::Category;
  panel.x.label = "assigned class";
  panel.y.label = "class";
  panel.x.categories = ListOf("", classNames);
  panel.y.categories = ListOf("", {classNames.rbegin(), classNames.rend()});  // the first class at the top
  FigureMark cells = MarkOf(FigureMark::Type::Area, FigureLook::Data, {}, {});
  std::vector<std::string> counts;
  int rows = 0;
  for (std::size_t k = 0; k < figures.confusion.size(); ++k) {
    const std::vector<int>& line = figures.confusion[k];
    const int total = std::accumulate(line.begin(), line.end(), 0);
    rows += total;
    for (std::size_t g = 0; g < line.size(); ++g) {
      if (line[g] == 0) continue;
      cells.x.push_back(static_cast<double>(g));
      cells.y.push_back(static_cast<double>(classes - 1 - k));
      cells.value.push_back(static_cast<double>(line[g]) / total);
      counts.push_back(std::to_string(line[g]));
    }
  }
  FigureMark texts = MarkOf(FigureMark::Type::Text, FigureLook::Data, cells.x, cells.y);
  texts.names = ListOf("", counts);
  panel.marks = {cells, texts};
  figure.panels.push_back(panel);
  figure.alt = Counted(static_cast<std::size_t>(rows), "row") + " of " + std::to_string(classes) +
               " classes; accuracy " + Fixed(figures.accuracy, 4) + ", balanced " +
               Fixed(figures.balancedAccuracy, 4) + ".";
  if (figures.unpredictedRows > 0) {
    figure.notes.push_back(Counted(static_cast<std::size_t>(figures.unpredictedRows), "row") + " not predicted");
  }
  return figure;
}

Figure RocFigure(const std::vector<int>& classOfRow, const RealMatrix& values, const ClassFigures& figures,
                 const std::vector<std::string>& classNames, bool areLeftOut, const std::string& subject,
                 const FigureRecipe& recipe) {
  Figure figure = NewFigure("roc", Figure::Kind::Other, "ROC of " + OfWhich(areLeftOut), subject, recipe);
  const RealMatrix odds = LogOdds(values);
  FigurePanel panel;
  panel.x.label = "rows of other classes that score higher, share";
  panel.y.label = "rows of the class, share";
  panel.x.low = panel.y.low = -0.02;
  panel.x.high = panel.y.high = 1.02;
  panel.marks.push_back(MarkOf(FigureMark::Type::Line, FigureLook::Faint, {0.0, 1.0}, {0.0, 1.0}));
  const std::size_t shown = std::min(classNames.size(), kMostCurves);
  figure.alt = "Areas under the curves:";
  for (std::size_t k = 0; k < shown; ++k) {
    std::vector<double> scores;
    std::vector<bool> isPositive;
    for (std::size_t i = 0; i < odds.rows; ++i) {
      if (classOfRow[i] < 0) continue;
      scores.push_back(odds(i, k));
      isPositive.push_back(classOfRow[i] == static_cast<int>(k));
    }
    FigureMark line = MarkOf(FigureMark::Type::Line, FigureLook::Class, {}, {});
    TraceCurve(scores, isPositive, &line);
    line.classes = {static_cast<int>(k)};
    panel.marks.push_back(line);
    figure.classNames.push_back(classNames[k] + ": " + Fixed(figures.auc[k], 3));
    figure.alt += (k == 0 ? " " : ", ") + OneLine(figure.classNames.back());
  }
  figure.alt += ".";
  if (shown < classNames.size()) {
    figure.notes.push_back("the first " + std::to_string(shown) + " of " + std::to_string(classNames.size()) +
                           " classes");
  }
  figure.panels.push_back(panel);
  return figure;
}

}  // namespace kalmia::analysis
