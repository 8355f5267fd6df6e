#include "app/TemporaryPath.h"

#include <unistd.h>

#include <atomic>
#include <utility>

namespace kalmia::app {

/// Stays in the list for good, as a signal handler may be reading it; a run has a few dozen of them at most.
struct TemporaryEntry {
  const std::string path;
  const TemporaryPath::Kind kind;
  TemporaryEntry* const next;
  std::atomic<bool> isThere{true};

  void Remove() {
    if (!isThere.exchange(false)) return;
    if (kind == TemporaryPath::Kind::Folder) {
      rmdir(path.c_str());
    } else {
      unlink(path.c_str());
    }
  }
};

namespace {

std::atomic<TemporaryEntry*> newest{nullptr};

}  // namespace

TemporaryPath::TemporaryPath(const std::string& path, Kind kind)
    : entry_(new TemporaryEntry{path, kind, newest.load()}) {
  newest = entry_;
}

TemporaryPath::TemporaryPath(TemporaryPath&& other) noexcept : entry_(std::exchange(other.entry_, nullptr)) {}

TemporaryPath& TemporaryPath::operator=(TemporaryPath&& other) noexcept {
  std::swap(entry_, other.entry_);
  return *this;
}

TemporaryPath::~TemporaryPath() {
  if (entry_ != nullptr) entry_->Remove();
}

const std::string& TemporaryPath::Path() const { return entry_->path; }

void TemporaryPath::Keep() { entry_->isThere = false; }

void RemoveTemporaryPaths() {
  for (TemporaryEntry* entry = newest; entry != nullptr; entry = entry->next) entry->Remove();
}

}  // namespace kalmia::app
