#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "kalmia/pcapls/NCPLS.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

/// The matrices of a stored model and its numbers, to be told lies about.
struct Stored {
  NCDataMatrix<float> c, p, w, u, t, x, y;
  int maxIterations = 50;
  int iterations = 7;
  unsigned short entries = 9;
  short version = 2;

  std::vector<const NCDataMatrix<float>*> Matrices() const { return {&c, &p, &w, &u, &t, &x, &y}; }
};

/// Two components of four observations, three X and two Y variables, with holes everywhere.
Stored GoodModel() {
  Stored stored;
  stored.c = RandomMatrix<float>(2, 2, 0.2, 1);
  stored.p = RandomMatrix<float>(2, 3, 0.2, 2);
  stored.w = RandomMatrix<float>(2, 3, 0.2, 3);
  stored.u = RandomMatrix<float>(2, 4, 0.2, 4);
  stored.t = RandomMatrix<float>(2, 4, 0.2, 5);
  stored.x = RandomMatrix<float>(4, 3, 0.2, 6);
  stored.y = RandomMatrix<float>(4, 2, 0.2, 7);
  return stored;
}

std::string VersionTwoStreamOf(const Stored& stored) {
  std::ostringstream stream;
  VexStreamableData(stored.version, "NCPLS").Write(stream);
  OutputStreamDirectory directory(stream, stored.entries);
  unsigned short entry = 0;
  for (const NCDataMatrix<float>* matrix : stored.Matrices())
    if (entry < stored.entries) directory.GetOutput(entry++) << *matrix;
  if (stored.entries > 7) WriteFourBytes(&stored.maxIterations, 1, directory.GetOutput(7));
  if (stored.entries > 8) WriteFourBytes(&stored.iterations, 1, directory.GetOutput(8));
  directory.Close();
  return stream.str();
}

std::string VersionOneStreamOf(const Stored& stored) {
  std::ostringstream stream;
  VexStreamableData(1, "NCPLS").Write(stream);
  for (const NCDataMatrix<float>* matrix : stored.Matrices()) stream << *matrix;
  WriteFourBytes(&stored.maxIterations, 1, stream);
  WriteFourBytes(&stored.iterations, 1, stream);
  return stream.str();
}

std::vector<const NCDataMatrix<float>*> MatricesOf(const NCPLS& model) {
  return {model.GetCprim(), model.GetPprim(),      model.GetWprim(),     model.GetUprim(),
          model.GetTprim(), model.GetXResiduals(), model.GetYResiduals()};
}

void ExpectHolds(const NCPLS& model, const Stored& stored) {
  const auto expected = stored.Matrices();
  const auto found = MatricesOf(model);
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(CellsOf(*found[i]), CellsOf(*expected[i])) << "matrix " << i;
    EXPECT_TRUE(HasExactCounts(*found[i])) << "matrix " << i;
  }
  EXPECT_EQ(model.GetIterations(), stored.iterations);
}

void ExpectInvariants(const NCPLS& model) {
  for (const NCDataMatrix<float>* matrix : MatricesOf(model)) EXPECT_TRUE(HasExactCounts(*matrix));
  const int components = model.GetPprim()->SizeRows();
  const int observations = model.GetXResiduals()->SizeRows();
  const int xVariables = model.GetXResiduals()->SizeColumns();
  const int yVariables = model.GetYResiduals()->SizeColumns();
  EXPECT_EQ(model.GetYResiduals()->SizeRows(), observations);
  EXPECT_EQ(model.GetPprim()->SizeColumns(), xVariables);
  EXPECT_EQ(model.GetWprim()->SizeRows(), components);
  EXPECT_EQ(model.GetWprim()->SizeColumns(), xVariables);
  EXPECT_EQ(model.GetCprim()->SizeRows(), components);
  EXPECT_EQ(model.GetCprim()->SizeColumns(), yVariables);
  for (const NCDataMatrix<float>* scores : {model.GetTprim(), model.GetUprim()}) {
    EXPECT_EQ(scores->SizeRows(), components);
    EXPECT_EQ(scores->SizeColumns(), observations);
  }
}

void ExpectEmpty(const NCPLS& model) {
  for (const NCDataMatrix<float>* matrix : MatricesOf(model)) {
    EXPECT_EQ(matrix->SizeRows(), 0);
    EXPECT_EQ(matrix->SizeColumns(), 0);
  }
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(model.GetIterations(), 0);
}

std::unique_ptr<NCPLS> RestoredModel(const Stored& stored) {
  return std::make_unique<NCPLS>(&stored.x, &stored.y, &stored.c, &stored.p, &stored.w, &stored.u, &stored.t,
                                 stored.maxIterations);
}

