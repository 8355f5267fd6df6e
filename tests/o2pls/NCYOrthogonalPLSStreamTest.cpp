#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Table = NCDataMatrix<float>;
using Model = NCYOrthogonalPLS;

/// The parts of a stored model, to be told lies about.
struct Stored {
  Table p = RandomMatrix<float>(2, 3, 0.2, 1), w = RandomMatrix<float>(2, 3, 0.2, 2),
        t = RandomMatrix<float>(2, 4, 0.2, 3), x = RandomMatrix<float>(4, 3, 0.2, 4),
        scores = RandomMatrix<float>(4, 1, 0, 5), inverse = RandomMatrix<float>(1, 1, 0, 6);
  bool hasScores = true, hasInverse = true;
  int components = 2, maxIterations = 50;
  short version = 2;
  int leftOut = -1;  ///< an entry that is not written
};

/// As small as a model can be, so that every byte of it can be attacked in short time.
Stored SmallestStored(bool hasScores) {
  Stored stored;
  stored.p = stored.w = RandomMatrix<float>(1, 2, 0, 1);
  stored.t = RandomMatrix<float>(1, 1, 0, 3);
  stored.x = RandomMatrix<float>(1, 2, 0.5, 4);
  stored.scores = RandomMatrix<float>(1, 1, 0, 5);
  stored.hasScores = stored.hasInverse = hasScores;
  stored.components = 1;
  return stored;
}

std::string VersionTwoStreamOf(const Stored& stored) {
  std::ostringstream stream;
  VexStreamableData(stored.version, "YOPLS").Write(stream);
  OutputStreamDirectory directory(stream, 8);
  unsigned short entry = 0;
  for (const Table* matrix : {&stored.p, &stored.w, &stored.t, &stored.x, &stored.scores, &stored.inverse}) {
    const bool isThere = entry < 4 || (entry == 4 ? stored.hasScores : stored.hasInverse);
    if (isThere && entry != stored.leftOut) directory.GetOutput(entry) << *matrix;
    ++entry;
  }
  if (stored.leftOut != 6) WriteFourBytes(&stored.components, 1, directory.GetOutput(6));
  if (stored.leftOut != 7) WriteFourBytes(&stored.maxIterations, 1, directory.GetOutput(7));
  directory.Close();
  return stream.str();
}

std::string VersionOneStreamOf(const Stored& stored) {
  std::ostringstream stream;
  VexStreamableData(1, "YOPLS").Write(stream);
  stream << stored.p << stored.w << stored.t << stored.x;
  const short flags[] = {static_cast<short>(stored.hasScores), static_cast<short>(stored.hasInverse)};
  WriteTwoBytes(&flags[0], 1, stream);
  if (stored.hasScores) stream << stored.scores;
  WriteTwoBytes(&flags[1], 1, stream);
  if (stored.hasInverse) stream << stored.inverse;
  WriteFourBytes(&stored.components, 1, stream);
  WriteFourBytes(&stored.maxIterations, 1, stream);
  return stream.str();
}

bool Read(const std::string& bytes, Model* model) {
  std::istringstream stream(bytes);
  return static_cast<bool>(stream >> *model);
}

void ExpectHolds(const Model& model, const Stored& stored) {
  EXPECT_EQ(CellsOf(*model.GetPprim()), CellsOf(stored.p));
  EXPECT_EQ(CellsOf(*model.GetWprim()), CellsOf(stored.w));
  EXPECT_EQ(CellsOf(*model.GetTprim()), CellsOf(stored.t));
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(stored.x));
  EXPECT_EQ(model.GetComponents(), stored.components);
  EXPECT_EQ(model.GetY(), nullptr);
}

/// What was accepted can be used; nothing is expected of the numbers.
void Use(Model model) {
  const int observations = model.GetXResiduals()->SizeRows(), variables = model.GetXResiduals()->SizeColumns();
  Table table = RandomMatrix<float>(2, variables, 0, 1);
  model.CalculateResiduals(&table);
  EXPECT_EQ(model.GetWStarPrim().SizeRows(), model.GetComponents());
  const NCDataVector<float> v = RandomVector<float>(observations, 0, 2);
  const auto text = TextOf([&] { model.GetYAngle(&v); });
  EXPECT_TRUE(!text || *text == LanguageString::Get(10124)) << *text;
  while (model.GetComponents() > 0) model.RemoveComponent();
}

