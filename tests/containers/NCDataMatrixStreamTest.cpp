#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/OddBuffers.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

// The stream form of the data matrix, in all its versions, and what damaged forms come to.

namespace {

void WriteInt(std::ostream& stream, int value) { ASSERT_TRUE(WriteFourBytes(&value, 1, stream)); }

/// What the stream of version 4 says, true or not.
template <class T>
struct Claim {
  int rows, columns, missing;
  std::vector<NCDataVector<T>> written;  ///< the rows that are really there
  NCIntegralVector<int, -99> counts;
  unsigned short entries = 5;
  std::string behindRows{}, behindCounts{};  ///< bytes that nothing promises
};

template <class T>
Claim<T> TruthAbout(const NCDataMatrix<T>& m) {
  Claim<T> claim{m.SizeRows(), m.SizeColumns(), m.GetNumMisVal(), {m.begin(), m.end()}, {}};
  for (int c = 1; c <= m.SizeColumns(); ++c) claim.counts.push_back(m.GetColumnMisVal(c));
  return claim;
}

/// A row in a form without a directory.
template <class T>
void WriteOldRow(std::ostream& stream, const NCDataVector<T>& row, short version) {
  VexStreamableData(version, "NCDV").Write(stream);
  if (version == 2) WriteBinaryString("", stream);
  WriteInt(stream, row.Size());
  WriteInt(stream, row.GetNumMisVal());
  WriteArray(row.begin(), row.Size(), sizeof(T), stream);
}

/// Rows in the old form `oldRows`, or of today where that is 0.
template <class T>
std::string StreamOf(const Claim<T>& claim, short version = 4, short oldRows = 0) {
  std::ostringstream stream;
  VexStreamableData(version, "NCDM").Write(stream);
  OutputStreamDirectory directory(stream, claim.entries);
  const int fields[] = {claim.rows, claim.columns, claim.missing};
  for (unsigned short entry = 0; entry < 3 && entry < claim.entries; ++entry)
    WriteInt(directory.GetOutput(entry), fields[entry]);
  if (claim.entries > 3) {
    for (const auto& row : claim.written)
      if (oldRows > 0)
        WriteOldRow(directory.GetOutput(3), row, oldRows);
      else
        directory.GetOutput(3) << row;
    directory.GetOutput(3) << claim.behindRows;
  }
  if (claim.entries > 4) directory.GetOutput(4) << claim.counts << claim.behindCounts;
  directory.Close();
  return stream.str();
}

/// The forms without a directory, rows and counts as objects; rows of the same old form if `oldRows`.
template <class T>
std::string OldStreamOf(const Claim<T>& claim, short version, bool oldRows = true) {
  std::ostringstream stream;
  VexStreamableData(version, "NCDM").Write(stream);
  if (version == 2) WriteBinaryString("a name", stream);
  for (const int field : {claim.rows, claim.columns, claim.missing}) WriteInt(stream, field);
  for (const auto& row : claim.written)
    if (oldRows)
      WriteOldRow(stream, row, version);
    else
      stream << row;
  stream << claim.counts;
  return stream.str();
}

enum class Outcome { Accepted, FalseRead, ThrownError };

/// Reads into a table that holds something already; whatever is refused has to leave an empty table that works.
template <class T>
Outcome Read(const std::string& bytes, NCDataMatrix<T>& m, std::string* message = nullptr) {
  m = NCDataMatrix<T>(2, 2, 1);
  std::istringstream stream(bytes);
  Outcome outcome = Outcome::ThrownError;
  try {
    outcome = stream >> m ? Outcome::Accepted : Outcome::FalseRead;
  } catch (const VexStreamError& error) {
    if (message) *message = static_cast<const char*>(error.GetMessage());
  }
  if (outcome != Outcome::Accepted) {
    EXPECT_EQ(m.SizeRows(), 0);
    EXPECT_EQ(m.SizeColumns(), 0);
    EXPECT_EQ(m.GetNumMisVal(), 0);
    m.push_back(NCDataVector<T>(3, 1));
    EXPECT_EQ(m.SizeColumns(), 3);
  }
  return outcome;
}

template <class T>
class NCDataMatrixStream : public ::testing::Test {
 protected:
  static constexpr T kGap = kHole<T>;

