#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

// The stream form, and what its reader does with bytes that lie.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorStream : public ::testing::Test {
 protected:
  using Vector = NCDataVector<T>;

  /// The pass over one object by hand.
  class Open : public NCDataVector<T> {
   public:
    using NCDataVector<T>::NCDataVector;
    using NCDataVector<T>::VexStreamableReset;
    using NCDataVector<T>::VexStreamableStartRead;
    using NCDataVector<T>::VexStreamableStartWrite;
  };

  static Vector Table() { return VectorOf<T>({1.5, -99, -0.0, 4}); }

  static void WriteSizeCountCells(std::ostream& stream, int size, int count, const Vector& cells) {
    WriteFourBytes(&size, 1, stream);
    WriteFourBytes(&count, 1, stream);
    WriteArray(cells.begin(), cells.Size(), sizeof(T), stream);
  }

  /// A layout of old, which may say another size than it has cells.
  static std::string OldStream(short version, int size, int count, const Vector& cells) {
    std::ostringstream stream;
    VexStreamableData(version, "NCDV").Write(stream);
    if (version == 2) WriteBinaryString("a name of old", stream);
    WriteSizeCountCells(stream, size, count, cells);
    return stream.str();
  }

  /// A directory with that many entries, filled by `fill(directory)`.
  template <class Fill>
  static std::string Directory(unsigned short entries, Fill fill, short version = 4) {
    std::ostringstream stream;
    VexStreamableData(version, "NCDV").Write(stream);
    OutputStreamDirectory directory(stream, entries);
    fill(directory);
    directory.Close();
    return stream.str();
  }

  static std::string NewStream(int size, int count, const Vector& cells) {
    return Directory(3, [&](OutputStreamDirectory& directory) {
      WriteFourBytes(&size, 1, directory.GetOutput(0));
      WriteFourBytes(&count, 1, directory.GetOutput(1));
      if (cells.Size() > 0) WriteArray(cells.begin(), cells.Size(), sizeof(T), directory.GetOutput(2));
    });
  }

  static bool ReadInto(Vector* v, const std::string& bytes) {
    std::istringstream stream(bytes);
    return static_cast<bool>(stream >> *v);
  }

  static bool IsRefused(const std::string& bytes) {
    Vector v(2, T(7));
    const bool refused = !ReadInto(&v, bytes);
    EXPECT_TRUE(!refused || v.Size() == 0) << "something is left of a vector whose read failed";
    return refused;
  }

  /// The vectors that are read hold cells already: a refusal at the magic leaves them, a later one empties them.
  static StreamAttacks<Vector> Attacks() {
    StreamAttacks<Vector> attacks;
    attacks.make = [] { return std::make_unique<Vector>(2, T(7)); };
    attacks.accepted = [](const Vector& v) { EXPECT_TRUE(HasExactCounts(v)); };
    attacks.refused = [](const Vector& v) {
      EXPECT_TRUE(v.Size() == 0 || v == Vector(2, T(7)));
      EXPECT_TRUE(HasExactCounts(v));
    };
    return attacks;
  }
};
TYPED_TEST_SUITE(NCDataVectorStream, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorStream, ReadsBackWhatItWrote) {
  for (int n : {0, 1, 2, 100, 5000}) {
    const NCDataVector<TypeParam> v = RandomVector<TypeParam>(n, 0.2, 3);
    NCDataVector<TypeParam> back(7, TypeParam(7));
    ASSERT_TRUE(this->ReadInto(&back, StreamOf(v)));
    EXPECT_EQ(CellsOf(back), CellsOf(v));
    EXPECT_TRUE(HasExactCounts(back));
  }
}

TYPED_TEST(NCDataVectorStream, HasTheMagicTheVersionAndADirectoryOfThree) {
  EXPECT_EQ(StreamOf(this->Table()), this->NewStream(4, 1, this->Table()));
  EXPECT_EQ(NCDataVector<TypeParam>().GetMyVexStreamVersionNumber(), 4);
}

TYPED_TEST(NCDataVectorStream, AnEmptyVectorHasADirectoryOfThreeWithoutTheThird) {
  EXPECT_EQ(StreamOf(NCDataVector<TypeParam>()), this->NewStream(0, 0, NCDataVector<TypeParam>()));
}