StreamAttacks<NCPLS> Attacks(bool mayThrow) {
  StreamAttacks<NCPLS> attacks;
  attacks.accepted = ExpectInvariants;
  attacks.refused = ExpectEmpty;
  attacks.mayThrow = mayThrow;
  return attacks;
}

/// Whether a model that had other content refuses these bytes, without a throw, and is empty then.
bool IsRefused(const std::string& bytes) {
  const std::unique_ptr<NCPLS> model = RestoredModel(GoodModel());
  std::istringstream stream(bytes);
  if (stream >> *model) return false;
  ExpectEmpty(*model);
  return true;
}

TEST(NCPLSStream, ReadsBackWhatItWrote) {
  const NCDataMatrix<float> X = RandomMatrix<float>(8, 5, 0.1, 11);
  const NCDataMatrix<float> Y = RandomMatrix<float>(8, 2, 0.1, 12);
  NCPLS written(&X, &Y, 40);
  for (int a = 1; a <= 2; ++a) {
    written.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    written.CalculateResiduals();
  }
  NCPLS read;
  std::istringstream stream(StreamOf(written));
  ASSERT_TRUE(stream >> read);
  const auto before = MatricesOf(written);
  const auto after = MatricesOf(read);
  for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(CellsOf(*after[i]), CellsOf(*before[i])) << "matrix " << i;
  EXPECT_EQ(read.GetIterations(), written.GetIterations());
  EXPECT_EQ(StreamOf(read), StreamOf(written));
  EXPECT_EQ(read.GetMyVexStreamVersionNumber(), 2);
}

TEST(NCPLSStream, ReadsTheNineEntriesOfVersionTwoAndLeavesTheNumberOfComponentsAtZero) {
  NCPLS model;
  std::istringstream stream(VersionTwoStreamOf(GoodModel()));
  ASSERT_TRUE(stream >> model);
  ExpectHolds(model, GoodModel());
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(model.GetVexStreamVersionNumber(), 2);
}

TEST(NCPLSStream, ReadsVersionOneAndCountsItsComponents) {
  NCPLS model;
  std::istringstream stream(VersionOneStreamOf(GoodModel()));
  ASSERT_TRUE(stream >> model);
  ExpectHolds(model, GoodModel());
  EXPECT_EQ(model.GetComponents(), 2);
  EXPECT_EQ(model.GetVexStreamVersionNumber(), 1);
}

TEST(NCPLSStream, LeavesTheNumberOfComponentsOfAReusedObjectToVersionTwo) {
  const std::unique_ptr<NCPLS> model = RestoredModel(GoodModel());
  std::istringstream stream(VersionTwoStreamOf(GoodModel()));
  ASSERT_TRUE(stream >> *model);
  EXPECT_EQ(model->GetComponents(), 2);
}

TEST(NCPLSStream, ReadsBackAnEmptyModelAndOneWithoutComponents) {
  NCPLS model;
  std::istringstream empty(StreamOf(NCPLS()));
  ASSERT_TRUE(empty >> model);
  ExpectEmpty(model);

  const NCDataMatrix<float> X = RandomMatrix<float>(3, 2, 0.0, 1);
  const NCDataMatrix<float> Y = RandomMatrix<float>(3, 1, 0.0, 2);
  std::istringstream fresh(StreamOf(NCPLS(&X, &Y, 10)));
  ASSERT_TRUE(fresh >> model);
  ExpectInvariants(model);
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(X));
  EXPECT_EQ(model.GetWprim()->SizeRows(), 0);
}

TEST(NCPLSStream, RestoresAModelThatGoesOnAsIfItHadNeverBeenStored) {
  const NCDataMatrix<float> X = RandomMatrix<float>(9, 6, 0.1, 21);
  const NCDataMatrix<float> Y = RandomMatrix<float>(9, 3, 0.1, 22);
  NCPLS whole(&X, &Y, 40);
  whole.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  whole.CalculateResiduals();
  NCPLS read;
  std::istringstream stream(StreamOf(whole));
  ASSERT_TRUE(stream >> read);
  NCPLS restored(read.GetXResiduals(), read.GetYResiduals(), read.GetCprim(), read.GetPprim(), read.GetWprim(),
                 read.GetUprim(), read.GetTprim(), 40);
  EXPECT_EQ(restored.GetComponents(), 1);
  EXPECT_EQ(restored.GetIterations(), 0);
  for (NCPLS* model : {&whole, &restored}) {
    model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model->CalculateResiduals();
  }
  EXPECT_EQ(restored.GetComponents(), 2);
  EXPECT_EQ(StreamOf(restored), StreamOf(whole));
}