  static StreamAttacks<NCDataMatrix<T>> Attacks(bool mayThrow) {
    StreamAttacks<NCDataMatrix<T>> attacks;
    attacks.mayThrow = mayThrow;
    attacks.accepted = [](const NCDataMatrix<T>& m) { EXPECT_TRUE(HasExactCounts(m)); };
    attacks.refused = [](const NCDataMatrix<T>& m) {
      EXPECT_EQ(m.SizeRows(), 0);
      EXPECT_EQ(m.SizeColumns(), 0);
      EXPECT_EQ(m.begin(), m.end());
    };
    return attacks;
  }

  NCDataMatrix<T> table_ = MatrixOf<T>({{1, kGap, 3}, {T(-0.1), 5, 6}});
};
TYPED_TEST_SUITE(NCDataMatrixStream, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixStream, ReadsBackTheBytesOfEveryCell) {
  this->table_(2, 1, std::numeric_limits<TypeParam>::quiet_NaN());
  this->table_(2, 2, -std::numeric_limits<TypeParam>::infinity());
  this->table_(2, 3, std::numeric_limits<TypeParam>::denorm_min());
  NCDataMatrix<TypeParam> m;
  ASSERT_EQ(Read(StreamOf(this->table_), m), Outcome::Accepted);
  EXPECT_TRUE(m == this->table_);
  EXPECT_EQ(m.SizeRows(), 2);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixStream, WritesADirectoryOfFiveEntries) {
  EXPECT_EQ(StreamOf(this->table_), StreamOf(TruthAbout(this->table_)));
}

TYPED_TEST(NCDataMatrixStream, ReadsBackTablesWithoutRowsOrColumns) {
  const int sizes[][2] = {{0, 0}, {0, 3}, {3, 0}};
  for (const auto& [rows, columns] : sizes) {
    SCOPED_TRACE(std::to_string(rows) + " by " + std::to_string(columns));
    NCDataMatrix<TypeParam> m;
    ASSERT_EQ(Read(StreamOf(NCDataMatrix<TypeParam>(rows, columns)), m), Outcome::Accepted);
    EXPECT_EQ(m.SizeRows(), rows);
    EXPECT_EQ(m.SizeColumns(), columns);
    EXPECT_TRUE(HasExactCounts(m));
    if (rows == 0) {
      EXPECT_EQ(m.begin(), nullptr) << "no row array";
    }
    m.Resize(4, 4);
    EXPECT_TRUE(HasExactCounts(m));
  }
}

TYPED_TEST(NCDataMatrixStream, HasNoCellsWhereThereAreNoRows) {
  std::istringstream stream(StreamOf(NCDataMatrix<TypeParam>(0, 3)));
  VexStreamableData magic(4, "NCDM");
  ASSERT_TRUE(magic.Check(stream));
  InputStreamDirectory directory(stream);
  ASSERT_NE(directory.GetInput(1), nullptr);
  EXPECT_EQ(directory.GetInput(3), nullptr);
  EXPECT_EQ(directory.GetInput(5), nullptr);
}

TYPED_TEST(NCDataMatrixStream, LeavesTheStreamBehindItself) {
  std::stringstream stream;
  stream << this->table_ << this->table_;
  NCDataMatrix<TypeParam> first, second;
  stream >> first >> second;
  EXPECT_TRUE(stream.good());
  EXPECT_TRUE(second == this->table_);
  EXPECT_EQ(second.SizeRows(), 2);
}

TYPED_TEST(NCDataMatrixStream, IsReadFromBuffersThatDoNotSeekOrKnowOffsetsAlone) {
  const auto m = RandomMatrix<TypeParam>(40, 30, 0.1, 1);
  const auto expectReadFrom = [&m](std::streambuf&& buffer) {
    std::istream stream(&buffer);
    NCDataMatrix<TypeParam> read;
    EXPECT_TRUE(stream >> read);
    EXPECT_EQ(CellsOf(read), CellsOf(m));
    EXPECT_EQ(stream.get(), 'x') << "it stands behind the table";
  };
  const std::string bytes = StreamOf(m) + "x";
  expectReadFrom(PipeBuffer(bytes));
  expectReadFrom(ThrowingBuffer(bytes));
  expectReadFrom(TellingBuffer(bytes));
  expectReadFrom(QuietBuffer(bytes));
  expectReadFrom(RunningBuffer(bytes));
  expectReadFrom(OffsetBuffer(bytes));
}

TYPED_TEST(NCDataMatrixStream, OldFormsLeaveTheStreamBehindThemselves) {
  for (short version = 1; version <= 3; ++version) {
    SCOPED_TRACE("version " + std::to_string(version));
    std::istringstream stream(OldStreamOf(TruthAbout(this->table_), version) + StreamOf(this->table_) + "end");
    NCDataMatrix<TypeParam> first, second;
    stream >> first >> second;
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(CellsOf(first), CellsOf(this->table_));
    EXPECT_EQ(CellsOf(second), CellsOf(this->table_));
    std::string rest;
    stream >> rest;
    EXPECT_EQ(rest, "end");
  }
}

TYPED_TEST(NCDataMatrixStream, GrowsAfterItWasRead) {
  NCDataMatrix<TypeParam> m;
  ASSERT_EQ(Read(StreamOf(this->table_), m), Outcome::Accepted);
  for (int i = 0; i < 9; ++i) m.push_back(m[1]);
  m.InsertColumns(2, 9);
  EXPECT_EQ(m.SizeRows(), 11);
  EXPECT_TRUE(HasExactCounts(m));
  EXPECT_EQ(m[11][12], 3);
}

TYPED_TEST(NCDataMatrixStream, AReadDropsTheTargetsThatWereNamed) {
  for (const std::string& bytes : {StreamOf(this->table_), OldStreamOf(TruthAbout(this->table_), 1)}) {
    NCDataMatrix<TypeParam> m, matrixTarget;
    NCDataVector<TypeParam> vectorTarget(2, 7);
    m.Result(&vectorTarget).Result(&matrixTarget);
    std::istringstream stream(bytes);
    ASSERT_TRUE(stream >> m);
    EXPECT_EQ(CellsOf(m.GetColumn(3)), (std::vector<TypeParam>{3, 6}));
    EXPECT_EQ(CellsOf(vectorTarget), (std::vector<TypeParam>{7, 7}));
    MatrixDestroyer<TypeParam> holder;
    m.GetReturnMatrix(holder, 1, 1);
    EXPECT_TRUE(holder.owner);
  }
}

TYPED_TEST(NCDataMatrixStream, ReadsADirectoryOfRowsInAnOldForm) {
  for (short version = 1; version <= 3; ++version) {
    SCOPED_TRACE("version " + std::to_string(version));
    NCDataMatrix<TypeParam> m;
    ASSERT_EQ(Read(StreamOf(TruthAbout(this->table_), 4, version), m), Outcome::Accepted);
    EXPECT_EQ(CellsOf(m), CellsOf(this->table_));
    EXPECT_TRUE(HasExactCounts(m));
  }
}

TYPED_TEST(NCDataMatrixStream, LeavesTheTwinOfWhatItReadsIntoAlone) {
  NCDataMatrix<TypeParam> m(this->table_);
  std::istringstream stream(StreamOf(NCDataMatrix<TypeParam>(1, 1, 8)));
  stream >> m;
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{8}}));
  EXPECT_EQ(this->table_.SizeRows(), 2);
}

