#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/model/Judgement.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/PredictionInterval.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/JackKnife.h"
#include "kalmia/analysis/validation/PermutationTest.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

// What figures of models are made of, whatever the family.

constexpr std::size_t kMostYPanels = 6;

SharedNames ListOf(const std::string& key, const std::vector<std::string>& names);

/// A table without its folders, as titles call it.
std::string FileName(const std::string& table);

/// A figure without panels, called "Scores: PLS of octane on gasoline.csv" or as the recipe says.
Figure NewFigure(const std::string& name, Figure::Kind kind, const std::string& what, const std::string& subject,
                 const FigureRecipe& recipe);

FigureMark MarkOf(FigureMark::Type type, FigureLook look, std::vector<double> x, std::vector<double> y,
                  const std::string& name = "");
FigureMark LevelAt(double y, FigureLook look, const std::string& name);
FigureMark UprightAt(double x, FigureLook look, const std::string& name);

/// 1, 2, ..., so many.
std::vector<double> NumbersTo(std::size_t count);

/// "limit 95 %: 7.495", with the digits of the reports.
std::string LimitName(const std::string& share, double limit);

/// Components of the rows of a table: where they lie, and what is known of their places.
struct ScoreSpace {
  SharedNames rows;
  RealMatrix scores;                 ///< rows by components
  std::vector<std::string> symbols;  ///< of the components: t1, to1
  std::vector<double> shares;        ///< of X, that they describe; not a number where that is not known
  std::string block = "X";
  std::size_t trainingRows = 0;      ///< N of the limits
  bool areNew = false;               ///< whether the model has not seen the rows: limits are those of new rows
  ScoreMoments moments;              ///< of the training rows; without means where there is no ellipse
  std::vector<int> classes;          ///< of the rows; empty without
  std::vector<std::string> classNames;

  std::size_t Components() const { return scores.columns; }
  /// As the outputs have the numbers: those of training rows are stored in single precision.
  std::vector<double> Column(std::size_t component) const;
  std::string Label(std::size_t component) const;           ///< "t1 (72.5 % of X)"
};

/// Which components a figure shows, from 0; one alone where the model has only one.
struct FigureAxes {
  std::size_t x = 0;
  std::optional<std::size_t> y;
};

/// Those of the recipe, or the ones given. Throws BadRequest for such as the model, of one component at least, does not
/// have.
FigureAxes AxesOf(const FigureRecipe& recipe, std::size_t components, std::size_t usualX = 0, std::size_t usualY = 1);

Figure ScoresFigure(const ScoreSpace& space, const FigureAxes& axes, const std::string& subject,
                    const FigureRecipe& recipe, const std::string& name = "scores");

/// Vectors of the columns: components in rows, `symbols` each. Lines over channels, whose names tell their numbers;
/// otherwise points with names, or bars of one component.
struct ColumnVectors {
  SharedNames columns;
  std::vector<std::vector<double>> vectors;
  std::vector<std::string> symbols;
};
Figure LoadingsFigure(const ColumnVectors& loadings, const FigureAxes& axes, const std::string& subject,
                      const FigureRecipe& recipe, const std::string& name = "loadings");

/// The rows of a matrix with components in rows as numbers, missing ones not numbers.
std::vector<std::vector<double>> VectorsOf(const NCDataMatrix<float>& prim);

/// Distances of the training rows by T2, or by the row's number where there is no T2; nothing without distances.
std::optional<Figure> DistanceFigure(const ModelInfo& model, const std::string& subject, const FigureRecipe& recipe);
/// The same of any rows.
std::optional<Figure> DistanceFigure(const SharedNames& names, const RowDiagnosis& rows, const std::string& subject,
                                     const FigureRecipe& recipe);

/// R2 and Q2 of models of 0, 1, 2, ... components, from refits or by component.
struct SharesByNumber {
  std::vector<std::string> labels;  ///< of the models, below the bars
  std::vector<std::pair<std::string, std::vector<double>>> shares;  ///< by name; cumulated
  std::size_t model = 0;            ///< that was chosen or given; the number of labels for none
  bool isChosen = false;
};
std::optional<Figure> ComponentsFigure(const SharesByNumber& numbers, const std::string& subject,
                                       const FigureRecipe& recipe);

/// "0", "1", or of several kinds of components "1 + 2".
std::vector<std::string> LabelsOf(const StoredValidation& validation);

/// From what a stored model carries of refits.
SharesByNumber SharesOf(const StoredValidation& validation, bool hasY);

/// Errors of left-out rows by number of components: with one Y column RMSECV in its units, otherwise the root of the
/// mean squared error in standard deviations. One standard error where the rule takes it.
struct ErrorsByNumber {
  std::vector<std::string> labels;
  std::vector<double> meanSquares;      ///< MSE_a, in squares of standard deviations
  double unit = 1.0;                    ///< the standard deviation
  std::string label;                    ///< of the axis
  const ComponentChoice* choice = nullptr;
  std::size_t model = 0;
};
std::optional<Figure> ValidationFigure(const ErrorsByNumber& errors, const std::string& subject,
                                       const FigureRecipe& recipe);
ErrorsByNumber ErrorsOf(const RefitValidation& validation, std::vector<std::string> labels);

/// Gives both axes the range of all items, and a diagonal below them.
void TakeCommonRange(FigurePanel* panel);

/// Measured values against fitted and cross-validated ones.
struct FitOfColumns {
  SharedNames rows;
  std::vector<std::string> yNames;
  const std::vector<std::vector<double>>& measured;  ///< column by column
  const RealMatrix& fitted;
  const RealMatrix& leftOut;  ///< without rows where no row was left out
};
std::optional<Figure> FitFigure(const FitOfColumns& fit, const std::string& subject, const FigureRecipe& recipe);

/// A number for each column in panels, with intervals where they are known.
struct ColumnNumbers {
  std::string name;  ///< of the panel
  std::vector<double> numbers;
  const JackKnifeResult* intervals = nullptr;
};
Figure ColumnsFigure(const std::string& name, const std::string& what, const SharedNames& columns,
                     const std::vector<ColumnNumbers>& panels, std::optional<double> level, const std::string& subject,
                     const FigureRecipe& recipe);

Figure PermutationFigure(const PermutationTest& test, const std::string& subject, const FigureRecipe& recipe);

/// Figures contributions-1, contributions-2, ... of the rows.
std::vector<Figure> ContributionFigures(const std::vector<RowContributions>& rows,
                                        const std::vector<std::string>& columns, const std::string& subject,
                                        const FigureRecipe& recipe);

/// How many rows of each class are taken for which, shaded by their share of the class.
Figure ConfusionFigure(const ClassFigures& figures, const std::vector<std::string>& classNames, bool areLeftOut,
                       const std::string& subject, const FigureRecipe& recipe);

/// For each class the share of its rows that score higher than any threshold, by that of other rows. `values` are those
/// of a discriminant rule.
Figure RocFigure(const std::vector<int>& classOfRow, const RealMatrix& values, const ClassFigures& figures,
                 const std::vector<std::string>& classNames, bool areLeftOut, const std::string& subject,
                 const FigureRecipe& recipe);

}  // namespace kalmia::analysis
