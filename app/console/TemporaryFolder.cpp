#include "app/console/TemporaryFolder.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "app/console/Interrupt.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

/// Makes a folder of its own in this one; empty, with errno, where none can be made.
std::string MakeFolderIn(const std::string& parent) {
  std::string path = parent + "/.kalmia-XXXXXX";
  return mkdtemp(path.data()) == nullptr ? "" : path;
}

}  // namespace

void CheckTemporaryFolder(const std::string& parent) {
  const DeadlineHold untilItIsGone;
  const std::string path = MakeFolderIn(parent);
  if (path.empty()) {
    throw BadFile("cannot make temporary files in " + OneLine(parent) + ": " + std::generic_category().message(errno));
  }
  rmdir(path.c_str());
}

TemporaryFolder::TemporaryFolder(const std::string& parent) : path_(parent) {
  const DeadlineHold untilItIsNoted;
  const std::string own = MakeFolderIn(parent);
  if (own.empty()) return;
  own_.emplace(own, TemporaryPath::Kind::FolderWithFiles);
  path_ = own;
}

}  // namespace kalmia::app
