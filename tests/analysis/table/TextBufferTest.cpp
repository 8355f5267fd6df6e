#include "kalmia/analysis/table/TextBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace kalmia::analysis {
namespace {

TEST(TextBuffer, KeepsItsBytesWhileItGrows) {
  TextBuffer text(std::string("begin"));
  for (std::size_t room = 8; room < (std::size_t{1} << 24U); room *= 2) {
    text.Reserve(room);
    ASSERT_EQ(text.FreeRoom(), room - text.Size());
    std::fill_n(text.Free(), text.FreeRoom(), 'x');
    text.Grow(text.FreeRoom());
  }
  EXPECT_EQ(text.View(), "begin" + std::string(text.Size() - 5, 'x'));
}

TEST(TextBuffer, IsEmptyOnceItIsMovedFrom) {
  TextBuffer text("a text");
  const TextBuffer taken = std::move(text);
  EXPECT_EQ(taken.View(), "a text");
  EXPECT_EQ(text.View(), "");
  EXPECT_EQ(text.FreeRoom(), 0U);
}

TEST(TextBuffer, KeepsItsBytesWhereThereIsNoMemoryForMore) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer ends the process where the system refuses memory";
#endif
  TextBuffer text("a text");
  EXPECT_THROW(text.Reserve(std::numeric_limits<std::size_t>::max() / 2), std::bad_alloc);
  EXPECT_EQ(text.View(), "a text");
}

}  // namespace
}  // namespace kalmia::analysis