TYPED_TEST(NCDataMatrixStream, ReadsTheOldForms) {
  for (short version = 1; version <= 3; ++version)
    for (const bool oldRows : {true, false}) {
      SCOPED_TRACE("version " + std::to_string(version));
      NCDataMatrix<TypeParam> m;
      ASSERT_EQ(Read(OldStreamOf(TruthAbout(this->table_), version, oldRows), m), Outcome::Accepted);
      EXPECT_EQ(CellsOf(m), CellsOf(this->table_));
      EXPECT_TRUE(HasExactCounts(m));
      for (int i = 0; i < 9; ++i) m.push_back(m[1]);
      EXPECT_TRUE(HasExactCounts(m));
    }
}

TYPED_TEST(NCDataMatrixStream, ReadsOldFormsWithoutRowsOrColumns) {
  const int sizes[][2] = {{0, 0}, {0, 3}, {3, 0}};
  for (const auto& [rows, columns] : sizes) {
    NCDataMatrix<TypeParam> m;
    const auto claim = TruthAbout(NCDataMatrix<TypeParam>(rows, columns));
    ASSERT_EQ(Read(OldStreamOf(claim, 1), m), Outcome::Accepted);
    EXPECT_EQ(m.SizeRows(), rows);
    EXPECT_EQ(m.SizeColumns(), columns);
  }
}

