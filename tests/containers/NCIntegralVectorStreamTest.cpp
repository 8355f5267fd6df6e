#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "kalmia/containers/NCIntegralVector.h"
#include "testing/StreamAttacks.h"

// The stream form, and what its reader does with bytes that lie.

namespace {

using ::testing::ElementsAre;
using IntVector = NCIntegralVector<int, -99>;
using BoolCells = NCIntegralVector<bool, 0>;
using LongVector = NCIntegralVector<unsigned long, 0>;

template <class V>
V Cells(const std::vector<int>& cells) {
  V v(static_cast<int>(cells.size()));
  for (int i = 1; i <= v.Size(); ++i)
    v(i) = static_cast<typename V::value_type>(cells[static_cast<std::size_t>(i) - 1]);
  return v;
}

template <class V>
class NCIntegralVectorStream : public ::testing::Test {
 protected:
  using Stored = std::conditional_t<std::is_same_v<typename V::value_type, bool>, std::uint8_t, std::uint32_t>;

  class Open : public V {
   public:
    using V::V;
    using V::VexStreamableReset;
    using V::VexStreamableStartRead;
    using V::VexStreamableStartWrite;
  };

  static V Table() { return Cells<V>({1, 0, 1, 1}); }
  static V Before() { return Cells<V>({0, 1}); }

  static void WriteSizeAndCells(std::ostream& stream, int size, const V& cells) {
    WriteFourBytes(&size, 1, stream);
    for (auto cell : cells) {
      const Stored stored = static_cast<Stored>(cell);
      WriteArray(&stored, 1, sizeof stored, stream);
    }
  }

  static std::string OldStream(short version, int size, const V& cells) {
    std::ostringstream stream;
    VexStreamableData(version, "NCIV").Write(stream);
    if (version == 2) WriteBinaryString("a name of old", stream);
    WriteSizeAndCells(stream, size, cells);
    return stream.str();
  }

  static std::string NewStream(int size, const V& cells, short version = 4, unsigned short entries = 1) {
    std::ostringstream stream;
    VexStreamableData(version, "NCIV").Write(stream);
    OutputStreamDirectory directory(stream, entries);
    if (entries > 0) WriteSizeAndCells(directory.GetOutput(0), size, cells);
    directory.Close();
    return stream.str();
  }

  static bool ReadInto(V* v, const std::string& bytes) {
    std::istringstream stream(bytes);
    return static_cast<bool>(stream >> *v);
  }

  static bool IsRefused(const std::string& bytes) {
    V v = Before();
    const bool refused = !ReadInto(&v, bytes);
    EXPECT_TRUE(!refused || v.Size() == 0) << "something is left of a vector whose read failed";
    return refused;
  }

  static StreamAttacks<V> Attacks() {
    StreamAttacks<V> attacks;
    attacks.make = [] { return std::make_unique<V>(Before()); };
    attacks.refused = [](const V& v) { EXPECT_TRUE(v.Size() == 0 || v == Before()); };
    return attacks;
  }
};
using Instances = ::testing::Types<IntVector, BoolCells, LongVector>;
struct InstanceNames {
  template <class V>
  static const char* GetName(int) {
    return std::is_same_v<V, IntVector> ? "int" : std::is_same_v<V, BoolCells> ? "bool" : "unsigned_long";
  }
};
TYPED_TEST_SUITE(NCIntegralVectorStream, Instances, InstanceNames);

TYPED_TEST(NCIntegralVectorStream, ReadsBackWhatItWrote) {
  for (const std::vector<int>& cells : {std::vector<int>{}, {1}, {0, 1, 1, 0}, std::vector<int>(5000, 1)}) {
    const TypeParam v = Cells<TypeParam>(cells);
    TypeParam back = this->Before();
    ASSERT_TRUE(this->ReadInto(&back, StreamOf(v)));
    EXPECT_TRUE(back == v);
  }
}

TYPED_TEST(NCIntegralVectorStream, HasTheMagicTheVersionAndADirectoryOfOne) {
  EXPECT_EQ(StreamOf(this->Table()), this->NewStream(4, this->Table()));
  EXPECT_EQ(StreamOf(TypeParam()), this->NewStream(0, TypeParam()));
  EXPECT_EQ(TypeParam().GetMyVexStreamVersionNumber(), 4);
}

TYPED_TEST(NCIntegralVectorStream, ReadsTheLayoutsOfOld) {
  for (short version : {1, 2, 3}) {
    TypeParam v = this->Before();
    const TypeParam twin(v);
    ASSERT_TRUE(this->ReadInto(&v, this->OldStream(version, 4, this->Table()))) << version;
    EXPECT_TRUE(v == this->Table());
    EXPECT_TRUE(twin == this->Before());
    EXPECT_EQ(v.GetVexStreamVersionNumber(), version);
    ASSERT_TRUE(this->ReadInto(&v, this->OldStream(version, 0, TypeParam())));
    EXPECT_TRUE(v.empty());
  }
}

TYPED_TEST(NCIntegralVectorStream, AnUnknownVersionOrMagicIsRefused) {
  for (short version : {0, 5, -1, 260}) EXPECT_TRUE(this->IsRefused(this->NewStream(4, this->Table(), version)));
  std::stringstream stream;
  VexStreamableData(4, "NCDV").Write(stream);
  TypeParam v = this->Before();
  EXPECT_FALSE(stream >> v);
  EXPECT_TRUE(v == this->Before());
}

TYPED_TEST(NCIntegralVectorStream, RefusesALieAboutItsSize) {
  for (int size : {-1, 0, 3, 5, 1 << 30, 2147483647, -2147483647 - 1})
    EXPECT_TRUE(this->IsRefused(this->NewStream(size, this->Table()))) << size;
  for (int size : {-1, 5, 1 << 30, 2147483647, -2147483647 - 1})
    EXPECT_TRUE(this->IsRefused(this->OldStream(1, size, this->Table()))) << size;
  EXPECT_TRUE(this->IsRefused(this->NewStream(0, TypeParam(), 4, /*entries=*/0)));
}

TYPED_TEST(NCIntegralVectorStream, PassesOverEntriesOfLaterVersionsOfItself) {
  TypeParam v;
  ASSERT_TRUE(this->ReadInto(&v, this->NewStream(4, this->Table(), 4, /*entries=*/3)));
  EXPECT_TRUE(v == this->Table());
}

TYPED_TEST(NCIntegralVectorStream, IsWrittenAndReadOnceInAPass) {
  typename TestFixture::Open v;
  v.CopyContent(this->Table());
  std::stringstream stream;
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), StreamOf(this->Table()));
  v.VexStreamableReset();
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_TRUE(v == this->Table());
}

