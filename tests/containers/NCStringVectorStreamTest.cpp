#include <gmock/gmock.h>

#include <sstream>
#include <string>

#include "kalmia/containers/NCStringVector.h"
#include "testing/StreamAttacks.h"

namespace {

std::string Head(std::uint16_t version) {
  std::ostringstream out;
  VexStreamLight::WriteMagicStringAndVersionNumber(out, version, "NCSV");
  return out.str();
}

/// Count and strings as both versions have them; the count may lie.
std::string Body(int count, const std::vector<std::string>& strings) {
  std::ostringstream out;
  WriteFourBytes(&count, 1, out);
  for (const std::string& s : strings) WriteBinaryString(s.c_str(), out);
  return out.str();
}

std::string Directory(const std::string& entry) {
  std::ostringstream out;
  OutputStreamDirectory directory(out, 1);
  directory.GetOutput(0) << entry;
  directory.Close();
  return out.str();
}

NCStringVector Names() {
  NCStringVector v;
  for (const char* s : {"octane", "", "1100 nm"}) v.push_back(s);
  return v;
}

StreamAttacks<NCStringVector> Attacks() {
  StreamAttacks<NCStringVector> attacks;
  attacks.refused = [](const NCStringVector& left) { EXPECT_TRUE(left.empty()); };
  return attacks;
}

TEST(NCStringVectorStream, HoldsOneEntryWithCountAndStrings) {
  EXPECT_EQ(StreamOf(Names()), Head(2) + Directory(Body(3, {"octane", "", "1100 nm"})));
  EXPECT_EQ(StreamOf(NCStringVector()), Head(2) + Directory(Body(0, {})));
}

TEST(NCStringVectorStream, ReadsBackWhatWasWritten) {
  for (const NCStringVector& v : {Names(), NCStringVector(), NCStringVector(5)}) {
    std::istringstream in(StreamOf(v));
    NCStringVector back = Names();
    EXPECT_TRUE(in >> back);
    EXPECT_EQ(back, v);
    EXPECT_EQ(back.GetVexStreamVersionNumber(), 2);
    EXPECT_EQ(back.GetMyVexStreamVersionNumber(), 2);
  }
}

TEST(NCStringVectorStream, LeavesWhatSharedTheOldStringsAlone) {
  NCStringVector v = Names();
  const NCStringVector sharer(v);
  std::istringstream in(StreamOf(NCStringVector(2)));
  EXPECT_TRUE(in >> v);
  EXPECT_EQ(sharer, Names());
}

TEST(NCStringVectorStream, IsEmptyAfterARefusalWhateverItHeld) {
  const std::string refused[] = {Head(2) + Directory(Body(-1, {"a"})), Head(2) + Directory(Body(1, {"a", "b"})),
                                 Head(2) + std::string(2, '\0'), Head(1) + Body(2, {"a"})};
  for (const std::string& bytes : refused) {
    std::istringstream in(bytes);
    NCStringVector v = Names();
    const NCStringVector sharer(v);
    EXPECT_FALSE(in >> v);
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(sharer, Names());
  }
}

TEST(NCStringVectorStream, ChangesNothingWhereTheMagicIsAnother) {
  std::istringstream in(StreamOf(NCIntegralVector<int, -99>(3, 1)));
  NCStringVector v = Names();
  EXPECT_FALSE(in >> v);
  EXPECT_EQ(v, Names());
}

TEST(NCStringVectorStream, ReadsADirectoryWithEntriesOfALaterTime) {
  std::ostringstream out;
  OutputStreamDirectory directory(out, 3);
  directory.GetOutput(0) << Body(1, {"a"});
  directory.GetOutput(2) << "of a later time";
  directory.Close();
  std::istringstream in(Head(2) + out.str() + "tail");
  NCStringVector v;
  ASSERT_TRUE(in >> v);
  ASSERT_EQ(v.Size(), 1);
  EXPECT_STREQ(v[1], "a");
  std::string tail;
  in >> tail;
  EXPECT_EQ(tail, "tail");
}

TEST(NCStringVectorStream, WritesAndReadsOnceInAPass) {
  struct Reached : NCStringVector {
    using NCStringVector::VexStreamableReset;
    using NCStringVector::VexStreamableStartRead;
    using NCStringVector::VexStreamableStartWrite;
  } v;
  v.push_back("a");
  std::stringstream stream;
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_TRUE(v.streamVisited);
  const std::string once = stream.str();
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once);
  EXPECT_TRUE(v.VexStreamableStartRead(stream)) << "visited: nothing is read";
  EXPECT_EQ(stream.tellg(), std::streampos(0));
  v.VexStreamableReset();
  EXPECT_FALSE(v.streamVisited);
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_EQ(stream.tellg(), static_cast<std::streampos>(static_cast<std::streamoff>(once.size())));
}

