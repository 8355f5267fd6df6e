#pragma once

#include <string>

namespace kalmia::app {

struct TemporaryEntry;

/// A file, an empty folder, or a folder with the files in it, that is removed with the object, or where a signal ends
/// the process (Interrupt.h); unless it is kept. Made by one thread alone.
class TemporaryPath {
 public:
  enum class Kind { File, Folder, FolderWithFiles };

  TemporaryPath(const std::string& path, Kind kind);
  ~TemporaryPath();
  TemporaryPath(TemporaryPath&& other) noexcept;
  TemporaryPath& operator=(TemporaryPath&& other) noexcept;

  const std::string& Path() const;
  void Keep();

 private:
  TemporaryEntry* entry_;  ///< null once it was moved from
};

/// Removes all that are there, the newest first. A signal handler may call it.
void RemoveTemporaryPaths();

}  // namespace kalmia::app
