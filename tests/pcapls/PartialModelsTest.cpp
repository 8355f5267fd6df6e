// Models that were restored from some of their matrices, or some of their rows: they are stored, read, and asked for
// everything.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPCAPred.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/NCError.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Parts = std::vector<Matrix>;

constexpr int kObservations = 6, kXVariables = 4, kYVariables = 2;

std::vector<std::vector<std::vector<float>>> CellsOfEach(const std::vector<const Matrix*>& parts) {
  std::vector<std::vector<std::vector<float>>> cells;
  for (const Matrix* part : parts) cells.push_back(CellsOf(*part));
  return cells;
}

constexpr int kItsOwn = -1;

/// The parts without those whose bit is set, which keep this many columns.
Parts Without(Parts parts, unsigned absent, int columns) {
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (absent >> i & 1U) parts[i] = Matrix(0, columns == kItsOwn ? parts[i].SizeColumns() : columns);
  return parts;
}

/// Calls each subset of the parts by its bits: 1, 2, 4 ... for the first, second, third ...
template <class Test>
void ForEachSubset(const Parts& whole, const Test& test) {
  for (unsigned absent = 0; absent < 1U << whole.size(); ++absent)
    for (const int columns : {0, 9, kItsOwn}) {
      SCOPED_TRACE("absent " + std::to_string(absent) + " with columns " + std::to_string(columns));
      test(absent, Without(whole, absent, columns));
    }
}

template <class Call>
bool Throws(const Call& call) {
  try {
    call();
  } catch (const NCError&) {
    return true;
  }
  return false;
}

/// `table` without t p', t and p being the rows `component` of the two matrices.
Matrix Deflated(Matrix table, const Matrix& T, const Matrix& P, int component) {
  table.AddVprimV(T[component], P[component], -1.0F);
  return table;
}

Matrix FirstRows(const Matrix& matrix, int rows) { return matrix.GetRowSubMatrix(1, rows); }

template <class Model>
std::unique_ptr<Model> ReadBack(const Model& written) {
  auto read = std::make_unique<Model>();
  std::istringstream stream(StreamOf(written));
  EXPECT_TRUE(stream >> *read);
  EXPECT_TRUE(StreamOf(*read) == StreamOf(written));
  return read;
}

// ---- PLS: X, Y, C, P, W, U, T

enum PLSPart : unsigned { kX = 1, kY = 2, kC = 4, kP = 8, kW = 16, kU = 32, kT = 64, kAll = 127 };

std::vector<const Matrix*> PartsOf(const NCPLS& model) {
  return {model.GetXResiduals(), model.GetYResiduals(), model.GetCprim(), model.GetPprim(),
          model.GetWprim(),      model.GetUprim(),      model.GetTprim()};
}

std::unique_ptr<NCPLS> RestoredPLS(const Parts& parts) {
  return std::make_unique<NCPLS>(&parts[0], &parts[1], &parts[2], &parts[3], &parts[4], &parts[5], &parts[6], 50);
}

Parts PartsOfAPLS() {
  const Matrix X = RandomMatrix<float>(kObservations, kXVariables, 0.1, 1);
  const Matrix Y = RandomMatrix<float>(kObservations, kYVariables, 0.1, 2);
  NCPLS model(&X, &Y, 50);
  for (int a = 0; a < 2; ++a) {
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model.CalculateResiduals();
  }
  Parts parts;
  for (const Matrix* part : PartsOf(model)) parts.push_back(*part);
  return parts;
}

TEST(PartialPLS, IsReadBackWhicheverPartsAreAbsent) {
  ForEachSubset(PartsOfAPLS(), [](unsigned, const Parts& parts) {
    const auto written = RestoredPLS(parts);
    EXPECT_EQ(CellsOfEach(PartsOf(*ReadBack(*written))), CellsOfEach(PartsOf(*written)));
  });
}

