#include "Operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr int kMaxIterations = 20;
constexpr int kRows = 6;  ///< of tables that the objects are tried on
constexpr int kMostColumns = 1000;
constexpr float kTolerance = 0.5F;

/// A user who wants to stop after a while: a stream may ask for 2^31 iterations.
class ImpatientSink : public NCProgress::Sink {
 public:
  void SetRange(float, float) override {}
  bool SetValue(float) override { return GoesOn(); }
  void SetText(const char*) override {}
  bool PushSubRange(float, float) override { return GoesOn(); }
  bool PopSubRange() override { return GoesOn(); }
  bool IsBreakPressed() override { return !GoesOn(); }
  bool NextSpin() override { return GoesOn(); }
  void SpinDone() override {}

 private:
  bool GoesOn() { return ++asked_ < 100; }
  int asked_ = 0;
};

NCProgress ImpatientBar() { return NCProgress(std::make_unique<ImpatientSink>()); }

/// Bars that the library opens itself, for the length of a scope.
struct ImpatientOwnBars {
  ImpatientOwnBars() {
    NCProgress::SetSinkFactory([](auto&&...) { return std::make_unique<ImpatientSink>(); });
  }
  ~ImpatientOwnBars() { NCProgress::SetSinkFactory({}); }
  ImpatientOwnBars(const ImpatientOwnBars&) = delete;
  ImpatientOwnBars& operator=(const ImpatientOwnBars&) = delete;
};

/// Whether the operation came to its end; an NCError is the only other way out.
template <class Operation>
bool Succeeds(const Operation& operation) try {
  operation();
  return true;
} catch (const NCError&) {
  return false;
}

void ExpectExactCounts(const Matrix& matrix) { EXPECT_TRUE(HasExactCounts(matrix)); }

template <class Model>
void ExpectWritesAndReads(const Model& model) {
  EXPECT_TRUE(StreamAttacks<Model>().Read(StreamOf(model)));
}

/// For a model that promises to stay as it was.
template <class Model, class Operation>
void ExpectSuccessOrNoChange(Model* model, const Operation& operation) {
  const std::string before = StreamOf(*model);
  if (!Succeeds(operation)) {
    EXPECT_TRUE(StreamOf(*model) == before) << "a failure left a trace";
  }
}

/// The model's own table, one without rows, and a new one of as many columns as the loadings.
std::vector<Matrix> TablesToPredict(const Matrix& own, const Matrix& loadings) {
  const int columns = std::max(own.SizeColumns(), loadings.SizeColumns());
  return {own, Matrix(), RandomMatrix<float>(kRows, std::min(columns, kMostColumns), 0.1, 1)};
}

void Predict(const NCPLS& model, const Matrix& X) {
  NCPLSPred prediction(X, *model.GetWprim(), *model.GetPprim(), *model.GetCprim(), kTolerance);
  while (prediction.GetCompComputed() < prediction.GetMaxComp()) prediction.CalcNextComponent();
  ExpectExactCounts(*prediction.GetYPred());
  ExpectExactCounts(*prediction.GetXResiduals());
}

void FlipAllTwice(NCPLS* model) {
  for (int a = 0; a <= model->GetPprim()->SizeRows() + 1; ++a) {
    model->FlipComponent(a);
    model->FlipComponent(a);
  }
}

/// But for the first time, when signalling NaNs become quiet, and a cell of 99 becomes missing.
void ExpectTwoFlipsAreNone(NCPLS* model) {
  FlipAllTwice(model);
  const std::string before = StreamOf(*model);
  FlipAllTwice(model);
  EXPECT_TRUE(StreamOf(*model) == before);
}

/// Of the newest component.
void Validate(NCPLS* model) {
  const int components = model->GetWprim()->SizeRows();
  const Vector w = components > 0 ? (*model->GetWprim())[components] : Vector();
  PLSCrossValidation validation(model, /*rounds=*/2, nullptr);
  validation.NextComponent(&w, kMaxIterations, Vector(model->GetYResiduals()->SizeColumns(), 1), nullptr,
                           /*quiet=*/true);
  ExpectExactCounts(*validation.GetYPredResiduals());
}

void Validate(NCPCA* model) {
  PCACrossValidation validation(model, /*rounds=*/2, nullptr, nullptr);
  NCProgress bar = ImpatientBar();
  validation.NextComponent(Vector(model->GetResiduals()->SizeColumns(), 1), &bar);
}