StreamAttacks<Model> Attacks(bool mayThrow) {
  StreamAttacks<Model> attacks;
  attacks.mayThrow = mayThrow;
  attacks.accepted = [](const Model& model) {
    EXPECT_EQ(model.GetPprim()->SizeRows(), model.GetComponents());
    EXPECT_EQ(model.GetTprim()->SizeColumns(), model.GetXResiduals()->SizeRows());
    for (const Table* matrix : {model.GetPprim(), model.GetWprim(), model.GetTprim(), model.GetXResiduals()})
      EXPECT_TRUE(HasExactCounts(*matrix));
    if (std::max(model.GetXResiduals()->SizeRows(), model.GetXResiduals()->SizeColumns()) < 100) Use(model);
  };
  attacks.refused = [](const Model& model) {
    EXPECT_EQ(model.GetComponents(), 0);
    EXPECT_EQ(model.GetXResiduals()->SizeRows(), 0);
  };
  return attacks;
}

TEST(NCYOrthogonalPLSStream, WritesADirectoryOfEightEntries) {
  const Stored stored;
  Model model;
  ASSERT_TRUE(Read(VersionTwoStreamOf(stored), &model));
  ExpectHolds(model, stored);
  EXPECT_EQ(StreamOf(model), VersionTwoStreamOf(stored));
}

TEST(NCYOrthogonalPLSStream, ReadsTheOldLayoutAndWritesTheNewOne) {
  for (const bool hasScores : {false, true}) {
    Stored stored;
    stored.hasScores = stored.hasInverse = hasScores;
    Model model;
    ASSERT_TRUE(Read(VersionOneStreamOf(stored), &model));
    ExpectHolds(model, stored);
    EXPECT_EQ(StreamOf(model), VersionTwoStreamOf(stored)) << "the number of rounds and Y's scores are there too";
  }
}

TEST(NCYOrthogonalPLSStream, GoesOnWhereTheWrittenModelWouldHave) {
  const FloatBlocks blocks{RandomMatrix<float>(12, 5, 0.05, 1), RandomMatrix<float>(12, 2, 0.05, 2)};
  Model model(&blocks.X, &blocks.Y, 100, 0);
  model.NextComponent(/*showProgress=*/false);
  Model read;
  ASSERT_TRUE(Read(StreamOf(model), &read));
  EXPECT_EQ(StreamOf(read), StreamOf(model));
  model.NextComponent(/*showProgress=*/false);
  read.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(StreamOf(read), StreamOf(model));
  const NCDataVector<float> v = RandomVector<float>(12, 0, 3);
  EXPECT_EQ(read.GetYAngle(&v), model.GetYAngle(&v));
}

TEST(NCYOrthogonalPLSStream, CannotGoOnWhereTheModelWasWrittenBeforeItsFirstComponent) {
  const FloatBlocks blocks{RandomMatrix<float>(12, 5, 0, 1), RandomMatrix<float>(12, 2, 0, 2)};
  const Model model(&blocks.X, &blocks.Y, 100, 0);
  Model read;
  ASSERT_TRUE(Read(StreamOf(model), &read));
  EXPECT_EQ(CellsOf(*read.GetXResiduals()), CellsOf(blocks.X));
  EXPECT_EQ(TextOf([&] { read.NextComponent(/*showProgress=*/false); }), LanguageString::Get(10124));
}

TEST(NCYOrthogonalPLSStream, DropsTheYOfTheObjectThatReads) {
  const FloatBlocks blocks{RandomMatrix<float>(12, 5, 0, 1), RandomMatrix<float>(12, 2, 0, 2)};
  Model model(&blocks.X, &blocks.Y, 100, 0);
  Stored stored;
  stored.hasScores = stored.hasInverse = false;
  ASSERT_TRUE(Read(VersionTwoStreamOf(stored), &model));
  EXPECT_EQ(model.GetY(), nullptr);
}