TYPED_TEST(NCDataVectorStream, HasTheSameBytesOnEveryMachine) {
  const std::string bytes = StreamOf(VectorOf<TypeParam>({1}));
  const std::string one = sizeof(TypeParam) == 4 ? std::string("\0\0\x80\x3f", 4)
                                                 : std::string("\0\0\0\0\0\0\xf0\x3f", 8);
  EXPECT_EQ(bytes.substr(bytes.size() - one.size()), one);
}

TYPED_TEST(NCDataVectorStream, LeavesTheStreamBehindTheVector) {
  std::stringstream stream;
  const NCDataVector<TypeParam> a = this->Table(), b = VectorOf<TypeParam>({5});
  stream << a << b;
  NCDataVector<TypeParam> first, second;
  ASSERT_TRUE(stream >> first >> second);
  EXPECT_TRUE(first == a);
  EXPECT_TRUE(second == b);
}

TYPED_TEST(NCDataVectorStream, ReadsTheLayoutsOfOld) {
  for (short version : {1, 2, 3}) {
    NCDataVector<TypeParam> v(7, TypeParam(7));
    ASSERT_TRUE(this->ReadInto(&v, this->OldStream(version, 4, 1, this->Table()))) << version;
    EXPECT_TRUE(v == this->Table());
    EXPECT_TRUE(HasExactCounts(v));
    EXPECT_EQ(v.GetVexStreamVersionNumber(), version);
    ASSERT_TRUE(this->ReadInto(&v, this->OldStream(version, 0, 0, NCDataVector<TypeParam>())));
    EXPECT_EQ(v.Size(), 0);
  }
}

TYPED_TEST(NCDataVectorStream, ReadingLeavesTwinsAlone) {
  NCDataVector<TypeParam> v(2, TypeParam(7)), twin(v);
  ASSERT_TRUE(this->ReadInto(&v, StreamOf(this->Table())));
  EXPECT_THAT(twin, ElementsAre(7, 7));
}

TYPED_TEST(NCDataVectorStream, AnUnknownVersionIsRefused) {
  for (short version : {0, 5, -1, 260}) {
    const auto fill = [](OutputStreamDirectory& directory) {
      const int zero = 0;
      WriteFourBytes(&zero, 1, directory.GetOutput(0));
      WriteFourBytes(&zero, 1, directory.GetOutput(1));
    };
    EXPECT_TRUE(this->IsRefused(this->Directory(3, fill, version))) << version;
  }
}

TYPED_TEST(NCDataVectorStream, AnotherMagicIsRefusedAndChangesNothing) {
  std::stringstream stream;
  VexStreamableData(4, "NCDM").Write(stream);
  NCDataVector<TypeParam> v(2, TypeParam(7));
  EXPECT_FALSE(stream >> v);
  EXPECT_THAT(v, ElementsAre(7, 7));
}

TYPED_TEST(NCDataVectorStream, CellsOfTheOtherTypeAreNoticedByTheirLength) {
  using Other = std::conditional_t<std::is_same_v<TypeParam, float>, double, float>;
  for (int n : {1, 2, 4}) EXPECT_TRUE(this->IsRefused(StreamOf(NCDataVector<Other>(n, Other(1)))));
}

TYPED_TEST(NCDataVectorStream, CountsTheCellsWhateverTheStreamSays) {
  for (int count : {0, 3, 4, -1, 2147483647}) {
    NCDataVector<TypeParam> v;
    ASSERT_TRUE(this->ReadInto(&v, this->NewStream(4, count, this->Table())));
    EXPECT_EQ(v.GetNumMisVal(), 1);
    ASSERT_TRUE(this->ReadInto(&v, this->OldStream(1, 4, count, this->Table())));
    EXPECT_EQ(v.GetNumMisVal(), 1);
  }
}

TYPED_TEST(NCDataVectorStream, AVectorWithALowCountReadsBackWithTheRightOne) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2}), back;
  v.TransformTo_Sub_d_x_Vt(1.0L, VectorOf<TypeParam>({-99, 1}));
  ASSERT_EQ(v.GetNumMisVal(), 0);
  ASSERT_TRUE(this->ReadInto(&back, StreamOf(v)));
  EXPECT_EQ(back.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorStream, RefusesALieAboutItsSize) {
  for (int size : {-1, 0, 3, 5, 1 << 30, 2147483647, -2147483647 - 1})
    EXPECT_TRUE(this->IsRefused(this->NewStream(size, 1, this->Table()))) << size;
  // Without a directory nothing says where the cells end: a smaller size leaves bytes to whoever reads next.
  for (int size : {-1, 5, 1 << 30, 2147483647, -2147483647 - 1})
    EXPECT_TRUE(this->IsRefused(this->OldStream(3, size, 1, this->Table()))) << size;
}