TEST(NCPLSStream, RefusesMatricesThatDisagreeInShape) {
  const NCDataMatrix<float> wide = RandomMatrix<float>(2, 9, 0.0, 1);
  const NCDataMatrix<float> tall = RandomMatrix<float>(9, 2, 0.0, 2);
  NCDataMatrix<float> Stored::* const members[] = {&Stored::c, &Stored::p, &Stored::w, &Stored::u,
                                                   &Stored::t, &Stored::x, &Stored::y};
  for (std::size_t i = 0; i < 7; ++i)
    for (const NCDataMatrix<float>* other : {&wide, &tall}) {
      SCOPED_TRACE("matrix " + std::to_string(i) + " of " + std::to_string(other->SizeRows()) + " rows");
      Stored stored = GoodModel();
      if (i == 0 && other == &tall) continue;  // Y weights of nine components
      stored.*members[i] = *other;
      EXPECT_TRUE(IsRefused(VersionTwoStreamOf(stored)));
      EXPECT_TRUE(IsRefused(VersionOneStreamOf(stored)));
    }
}

TEST(NCPLSStream, ReadsMatricesThatDisagreeInTheirComponents) {
  NCDataMatrix<float> Stored::* const members[] = {&Stored::c, &Stored::p, &Stored::w, &Stored::u, &Stored::t};
  for (const auto member : members)
    for (const int rows : {1, 7}) {
      Stored stored = GoodModel();
      stored.*member = RandomMatrix<float>(rows, (stored.*member).SizeColumns(), 0.0, 1);
      EXPECT_FALSE(IsRefused(VersionTwoStreamOf(stored)));
      EXPECT_FALSE(IsRefused(VersionOneStreamOf(stored)));
    }
}

TEST(NCPLSStream, RefusesADirectoryWithoutOneOfItsEntries) {
  for (unsigned short entries = 0; entries < 9; ++entries) {
    SCOPED_TRACE(entries);
    Stored stored = GoodModel();
    stored.entries = entries;
    EXPECT_TRUE(IsRefused(VersionTwoStreamOf(stored)));
  }
}

TEST(NCPLSStream, RefusesVersionsThatItDoesNotKnow) {
  for (const short version : {0, 3, -1}) {
    SCOPED_TRACE(version);
    Stored stored = GoodModel();
    stored.version = version;
    EXPECT_TRUE(IsRefused(VersionTwoStreamOf(stored)));
  }
}

TEST(NCPLSStream, LeavesTheModelAsItIsWhenTheMagicIsAnothers) {
  const std::unique_ptr<NCPLS> model = RestoredModel(GoodModel());
  std::istringstream stream(StreamOf(RandomMatrix<float>(2, 2, 0.0, 1)));
  EXPECT_FALSE(stream >> *model);
  EXPECT_EQ(StreamOf(*model), StreamOf(*RestoredModel(GoodModel())));
}

TEST(NCPLSStream, WritesNothingASecondTimeInOnePass) {
  struct Opened : NCPLS {
    using NCPLS::VexStreamableReset;
    using NCPLS::VexStreamableStartRead;
    using NCPLS::VexStreamableStartWrite;
  };
  Opened model;
  std::ostringstream stream;
  model.VexStreamableReset();
  EXPECT_TRUE(model.VexStreamableStartWrite(stream));
  const std::string once = stream.str();
  EXPECT_TRUE(model.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once);
  std::istringstream nothing;
  EXPECT_TRUE(model.VexStreamableStartRead(nothing)) << "visited already: nothing is read";
}

TEST(NCPLSStream, SurvivesACutAtEveryByte) {
  Attacks(/*mayThrow=*/false).EveryCut(VersionTwoStreamOf(GoodModel()));
  // A matrix on the bare stream of version 1 says by itself that its directory lies.
  Attacks(/*mayThrow=*/true).EveryCut(VersionOneStreamOf(GoodModel()));
}

TEST(NCPLSStream, SurvivesEveryTurnedBit) {
  Attacks(/*mayThrow=*/false).EveryBitFlip(VersionTwoStreamOf(GoodModel()));
  Attacks(/*mayThrow=*/true).EveryBitFlip(VersionOneStreamOf(GoodModel()));
}

TEST(NCPLSStream, SurvivesEveryLieAboutANumber) {
  Attacks(/*mayThrow=*/false).EveryNumber(VersionTwoStreamOf(GoodModel()));
  Attacks(/*mayThrow=*/true).EveryNumber(VersionOneStreamOf(GoodModel()));
}

}  // namespace
