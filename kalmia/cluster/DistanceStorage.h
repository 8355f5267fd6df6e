#pragma once

#include <cstdint>
#include <string>

#include "kalmia/support/Export.h"
#include "kalmia/support/UserComm.h"

namespace DendroGram {

/// How calculations that begin on this thread keep their distances while the object lives, in place of what is set for
/// the whole process: several threads can calculate at once, each in its own way. Objects on one thread end in the
/// reverse order of their beginnings.
class KALMIA_EXPORT DistanceStorage {
 public:
  struct Settings {
    std::uint64_t pairsInMemory = 0;  ///< at most so many; 0: as SetMaximumPairsInMemory says
    std::string directory = {};       ///< of temporary files; empty: that of TMPDIR
    UserComm* dialogue = nullptr;  ///< asked where the disk is too small, and told that it is used; null: GetUserComm()
  };

  explicit DistanceStorage(const Settings& settings);
  ~DistanceStorage();
  DistanceStorage(const DistanceStorage&) = delete;
  DistanceStorage& operator=(const DistanceStorage&) = delete;

 private:
  Settings settings_;
  const Settings* before_;
};

}  // namespace DendroGram