TYPED_TEST(NCDataMatrixStream, KnowsTheVersionItReadAndTheVersionItWrites) {
  NCDataMatrix<TypeParam> m;
  Read(OldStreamOf(TruthAbout(this->table_), 2), m);
  EXPECT_EQ(m.GetVexStreamVersionNumber(), 2);
  EXPECT_EQ(m.GetMyVexStreamVersionNumber(), 4);
}

TYPED_TEST(NCDataMatrixStream, RefusesVersionsItDoesNotKnow) {
  for (const short version : {0, 5, -1}) {
    NCDataMatrix<TypeParam> m;
    EXPECT_EQ(Read(StreamOf(TruthAbout(this->table_), version), m), Outcome::FalseRead) << version;
  }
}

TYPED_TEST(NCDataMatrixStream, ChangesNothingWhereTheMagicIsAnother) {
  std::istringstream stream(StreamOf(NCDataVector<TypeParam>(3)));
  const auto before = CellsOf(this->table_);
  EXPECT_FALSE(stream >> this->table_);
  EXPECT_EQ(CellsOf(this->table_), before);
}

TYPED_TEST(NCDataMatrixStream, WritesOnceInAPass) {
  struct Reached : NCDataMatrix<TypeParam> {
    using NCDataMatrix<TypeParam>::VexStreamableStartWrite;
    using NCDataMatrix<TypeParam>::VexStreamableStartRead;
    using NCDataMatrix<TypeParam>::VexStreamableReset;
  } m;
  std::stringstream stream;
  m.VexStreamableReset();
  EXPECT_TRUE(m.VexStreamableStartWrite(stream));
  EXPECT_TRUE(m.streamVisited);
  const std::string once = stream.str();
  EXPECT_TRUE(m.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once);
  EXPECT_TRUE(m.VexStreamableStartRead(stream)) << "visited: nothing is read";
  EXPECT_EQ(stream.tellg(), std::streampos(0));
  m.VexStreamableReset();
  EXPECT_FALSE(m.streamVisited);
}

TYPED_TEST(NCDataMatrixStream, AFailedStreamFailsTheWrite) {
  std::ostringstream stream;
  stream.setstate(std::ios_base::badbit);
  EXPECT_FALSE(stream << this->table_);
}

TYPED_TEST(NCDataMatrixStream, RefusesBytesBehindTheRowsOrTheColumnCounts) {
  for (const unsigned short entry : {3, 4})
    for (const std::string& surplus : {std::string(1, '\0'), StreamOf(this->table_[1])}) {
      SCOPED_TRACE(std::to_string(surplus.size()) + " bytes more in entry " + std::to_string(entry));
      auto claim = TruthAbout(this->table_);
      (entry == 3 ? claim.behindRows : claim.behindCounts) = surplus;
      NCDataMatrix<TypeParam> m;
      std::string message;
      EXPECT_EQ(Read(StreamOf(claim), m, &message), Outcome::ThrownError);
      EXPECT_EQ(message, "Error when reading from stream");
    }
}

TYPED_TEST(NCDataMatrixStream, CountsHolesInTheCellsWhateverTheStreamSays) {
  auto claim = TruthAbout(this->table_);
  claim.missing = -7;
  claim.counts(1) = 1000000;
  claim.counts(2) = 0;
  for (const std::string& bytes : {StreamOf(claim), OldStreamOf(claim, 1)}) {
    NCDataMatrix<TypeParam> m;
    ASSERT_EQ(Read(bytes, m), Outcome::Accepted);
    EXPECT_EQ(CellsOf(m), CellsOf(this->table_));
    EXPECT_TRUE(HasExactCounts(m));
  }
}

