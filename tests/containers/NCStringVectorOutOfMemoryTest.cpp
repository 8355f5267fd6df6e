#include <gmock/gmock.h>

#include <functional>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "Texts.h"
#include "kalmia/containers/NCStringVector.h"
#include "testing/AllocationMeter.h"
#include "testing/Ints.h"
#include "testing/StreamAttacks.h"

// Each allocation of each operation fails once: std::bad_alloc comes out, the strings are as they were, nothing leaks.

namespace {

using ::testing::ElementsAre;

struct Operation {
  const char* name;
  std::function<void(NCStringVector&)> run;
};

/// Room for as many strings again, so that what is inserted moves the others within it.
NCStringVector Names() {
  NCStringVector v;
  v.Reserve(8);
  for (const char* name : {"d", "b", "c", "a"}) v.push_back(name);
  return v;
}

/// Whether the operation throws where its allocation number `which` fails; it has to, if it has that many.
bool ThrowsAt(int which, const Operation& operation, NCStringVector& v) {
  const FailAllocation failure(which);
  try {
    operation.run(v);
  } catch (const std::bad_alloc&) {
    EXPECT_TRUE(failure.HasFailed());
    return true;
  }
  EXPECT_FALSE(failure.HasFailed()) << "an allocation that failed is kept from the caller";
  return false;
}

void ExpectUnchangedByFailures(const Operation& operation, bool shared) {
  SCOPED_TRACE(std::string(operation.name) + (shared ? " of shared strings" : ""));
  int which = 1;
  for (bool thrown = true; thrown; ++which) {
    const PeakBytesDuring meter;
    {
      NCStringVector v = Names();
      const NCStringVector twin = shared ? v : NCStringVector();
      thrown = ThrowsAt(which, operation, v);
      if (thrown) {
        EXPECT_THAT(TextsOf(v), ElementsAre("d", "b", "c", "a")) << "allocation " << which;
      }
      if (shared) {
        EXPECT_THAT(TextsOf(twin), ElementsAre("d", "b", "c", "a")) << "allocation " << which;
      }
    }
    EXPECT_EQ(meter.GetLiveBytes(), 0) << "allocation " << which;
  }
  EXPECT_GT(which, 2) << "no allocation was there to fail";
}

TEST(NCStringVectorOutOfMemory, LeavesTheStringsAsTheyWere) {
  const NCStringVector other = Names();
  const NCIntegralVector<int, -99> indices = Ints({2, 3});
  std::vector<int> order;
  const std::vector<Operation> operations = {
      {"a write", [](NCStringVector& v) { v(2, "new"); }},
      {"Reserve", [](NCStringVector& v) { v.Reserve(50); }},
      {"push_back", [](NCStringVector& v) { v.push_back("new"); }},
      {"InsertStrings within the room", [](NCStringVector& v) { v.InsertStrings(2, 3, "new"); }},
      {"InsertStrings beyond the room", [](NCStringVector& v) { v.InsertStrings(2, 50, "new"); }},
      {"InsertStrings of one of its own", [](NCStringVector& v) { v.InsertStrings(2, 3, v[3]); }},
      {"Concat", [&](NCStringVector& v) { v.Concat(other); }},
      {"Concat of itself", [](NCStringVector& v) { v.Concat(v); }},
      {"SortedInsert", [](NCStringVector& v) { v.SortedInsert("bb", true, false); }},
      {"Remove", [&](NCStringVector& v) { v.Remove(indices); }},
      {"Reduce", [&](NCStringVector& v) { v.Reduce(indices); }},
      {"RemoveString", [](NCStringVector& v) { v.RemoveString("b", true); }},
      {"Sort", [](NCStringVector& v) { v.Sort(true, true, true); }},
      {"SortWithOriginalIndex", [&](NCStringVector& v) { v.SortWithOriginalIndex(true, true, order); }},
      {"Convert", [](NCStringVector& v) { NCStringVector::Convert(std::vector<CString>(2, "new"), v); }},
      {"ForceUnlink", [](NCStringVector& v) { v.ForceUnlink(); }},
      {"Clear", [](NCStringVector& v) { v.Clear(); }},
  };
  order.reserve(4);
  for (const Operation& operation : operations)
    for (const bool shared : {false, true}) ExpectUnchangedByFailures(operation, shared);
}

TEST(NCStringVectorOutOfMemory, OfARemovedRangeMattersOnlyToSharedStrings) {
  ExpectUnchangedByFailures({"RemoveStrings", [](NCStringVector& v) { v.RemoveStrings(2, 2); }}, /*shared=*/true);
}

TEST(NCStringVectorOutOfMemory, NeverLeavesHalfOfWhatWasRead) {
  const std::string bytes = StreamOf(Names());
  int which = 1;
  for (bool thrown = true; thrown; ++which) {
    std::istringstream stream(bytes);
    NCStringVector v = Names();
    thrown = ThrowsAt(which, {"read", [&stream](NCStringVector& read) { stream >> read; }}, v);
    const bool isEmptyOrWhole = v.empty() || TextsOf(v) == TextsOf(Names());
    EXPECT_TRUE(isEmptyOrWhole) << "allocation " << which;
  }
  EXPECT_GT(which, 5) << "a stream, its bytes, the texts, the strings";
}

}  // namespace
