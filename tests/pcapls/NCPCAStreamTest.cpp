#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/pcapls/NCPCA.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

/// The matrices of a stored model and its numbers, to be told lies about.
struct Stored {
  NCDataMatrix<float> p, t, x;
  int maxIterations = 50;
  int iterations = 7;
  unsigned short entries = 5;
  short version = 2;

  std::vector<const NCDataMatrix<float>*> Matrices() const { return {&p, &t, &x}; }
};

/// Two components of four observations and three variables, with holes everywhere.
Stored GoodModel() {
  Stored stored;
  stored.p = RandomMatrix<float>(2, 3, 0.2, 1);
  stored.t = RandomMatrix<float>(2, 4, 0.2, 2);
  stored.x = RandomMatrix<float>(4, 3, 0.2, 3);
  return stored;
}

std::string VersionTwoStreamOf(const Stored& stored) {
  std::ostringstream stream;
  VexStreamableData(stored.version, "NCPCA").Write(stream);
  OutputStreamDirectory directory(stream, stored.entries);
  unsigned short entry = 0;
  for (const NCDataMatrix<float>* matrix : stored.Matrices())
    if (entry < stored.entries) directory.GetOutput(entry++) << *matrix;
  if (stored.entries > 3) WriteFourBytes(&stored.maxIterations, 1, directory.GetOutput(3));
  if (stored.entries > 4) WriteFourBytes(&stored.iterations, 1, directory.GetOutput(4));
  directory.Close();
  return stream.str();
}

std::string VersionOneStreamOf(const Stored& stored) {
  std::ostringstream stream;
  VexStreamableData(1, "NCPCA").Write(stream);
  for (const NCDataMatrix<float>* matrix : stored.Matrices()) stream << *matrix;
  WriteFourBytes(&stored.maxIterations, 1, stream);
  WriteFourBytes(&stored.iterations, 1, stream);
  return stream.str();
}

void ExpectHolds(const NCPCA& model, const Stored& stored) {
  EXPECT_EQ(CellsOf(*model.GetPprim()), CellsOf(stored.p));
  EXPECT_EQ(CellsOf(*model.GetTprim()), CellsOf(stored.t));
  EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(stored.x));
  EXPECT_EQ(model.GetIterations(), stored.iterations);
}

void ExpectInvariants(const NCPCA& model) {
  for (const NCDataMatrix<float>* matrix : {model.GetPprim(), model.GetTprim(), model.GetResiduals()})
    EXPECT_TRUE(HasExactCounts(*matrix));
  EXPECT_EQ(model.GetPprim()->SizeColumns(), model.GetResiduals()->SizeColumns());
  EXPECT_EQ(model.GetTprim()->SizeColumns(), model.GetResiduals()->SizeRows());
  EXPECT_EQ(model.GetTprim()->SizeRows(), model.GetPprim()->SizeRows());
}

void ExpectEmpty(const NCPCA& model) {
  for (const NCDataMatrix<float>* matrix : {model.GetPprim(), model.GetTprim(), model.GetResiduals()})
    EXPECT_EQ(matrix->SizeRows() + matrix->SizeColumns(), 0);
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(model.GetIterations(), 0);
}

std::unique_ptr<NCPCA> RestoredModel(const Stored& stored) {
  return std::make_unique<NCPCA>(&stored.x, &stored.p, &stored.t, stored.maxIterations);
}

StreamAttacks<NCPCA> Attacks(bool mayThrow) {
  StreamAttacks<NCPCA> attacks;
  attacks.accepted = ExpectInvariants;
  attacks.refused = ExpectEmpty;
  attacks.mayThrow = mayThrow;
  return attacks;
}

/// Whether a model that had other content refuses these bytes, without a throw, and is empty then.
bool IsRefused(const std::string& bytes) {
  const std::unique_ptr<NCPCA> model = RestoredModel(GoodModel());
  std::istringstream stream(bytes);
  if (stream >> *model) return false;
  ExpectEmpty(*model);
  return true;
}

TEST(NCPCAStream, ReadsBackWhatItWrote) {
  const NCDataMatrix<float> X = RandomMatrix<float>(8, 5, 0.1, 11);
  NCPCA written(&X, 40);
  for (int a = 1; a <= 2; ++a) {
    written.NextComponent(nullptr, nullptr, 0, nullptr);
    written.CalculateResiduals();
  }
  NCPCA read;
  std::istringstream stream(StreamOf(written));
  ASSERT_TRUE(stream >> read);
  EXPECT_EQ(CellsOf(*read.GetPprim()), CellsOf(*written.GetPprim()));
  EXPECT_EQ(CellsOf(*read.GetTprim()), CellsOf(*written.GetTprim()));
  EXPECT_EQ(CellsOf(*read.GetResiduals()), CellsOf(*written.GetResiduals()));
  EXPECT_EQ(read.GetIterations(), written.GetIterations());
  EXPECT_TRUE(StreamOf(read) == StreamOf(written));
  EXPECT_EQ(read.GetMyVexStreamVersionNumber(), 2);
}

