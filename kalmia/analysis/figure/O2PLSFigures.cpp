#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/model/ClassPredictions.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

/// The scores and loadings of one block: joint components, then those of its own.
struct BlockFigures {
  std::string block, key;  ///< "X", "x"
  std::string scoreSymbol, loadingSymbol;
  const NCDataMatrix<float>&scores, &uniqueScores, &loadings, &uniqueLoadings;
  const std::vector<std::string>& columns;

  std::size_t Joint() const { return static_cast<std::size_t>(scores.SizeRows()); }
  std::size_t Unique() const { return static_cast<std::size_t>(uniqueScores.SizeRows()); }
};

std::vector<std::string> SymbolsOf(const std::string& symbol, std::size_t joint, std::size_t unique) {
  std::vector<std::string> symbols;
  for (std::size_t a = 1; a <= joint; ++a) symbols.push_back(symbol + std::to_string(a));
  for (std::size_t a = 1; a <= unique; ++a) symbols.push_back(symbol + "o" + std::to_string(a));
  return symbols;
}

std::vector<std::vector<double>> BothOf(const NCDataMatrix<float>& joint, const NCDataMatrix<float>& unique) {
  std::vector<std::vector<double>> vectors = VectorsOf(joint);
  for (std::vector<double>& vector : VectorsOf(unique)) vectors.push_back(std::move(vector));
  return vectors;
}

ScoreSpace SpaceOf(const BlockFigures& block, const SharedNames& rows) {
  ScoreSpace space;
  space.rows = rows;
  space.symbols = SymbolsOf(block.scoreSymbol, block.Joint(), block.Unique());
  const std::vector<std::vector<double>> vectors = BothOf(block.scores, block.uniqueScores);
  space.scores = RealMatrix(rows->names.size(), vectors.size());
  for (std::size_t a = 0; a < vectors.size(); ++a) {
    for (std::size_t i = 0; i < vectors[a].size(); ++i) space.scores(i, a) = vectors[a][i];
  }
  return space;
}

/// Axes of the recipe where the block has them; one of the blocks has, at least.
FigureAxes AxesOfBlock(const FigureRecipe& recipe, std::size_t components, std::size_t most) {
  if (!recipe.axes) return AxesOf(recipe, components);
  const FigureAxes asked = AxesOf(recipe, most);
  const bool hasBoth = std::max(asked.x, *asked.y) < components;
  return hasBoth ? asked : AxesOf({}, components);
}

void AddBlock(const BlockFigures& block, const FigureAxes& axes, const SharedNames& rows, const std::string& subject,
              const FigureRecipe& recipe, std::vector<Figure>* figures) {
  const ScoreSpace space = SpaceOf(block, rows);
  figures->push_back(ScoresFigure(space, axes, subject, recipe, block.key + "-scores"));
  if (block.Unique() > 0 && block.Joint() > 1) {
    const std::size_t first = block.Joint(), second = first + 1;
    FigureAxes own = {first, std::nullopt};
    if (block.Unique() > 1) own.y = second;
    figures->push_back(ScoresFigure(space, own, subject, recipe, block.key + "-unique-scores"));
  }
  const ColumnVectors loadings = {ListOf(block.key == "x" ? "columns" : "y-columns", block.columns),
                                  BothOf(block.loadings, block.uniqueLoadings),
                                  SymbolsOf(block.loadingSymbol, block.Joint(), block.Unique())};
  figures->push_back(LoadingsFigure(loadings, axes, subject, recipe, block.key + "-loadings"));
}

/// The scores of X across and those of Y up, of each joint component, the first two.
Figure JointFigure(const O2PLSMatrices& o, const SharedNames& rows, const std::string& subject,
                   const FigureRecipe& recipe) {
  Figure figure = NewFigure("joint-scores", Figure::Kind::Rows, "joint scores of both blocks", subject, recipe);
  const std::vector<std::vector<double>> t = VectorsOf(o.t), u = VectorsOf(o.u);
  for (std::size_t a = 0; a < std::min<std::size_t>(t.size(), 2); ++a) {
    FigurePanel panel;
    const std::string number = std::to_string(a + 1);
    panel.x.label = "t" + number + ", of X";
    panel.y.label = "u" + number + ", of Y";
    FigureMark points = MarkOf(FigureMark::Type::Points, FigureLook::Data, t[a], u[a]);
    points.names = rows;
    points.labels = true;
    panel.marks = {LevelAt(0.0, FigureLook::Plain, ""), UprightAt(0.0, FigureLook::Plain, ""), points};
    figure.panels.push_back(panel);
  }
  figure.alt = Counted(rows->names.size(), "row") + " by what the blocks have in common, t of X and u of Y.";
  return figure;
}

