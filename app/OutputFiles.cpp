#include "app/OutputFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/ConsoleProgress.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"

namespace kalmia::app {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWrittenAtOnce = std::size_t{1} << 24U;
constexpr int kMostLinks = 40;  ///< as many as the system follows

[[noreturn]] void FailToWrite(const std::string& name, int error) {
  throw Failure(ExitCode::Files, "cannot write " + OneLine(name) + ": " + std::generic_category().message(error));
}

/// Writes all bytes; the error number, or 0. A signal does not end it: what is begun is finished or removed.
int WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

/// Permissions for a new file in place of `path`: those of the old one, or what the user's mask leaves of rw-rw-rw-.
mode_t ModeFor(const std::string& path) {
  struct stat old = {};
  if (stat(path.c_str(), &old) == 0) return old.st_mode & 0777U;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666U & ~mask;
}

/// The same, with a bar where there is much to write.
int WriteWithBar(int file, std::string_view bytes, const std::string& path) {
  ProgressLine line;
  for (std::size_t done = 0; done < bytes.size(); done += kWrittenAtOnce) {
    const auto share = static_cast<double>(done) / static_cast<double>(bytes.size());
    if (bytes.size() > kWrittenAtOnce) line.Show("writing " + OneLine(path), share);
    const int error = WriteAll(file, bytes.substr(done, kWrittenAtOnce));
    if (error != 0) return error;
  }
  return 0;
}

/// Writes, sets the permissions, brings the bytes to the disk and closes; the error number, or 0.
int FinishTemporary(int file, std::string_view bytes, const std::string& path, mode_t mode) {
  int error = WriteWithBar(file, bytes, path);
  if (error == 0 && fchmod(file, mode) != 0) error = errno;
  if (error == 0 && fsync(file) != 0) error = errno;
  if (close(file) != 0 && error == 0) error = errno;
  return error;
}

void WriteDirectly(const std::string& path, std::string_view bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (file < 0) FailToWrite(path, errno);
  int error = WriteAll(file, bytes);
  if (close(file) != 0 && error == 0) error = errno;
  if (error != 0) FailToWrite(path, error);
}

std::string FolderOf(const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

/// Gives the file under `path` a second name, or, on a file system without links, moves it there. Returns that name;
/// nothing if there is no file.
std::string BackUp(const std::string& path, const std::string& backup) {
  struct stat old = {};
  if (stat(path.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) return "";
  if (link(path.c_str(), backup.c_str()) == 0) return backup;
  return std::rename(path.c_str(), backup.c_str()) == 0 ? backup : "";
}

/// The new names reach the disk with their folder. Not every file system can; the files themselves are safe by then.
void SyncFolder(const std::string& folder) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  fsync(file);
  close(file);
}

}  // namespace

std::string BehindLinks(const std::string& path) {
  fs::path place = path;
  std::error_code error;
  for (int links = 0; links < kMostLinks && fs::is_symlink(place, error); ++links) {
    const fs::path target = fs::read_symlink(place, error);
    if (error) break;
    place = place.parent_path() / target;  // which is the target alone where that is absolute
  }
  return place.string();
}

void OutputFiles::MakeFolder(const std::string& path) {
  const DeadlineHold untilItIsNoted;
  if (mkdir(path.c_str(), 0777) == 0) {
    folders_.emplace_back(path, TemporaryPath::Kind::Folder);
    return;
  }
  const int error = errno;
  std::error_code ignored;
  if (error != EEXIST || !fs::is_directory(path, ignored)) {
    throw Failure(ExitCode::Files, "cannot make the folder " + OneLine(path) + ": " +
                                       std::generic_category().message(error == EEXIST ? ENOTDIR : error));
  }
}

void OutputFiles::Stage(const std::string& path, std::string_view bytes) {
  struct stat old = {};
  if (stat(path.c_str(), &old) == 0) {
    if (S_ISDIR(old.st_mode)) FailToWrite(path, EISDIR);
    // The move into its place would ask the folder alone.
    if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) FailToWrite(path, errno);
    if (!S_ISREG(old.st_mode)) {
      direct_.push_back({path, std::string(bytes)});
      return;
    }
  } else if (errno != ENOENT) {
    FailToWrite(path, errno);
  }
  const std::string target = BehindLinks(path);
  const int file = MakeTemporary(target);
  if (file < 0) FailToWrite(path, errno);
  const int error = FinishTemporary(file, bytes, path, ModeFor(target));
  if (error != 0) FailToWrite(path, error);
}

/// Stages an empty file for this place; the descriptor, or -1.
int OutputFiles::MakeTemporary(const std::string& target) {
  const DeadlineHold untilItIsNoted;
  std::string temporary = FolderOf(target) + "/.kalmia-XXXXXX";
  const int file = mkstemp(temporary.data());
  if (file >= 0) staged_.push_back({TemporaryPath(temporary, TemporaryPath::Kind::File), target, ""});
  return file;
}

void OutputFiles::Commit() {
  StopIfInterrupted();
  for (const DirectWrite& file : direct_) WriteDirectly(file.path, file.bytes);
  direct_.clear();
  MoveAll();
}

void OutputFiles::MoveAll() {
  const DeadlineHold untilAllAreMoved;
  for (std::size_t i = 0; i < staged_.size(); ++i) {
    StagedFile& file = staged_[i];
    file.backup = BackUp(file.path, file.temporary.Path() + ".old");
    if (std::rename(file.temporary.Path().c_str(), file.path.c_str()) == 0) continue;
    const int error = errno;
    if (!file.backup.empty()) std::rename(file.backup.c_str(), file.path.c_str());
    TakeBack(i);
    FailToWrite(file.path, error);
  }
  for (TemporaryPath& folder : folders_) folder.Keep();
  for (StagedFile& file : staged_) {
    file.temporary.Keep();
    if (!file.backup.empty()) unlink(file.backup.c_str());
    SyncFolder(FolderOf(file.path));
  }
  folders_.clear();
  staged_.clear();
}

/// Undoes the first moves: what was replaced returns, what is new goes.
void OutputFiles::TakeBack(std::size_t moved) {
  for (std::size_t i = 0; i < moved; ++i) {
    const StagedFile& file = staged_[i];
    if (file.backup.empty()) {
      unlink(file.path.c_str());
    } else {
      std::rename(file.backup.c_str(), file.path.c_str());
    }
  }
}

void WriteStandardOutput(std::string_view text) {
  const int error = WriteAll(STDOUT_FILENO, text);
  if (error != 0) FailToWrite("standard output", error);
}

}  // namespace kalmia::app
