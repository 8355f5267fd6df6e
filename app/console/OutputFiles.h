#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/console/TemporaryPath.h"

namespace kalmia::app {

/// Files that appear together and whole, or not at all: each is first written under a temporary name beside its place
/// and brought to the disk; Commit() then moves them all. Files that they replace stay at hand until the last move, and
/// come back where one fails. No signal ends the process between the first move and the last. What was not committed
/// vanishes with the object.
/// Every operation throws BadFile that names the file.
class OutputFiles {
 public:
  OutputFiles() = default;
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;

  /// Makes a folder (its parent must exist), or does nothing if it is there. A link to a folder that is not there yet
  /// is followed.
  void MakeFolder(const std::string& path);
  /// Takes the content of a file. An existing file keeps its permissions, and has to be one that may be written, and
  /// replaced; a link is followed, to a file that is not there yet too. A device or a pipe is written to as it is, when
  /// the files are committed, before any of them moves: what it refuses keeps them from appearing.
  void Stage(const std::string& path, std::string_view bytes);
  /// Also throws Stopped after a signal, with no file moved.
  void Commit();

 private:
  struct StagedFile {
    TemporaryPath temporary;
    std::string path;
    std::string backup;      ///< name for what was under `path` before the move
    bool hasBackup = false;  ///< whether it is there
  };
  struct DirectWrite {
    std::string path;
    std::string bytes;
  };

  int MakeTemporary(const std::string& target);
  static int BackUp(StagedFile* file);
  static int Move(StagedFile* file);
  static void TakeBack(const StagedFile& file);
  void MoveAll();

  std::vector<TemporaryPath> folders_;  // outlive the files in them
  std::vector<StagedFile> staged_;
  std::vector<DirectWrite> direct_;
};

/// The file that a symbolic link leads to, link after link, whether it is there or not; `path` itself where it is no
/// link.
std::string BehindLinks(const std::string& path);

/// Writes to standard output, all of it. Throws BadFile where that is impossible, as on a full disk.
void WriteStandardOutput(std::string_view text);

}  // namespace kalmia::app