TYPED_TEST(NCIntegralVectorStream, FailsOnAStreamThatFails) {
  std::ostringstream stream;
  stream.setstate(std::ios_base::badbit);
  EXPECT_FALSE(stream << this->Table());
  TypeParam v = this->Table();
  EXPECT_FALSE(v.VexStreamableWrite(stream));
}

TYPED_TEST(NCIntegralVectorStream, StandsEveryCut) {
  this->Attacks().EveryCut(StreamOf(this->Table()));
  for (short version : {1, 2, 3}) this->Attacks().EveryCut(this->OldStream(version, 4, this->Table()));
}

TYPED_TEST(NCIntegralVectorStream, StandsEveryBitTurned) {
  this->Attacks().EveryBitFlip(StreamOf(this->Table()));
  for (short version : {1, 2, 3}) this->Attacks().EveryBitFlip(this->OldStream(version, 4, this->Table()));
}

TYPED_TEST(NCIntegralVectorStream, StandsEveryNumberOverwritten) {
  this->Attacks().EveryNumber(StreamOf(this->Table()));
  for (short version : {1, 2, 3}) this->Attacks().EveryNumber(this->OldStream(version, 4, this->Table()));
}

TYPED_TEST(NCIntegralVectorStream, TakesNoMoreMemoryForALargeVectorThanItsBound) {
  EXPECT_TRUE(this->Attacks().Read(StreamOf(Cells<TypeParam>(std::vector<int>(200000, 1)))));
}

// ---- Widths on the stream

TEST(NCIntegralVectorWidth, IsFourBytesForNumbersAndOneForFlags) {
  const std::size_t frame = StreamOf(IntVector()).size();
  EXPECT_EQ(StreamOf(IntVector(3, -5)).size(), frame + 3 * 4);
  EXPECT_EQ(StreamOf(LongVector(3, 5)).size(), frame + 3 * 4);
  EXPECT_EQ(StreamOf(BoolCells(3, true)).size(), frame + 3);
}

TEST(NCIntegralVectorWidth, KeepsNegativeIntsAndTheLargestStorableLong) {
  std::stringstream stream;
  stream << Cells<IntVector>({-99, -2147483647 - 1, 2147483647}) << LongVector(1, 4294967295ul);
  IntVector ints;
  LongVector longs;
  ASSERT_TRUE(stream >> ints >> longs);
  EXPECT_THAT(ints, ElementsAre(-99, -2147483647 - 1, 2147483647));
  EXPECT_THAT(longs, ElementsAre(4294967295ul));
}

TEST(NCIntegralVectorWidth, AnUnsignedLongThatDoesNotFitFailsTheWriteBeforeAByteIsWritten) {
  if (sizeof(unsigned long) == 4) return;  // there every value fits
  std::ostringstream stream;
  LongVector v(3, 1);
  v(3) = 4294967296ul;
  EXPECT_FALSE(stream << v);
  EXPECT_EQ(stream.str(), "");
  std::ostringstream fields;
  EXPECT_FALSE(v.VexStreamableWrite(fields));
  EXPECT_EQ(fields.str(), "");
}

TEST(NCIntegralVectorWidth, CellsOfAnotherWidthAreNoticedByTheirLength) {
  std::stringstream flags, numbers;
  flags << BoolCells(4, true);
  numbers << IntVector(4, 1);
  IntVector ints(2, 7);
  BoolCells bools(2, true);
  EXPECT_FALSE(flags >> ints);
  EXPECT_TRUE(ints.empty());
  EXPECT_FALSE(numbers >> bools);
  EXPECT_TRUE(bools.empty());
}

TEST(NCIntegralVectorWidth, AnyByteButZeroIsTrue) {
  std::stringstream stream;
  VexStreamableData(3, "NCIV").Write(stream);
  const int size = 4;
  WriteFourBytes(&size, 1, stream);
  stream.write("\0\1\2\xff", 4);
  BoolCells v;
  ASSERT_TRUE(stream >> v);
  EXPECT_THAT(v, ElementsAre(false, true, true, true));
}

}  // namespace
