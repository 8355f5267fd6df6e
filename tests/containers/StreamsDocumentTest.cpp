#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "kalmia/containers/NCDataVector.h"
#include "testing/StreamAttacks.h"

namespace {

/// The bytes of the block of hexadecimal lines under "A worked example": each line has its bytes in front, in the width
/// of twelve of them, and words behind.
std::string WorkedExample(std::istream& document) {
  std::string line, bytes;
  while (std::getline(document, line) && line != "## A worked example") continue;
  while (std::getline(document, line) && line != "```text") continue;
  while (std::getline(document, line) && line != "```") {
    std::istringstream in(line.substr(0, 38));
    for (unsigned byte; in >> std::hex >> byte;) bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

TEST(StreamsDocument, ShowsTheBytesThatTheLibraryWrites) {
  std::ifstream document(KALMIA_DATA_DIR "/../../docs/streams.md");
  ASSERT_TRUE(document);
  const float cells[] = {1.5f, -99.0f, 3.0f};
  NCDataVector<float> v;
  v.CopyZeroBasedVector(cells, 3);
  EXPECT_EQ(WorkedExample(document), StreamOf(v));
}

}  // namespace
