#include "app/console/TemporaryPath.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <utility>

namespace kalmia::app {

namespace {

void RemoveFilesIn(int folder) {
  alignas(dirent64) std::array<char, 4096> entries;
  lseek(folder, 0, SEEK_SET);
  for (;;) {
    const ssize_t bytes = getdents64(folder, entries.data(), entries.size());
    if (bytes <= 0) return;
    for (ssize_t at = 0; at < bytes;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(entries.data() + at);
      unlinkat(folder, entry->d_name, 0);  // "." and ".." are none that it takes
      at += entry->d_reclen;
    }
  }
}

/// By system calls alone: opendir() takes memory, which a signal handler may not. Another thread may be making a file
/// meanwhile, which keeps the folder from going: then once more.
void RemoveWithFiles(const char* path) {
  constexpr int kMostPasses = 100;
  const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0) return;
  for (int pass = 0; pass < kMostPasses; ++pass) {
    RemoveFilesIn(folder);
    if (rmdir(path) == 0 || errno != ENOTEMPTY) break;
  }
  close(folder);
}

}  // namespace

/// Stays in the list for good, as a signal handler may be reading it; a run has a few dozen of them at most.
struct TemporaryEntry {
  const std::string path;
  const TemporaryPath::Kind kind;
  TemporaryEntry* const next;
  std::atomic<bool> isThere{true};

  void Remove() {
    if (!isThere.exchange(false)) return;
    switch (kind) {
      case TemporaryPath::Kind::File: unlink(path.c_str()); break;
      case TemporaryPath::Kind::Folder: rmdir(path.c_str()); break;
      case TemporaryPath::Kind::FolderWithFiles: RemoveWithFiles(path.c_str()); break;
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