TEST(NCYOrthogonalPLSStream, ReadsEveryFormThatItWrites) {
  const FloatBlocks blocks{RandomMatrix<float>(8, 4, 0.1, 1), RandomMatrix<float>(8, 2, 0.1, 2)};
  const FloatBlocks rowless{Table(0, 4), Table(0, 2)}, noVariance{blocks.X, Table(8, 2, 0.0F)};
  std::vector<std::pair<const char*, Model>> models;
  models.emplace_back("empty", Model());
  models.emplace_back("fresh", Model(&blocks.X, &blocks.Y, 50, 0));
  models.emplace_back("without rows", Model(&rowless.X, &rowless.Y, 50, 0));
  models.emplace_back("without a Y to go on from", Model(&noVariance.X, &noVariance.Y, 50, 0));
  EXPECT_THROW(models.back().second.NextComponent(/*showProgress=*/false), NCError);
  models.emplace_back("two components", Model(&blocks.X, &blocks.Y, 50, 0));
  for (int a = 0; a < 2; ++a) models.back().second.NextComponent(/*showProgress=*/false);
  models.emplace_back("two taken back", models.back().second);
  for (int a = 0; a < 2; ++a) models.back().second.RemoveComponent();
  for (const auto& [what, model] : models) {
    SCOPED_TRACE(what);
    Model read;
    EXPECT_TRUE(Read(StreamOf(model), &read));
    EXPECT_TRUE(StreamOf(read) == StreamOf(model));
  }
}

TEST(NCYOrthogonalPLSStream, RefusesPartsThatDisagreeOrAreMissing) {
  std::vector<std::pair<const char*, Stored>> lies;
  const auto lie = [&lies](const char* what) -> Stored& { return lies.emplace_back(what, Stored()).second; };
  lie("more components than rows").components = 3;
  lie("fewer components than rows").components = 1;
  lie("loadings of other variables").p = RandomMatrix<float>(2, 4, 0, 1);
  lie("weights of other variables").w = RandomMatrix<float>(2, 2, 0, 1);
  lie("scores of other observations").t = RandomMatrix<float>(2, 5, 0, 1);
  lie("a score too many").t = RandomMatrix<float>(3, 4, 0, 1);
  lie("scores of Y of other observations").scores = RandomMatrix<float>(5, 1, 0, 1);
  lie("an inverse of another size").inverse = RandomMatrix<float>(2, 2, 0, 1);
  lie("scores of Y without the inverse").hasInverse = false;
  lie("the inverse without scores of Y").hasScores = false;
  lie("a later version").version = 3;
  lie("version 0").version = 0;
  for (int entry : {0, 1, 2, 3, 6, 7}) lie("an entry less").leftOut = entry;
  for (const auto& [what, stored] : lies) {
    SCOPED_TRACE(what);
    EXPECT_FALSE(Attacks(/*mayThrow=*/false).Read(VersionTwoStreamOf(stored)));
    if (stored.version == 2 && stored.leftOut < 0) {
      EXPECT_FALSE(Attacks(/*mayThrow=*/true).Read(VersionOneStreamOf(stored)));
    }
  }
}

class NCYOrthogonalPLSAttacked : public ::testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(, NCYOrthogonalPLSAttacked, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return info.param ? std::string("WithScoresOfY") : std::string("Without");
                         });

TEST_P(NCYOrthogonalPLSAttacked, SurvivesEveryCut) {
  const Stored stored = SmallestStored(GetParam());
  Attacks(/*mayThrow=*/false).EveryCut(VersionTwoStreamOf(stored));
  Attacks(/*mayThrow=*/true).EveryCut(VersionOneStreamOf(stored));
}

TEST_P(NCYOrthogonalPLSAttacked, SurvivesEveryBitFlip) {
  const Stored stored = SmallestStored(GetParam());
  Attacks(/*mayThrow=*/false).EveryBitFlip(VersionTwoStreamOf(stored));
  Attacks(/*mayThrow=*/true).EveryBitFlip(VersionOneStreamOf(stored));
}

TEST_P(NCYOrthogonalPLSAttacked, SurvivesEveryNumberAtEveryPlace) {
  const Stored stored = SmallestStored(GetParam());
  Attacks(/*mayThrow=*/false).EveryNumber(VersionTwoStreamOf(stored));
  Attacks(/*mayThrow=*/true).EveryNumber(VersionOneStreamOf(stored));
}

}  // namespace
