#include <gtest/gtest.h>

#include <sstream>
#include <typeinfo>

#include "kalmia/support/VexStream.h"
#include "testing/StreamAttacks.h"

namespace {

/// The smallest persistent class: a list of numbers, one directory entry.
class Numbers : public VexStreamBase {
 public:
  static VexStreamableData MyStreamableData;
  std::vector<int> cells;
  mutable bool streamVisited = false;
  bool failNextWrite = false;

  using VexStreamBase::VexStreamableReset;
  bool VexStreamableStartWrite(std::ostream& stream) override {
    if (streamVisited) return true;
    streamVisited = true;
    return MyStreamableData.Write(stream) && VexStreamBase::VexStreamableStartWrite(stream) && WriteCells(stream);
  }
  bool VexStreamableStartRead(std::istream& stream) override {
    if (streamVisited) return true;
    streamVisited = true;
    return MyStreamableData.Check(stream) && ReadCells(stream);
  }
  void VexStreamableReset() override { streamVisited = false; }

 private:
  bool WriteCells(std::ostream& stream) {
    const int count = static_cast<int>(cells.size());
    OutputStreamDirectory directory(stream, 2);
    WriteFourBytes(&count, 1, directory.GetOutput(0));
    WriteArray(cells.data(), count, sizeof(int), directory.GetOutput(1));
    directory.Close();
    return stream.good() && !failNextWrite;
  }
  bool ReadCells(std::istream& stream) {
    cells.clear();
    if (MyStreamableData.GetVexStreamVersionNumber() != 3) return false;
    InputStreamDirectory directory(stream);
    int count = 0;
    if (!ReadFromStreamDir(count, directory, 0, /*must=*/false)) return false;
    std::istream* entry = directory.GetInput(1);
    return entry && kalmia::ReadCells(*entry, count, cells);
  }
};
VexStreamableData Numbers::MyStreamableData(3, "Numbers");

VexStreamBase* MakeNumbers() { return new Numbers; }

std::string Magic(const char* magic, std::uint16_t version) {
  std::ostringstream out;
  WriteBinaryString(magic, out);
  WriteTwoBytes(&version, 1, out);
  return out.str();
}

TEST(VexStreamableData, WritesMagicAndVersion) {
  std::ostringstream out;
  EXPECT_TRUE(VexStreamableData(258, "NCDV").Write(out));
  EXPECT_EQ(out.str(), std::string("\x04\0\0\0NCDV\x02\x01", 10));
}

TEST(VexStreamableData, KeepsTheVersionItFinds) {
  VexStreamableData data(4, "NCDV");
  EXPECT_EQ(data.GetMyVexStreamVersionNumber(), 4);
  for (const int version : {0, 1, 7, 32767, -1, -32768}) {
    std::istringstream in(Magic("NCDV", static_cast<std::uint16_t>(version)));
    EXPECT_TRUE(data.Check(in));
    EXPECT_EQ(data.GetVexStreamVersionNumber(), version);
    EXPECT_EQ(data.GetMyVexStreamVersionNumber(), 4);
  }
}

TEST(VexStreamableData, ChangesNothingOnAnotherMagic) {
  VexStreamableData data(4, "NCDV");
  std::istringstream good(Magic("NCDV", 2));
  ASSERT_TRUE(data.Check(good));
  const std::string others[] = {Magic("NCDM", 9), Magic("NCD", 9),  Magic("NCDVX", 9),         Magic("ncdv", 9),
                                Magic("", 9),     std::string(), Magic("NCDV", 9).substr(0, 9), "\xFF\xFF\xFF\xFF"};
  for (const std::string& bytes : others) {
    SCOPED_TRACE(bytes);
    std::istringstream in(bytes);
    EXPECT_FALSE(data.Check(in));
    EXPECT_EQ(data.GetVexStreamVersionNumber(), 2);
  }
}

TEST(VexStreamLight, WritesAndChecksTheSameBytes) {
  std::ostringstream out;
  EXPECT_TRUE(VexStreamLight::WriteMagicStringAndVersionNumber(out, 65535, "Light"));
  EXPECT_EQ(out.str(), Magic("Light", 65535));
  std::istringstream in(out.str());
  unsigned short version = 7;
  EXPECT_TRUE(VexStreamLight::CheckMagicStringAndVersionNumber(in, version, "Light"));
  EXPECT_EQ(version, 65535);
}

TEST(VexStreamLight, LeavesTheVersionOnAnotherMagic) {
  std::istringstream in(Magic("Dark", 3));
  unsigned short version = 7;
  EXPECT_FALSE(VexStreamLight::CheckMagicStringAndVersionNumber(in, version, "Light"));
  EXPECT_EQ(version, 7);
}

TEST(VexStreamBase, WritesNoBytesOfItsOwn) {
  std::ostringstream out;
  EXPECT_TRUE(out << VexStreamBase());
  EXPECT_EQ(out.str(), "");
  std::istringstream in("");
  VexStreamBase base;
  EXPECT_TRUE(in >> base);
}

TEST(VexStreamBase, IsWrittenOnceInAPassAndAgainInTheNext) {
  Numbers numbers;
  numbers.cells = {1, 2};
  std::ostringstream out;
  out << numbers;
  const std::string once = out.str();
  EXPECT_TRUE(numbers.VexStreamableStartWrite(out)) << "visited already: nothing is written, and that is success";
  EXPECT_EQ(out.str(), once);
  out << numbers;
  EXPECT_EQ(out.str(), once + once);
}

TEST(VexStreamBase, SetsTheFailBitWhereAWriteOrReadReturnsFalse) {
  Numbers numbers;
  numbers.failNextWrite = true;
  std::ostringstream out;
  EXPECT_FALSE(out << numbers);
  std::istringstream in(Magic("Letters", 3));
  EXPECT_FALSE(in >> numbers);
  EXPECT_TRUE(in.fail());
  std::istringstream newer(Magic("Numbers", 4));
  EXPECT_FALSE(newer >> numbers);
}

TEST(VexStreamBase, IsWrittenToAndReadFromAnEntry) {
  Numbers numbers;
  numbers.cells = {7, -8, 9};
  std::ostringstream out;
  OutputStreamDirectory writer(out, 2);
  writer.GetOutput(1) << numbers;
  writer.Close();
  std::istringstream in(out.str());
  InputStreamDirectory reader(in);
  Numbers back;
  EXPECT_TRUE(ReadFromStreamDir(back, reader, 1, /*must=*/true));
  EXPECT_EQ(back.cells, numbers.cells);
  EXPECT_FALSE(ReadFromStreamDir(back, reader, 2, /*must=*/false));
  try {
    ReadFromStreamDir(back, reader, 2, /*must=*/true);
    FAIL() << "no exception";
  } catch (const VexStreamError& error) {
    EXPECT_STREQ(error.GetMessage(), "ReadFromStreamDir failed");
  }
  EXPECT_FALSE(ReadFromStreamDir(back, reader, 0, /*must=*/false)) << "there, but empty";
}

TEST(VexStreamBase, InAnEntryThatDoesNotReadIsAnErrorWhereItMustBeThere) {
  std::istringstream in(std::string("\x01\0\x01\0\0\0\0\0\0\0x", 11));
  InputStreamDirectory directory(in);
  Numbers numbers;
  try {
    ReadFromStreamDir(numbers, directory, 0, /*must=*/true);
    FAIL() << "no exception";
  } catch (const VexStreamError& error) {
    EXPECT_STREQ(error.GetMessage(), "Error when reading from stream");
  }
}

TEST(VexStreamBase, WithstandsCutsAndTurnedBits) {
  Numbers numbers;
  numbers.cells = {1, 20, 300, 4000};
  StreamAttacks<Numbers> attacks;
  attacks.refused = [](const Numbers& left) { EXPECT_TRUE(left.cells.empty()); };
  attacks.EveryCut(StreamOf(numbers));
  attacks.EveryBitFlip(StreamOf(numbers));
  attacks.EveryNumber(StreamOf(numbers));
}

TEST(VexStreamError, MayBeWithoutAMessage) {
  EXPECT_STREQ(VexStreamError().GetMessage(), "");
  try {
    throw VexStreamError("text");
  } catch (const Exception& error) {
    EXPECT_STREQ(error.GetMessage(), "text");
  }
}

TEST(ClassCreatorRegistrator, CreatesByPlainName) {
  const ClassCreatorRegistrator registration(typeid(Numbers).name(), "Numbers", &MakeNumbers);
  const std::unique_ptr<VexStreamBase> object(ClassCreatorRegistrator::Create("Numbers"));
  EXPECT_NE(dynamic_cast<Numbers*>(object.get()), nullptr);
  EXPECT_STREQ(ClassCreatorRegistrator::NameOf(*object), "Numbers");
}

TEST(ClassCreatorRegistrator, KnowsNothingOfOtherNames) {
  EXPECT_EQ(ClassCreatorRegistrator::Create("numbers"), nullptr);
  EXPECT_EQ(ClassCreatorRegistrator::Create(nullptr), nullptr);
  EXPECT_EQ(ClassCreatorRegistrator::NameOf(VexStreamBase()), nullptr);
}

}  // namespace
