// Models that were restored from some of their matrices only: they are stored, read, and asked for everything.
#include <gtest/gtest.h>

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

/// The parts without those whose bit is set, which keep no columns or, `wide`, some.
Parts Without(Parts parts, unsigned absent, bool wide) {
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (absent >> i & 1U) parts[i] = wide ? Matrix(0, 9) : Matrix();
  return parts;
}

/// Calls each subset of the parts by its bits: 1, 2, 4 ... for the first, second, third ...
template <class Test>
void ForEachSubset(const Parts& whole, const Test& test) {
  for (unsigned absent = 0; absent < 1U << whole.size(); ++absent)
    for (const bool wide : {false, true}) {
      SCOPED_TRACE("absent " + std::to_string(absent) + (wide ? " with columns" : ""));
      test(absent, Without(whole, absent, wide));
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

template <class Model>
std::unique_ptr<Model> ReadBack(const Model& written) {
  auto read = std::make_unique<Model>();
  std::istringstream stream(StreamOf(written));
  EXPECT_TRUE(stream >> *read);
  EXPECT_TRUE(StreamOf(*read) == StreamOf(written));
  return read;
}

// ---- PLS: X, Y, C, P, W, U, T

enum PlsPart : unsigned { kX = 1, kY = 2, kC = 4, kP = 8, kW = 16, kU = 32, kT = 64, kAll = 127 };

std::vector<const Matrix*> PartsOf(const NCPLS& model) {
  return {model.GetXResiduals(), model.GetYResiduals(), model.GetCprim(), model.GetPprim(),
          model.GetWprim(),      model.GetUprim(),      model.GetTprim()};
}

std::unique_ptr<NCPLS> RestoredPls(const Parts& parts) {
  return std::make_unique<NCPLS>(&parts[0], &parts[1], &parts[2], &parts[3], &parts[4], &parts[5], &parts[6], 50);
}

Parts PartsOfAPls() {
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
  ForEachSubset(PartsOfAPls(), [](unsigned, const Parts& parts) {
    const auto written = RestoredPls(parts);
    EXPECT_EQ(CellsOfEach(PartsOf(*ReadBack(*written))), CellsOfEach(PartsOf(*written)));
  });
}

TEST(PartialPLS, GivesCoefficientsWithWeightsAndBothLoadingsAndRefusesThemOtherwise) {
  ForEachSubset(PartsOfAPls(), [](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPls(parts));
    const bool hasNone = (absent & kW) && (absent & kP);
    EXPECT_EQ(Throws([&] { model->GetWStarPrim(); }), !hasNone && (absent & (kW | kP)));
    const bool hasNoneOfC = hasNone && (absent & kC);
    const bool isRefused = !hasNoneOfC && (absent & (kW | kP | kC));
    EXPECT_EQ(Throws([&] { model->GetRegressionCoefficients(-1); }), isRefused);
    if (!isRefused) return;
    EXPECT_THROW(model->GetRegressionCoefficients(1), NCError);
    EXPECT_THROW(model->GetRegressionCoefficients(2), NCError);
  });
}

TEST(PartialPLS, PredictsWithWeightsAndBothLoadingsAndRefusesToOtherwise) {
  const Matrix X = RandomMatrix<float>(3, kXVariables, 0.1, 5);
  ForEachSubset(PartsOfAPls(), [&X](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPls(parts));
    const bool isRefused = !(absent & kP) && (absent & (kW | kC));
    EXPECT_EQ(Throws([&] {
                NCPLSPred prediction(&X, model->GetWprim(), model->GetPprim(), model->GetCprim(), 0.9F);
                for (int a = 0; a < prediction.GetMaxComp(); ++a) prediction.CalcNextComponent();
              }),
              isRefused);
  });
}

