#pragma once

#include <optional>
#include <string>

#include "app/console/TemporaryPath.h"

namespace kalmia::app {

/// Throws BadFile if no temporary files can be made in the folder.
void CheckTemporaryFolder(const std::string& parent);

/// A folder for temporary files in the one that is named: whatever is in it goes with the object, by a signal too.
/// Where none can be made it is the one that is named: the calculation meets the same trouble, if it needs files.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& parent);

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  std::optional<TemporaryPath> own_;
};

}  // namespace kalmia::app