void Extend(NCPLS* model) {
  ExpectSuccessOrNoChange(model, [model] {
    NCProgress bar = ImpatientBar();
    model->NextComponent(&bar, nullptr, /*quiet=*/false, /*strict=*/true);
    model->CalculateResiduals();
  });
  for (const Matrix* matrix : {model->GetTprim(), model->GetXResiduals(), model->GetYResiduals()})
    ExpectExactCounts(*matrix);
  ExpectWritesAndReads(*model);
}

void Project(const NCPCA& model, const Matrix& X) {
  NCPCAPred prediction(&X, model.GetPprim(), kMaxIterations, kTolerance);
  while (prediction.GetResidualsCompComputed() < prediction.GetMaxComp()) prediction.CalcNextResidual();
  ExpectExactCounts(*prediction.GetTPredPrim());
  ExpectExactCounts(*prediction.GetXResiduals());
}

/// The number of components rises even where the call fails; the matrices do not change then.
void Extend(NCPCA* model) {
  const Matrix T = *model->GetTprim(), X = *model->GetResiduals();
  const bool isExtended = Succeeds([model] {
    NCProgress bar = ImpatientBar();
    model->NextComponent(&bar, nullptr, 0, nullptr);
  });
  EXPECT_TRUE(isExtended || StreamOf(*model->GetTprim()) == StreamOf(T));
  EXPECT_TRUE(StreamOf(*model->GetResiduals()) == StreamOf(X));
  model->CalculateResiduals();
  ExpectExactCounts(*model->GetTprim());
  ExpectExactCounts(*model->GetResiduals());
  ExpectWritesAndReads(*model);
}

/// What there is of a round; the fields of the data need not agree.
template <class Matrices>
auto OfRound(const Matrices& rounds, std::size_t round) {
  return round < rounds.size() ? rounds[round] : typename Matrices::value_type();
}

void UseRound(const OPLSCrossvalidationData& data, std::size_t round, const Matrix& X, const Matrix& Y) {
  const auto W = OfRound(data.WMatricesPerRound, round), P = OfRound(data.PMatricesPerRound, round),
             C = OfRound(data.CMatricesPerRound, round);
  const Matrix WO = OfRound(data.WOPerRound, round), PO = OfRound(data.POPerRound, round),
               CO = OfRound(data.COPerRound, round);
  Succeeds([&] {
    NCOPLSPred prediction(&X, &W, &P, &C, &WO, &PO, &CO);
    while (prediction.SizeOComps() < prediction.GetMaxComp()) prediction.CalcNextComponent();
    ExpectExactCounts(*prediction.GetYPred());
    ExpectExactCounts(prediction.GetXOrthoResiduals());
  });
  Succeeds([&] {
    NCOPLS model(&X, &Y, &W, &P, &C, &WO, &PO, &CO, /*predictiveComponents=*/1, kMaxIterations);
    NCProgress bar = ImpatientBar();
    model.NextComponent(&bar);
    model.NegatePredictiveComp(1);
    ExpectExactCounts(model.GetXResiduals());
    ExpectExactCounts(model.GetYResiduals());
  });
}

}  // namespace

void Use(NCPLS* model) {
  const ImpatientOwnBars bars;
  ExpectTwoFlipsAreNone(model);
  Succeeds([model] { ExpectExactCounts(model->GetWStarPrim()); });
  for (int a = -1; a <= model->GetPprim()->SizeRows() + 1; ++a)
    Succeeds([model, a] { ExpectExactCounts(model->GetRegressionCoefficients(a)); });
  for (const Matrix& X : TablesToPredict(*model->GetXResiduals(), *model->GetPprim()))
    Succeeds([&] { Predict(*model, X); });
  Succeeds([model] { Validate(model); });
  NCPLS restored(model->GetXResiduals(), model->GetYResiduals(), model->GetCprim(), model->GetPprim(),
                 model->GetWprim(), model->GetUprim(), model->GetTprim(), kMaxIterations);
  Extend(&restored);
  Extend(model);
}