TEST(PartialPLS, GivesCoefficientsWithWeightsAndBothLoadingsAndRefusesThemOtherwise) {
  ForEachSubset(PartsOfAPLS(), [](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPLS(parts));
    EXPECT_EQ(Throws([&] { model->GetWStarPrim(); }), !(absent & kW) && (absent & kP)) << "without W there is no W*";
    const bool hasNone = (absent & kW) && (absent & kC);
    const bool isRefused = !hasNone && (absent & (kW | kP | kC));
    EXPECT_EQ(Throws([&] { model->GetRegressionCoefficients(-1); }), isRefused);
    if (!isRefused) return;
    EXPECT_THROW(model->GetRegressionCoefficients(2), NCError);
    EXPECT_EQ(Throws([&] { model->GetRegressionCoefficients(1); }), (absent & (kW | kC)) != 0) << "reads no row of P";
  });
}

TEST(PartialPLS, GivesWeightsOfTheColumnsOfWWhereWHasNoRows) {
  const Matrix W(0, 4), P = RandomMatrix<float>(2, 4, 0.0, 1), C(0, 2);
  EXPECT_EQ(NCPLS::GetWStarPrim(W, P).SizeRows(), 0);
  EXPECT_EQ(NCPLS::GetWStarPrim(W, P).SizeColumns(), 4);
  const Matrix B = NCPLS::GetRegressionCoefficients(P, W, C);
  EXPECT_EQ(CellsOf(B), CellsOf(Matrix(4, 2, 0.0F)));
}

TEST(PartialPLS, ReadsTheRowsOfPBelowTheLastOfWForItsWeights) {
  const Matrix W = RandomMatrix<float>(3, 4, 0.0, 1), P = RandomMatrix<float>(4, 4, 0.0, 2);
  const Matrix C = RandomMatrix<float>(3, 2, 0.0, 3);
  const auto wStar = CellsOf(NCPLS::GetWStarPrim(W, FirstRows(P, 3)));
  const auto coefficients = CellsOf(NCPLS::GetRegressionCoefficients(FirstRows(P, 3), W, C));
  for (const int rows : {2, 4}) {
    EXPECT_EQ(CellsOf(NCPLS::GetWStarPrim(W, FirstRows(P, rows))), wStar);
    EXPECT_EQ(CellsOf(NCPLS::GetRegressionCoefficients(FirstRows(P, rows), W, C)), coefficients);
  }
  const std::string text = "Weights and loadings are not of the same components.";
  for (const int rows : {0, 1}) EXPECT_EQ(MessageOf([&] { NCPLS::GetWStarPrim(W, FirstRows(P, rows)); }), text);
  for (const int rows : {0, 2})
    EXPECT_EQ(MessageOf([&] { NCPLS::GetRegressionCoefficients(P, W, FirstRows(C, rows)); }), text);
}

TEST(PartialPLS, RefusesCoefficientsOfMoreOrFewerComponentsThanItMayHave) {
  const auto model = RestoredPLS(PartsOfAPLS());
  for (const int components : {3, 1000, -2, std::numeric_limits<int>::min()})
    EXPECT_THROW(model->GetRegressionCoefficients(components), NCError) << components;
}

TEST(PartialPLS, PredictsWithWeightsAndBothLoadingsAndRefusesToOtherwise) {
  const Matrix X = RandomMatrix<float>(3, kXVariables, 0.1, 5);
  ForEachSubset(PartsOfAPLS(), [&X](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPLS(parts));
    const bool isRefused = !(absent & kP) && (absent & (kW | kC));
    EXPECT_EQ(Throws([&] {
                NCPLSPred prediction(&X, model->GetWprim(), model->GetPprim(), model->GetCprim(), 0.9F);
                for (int a = 0; a < prediction.GetMaxComp(); ++a) prediction.CalcNextComponent();
              }),
              isRefused);
  });
}