TYPED_TEST(NCDataMatrixStream, ReadsBackATableThatWasLawfullyWrittenWithLowCounts) {
  auto m = MatrixOf<TypeParam>({{-98, 2}});
  m.TransformToDotSubRowVector(VectorOf<TypeParam>({1, 1}));  // makes a hole and does not count it
  ASSERT_FALSE(HasExactCounts(m));
  NCDataMatrix<TypeParam> back;
  ASSERT_EQ(Read(StreamOf(m), back), Outcome::Accepted);
  EXPECT_EQ(CellsOf(back), (Table<TypeParam>{{this->kGap, 1}}));
  EXPECT_TRUE(HasExactCounts(back));
}

template <class T>
struct Lie {
  const char* what;
  std::function<void(Claim<T>&)> tell;
};

template <class T>
std::vector<Lie<T>> Lies() {
  using C = Claim<T>;
  return {{"a negative number of rows", [](C& c) { c.rows = -1; }},
          {"a negative number of columns", [](C& c) { c.columns = -3; }},
          {"both negative", [](C& c) { c.rows = c.columns = std::numeric_limits<int>::min(); }},
          {"one row more than there is", [](C& c) { ++c.rows; }},
          {"one row less than there is", [](C& c) { --c.rows; }},
          {"no row, although there are cells", [](C& c) { c.rows = 0; }},
          {"as many rows as an int can hold", [](C& c) { c.rows = std::numeric_limits<int>::max(); }},
          {"one column more than there is", [](C& c) { ++c.columns; }},
          {"one column less than there is", [](C& c) { --c.columns; }},
          {"rows times columns beyond 32 bits", [](C& c) { c.rows = c.columns = 65536; }},
          {"one cell more than a table holds",
           [](C& c) {
             c.rows = 65536;
             c.columns = 32768;
           }},
          {"columns without end and no row",
           [](C& c) {
             c.rows = 0;
             c.columns = std::numeric_limits<int>::max();
             c.written.clear();
           }},
          {"rows without columns that are not there",
           [](C& c) {
             c.rows = 1000000;
             c.columns = 0;
             c.written.clear();
             c.counts.Clear();
           }},
          {"rows without columns that have cells",
           [](C& c) {
             c.columns = 0;
             c.counts.Clear();
           }},
          {"a longer row", [](C& c) { c.written[1].push_back(1); }},
          {"a shorter row", [](C& c) { c.written[0].RemoveValues(1, 1); }},
          {"one column count more", [](C& c) { c.counts.push_back(0); }},
          {"one column count less", [](C& c) { c.counts.RemoveValues(1, 1); }},
          {"no column counts", [](C& c) { c.counts.Clear(); }}};
}

TYPED_TEST(NCDataMatrixStream, RefusesALieInADirectoryByAnError) {
  for (const auto& lie : Lies<TypeParam>()) {
    SCOPED_TRACE(lie.what);
    auto claim = TruthAbout(this->table_);
    lie.tell(claim);
    NCDataMatrix<TypeParam> m;
    std::string message;
    EXPECT_EQ(Read(StreamOf(claim), m, &message), Outcome::ThrownError);
    EXPECT_EQ(message, "Error when reading from stream");
    EXPECT_FALSE(this->Attacks(/*mayThrow=*/true).Read(StreamOf(claim)));
  }
}

TYPED_TEST(NCDataMatrixStream, RefusesALieInAnOldFormByAFalseRead) {
  for (const auto& lie : Lies<TypeParam>())
    for (short version = 1; version <= 3; ++version) {
      SCOPED_TRACE(lie.what + std::string(", version ") + std::to_string(version));
      auto claim = TruthAbout(this->table_);
      lie.tell(claim);
      NCDataMatrix<TypeParam> m;
      EXPECT_EQ(Read(OldStreamOf(claim, version), m), Outcome::FalseRead);
      EXPECT_FALSE(this->Attacks(/*mayThrow=*/false).Read(OldStreamOf(claim, version)));
    }
}