TEST(NCPCAStream, WritesTheFiveEntriesOfVersionTwo) {
  const Stored stored = GoodModel();
  Stored fresh = stored;
  fresh.iterations = 0;  // a restored model has not iterated yet
  EXPECT_TRUE(StreamOf(*RestoredModel(stored)) == VersionTwoStreamOf(fresh));
}

TEST(NCPCAStream, ReadsVersionTwoAndLeavesTheNumberOfComponentsAtZero) {
  NCPCA model;
  std::istringstream stream(VersionTwoStreamOf(GoodModel()));
  ASSERT_TRUE(stream >> model);
  ExpectHolds(model, GoodModel());
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(model.GetVexStreamVersionNumber(), 2);
}

TEST(NCPCAStream, ReadsVersionOneAndCountsItsComponents) {
  NCPCA model;
  std::istringstream stream(VersionOneStreamOf(GoodModel()));
  ASSERT_TRUE(stream >> model);
  ExpectHolds(model, GoodModel());
  EXPECT_EQ(model.GetComponents(), 2);
  EXPECT_EQ(model.GetVexStreamVersionNumber(), 1);
}

TEST(NCPCAStream, LeavesTheNumberOfComponentsOfAReusedObjectToVersionTwo) {
  const std::unique_ptr<NCPCA> model = RestoredModel(GoodModel());
  std::istringstream stream(VersionTwoStreamOf(GoodModel()));
  ASSERT_TRUE(stream >> *model);
  EXPECT_EQ(model->GetComponents(), 2);
}

