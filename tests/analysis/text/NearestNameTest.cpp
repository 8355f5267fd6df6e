#include "kalmia/analysis/text/NearestName.h"

#include <gtest/gtest.h>

namespace kalmia::analysis {
namespace {

TEST(NearestName, DiffersInCapitalsBlanksAndDashes) {
  const std::vector<std::string> names = {"octane", "free acid", "K-270"};
  EXPECT_EQ(NearestName("Octane", names), "octane");
  EXPECT_EQ(NearestName("Free_Acid", names), "free acid");
  EXPECT_EQ(NearestName("k270", names), "K-270");
}

TEST(NearestName, TakesOneSlipInShortNamesAndTwoInLongOnes) {
  const std::vector<std::string> names = {"malic acid", "ash"};
  EXPECT_EQ(NearestName("ahs", names), "ash") << "neighbours exchanged";
  EXPECT_EQ(NearestName("asj", names), "ash");
  EXPECT_EQ(NearestName("lsj", names), "");
  EXPECT_EQ(NearestName("mallicacit", names), "malic acid");
  EXPECT_EQ(NearestName("mallycacit", names), "");
}

TEST(NearestName, KnowsNothingOfNamesOfOneOrTwoLetters) {
  EXPECT_EQ(NearestName("x1", {"x2", "x"}), "");
  EXPECT_EQ(NearestName("X1", {"x2", "x1"}), "x1") << "but for capitals";
}

TEST(NearestName, PrefersTheNearestAndThenTheFirst) {
  EXPECT_EQ(NearestName("alcohol", {"alcohols", "Alcohol"}), "Alcohol");
  EXPECT_EQ(NearestName("colour", {"colours", "colou"}), "colours");
}

TEST(NearestWord, KnowsBeginningsInitialsAndAdditions) {
  const std::vector<std::string> words = {"interleaved", "blocks", "random", "leave-one-out", "pls", "pca"};
  EXPECT_EQ(NearestWord("loo", words), "leave-one-out");
  EXPECT_EQ(NearestWord("leave", words), "leave-one-out");
  EXPECT_EQ(NearestWord("Inter", words), "interleaved");
  EXPECT_EQ(NearestWord("plsda", words), "pls");
  EXPECT_EQ(NearestWord("blcoks", words), "blocks") << "a slip of the pen, as of names";
  EXPECT_EQ(NearestWord("p", words), "");
  EXPECT_EQ(NearestWord("venetian", words), "");
}

TEST(NearestWord, IsEmptyForABeginningOfSeveral) { EXPECT_EQ(NearestWord("perm", {"permute", "permit"}), ""); }

TEST(NearestName, IsEmptyWhereThereIsNone) {
  EXPECT_EQ(NearestName("", {"", "a"}), "");
  EXPECT_EQ(NearestName("octane", {}), "");
  EXPECT_EQ(DidYouMean("octane", {"cetane number"}), "");
  EXPECT_EQ(DidYouMean("Octane", {"octane"}), ", did you mean 'octane'?");
}

}  // namespace
}  // namespace kalmia::analysis
