#include "app/console/OutputFiles.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/console/ConsoleProgress.h"
#include "app/console/Interrupt.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWrittenAtOnce = std::size_t{1} << 24U;
constexpr int kMostLinks = 40;  ///< as many as the system follows

[[noreturn]] void FailToWrite(const std::string& name, int error) {
  throw BadFile("cannot write " + OneLine(name) + ": " + std::generic_category().message(error));
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

/// A pipe without a reader any more is an error while one of these lives, not the end of the process.
class BrokenPipesAsErrors {
 public:
  BrokenPipesAsErrors() {
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignored, &before_);
  }
  ~BrokenPipesAsErrors() { sigaction(SIGPIPE, &before_, nullptr); }
  BrokenPipesAsErrors(const BrokenPipesAsErrors&) = delete;
  BrokenPipesAsErrors& operator=(const BrokenPipesAsErrors&) = delete;

 private:
  struct sigaction before_ = {};
};

/// Opens for writing, or -1. A pipe with a name makes this wait until somebody reads from it.
int OpenDirectly(const std::string& path) {
  for (;;) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (file >= 0 || errno != EINTR) return file;
    StopIfInterrupted();
  }
}

void WriteDirectly(const std::string& path, std::string_view bytes) {
  const BrokenPipesAsErrors here;
  const int file = OpenDirectly(path);
  if (file < 0) FailToWrite(path, errno);
  int error = WriteAll(file, bytes);
  if (close(file) != 0 && error == 0) error = errno;
  if (error != 0) FailToWrite(path, error);
}

std::string FolderOf(const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

/// Whether the user may take a file of this folder away, as a move into its place does. In a folder with the sticky
/// bit, as /tmp, only who owns the file or the folder may.
bool MayReplace(const struct stat& file, const std::string& folder) {
  struct stat of = {};
  const uid_t user = geteuid();
  if (user == 0 || stat(folder.c_str(), &of) != 0 || (of.st_mode & S_ISVTX) == 0) return true;
  return file.st_uid == user || of.st_uid == user;
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
  const std::string target = BehindLinks(path);
  const DeadlineHold untilItIsNoted;
  if (mkdir(target.c_str(), 0777) == 0) {
    folders_.emplace_back(target, TemporaryPath::Kind::Folder);
    return;
  }
  const int error = errno;
  std::error_code ignored;
  if (error != EEXIST || !fs::is_directory(path, ignored)) {
    throw BadFile("cannot make the folder " + OneLine(path) + ": " +
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
    if (!MayReplace(old, FolderOf(BehindLinks(path)))) FailToWrite(path, EPERM);
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
  if (file >= 0) staged_.push_back({TemporaryPath(temporary, TemporaryPath::Kind::File), target, temporary + ".old"});
  return file;
}

void OutputFiles::Commit() {
  StopIfInterrupted();
  for (const DirectWrite& file : direct_) WriteDirectly(file.path, file.bytes);
  direct_.clear();
  MoveAll();
  for (const StagedFile& file : staged_) SyncFolder(FolderOf(file.path));
  staged_.clear();
  folders_.clear();
}

/// Gives what is to be replaced a second name, or, on a file system without links, moves it there; the error number, or
/// 0, also where there is no file.
int OutputFiles::BackUp(StagedFile* file) {
  struct stat old = {};
  if (stat(file->path.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) return 0;
  file->hasBackup = link(file->path.c_str(), file->backup.c_str()) == 0 ||
                    std::rename(file->path.c_str(), file->backup.c_str()) == 0;
  return file->hasBackup ? 0 : errno;
}

/// The error number, or 0. After an error all is as before.
int OutputFiles::Move(StagedFile* file) {
  int error = BackUp(file);
  if (error != 0) return error;
  if (std::rename(file->temporary.Path().c_str(), file->path.c_str()) == 0) return 0;
  error = errno;
  if (file->hasBackup) TakeBack(*file);
  return error;
}

/// Undoes a move: what was replaced returns, what is new goes.
void OutputFiles::TakeBack(const StagedFile& file) {
  if (!file.hasBackup) {
    unlink(file.path.c_str());
    return;
  }
  std::rename(file.backup.c_str(), file.path.c_str());
  unlink(file.backup.c_str());  // still there where both were names of one file: then the renaming does nothing
}

void OutputFiles::MoveAll() {
  const DeadlineHold untilAllAreMoved;
  StopIfInterrupted();
  for (std::size_t i = 0; i < staged_.size(); ++i) {
    const int error = Move(&staged_[i]);
    if (error == 0) continue;
    for (std::size_t k = 0; k < i; ++k) TakeBack(staged_[k]);
    FailToWrite(staged_[i].path, error);
  }
  for (TemporaryPath& folder : folders_) folder.Keep();
  for (StagedFile& file : staged_) {
    file.temporary.Keep();
    if (file.hasBackup) unlink(file.backup.c_str());
  }
}

void WriteStandardOutput(std::string_view text) {
  const int error = WriteAll(STDOUT_FILENO, text);
  if (error != 0) FailToWrite("standard output", error);
}

}  // namespace kalmia::app