void Use(NCPCA* model) {
  const ImpatientOwnBars bars;
  for (const Matrix& X : TablesToPredict(*model->GetResiduals(), *model->GetPprim()))
    Succeeds([&] { Project(*model, X); });
  Succeeds([model] { Validate(model); });
  NCPCA restored(model->GetResiduals(), model->GetPprim(), model->GetTprim(), kMaxIterations);
  Extend(&restored);
  Extend(model);
}

void Use(NCYOrthogonalPLS* filter) {
  const ImpatientOwnBars bars;
  const Matrix X = *filter->GetXResiduals();
  Succeeds([&] { ExpectExactCounts(filter->GetWStarPrim()); });
  Succeeds([&] {
    Matrix table = X;
    filter->CalculateResiduals(&table);
    ExpectExactCounts(table);
  });
  const Vector scores = RandomVector<float>(X.SizeRows(), 0, 1);
  Succeeds([&] { filter->GetYAngle(&scores); });
  ExpectSuccessOrNoChange(filter, [filter] { filter->NextComponent(/*showProgress=*/false); });
  ExpectExactCounts(*filter->GetXResiduals());
  ExpectWritesAndReads(*filter);
  filter->RemoveComponent();
  ExpectExactCounts(*filter->GetXResiduals());
}

void Use(const OPLSCrossvalidationData& data) {
  const ImpatientOwnBars bars;
  const auto W = OfRound(OfRound(data.WMatricesPerRound, 0), 0);
  const Matrix X = RandomMatrix<float>(kRows, std::min(W.SizeColumns(), kMostColumns), 0.1, 1);
  const Matrix Y = RandomMatrix<float>(kRows, std::min(data.SSY.Size(), kMostColumns), 0.1, 2);
  const std::size_t rounds = std::max(data.WMatricesPerRound.size(), data.WOPerRound.size());
  for (std::size_t round = 0; round < std::min<std::size_t>(rounds, 4); ++round) UseRound(data, round, X, Y);
  Succeeds([&] {
    OPLSCrossValidation validation(&X, &Y, &data, nullptr);
    NCProgress bar = ImpatientBar();
    validation.NextComponent(&bar);
    ExpectExactCounts(*validation.GetYPred());
  });
}

void Use(NCScale* scale) {
  for (int variable = 0; variable <= scale->GetVariables() + 1; ++variable)
    Succeeds([&] { scale->SetType(variable, scale->GetScaleType(variable)); });
  Matrix table = RandomMatrix<float>(kRows, scale->GetVariables(), 0.1, 1);
  for (const bool isNew : {false, true, false}) {
    Succeeds([&] { scale->ScaleMatrix(&table, isNew); });
    ExpectExactCounts(table);
  }
}

void Use(const NCTransform& transform) {
  Matrix table = RandomMatrix<float>(kRows, transform.Size(), 0.1, 1);
  Succeeds([&] { transform.TransformMatrix(&table); });
  ExpectExactCounts(table);
  const std::unique_ptr<NCTransformErrors> errors(transform.TransformMatrixNoBreak(&table));
  ExpectExactCounts(table);
  for (int column = 1; column <= transform.Size(); ++column) {
    const std::unique_ptr<NCTransformErrors> ofColumn(transform[column].BackTransformColumn(&table, column));
    transform[column].ToString(/*html=*/true);
  }
  ExpectExactCounts(table);
}

void Use(const DendroGramNode& tree) {
  using Nodes = std::unique_ptr<std::list<const DendroGramNode*>>;
  DendroGram::DendroGramDrawer drawer(tree);
  const Nodes hit(drawer.HitTest(0, 100, 0, 100, 50, 50, 50, 50, /*nearestOnly=*/false));
  drawer.AddExcluded(hit->empty() ? nullptr : hit->back());
  const Nodes rest(drawer.HitTest(0, 100, 0, 100, 50, 50, 50, 50, /*nearestOnly=*/false));
  EXPECT_LE(rest->size(), hit->size());
  const Nodes inBand(drawer.WidthHitTest(0, 100, 20, 70)), belowCut(drawer.SplitByHeight(0, 100, 50));
  const DendroGram::DendroGramNodeLister lister(tree);
  for (int row = 1; row <= lister.SizeRows(); ++row)
    for (int column = 1; column <= std::min(lister.SizeCols(), 10); ++column) {
      lister.GetCellBorders(row, column);
      lister.GetCellValue(row, column);
    }
}
