#include "kalmia/cluster/DistanceStorage.h"

#include "kalmia/cluster/internal/StorageSettings.h"
#include "kalmia/support/TempFile.h"

namespace kalmia {

namespace {

std::uint64_t maximumPairsOfProcess = 0;  // 0: what the machine has free
thread_local const DendroGram::DistanceStorage::Settings* settingsOfThread = nullptr;

}  // namespace

std::uint64_t MaximumPairs() {
  const bool isSet = settingsOfThread != nullptr && settingsOfThread->pairsInMemory != 0;
  return isSet ? settingsOfThread->pairsInMemory : maximumPairsOfProcess;
}

std::string DistanceDirectory() {
  const bool isSet = settingsOfThread != nullptr && !settingsOfThread->directory.empty();
  return isSet ? settingsOfThread->directory : TemporaryDirectory();
}

UserComm& DistanceDialogue() {
  const bool isSet = settingsOfThread != nullptr && settingsOfThread->dialogue != nullptr;
  return isSet ? *settingsOfThread->dialogue : *UserComm::GetUserComm();
}

}  // namespace kalmia

namespace DendroGram {

void SetMaximumPairsInMemory(std::uint64_t pairs) { kalmia::maximumPairsOfProcess = pairs; }

DistanceStorage::DistanceStorage(const Settings& settings) : settings_(settings), before_(kalmia::settingsOfThread) {
  kalmia::settingsOfThread = &settings_;
}

DistanceStorage::~DistanceStorage() { kalmia::settingsOfThread = before_; }

}  // namespace DendroGram