TEST(PartialPLS, TurnsTheComponentsThatAreThere) {
  ForEachSubset(PartsOfAPLS(), [](unsigned, const Parts& parts) {
    const auto model = ReadBack(*RestoredPLS(parts));
    model->FlipComponent(2);
    for (std::size_t i = 2; i < parts.size(); ++i) {
      if (parts[i].SizeRows() == 0) continue;
      EXPECT_EQ(CellsOf((*PartsOf(*model)[i])[1]), CellsOf(parts[i][1]));
      Matrix turned = parts[i];
      turned.MultiplyRow(2, -1.0F);
      EXPECT_EQ(CellsOf(*PartsOf(*model)[i]), CellsOf(turned));
    }
  });
}

TEST(PartialPLS, IsExtendedWhereXAndYAreThereAndReadBackAgain) {
  const Parts whole = PartsOfAPLS();
  const auto complete = RestoredPLS(whole);
  complete->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  complete->CalculateResiduals();
  ForEachSubset(whole, [&](unsigned absent, const Parts& parts) {
    for (const bool isRead : {false, true}) {
      SCOPED_TRACE(isRead);
      auto model = RestoredPLS(parts);
      if (isRead) model = ReadBack(*model);
      const auto before = CellsOfEach(PartsOf(*model));
      const int components = model->GetComponents();
      model->CalculateResiduals();  // again, or where a part is lacking not at all
      const bool isNewestThere = components == 2 && !(absent & (kC | kT));
      const Matrix X = isNewestThere && !(absent & kX) ? Deflated(parts[0], parts[6], parts[3], 2) : parts[0];
      const Matrix Y = isNewestThere && !(absent & kY) ? Deflated(parts[1], parts[6], parts[2], 2) : parts[1];
      EXPECT_EQ(CellsOf(*model->GetXResiduals()), CellsOf(X));
      EXPECT_EQ(CellsOf(*model->GetYResiduals()), CellsOf(Y));
      model = RestoredPLS(parts);
      if (isRead) model = ReadBack(*model);
      const auto next = [&] { model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false); };
      if (absent & (kX | kY)) {
        EXPECT_EQ(Throws(next), absent != kAll);
        if (absent == kAll)
          for (std::size_t i = 0; i < parts.size(); ++i) EXPECT_EQ(PartsOf(*model)[i]->SizeRows(), i < 2 ? 0 : 1) << i;
        else
          EXPECT_EQ(CellsOfEach(PartsOf(*model)), before);
        EXPECT_EQ(model->GetComponents(), absent == kAll ? 1 : components);
        continue;
      }
      next();
      model->CalculateResiduals();
      EXPECT_EQ(model->GetComponents(), components + 1);
      const auto expected = PartsOf(*complete), found = PartsOf(*model);
      for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(CellsOf(*found[i]), CellsOf(*expected[i])) << "what is left, " << i;
      for (std::size_t i = 2; i < found.size(); ++i) {
        SCOPED_TRACE(i);
        const bool isAlone = absent == (kC | kP | kW | kU | kT);
        ASSERT_EQ(found[i]->SizeRows(), isAlone ? 1 : 3);
        EXPECT_EQ(CellsOf((*found[i])[components + 1]), CellsOf((*expected[i])[3]));
        if (isAlone || parts[i].SizeRows() > 0) continue;
        for (int a = 1; a <= 3; ++a)
          EXPECT_EQ((*found[i])[a].GetNumMisVal() == (*found[i])[a].Size(), a != components + 1) << "component " << a;
      }
      ReadBack(*model);
    }
  });
}

TEST(PartialPLS, IsNotCrossValidatedWithOneTableAlone) {
  const NCDataVector<float> w = RandomVector<float>(kXVariables, 0, 7);
  ForEachSubset(PartsOfAPLS(), [&](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPLS(parts));
    PLSCrossValidation validation(model.get(), 3, nullptr);
    const NCDataVector<float> ssY(parts[1].SizeColumns(), 1.0F);
    const auto validate = [&] { validation.NextComponent(&w, 20, ssY, nullptr, /*quiet=*/true); };
    const unsigned tables = absent & (kX | kY);
    EXPECT_EQ(Throws(validate), tables == kX || tables == kY);
    EXPECT_EQ(validation.GetWSet()->SizeRows(), tables == 0 ? 3 : 0);
  });
}