TEST(NCPCAStream, ReadsTheLimitOfRounds) {
  const NCDataMatrix<float> X = RandomMatrix<float>(8, 5, 0.1, 11);
  const NCPCA written(&X, 3);
  NCPCA read;
  std::istringstream stream(StreamOf(written));
  ASSERT_TRUE(stream >> read);
  read.NextComponent(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(read.GetIterations(), 3);
}

TEST(NCPCAStream, ReadsBackAnEmptyModelAndOneWithoutComponents) {
  NCPCA model;
  std::istringstream empty(StreamOf(NCPCA()));
  ASSERT_TRUE(empty >> model);
  ExpectEmpty(model);

  const NCDataMatrix<float> X = RandomMatrix<float>(3, 2, 0.0, 1);
  std::istringstream fresh(StreamOf(NCPCA(&X, 10)));
  ASSERT_TRUE(fresh >> model);
  ExpectInvariants(model);
  EXPECT_EQ(CellsOf(*model.GetResiduals()), CellsOf(X));
  EXPECT_EQ(model.GetPprim()->SizeRows(), 0);
}

TEST(NCPCAStream, ReadsBackModelsOfTablesWithoutRowsOrColumns) {
  for (const bool rows : {false, true}) {
    NCDataMatrix<float> X;
    X.SetSize(rows ? 3 : 0, rows ? 0 : 3);
    NCPCA written(&X, 2);
    if (!rows) written.NextComponent(nullptr, nullptr, 0, nullptr);
    NCPCA read;
    std::istringstream stream(StreamOf(written));
    ASSERT_TRUE(stream >> read);
    ExpectInvariants(read);
    EXPECT_EQ(read.GetPprim()->SizeRows(), rows ? 0 : 1);
    EXPECT_TRUE(StreamOf(read) == StreamOf(written));
  }
}

TEST(NCPCAStream, RestoresAModelThatGoesOnAsIfItHadNeverBeenStored) {
  const NCDataMatrix<float> X = RandomMatrix<float>(9, 6, 0.1, 21);
  NCPCA whole(&X, 40);
  whole.NextComponent(nullptr, nullptr, 0, nullptr);
  whole.CalculateResiduals();
  NCPCA read;
  std::istringstream stream(StreamOf(whole));
  ASSERT_TRUE(stream >> read);
  NCPCA restored(read.GetResiduals(), read.GetPprim(), read.GetTprim(), 40);
  for (NCPCA* model : {&whole, &restored}) {
    model->NextComponent(nullptr, nullptr, 0, nullptr);
    model->CalculateResiduals();
  }
  EXPECT_EQ(restored.GetComponents(), 2);
  EXPECT_TRUE(StreamOf(restored) == StreamOf(whole));
}

TEST(NCPCAStream, PutsTheNextComponentOfAReadModelFirst) {
  // The number of components is 0 after a read: that is where the next one goes, and what is taken out.
  const NCDataMatrix<float> X = RandomMatrix<float>(9, 6, 0.1, 21);
  NCPCA whole(&X, 40);
  whole.NextComponent(nullptr, nullptr, 0, nullptr);
  whole.CalculateResiduals();
  NCPCA read;
  std::istringstream stream(StreamOf(whole));
  ASSERT_TRUE(stream >> read);
  for (NCPCA* model : {&whole, &read}) {
    model->NextComponent(nullptr, nullptr, 0, nullptr);
    model->CalculateResiduals();
  }
  EXPECT_EQ(read.GetComponents(), 1);
  EXPECT_EQ(CellsOf((*read.GetPprim())[1]), CellsOf((*whole.GetPprim())[2]));
  EXPECT_EQ(CellsOf((*read.GetTprim())[2]), CellsOf((*whole.GetTprim())[1]));
  EXPECT_EQ(CellsOf(*read.GetResiduals()), CellsOf(*whole.GetResiduals()));
}

TEST(NCPCAStream, RefusesAnotherVersionAndAMissingEntry) {
  Stored stored = GoodModel();
  for (const short version : {0, 3, -1, 256}) {
    stored.version = version;
    EXPECT_TRUE(IsRefused(VersionTwoStreamOf(stored))) << "version " << version;
  }
  stored.version = 2;
  for (unsigned short entries = 0; entries < 5; ++entries) {
    stored.entries = entries;
    EXPECT_TRUE(IsRefused(VersionTwoStreamOf(stored))) << entries << " entries";
  }
}

TEST(NCPCAStream, LeavesTheModelAsItIsWhenTheMagicIsAnothers) {
  std::string other = VersionTwoStreamOf(GoodModel());
  other.replace(other.find("NCPCA"), 5, "NCPLS");
  const std::unique_ptr<NCPCA> model = RestoredModel(GoodModel());
  std::istringstream stream(other);
  EXPECT_FALSE(stream >> *model);
  EXPECT_TRUE(StreamOf(*model) == StreamOf(*RestoredModel(GoodModel())));
}

TEST(NCPCAStream, WritesAndReadsNothingASecondTimeInOnePass) {
  struct Opened : NCPCA {
    using NCPCA::VexStreamableReset;
    using NCPCA::VexStreamableStartRead;
    using NCPCA::VexStreamableStartWrite;
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

TEST(NCPCAStream, PassesOverEntriesThatItDoesNotKnow) {
  Stored stored = GoodModel();
  stored.entries = 7;
  NCPCA model;
  std::istringstream stream(VersionTwoStreamOf(stored));
  ASSERT_TRUE(stream >> model);
  ExpectHolds(model, stored);
}

TEST(NCPCAStream, RefusesMatricesThatDisagreeInTheirSizes) {
  const auto with = [](const char* what, NCDataMatrix<float> Stored::*matrix, int rows, int columns) {
    SCOPED_TRACE(what);
    Stored stored = GoodModel();
    stored.*matrix = RandomMatrix<float>(rows, columns, 0.0, 9);
    EXPECT_TRUE(IsRefused(VersionTwoStreamOf(stored)));
    EXPECT_TRUE(IsRefused(VersionOneStreamOf(stored)));
  };
  with("a loading too few", &Stored::p, 2, 2);
  with("a loading too many", &Stored::p, 2, 4);
  with("a score too few", &Stored::t, 2, 3);
  with("a row too many", &Stored::x, 5, 3);
  with("a column too few", &Stored::x, 4, 2);
}

TEST(NCPCAStream, ReadsLoadingsAndScoresThatDisagreeInTheirComponents) {
  for (const auto member : {&Stored::p, &Stored::t})
    for (const int rows : {1, 7}) {
      Stored stored = GoodModel();
      stored.*member = RandomMatrix<float>(rows, (stored.*member).SizeColumns(), 0.0, 9);
      EXPECT_FALSE(IsRefused(VersionTwoStreamOf(stored)));
      EXPECT_FALSE(IsRefused(VersionOneStreamOf(stored)));
    }
}

TEST(NCPCAStream, RefusesToWriteToABrokenStream) {
  std::ostringstream stream;
  stream.setstate(std::ios_base::badbit);
  EXPECT_FALSE(stream << *RestoredModel(GoodModel()));
}

TEST(NCPCAStream, RefusesEveryCut) {
  // A matrix on the bare stream of version 1 says by itself that its directory lies.
  Attacks(/*mayThrow=*/false).EveryCut(VersionTwoStreamOf(GoodModel()));
  Attacks(/*mayThrow=*/true).EveryCut(VersionOneStreamOf(GoodModel()));
}

TEST(NCPCAStream, SurvivesEveryBitThatIsTurned) {
  Attacks(/*mayThrow=*/false).EveryBitFlip(VersionTwoStreamOf(GoodModel()));
  Attacks(/*mayThrow=*/true).EveryBitFlip(VersionOneStreamOf(GoodModel()));
}

TEST(NCPCAStream, SurvivesEveryNumberThatIsALie) {
  Attacks(/*mayThrow=*/false).EveryNumber(VersionTwoStreamOf(GoodModel()));
  Attacks(/*mayThrow=*/true).EveryNumber(VersionOneStreamOf(GoodModel()));
}

}  // namespace