TYPED_TEST(NCDataVectorStream, RefusesADirectoryWithoutAnEntryThatItNeeds) {
  const int size = 1;
  const auto first = [&](OutputStreamDirectory& d) { WriteFourBytes(&size, 1, d.GetOutput(0)); };
  const auto both = [&](OutputStreamDirectory& d) {
    WriteFourBytes(&size, 1, d.GetOutput(0));
    WriteFourBytes(&size, 1, d.GetOutput(1));
  };
  EXPECT_TRUE(this->IsRefused(this->Directory(0, [](OutputStreamDirectory&) {})));
  EXPECT_TRUE(this->IsRefused(this->Directory(1, first)));
  EXPECT_TRUE(this->IsRefused(this->Directory(2, first)));
  EXPECT_TRUE(this->IsRefused(this->Directory(2, both)));
}

TYPED_TEST(NCDataVectorStream, PassesOverEntriesOfLaterVersionsOfItself) {
  const std::string bytes = this->Directory(5, [](OutputStreamDirectory& d) {
    const int size = 1, count = 0;
    const TypeParam cell = 6;
    WriteFourBytes(&size, 1, d.GetOutput(0));
    WriteFourBytes(&count, 1, d.GetOutput(1));
    WriteArray(&cell, 1, sizeof cell, d.GetOutput(2));
    WriteBinaryString("of the future", d.GetOutput(4));
  });
  NCDataVector<TypeParam> v;
  ASSERT_TRUE(this->ReadInto(&v, bytes));
  EXPECT_THAT(v, ElementsAre(6));
}

TYPED_TEST(NCDataVectorStream, IsWrittenOnceInAPass) {
  typename TestFixture::Open v(2, TypeParam(1));
  std::stringstream stream;
  v.VexStreamableReset();
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_TRUE(v.streamVisited);
  const std::string once = stream.str();
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once);
  v.VexStreamableReset();
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once + once);
}

TYPED_TEST(NCDataVectorStream, IsReadOnceInAPass) {
  typename TestFixture::Open v;
  std::stringstream stream;
  stream << this->Table() << VectorOf<TypeParam>({5});
  v.VexStreamableReset();
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_EQ(v.Size(), 4);
  v.VexStreamableReset();
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_EQ(v.Size(), 1);
}

TYPED_TEST(NCDataVectorStream, FailsOnAStreamThatFails) {
  std::ostringstream stream;
  stream.setstate(std::ios_base::badbit);
  EXPECT_FALSE(stream << this->Table());
}

TYPED_TEST(NCDataVectorStream, StandsEveryCut) {
  this->Attacks().EveryCut(StreamOf(this->Table()));
  for (short version : {1, 2, 3}) this->Attacks().EveryCut(this->OldStream(version, 4, 1, this->Table()));
}

TYPED_TEST(NCDataVectorStream, StandsEveryBitTurned) {
  this->Attacks().EveryBitFlip(StreamOf(this->Table()));
  for (short version : {1, 2, 3}) this->Attacks().EveryBitFlip(this->OldStream(version, 4, 1, this->Table()));
}

TYPED_TEST(NCDataVectorStream, StandsEveryNumberOverwritten) {
  this->Attacks().EveryNumber(StreamOf(this->Table()));
  for (short version : {1, 2, 3}) this->Attacks().EveryNumber(this->OldStream(version, 4, 1, this->Table()));
}

TYPED_TEST(NCDataVectorStream, TakesNoMoreMemoryForALargeVectorThanItsBound) {
  // Large enough that a copy of the cells in each layer of the reading would be seen beside the fixed allowance.
  const std::string bytes = StreamOf(RandomVector<TypeParam>(200000, 0.1, 1));
  EXPECT_TRUE(this->Attacks().Read(bytes));
}

}  // namespace