TYPED_TEST(NCDataMatrixStream, RefusesADirectoryThatEndsTooEarly) {
  const char* const absent = "ReadFromStreamDir failed";
  const char* const messages[] = {absent, absent, absent, "", absent};
  for (unsigned short entries = 0; entries < 5; ++entries) {
    SCOPED_TRACE(entries);
    auto claim = TruthAbout(this->table_);
    claim.entries = entries;
    NCDataMatrix<TypeParam> m;
    std::string message;
    EXPECT_EQ(Read(StreamOf(claim), m, &message), Outcome::ThrownError);
    EXPECT_EQ(message, messages[entries]);
  }
}

TYPED_TEST(NCDataMatrixStream, ReadsADirectoryWithEntriesOfALaterTime) {
  auto claim = TruthAbout(this->table_);
  claim.entries = 7;
  NCDataMatrix<TypeParam> m;
  ASSERT_EQ(Read(StreamOf(claim), m), Outcome::Accepted);
  EXPECT_EQ(CellsOf(m), CellsOf(this->table_));
}

TYPED_TEST(NCDataMatrixStream, ACutStreamIsAnErrorOfReading) {
  const std::string bytes = StreamOf(this->table_);
  const std::size_t magic = StreamOf(Claim<TypeParam>{0, 0, 0, {}, {}, 0}).size() - 2;  // an empty directory is a 0
  for (std::size_t length = magic; length < bytes.size(); ++length) {
    NCDataMatrix<TypeParam> m;
    std::string message;
    EXPECT_EQ(Read(bytes.substr(0, length), m, &message), Outcome::ThrownError) << length;
    EXPECT_EQ(message, "Error when reading from stream") << length;
  }
}

TYPED_TEST(NCDataMatrixStream, NoticesCellsOfTheOtherType) {
  using Other = std::conditional_t<std::is_same_v<TypeParam, float>, double, float>;
  NCDataMatrix<TypeParam> m;
  EXPECT_EQ(Read(StreamOf(NCDataMatrix<Other>(3, 4, 1)), m), Outcome::ThrownError);
  EXPECT_EQ(Read(OldStreamOf(TruthAbout(NCDataMatrix<Other>(3, 4, 1)), 1), m), Outcome::FalseRead);
}

TYPED_TEST(NCDataMatrixStream, WithstandsCutsFlipsAndFalseNumbers) {
  const auto tables = {this->table_, NCDataMatrix<TypeParam>(0, 3), NCDataMatrix<TypeParam>(3, 0)};
  for (const NCDataMatrix<TypeParam>& table : tables) {
    const auto attacks = this->Attacks(/*mayThrow=*/true);
    attacks.EveryCut(StreamOf(table));
    attacks.EveryBitFlip(StreamOf(table));
    attacks.EveryNumber(StreamOf(table));
  }
}

TYPED_TEST(NCDataMatrixStream, OldFormsWithstandCutsFlipsAndFalseNumbers) {
  // Turned bits can make version 4 of an old form.
  const auto attacks = this->Attacks(/*mayThrow=*/true);
  for (short version = 1; version <= 3; ++version) {
    SCOPED_TRACE("version " + std::to_string(version));
    const std::string bytes = OldStreamOf(TruthAbout(this->table_), version);
    attacks.EveryCut(bytes);
    attacks.EveryBitFlip(bytes);
    attacks.EveryNumber(bytes);
  }
}

TYPED_TEST(NCDataMatrixStream, TakesNoMoreMemoryForManySmallRowsThanForFewLargeOnes) {
  const int sizes[][2] = {{10000, 0}, {10000, 1}, {10000, 2}, {300, 300}, {1, 60000}, {0, 60000}};
  for (const auto& [rows, columns] : sizes) {
    SCOPED_TRACE(std::to_string(rows) + " by " + std::to_string(columns));
    const auto claim = TruthAbout(NCDataMatrix<TypeParam>(rows, columns, 1));
    EXPECT_TRUE(this->Attacks(/*mayThrow=*/false).Read(StreamOf(claim)));
    EXPECT_TRUE(this->Attacks(/*mayThrow=*/false).Read(OldStreamOf(claim, 1)));
    EXPECT_TRUE(this->Attacks(/*mayThrow=*/false).Read(StreamOf(claim, 4, /*oldRows=*/1)));
  }
}

}  // namespace