TEST(PartialPLS, TurnsTheComponentsThatAreThere) {
  ForEachSubset(PartsOfAPls(), [](unsigned, const Parts& parts) {
    const auto model = ReadBack(*RestoredPls(parts));
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
  const Parts whole = PartsOfAPls();
  const auto complete = RestoredPls(whole);
  complete->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  complete->CalculateResiduals();
  ForEachSubset(whole, [&](unsigned absent, const Parts& parts) {
    for (const bool isRead : {false, true}) {
      SCOPED_TRACE(isRead);
      auto model = RestoredPls(parts);
      if (isRead) model = ReadBack(*model);
      const auto before = CellsOfEach(PartsOf(*model));
      const int components = model->GetComponents();
      model->CalculateResiduals();  // again, or where a part is lacking not at all
      model = RestoredPls(parts);
      if (isRead) model = ReadBack(*model);
      const auto next = [&] { model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false); };
      if (absent & (kX | kY)) {
        EXPECT_EQ(Throws(next), absent != kAll);
        EXPECT_TRUE(absent == kAll || CellsOfEach(PartsOf(*model)) == before);
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
  ForEachSubset(PartsOfAPls(), [&](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPls(parts));
    PLSCrossValidation validation(model.get(), 3, nullptr);
    const NCDataVector<float> ssY(parts[1].SizeColumns(), 1.0F);
    const auto validate = [&] { validation.NextComponent(&w, 20, ssY, nullptr, /*quiet=*/true); };
    const unsigned tables = absent & (kX | kY);
    EXPECT_EQ(Throws(validate), tables == kX || tables == kY);
    EXPECT_EQ(validation.GetWSet()->SizeRows(), tables == 0 ? 3 : 0);
  });
}

// ---- PCA: X, P, T

std::vector<const Matrix*> PartsOf(const NCPCA& model) {
  return {model.GetResiduals(), model.GetPprim(), model.GetTprim()};
}

std::unique_ptr<NCPCA> RestoredPca(const Parts& parts) {
  return std::make_unique<NCPCA>(&parts[0], &parts[1], &parts[2], 50);
}

Parts PartsOfAPca() {
  const Matrix X = RandomMatrix<float>(kObservations, kXVariables, 0.1, 1);
  NCPCA model(&X, 50);
  for (int a = 0; a < 2; ++a) {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    model.CalculateResiduals();
  }
  return {*model.GetResiduals(), *model.GetPprim(), *model.GetTprim()};
}

TEST(PartialPCA, IsReadBackWhicheverPartsAreAbsent) {
  ForEachSubset(PartsOfAPca(), [](unsigned, const Parts& parts) {
    const auto written = RestoredPca(parts);
    EXPECT_EQ(CellsOfEach(PartsOf(*ReadBack(*written))), CellsOfEach(PartsOf(*written)));
  });
}

TEST(PartialPCA, IsExtendedWhereXIsThereAndReadBackAgain) {
  const Parts whole = PartsOfAPca();
  const auto complete = RestoredPca(whole);
  complete->NextComponent(nullptr, nullptr, 0, nullptr);
  complete->CalculateResiduals();
  ForEachSubset(whole, [&](unsigned absent, const Parts& parts) {
    for (const bool isRead : {false, true}) {
      SCOPED_TRACE(isRead);
      auto model = RestoredPca(parts);
      if (isRead) model = ReadBack(*model);
      model->CalculateResiduals();  // again, or where a part is lacking not at all
      model = RestoredPca(parts);
      if (isRead) model = ReadBack(*model);
      const int components = model->GetComponents();
      const auto next = [&] { model->NextComponent(nullptr, nullptr, 0, nullptr); };
      if (absent & 1U) {
        EXPECT_EQ(Throws(next), absent != 7U);
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

TEST(PartialPCA, PredictsFromItsLoadingsAndIsCrossValidatedWithBothParts) {
  const Matrix X = RandomMatrix<float>(3, kXVariables, 0.1, 5);
  ForEachSubset(PartsOfAPca(), [&](unsigned absent, const Parts& parts) {
    const auto model = ReadBack(*RestoredPca(parts));
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
