#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/StreamAttacks.h"

// The first read of a program is held to the same memory as every other. This is a program of its own because nothing
// may have made a container before: the bytes are written by hand. Of the tests only the one that runs first meets a
// fresh program; the test runner starts the program anew for each.

namespace {

/// The record, then a directory with that many entries, filled by `fill(directory)`.
template <class Fill>
std::string Stream(const char* magic, short version, unsigned short entries, Fill fill) {
  std::ostringstream stream;
  VexStreamableData(version, magic).Write(stream);
  OutputStreamDirectory directory(stream, entries);
  fill(directory);
  directory.Close();
  return stream.str();
}

std::string OneCell() {
  return Stream("NCDV", 4, 3, [](OutputStreamDirectory& directory) {
    const int size = 1, count = 0;
    const float cell = 6;
    WriteFourBytes(&size, 1, directory.GetOutput(0));
    WriteFourBytes(&count, 1, directory.GetOutput(1));
    WriteArray(&cell, 1, sizeof cell, directory.GetOutput(2));
  });
}

std::string OneNumber(int number) {
  return Stream("NCIV", 4, 1, [number](OutputStreamDirectory& directory) {
    const int size = 1;
    WriteFourBytes(&size, 1, directory.GetOutput(0));
    WriteFourBytes(&number, 1, directory.GetOutput(0));
  });
}

/// Reads it at once: no twin, no second form of the stream, which a container made in between would warm.
template <class Object>
void ExpectReadWithinItsBound(const std::string& bytes) {
  std::istringstream stream(bytes);
  const PeakBytesDuring meter;
  Object object;
  const bool good = static_cast<bool>(stream >> object);
  EXPECT_LE(meter.GetBytes(), MemoryBound(bytes.size()));
  EXPECT_TRUE(good);
}

TEST(FirstRead, OfAVectorStaysWithinItsBound) { ExpectReadWithinItsBound<NCDataVector<float>>(OneCell()); }

TEST(FirstRead, OfAMatrixStaysWithinItsBound) {
  ExpectReadWithinItsBound<NCDataMatrix<float>>(Stream("NCDM", 4, 5, [](OutputStreamDirectory& directory) {
    const int one = 1, holes = 0;
    WriteFourBytes(&one, 1, directory.GetOutput(0));
    WriteFourBytes(&one, 1, directory.GetOutput(1));
    WriteFourBytes(&holes, 1, directory.GetOutput(2));
    directory.GetOutput(3) << OneCell();
    directory.GetOutput(4) << OneNumber(0);
  }));
}

}  // namespace