/// What joint components, unique ones and none describe of each block, on top of each other.
Figure SharesFigure(const std::vector<O2PLSComponentRecord>& components, const std::string& subject,
                    const FigureRecipe& recipe) {
  Figure figure = NewFigure("shares", Figure::Kind::Components, "shares of the blocks", subject, recipe);
  std::vector<double> joint(2, 0.0), unique(2, 0.0), rest;
  for (const O2PLSComponentRecord& record : components) {
    if (!record.kept) continue;
    switch (record.kind) {
      case O2PLSComponentRecord::Joint:
        joint[0] += record.r2x;
        joint[1] += record.r2y;
        break;
      case O2PLSComponentRecord::XUnique: unique[0] += record.r2x; break;
      case O2PLSComponentRecord::YUnique: unique[1] += record.r2y; break;
    }
  }
  for (std::size_t b = 0; b < 2; ++b) rest.push_back(1.0 - joint[b] - unique[b]);
  FigurePanel panel;
  panel.x.kind = FigureAxis::Kind::Category;
  panel.x.label = "block";
  panel.x.categories = ListOf("", {"X", "Y"});
  panel.y.label = "share of the sum of squares";
  std::vector<double> base(2, 0.0);
  const auto add = [&](const std::vector<double>& shares, FigureLook look, const std::string& name) {
    FigureMark bars = MarkOf(FigureMark::Type::Bars, look, {0.0, 1.0}, {}, name);
    bars.base = base;
    bars.width = 0.5;
    for (std::size_t b = 0; b < 2; ++b) bars.y.push_back(base[b] += shares[b]);
    panel.marks.push_back(bars);
  };
  add(joint, FigureLook::Data, "joint");
  add(unique, FigureLook::Second, "unique");
  add(rest, FigureLook::Faint, "rest");
  figure.panels.push_back(panel);
  const char* const blocks[] = {"X", "Y"};
  for (std::size_t b = 0; b < 2; ++b) {
    figure.alt += std::string(b == 0 ? "" : "; ") + blocks[b] + ": joint " + Fixed(joint[b], 4) + ", unique " +
                  Fixed(unique[b], 4) + ", rest " + Fixed(rest[b], 4);
  }
  figure.alt += ".";
  return figure;
}

}  // namespace

std::vector<Figure> Figures(const O2PLSAnalysis& analysis, const FigureRecipe& recipe) {
  const O2PLSResult& fit = analysis.fit;
  const StoredO2PLS& model = fit.model;
  const O2PLSMatrices& o = model.o2pls;
  std::vector<Figure> figures;
  if (!fit.AnyKept()) return figures;
  const std::string subject = "O2PLS of " + FileName(model.table) + " and " + FileName(model.yTable);
  const SharedNames rows = ListOf("rows", model.rowNames);
  const BlockFigures x = {"X", "x", "t", "p", o.t, o.to, o.p, o.po, model.xNames};
  const BlockFigures y = {"Y", "y", "u", "q", o.u, o.uo, o.q, o.qo, model.yNames};
  const std::size_t ofX = x.Joint() + x.Unique(), ofY = y.Joint() + y.Unique(), most = std::max(ofX, ofY);
  figures.push_back(JointFigure(o, rows, subject, recipe));
  AddBlock(x, AxesOfBlock(recipe, ofX, most), rows, subject, recipe, &figures);
  AddBlock(y, AxesOfBlock(recipe, ofY, most), rows, subject, recipe, &figures);
  figures.push_back(SharesFigure(model.components, subject, recipe));
  if (std::optional<Figure> distance = DistanceFigure(model, subject, recipe)) figures.push_back(std::move(*distance));
  const bool isJudged = analysis.validation && analysis.validation->IsJudged();
  const RealMatrix none, fitted = PredictedMatrix(fit.fittedY, model.yNames.size());
  const RealMatrix& leftOut = isJudged ? analysis.validation->y.predicted.back() : none;
  std::optional<Figure> of =
      FitFigure({rows, model.yNames, fit.data.y.measured, fitted, leftOut}, subject, recipe);
  if (of) figures.push_back(std::move(*of));
  return figures;
}

}  // namespace kalmia::analysis