// A result matrix of which a row is lacking: U, T, W, C or P of the first component alone.

Parts WithoutSecondRowOf(Parts parts, std::size_t part) {
  parts[part] = FirstRows(parts[part], 1);
  return parts;
}

TEST(PartialPLS, IsReadBackWhicheverPartLacksARow) {
  for (std::size_t part = 2; part < 7; ++part) {
    SCOPED_TRACE(part);
    const auto written = RestoredPLS(WithoutSecondRowOf(PartsOfAPLS(), part));
    EXPECT_EQ(CellsOfEach(PartsOf(*ReadBack(*written))), CellsOfEach(PartsOf(*written)));
  }
}

TEST(PartialPLS, TurnsTheRowsThatAreThere) {
  for (std::size_t part = 2; part < 7; ++part) {
    SCOPED_TRACE(part);
    const Parts parts = WithoutSecondRowOf(PartsOfAPLS(), part);
    const auto model = ReadBack(*RestoredPLS(parts));
    for (const int beyond : {3, 0, -1}) model->FlipComponent(beyond);
    EXPECT_EQ(CellsOfEach(PartsOf(*model)), CellsOfEach(PartsOf(*RestoredPLS(parts))));
    model->FlipComponent(2);
    for (std::size_t i = 2; i < 7; ++i) {
      Matrix turned = parts[i];
      if (i != part) turned.MultiplyRow(2, -1.0F);
      EXPECT_EQ(CellsOf(*PartsOf(*model)[i]), CellsOf(turned)) << i;
    }
  }
}

TEST(PartialPLS, IsExtendedBehindMissingRowsWhereAPartLacksOne) {
  const Parts whole = PartsOfAPLS();
  const auto complete = RestoredPLS(whole);
  complete->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  for (const std::size_t part : {2U, 4U, 5U, 6U}) {  // P tells the number of components
    SCOPED_TRACE(part);
    const auto model = RestoredPLS(WithoutSecondRowOf(whole, part));
    model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    for (std::size_t i = 2; i < 7; ++i) {
      Matrix expected = *PartsOf(*complete)[i];
      if (i == part) expected.SetRow(2, kHole<float>);
      EXPECT_EQ(CellsOf(*PartsOf(*model)[i]), CellsOf(expected)) << i;
    }
  }
}

// ---- PCA: X, P, T

std::vector<const Matrix*> PartsOf(const NCPCA& model) {
  return {model.GetResiduals(), model.GetPprim(), model.GetTprim()};
}

std::unique_ptr<NCPCA> RestoredPCA(const Parts& parts) {
  return std::make_unique<NCPCA>(&parts[0], &parts[1], &parts[2], 50);
}

Parts PartsOfAPCA() {
  const Matrix X = RandomMatrix<float>(kObservations, kXVariables, 0.1, 1);
  NCPCA model(&X, 50);
  for (int a = 0; a < 2; ++a) {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    model.CalculateResiduals();
  }
  return {*model.GetResiduals(), *model.GetPprim(), *model.GetTprim()};
}

TEST(PartialPCA, IsReadBackWhicheverPartsAreAbsent) {
  ForEachSubset(PartsOfAPCA(), [](unsigned, const Parts& parts) {
    const auto written = RestoredPCA(parts);
    EXPECT_EQ(CellsOfEach(PartsOf(*ReadBack(*written))), CellsOfEach(PartsOf(*written)));
  });
}

