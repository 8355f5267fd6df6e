#include "kalmia/cluster/DistanceStorage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "kalmia/cluster/DendroGram.h"
#include "testing/RandomTables.h"

namespace {

using DendroGram::DistanceStorage;

/// Told of each calculation that uses the disk.
class Listener : public UserComm {
 public:
  int Ask(const char* /*question*/, const char* /*message*/, const char* /*caption*/, int /*buttons*/) override {
    return 0;
  }
  void Show(const char* text, const char* /*caption*/, int /*helpContext*/) override { told += text; }

  std::string told;
};

void Cluster(int rows) {
  DendroGram::SingleLinkageDistanceCalculator calculator;
  DendroGram::DendroGramNode::Destroy(
      DendroGram::GetDendroGram(RandomMatrix<float>(rows, 3, 0, 1), calculator, nullptr, nullptr));
}

/// A folder of its own, whose name tells it from others.
std::string MakeFolder(const std::string& name) {
  const std::string path = ::testing::TempDir() + "DistanceStorage_" + name;
  std::filesystem::create_directories(path);
  return path;
}

TEST(DistanceStorage, SendsDistancesOfItsThreadToItsFolderAndTellsItsDialogue) {
  const std::string folder = MakeFolder("one");
  Listener listener;
  {
    const DistanceStorage storage({/*pairsInMemory=*/50, folder, &listener});
    Cluster(40);
  }
  EXPECT_NE(listener.told.find("The disk ('" + folder + "')"), std::string::npos) << listener.told;
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  listener.told.clear();
  Cluster(40);  // the object is gone: there is memory enough
  EXPECT_EQ(listener.told, "");
  std::filesystem::remove_all(folder);
}

TEST(DistanceStorage, OfOneThreadIsNotThatOfAnother) {
  const std::string folder = MakeFolder("thread"), other = MakeFolder("other");
  Listener listener, otherListener;
  const DistanceStorage storage({/*pairsInMemory=*/50, folder, &listener});
  std::thread([&] {
    const DistanceStorage storageOfThread({/*pairsInMemory=*/50, other, &otherListener});
    Cluster(40);
  }).join();
  EXPECT_EQ(listener.told, "");
  EXPECT_NE(otherListener.told.find("The disk ('" + other + "')"), std::string::npos);
  Cluster(40);
  EXPECT_NE(listener.told.find("The disk ('" + folder + "')"), std::string::npos);
  std::filesystem::remove_all(folder);
  std::filesystem::remove_all(other);
}

TEST(DistanceStorage, WithinAnotherOneEndsWithThatOneInForce) {
  const std::string folder = MakeFolder("outer");
  Listener listener;
  const DistanceStorage outer({/*pairsInMemory=*/50, folder, &listener});
  {
    const DistanceStorage inner({/*pairsInMemory=*/1000000, folder, &listener});
    Cluster(40);
    EXPECT_EQ(listener.told, "");
  }
  Cluster(40);
  EXPECT_NE(listener.told, "");
  std::filesystem::remove_all(folder);
}

}  // namespace
