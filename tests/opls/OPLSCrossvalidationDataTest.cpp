#include "kalmia/opls/OPLSCrossvalidationData.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "OPLSCase.h"
#include "kalmia/support/VexStream.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"
#include "testing/StreamedOPLSData.h"

namespace {

/// The data of a small validation with one orthogonal component.
OPLSCrossvalidationData Small() {
  const Tables tables = RelatedTables(6, 3, 2, 0.1, 1);
  OPLSCrossValidation validation(&tables.X, &tables.Y, 1, 2, nullptr, nullptr);
  validation.NextComponent(nullptr);
  return *validation.GetData();
}

bool IsEmpty(const OPLSCrossvalidationData& data) {
  return data.WMatricesPerRound.empty() && data.PMatricesPerRound.empty() && data.CMatricesPerRound.empty() &&
         data.WOPerRound.empty() && data.POPerRound.empty() && data.COPerRound.empty() && data.SSY.Size() == 0;
}

StreamAttacks<StreamedOPLSData> Attacks() {
  StreamAttacks<StreamedOPLSData> attacks;
  attacks.refused = [](const StreamedOPLSData& stored) { EXPECT_TRUE(IsEmpty(stored.data)); };
  return attacks;
}

TEST(OPLSCrossvalidationData, IsEmptyAtFirstAndAfterClear) {
  EXPECT_TRUE(IsEmpty(OPLSCrossvalidationData()));
  OPLSCrossvalidationData data = Small();
  EXPECT_FALSE(IsEmpty(data));
  data.clear();
  EXPECT_TRUE(IsEmpty(data));
}

TEST(OPLSCrossvalidationData, StartsWithEmptyRoundsAndTheSumsOfSquaresAboutZero) {
  const NCDataMatrix<float> Y = MatrixOf<float>({{1, kHole<float>}, {3, kHole<float>}});
  const OPLSCrossvalidationData data(3, Y);
  for (const auto* rounds : {&data.WMatricesPerRound, &data.PMatricesPerRound, &data.CMatricesPerRound}) {
    ASSERT_EQ(rounds->size(), 3U);
    EXPECT_TRUE(rounds->front().empty());
  }
  for (const auto* matrices : {&data.WOPerRound, &data.POPerRound, &data.COPerRound}) {
    ASSERT_EQ(matrices->size(), 3U);
    EXPECT_EQ(matrices->back().SizeRows(), 0);
  }
  EXPECT_EQ(data.SSY[1], 10.0F);
  EXPECT_EQ(data.SSY[2], kHole<float>) << "no value";
}

TEST(OPLSCrossvalidationData, ComesBackFromAStreamToTheBit) {
  for (const OPLSCrossvalidationData& data : {Small(), OPLSCrossvalidationData(), OPLSCrossvalidationData(
                                                                                      3, NCDataMatrix<float>(2, 2))}) {
    const std::string written = Everything(data);
    OPLSCrossvalidationData read = Small();
    std::istringstream stream(written + "behind");
    ASSERT_TRUE(read.ReadObject(stream));
    EXPECT_EQ(Everything(read), written);
    std::string behind;
    stream >> behind;
    EXPECT_EQ(behind, "behind");
  }
}

TEST(OPLSCrossvalidationData, ComesBackWhicheverOfItsFieldsAreEmpty) {
  for (unsigned empty = 0; empty < 1U << 7; ++empty) {
    SCOPED_TRACE(empty);
    OPLSCrossvalidationData data = Small(), read;
    unsigned bit = 1;
    for (auto* rounds : {&data.WMatricesPerRound, &data.PMatricesPerRound, &data.CMatricesPerRound}) {
      if (empty & bit) rounds->clear();
      bit <<= 1U;
    }
    for (auto* matrices : {&data.WOPerRound, &data.POPerRound, &data.COPerRound}) {
      if (empty & bit) matrices->front() = NCDataMatrix<float>();
      bit <<= 1U;
    }
    if (empty & bit) data.SSY.Clear();
    std::istringstream stream(Everything(data));
    ASSERT_TRUE(read.ReadObject(stream));
    EXPECT_EQ(Everything(read), Everything(data));
  }
}

TEST(OPLSCrossvalidationData, WritesEntriesOneToSevenOfEleven) {
  std::istringstream stream(Everything(Small()));
  unsigned short version = 0;
  ASSERT_TRUE(VexStreamLight::CheckMagicStringAndVersionNumber(stream, version, "OPLSCVD"));
  EXPECT_EQ(version, 1);
  InputStreamDirectory directory(stream);
  for (unsigned short entry = 0; entry <= 10; ++entry)
    EXPECT_EQ(directory.GetInput(entry) != nullptr, entry >= 1 && entry <= 7) << entry;
  int rounds = 0, blocks = 0;
  std::istream* W = directory.GetInput(1);
  ASSERT_TRUE(ReadFourBytes(&rounds, 1, *W) && ReadFourBytes(&blocks, 1, *W));
  EXPECT_EQ(rounds, 2);
  EXPECT_EQ(blocks, 2) << "without and with the orthogonal component";
  NCDataMatrix<float> first;
  ASSERT_TRUE(*W >> first);
  EXPECT_EQ(StreamOf(first), StreamOf(Small().WMatricesPerRound[0][0]));
  NCDataVector<float> ssY;
  ASSERT_TRUE(*directory.GetInput(7) >> ssY);
  EXPECT_EQ(CellsOf(ssY), CellsOf(Small().SSY));
}

TEST(OPLSCrossvalidationData, RefusesAStreamThatLacksAnEntry) {
  for (unsigned short missing = 1; missing <= 7; ++missing) {
    std::ostringstream written;
    ASSERT_TRUE(VexStreamLight::WriteMagicStringAndVersionNumber(written, 1, "OPLSCVD"));
    {
      OutputStreamDirectory directory(written, 11);
      for (unsigned short entry = 1; entry <= 7; ++entry) {
        const int none = 0;
        if (entry == missing) continue;
        if (entry == 7)
          directory.GetOutput(entry) << NCDataVector<float>();
        else
          WriteFourBytes(&none, 1, directory.GetOutput(entry));
      }
      directory.Close();
    }
    std::istringstream stream(written.str());
    OPLSCrossvalidationData data = Small();
    EXPECT_FALSE(data.ReadObject(stream)) << missing;
    EXPECT_TRUE(IsEmpty(data)) << missing;
  }
}

TEST(OPLSCrossvalidationData, RefusesAnotherMagic) {
  std::string written = Everything(Small());
  written[written.find("OPLSCVD")] = 'o';
  std::istringstream stream(written);
  OPLSCrossvalidationData data;
  EXPECT_FALSE(data.ReadObject(stream));
}

TEST(OPLSCrossvalidationData, SaysWhenItCannotBeWritten) {
  std::ostringstream stream;
  stream.setstate(std::ios::badbit);
  EXPECT_FALSE(Small().WriteObject(stream));
}

TEST(OPLSCrossvalidationData, CopiesAreDeep) {
  OPLSCrossvalidationData data = Small(), copy(data), assigned(5, NCDataMatrix<float>(1, 1));
  assigned = data;
  assigned = *&assigned;
  const std::string before = Everything(data);
  for (OPLSCrossvalidationData* other : {&copy, &assigned}) {
    EXPECT_EQ(Everything(*other), before);
    EXPECT_NE(other->SSY.begin(), data.SSY.begin());
    other->WMatricesPerRound[0][0](1, 1, 7.0F);
    other->SSY(1, 7.0F);
    EXPECT_EQ(Everything(data), before);
  }
}

/// A stream with one matrix in each vector but for W, whose single round has two.
std::string SmallStream() {
  StreamedOPLSData stored;
  stored.data = OPLSCrossvalidationData(1, MatrixOf<float>({{1, 2}}));
  stored.data.WMatricesPerRound[0] = {MatrixOf<float>({{1, kHole<float>}}), MatrixOf<float>({{2, 3}})};
  stored.data.WOPerRound[0] = MatrixOf<float>({{4, 5}});
  return StreamOf(stored);
}

TEST(OPLSCrossvalidationDataAttacks, EveryCutIsRefused) { Attacks().EveryCut(SmallStream()); }

TEST(OPLSCrossvalidationDataAttacks, EveryTurnedBitIsRefusedOrReadInBoundedMemory) {
  Attacks().EveryBitFlip(SmallStream());
}

TEST(OPLSCrossvalidationDataAttacks, EveryLyingNumberIsRefusedOrReadInBoundedMemory) {
  Attacks().EveryNumber(SmallStream());
}

}  // namespace
