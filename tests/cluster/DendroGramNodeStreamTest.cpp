#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

#include "cluster/Trees.h"
#include "testing/StreamAttacks.h"

namespace {

void ExpectSound(const HeldTree& held) { EXPECT_TRUE(HasSoundLinks(held.Root())); }

StreamAttacks<HeldTree> Attacks() {
  StreamAttacks<HeldTree> attacks;
  attacks.accepted = ExpectSound;
  return attacks;
}

std::string Number(std::uint32_t number) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

const char* const kHalf = "\0\0\0\x3F";  // 0.5 as a float
std::string Half() { return std::string(kHalf, 4); }
std::string Header(char version) { return Number(6) + "Dendro" + version + '\0'; }
std::string LeafBytes(std::uint32_t item) { return '\1' + Half() + Number(1) + Number(item) + Number(0); }

TEST(DendroGramNodeStream, IsTheNodesFromTheTopDown) {
  const Tree tree = Merge(0.5F, Leaf({3}), Leaf({4, 2}));
  tree->SetModel(-2);
  EXPECT_EQ(StreamOf(*tree), Header(1) + '\0' + Half() + Half() + Number(2) + Number(0xFFFFFFFE) + LeafBytes(3) + '\1' +
                                 Half() + Number(2) + Number(2) + Number(4) + Number(0));
}

TEST(DendroGramNodeStream, ReadsBackEqualWithItsModels) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    const Tree tree = RandomTree(1 + static_cast<int>(seed) * 4, seed), read = FiveLeafs();
    tree->SetModel(static_cast<int>(seed));
    std::istringstream stream(StreamOf(*tree));
    ASSERT_TRUE(stream >> *read);  // over a tree that was there before
    EXPECT_TRUE(*read == *tree);
    EXPECT_TRUE(HasSoundLinks(*read));
    EXPECT_EQ(read->GetModel(), static_cast<int>(seed));
    EXPECT_EQ(StreamOf(*read), StreamOf(*tree));
  }
}

TEST(DendroGramNodeStream, OfASubtreeIsThatOfItsCopy) {
  const Tree tree = FiveLeafs(), copy(new DendroGramNode(*tree->GetRight()));
  EXPECT_EQ(StreamOf(*tree->GetRight()), StreamOf(*copy));
}

TEST(DendroGramNodeStream, ATreeWithASplitLeafKeepsItsOldCounts) {
  const Tree tree = Merge(2, Leaf({1, 2, 3}), Leaf({5})), read(new DendroGramNode);
  const_cast<DendroGramNode*>(tree->GetLeft())->Split({2}, 1);
  std::istringstream stream(StreamOf(*tree));
  ASSERT_TRUE(stream >> *read);
  EXPECT_EQ(read->SizeLeafs(), 2);
  EXPECT_TRUE(*read == *tree);
}

TEST(DendroGramNodeStream, ANewerVersionLeavesTheNodeAsItWas) {
  const Tree tree = FiveLeafs();
  std::istringstream stream(Header(2) + LeafBytes(1));
  EXPECT_FALSE(stream >> *tree);
  EXPECT_TRUE(*tree == *FiveLeafs());
  EXPECT_EQ(tree->GetVexStreamVersionNumber(), 2);
  EXPECT_EQ(tree->GetMyVexStreamVersionNumber(), 1);
  std::istringstream other(Number(6) + "Dendra" + '\1' + '\0' + LeafBytes(1));
  EXPECT_FALSE(other >> *tree);
  EXPECT_TRUE(*tree == *FiveLeafs());
  std::istringstream older(Header(0) + LeafBytes(1));
  EXPECT_TRUE(older >> *tree);
  EXPECT_EQ(Text(*tree), "1");
}

TEST(DendroGramNodeStream, AnyFlagButZeroMeansALeaf) {
  std::string leaf = LeafBytes(7);
  leaf[0] = '\xFE';
  std::istringstream stream(Header(1) + leaf);
  const Tree tree(new DendroGramNode);
  ASSERT_TRUE(stream >> *tree);
  EXPECT_EQ(Text(*tree), "7");
}

TEST(DendroGramNodeStream, AHalfReadTreeCanBeDestroyed) {
  const std::string bytes = StreamOf(*FiveLeafs());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    const Tree tree = FiveLeafs();
    std::istringstream stream(bytes.substr(0, length));
    EXPECT_FALSE(stream >> *tree);
  }
}

TEST(DendroGramNodeStream, EveryCutIsRefused) { Attacks().EveryCut(StreamOf(*FiveLeafs())); }
TEST(DendroGramNodeStream, EveryTurnedBitIsRefusedOrReadsAsASoundTree) {
  Attacks().EveryBitFlip(StreamOf(*RandomTree(6, 1)));
}
TEST(DendroGramNodeStream, EveryLyingNumberIsRefusedOrReadsAsASoundTree) {
  Attacks().EveryNumber(StreamOf(*Merge(1, Leaf({3, 1}), Leaf({2}))));
}

TEST(DendroGramNodeStream, AStreamOfInnerNodesAloneIsRefused) {
  std::string bytes = Header(1);
  for (int i = 0; i < 20000; ++i) bytes += '\0' + Half() + Half() + Number(0x7FFFFFFF) + Number(0);
  EXPECT_FALSE(Attacks().Read(bytes));
}

TEST(DendroGramNodeStream, ManyItemsAreReadFromFileAndPipe) {
  std::vector<int> items(5000);
  for (int i = 0; i < 5000; ++i) items[static_cast<std::size_t>(i)] = i;
  const Tree tree(new DendroGramNode(items.begin(), items.end()));
  EXPECT_TRUE(Attacks().Read(StreamOf(*tree)));
}

TEST(DendroGramNodeStream, ItemsOutOfOrderAreSorted) {
  std::istringstream stream(Header(1) + '\1' + Half() + Number(3) + Number(9) + Number(4) + Number(6) + Number(0));
  const Tree tree(new DendroGramNode);
  ASSERT_TRUE(stream >> *tree);
  EXPECT_EQ(Text(*tree), "4+6+9");
}

}  // namespace
