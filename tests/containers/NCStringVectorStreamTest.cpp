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