TEST(PartialPCA, IsExtendedWhereXIsThereAndReadBackAgain) {
  const Parts whole = PartsOfAPCA();
  const auto complete = RestoredPCA(whole);
  complete->NextComponent(nullptr, nullptr, 0, nullptr);
  complete->CalculateResiduals();
  ForEachSubset(whole, [&](unsigned absent, const Parts& parts) {
    for (const bool isRead : {false, true}) {
      SCOPED_TRACE(isRead);
      auto model = RestoredPCA(parts);
      if (isRead) model = ReadBack(*model);
      const int components = model->GetComponents();
      const auto before = CellsOfEach(PartsOf(*model));
      model->CalculateResiduals();  // again, or where a part is lacking not at all
      const bool isThere = components == 2 && !(absent & 4U) && !(absent & 1U);
      EXPECT_EQ(CellsOf(*model->GetResiduals()),
                CellsOf(isThere ? Deflated(parts[0], parts[2], parts[1], 2) : parts[0]));
      model = RestoredPCA(parts);
      if (isRead) model = ReadBack(*model);
      const auto next = [&] { model->NextComponent(nullptr, nullptr, 0, nullptr); };
      if (absent & 1U) {
        EXPECT_EQ(Throws(next), absent != 7U);
        if (absent == 7U)
          for (std::size_t i = 0; i < parts.size(); ++i) EXPECT_EQ(PartsOf(*model)[i]->SizeRows(), i < 1 ? 0 : 1) << i;
        else
          EXPECT_EQ(CellsOfEach(PartsOf(*model)), before);
        EXPECT_EQ(model->GetComponents(), components + 1) << "counts the one that failed too";
        continue;
      }
      next();
      model->CalculateResiduals();
      const auto expected = PartsOf(*complete), found = PartsOf(*model);
      EXPECT_EQ(CellsOf(*found[0]), CellsOf(*expected[0])) << "what is left";
      for (std::size_t i = 1; i < found.size(); ++i) {
        ASSERT_EQ(found[i]->SizeRows(), absent == 6U ? 1 : 3);
        EXPECT_EQ(CellsOf((*found[i])[components + 1]), CellsOf((*expected[i])[3]));
      }
      ReadBack(*model);
    }
  });
}

TEST(PartialPCA, IsReadBackAndExtendedBehindMissingRowsWhereAPartLacksOne) {
  const Parts whole = PartsOfAPCA();
  const auto complete = RestoredPCA(whole);
  complete->NextComponent(nullptr, nullptr, 0, nullptr);
  for (const std::size_t part : {1U, 2U}) {
    const auto written = RestoredPCA(WithoutSecondRowOf(whole, part));
    EXPECT_EQ(CellsOfEach(PartsOf(*ReadBack(*written))), CellsOfEach(PartsOf(*written)));
  }
  const auto model = RestoredPCA(WithoutSecondRowOf(whole, 2));
  model->CalculateResiduals();
  EXPECT_EQ(CellsOf(*model->GetResiduals()), CellsOf(whole[0])) << "the component has no scores";
  model->NextComponent(nullptr, nullptr, 0, nullptr);
  Matrix T = *complete->GetTprim();
  T.SetRow(2, kHole<float>);
  EXPECT_EQ(CellsOf(*model->GetTprim()), CellsOf(T));
  EXPECT_EQ(CellsOf(*model->GetPprim()), CellsOf(*complete->GetPprim()));
}

TEST(PartialPCA, PredictsFromItsLoadingsAndIsCrossValidatedWithBothParts) {
  const Matrix X = RandomMatrix<float>(3, kXVariables, 0.1, 5);
  ForEachSubset(PartsOfAPCA(), [&](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPCA(parts));
    if (absent & 2U) {
      EXPECT_EQ(NCPCAPred(&X, model->GetPprim(), 50, 0.9F).GetMaxComp(), 0);
    } else {
      EXPECT_EQ(NCPCAPred(&X, model->GetPprim(), 50, 0.9F).GetTPredPrim()->SizeRows(), 2);
    }
    PCACrossValidation validation(model.get(), 3, nullptr, nullptr);
    const NCDataVector<float> ss(parts[0].SizeColumns(), 1.0F);
    EXPECT_EQ(Throws([&] { validation.NextComponent(ss, nullptr); }), !(absent & 1U) && absent != 0U);
  });
}

}  // namespace