TEST(NCStringVectorStream, AFailedStreamFailsTheWrite) {
  std::ostringstream out;
  out.setstate(std::ios_base::badbit);
  EXPECT_FALSE(out << Names());
}

TEST(NCStringVectorStream, ReadsVersion1StraightFromTheStream) {
  std::istringstream in(Head(1) + Body(3, {"octane", "", "1100 nm"}) + "tail");
  NCStringVector v;
  EXPECT_TRUE(in >> v);
  EXPECT_EQ(v, Names());
  std::string tail;
  in >> tail;
  EXPECT_EQ(tail, "tail");
}

TEST(NCStringVectorStream, TakesAnUnknownVersionForTheEmptyVector) {
  for (const int version : {0, 3, 7, 65535}) {
    std::istringstream in(Head(static_cast<std::uint16_t>(version)) + "whatever");
    NCStringVector v = Names();
    EXPECT_TRUE(in >> v);
    EXPECT_TRUE(v.empty());
  }
}

TEST(NCStringVectorStream, RefusesALieBeforeTakingMemoryForIt) {
  struct Lie {
    const char* what;
    std::string bytes;
  };
  const Lie lies[] = {{"another magic", StreamOf(NCIntegralVector<int, -99>(3, 1))},
                      {"no entry", Head(2) + std::string(2, '\0')},
                      {"an empty entry", Head(2) + Directory("")},
                      {"a negative count", Head(2) + Directory(Body(-1, {"a"}))},
                      {"one string fewer than promised", Head(2) + Directory(Body(2, {"a"}))},
                      {"one string more than promised", Head(2) + Directory(Body(1, {"a", "b"}))},
                      {"two thousand million strings", Head(2) + Directory(Body(0x7FFFFFFF, {"a"}))},
                      {"a negative count, version 1", Head(1) + Body(-1, {"a"})},
                      {"one string fewer than promised, version 1", Head(1) + Body(2, {"a"})},
                      {"two thousand million strings, version 1", Head(1) + Body(0x7FFFFFFF, {"a"})}};
  for (const Lie& lie : lies) {
    SCOPED_TRACE(lie.what);
    EXPECT_FALSE(Attacks().Read(lie.bytes));
  }
}

TEST(NCStringVectorStream, OfManyShortNamesStaysWithinTheMemoryBound) {
  for (const char* name : {"", "a", "ab", "a name of some length, beyond what a small string holds"}) {
    SCOPED_TRACE(name);
    const std::vector<std::string> names(20000, name);
    EXPECT_TRUE(Attacks().Read(Head(1) + Body(20000, names)));
    EXPECT_TRUE(Attacks().Read(Head(2) + Directory(Body(20000, names))));
  }
}

TEST(NCStringVectorStream, WithstandsCutsTurnedBitsAndWrongNumbers) {
  for (const std::string& bytes : {StreamOf(Names()), Head(1) + Body(3, {"octane", "", "1100 nm"})}) {
    Attacks().EveryCut(bytes);
    Attacks().EveryBitFlip(bytes);
    Attacks().EveryNumber(bytes);
  }
}

}  // namespace
