#include "app/console/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "app/console/Interrupt.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18U;
constexpr std::size_t kPiece = std::size_t{1} << 21U;  ///< of a file that several threads read
constexpr std::size_t kWorthSharing = 4 * kPiece;
constexpr int kLongestWait = 50;  ///< milliseconds between two looks for Ctrl-C, which may come just before a wait

[[noreturn]] void FailToRead(const std::string& name, int error) {
  throw BadFile("cannot read " + InputName(name) + ": " + std::generic_category().message(error));
}

/// A file opened for reading that closes itself; standard input is left open.
class OpenedFile {
 public:
  /// Does not wait until somebody writes into a pipe: Read() does.
  explicit OpenedFile(const std::string& name)
      : name_(name), file_(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (file_ < 0) FailToRead(name, errno);
  }
  ~OpenedFile() {
    if (file_ != STDIN_FILENO) close(file_);
  }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;

  /// The bytes that are there, if it is no pipe or terminal; otherwise 0.
  std::size_t Size() const {
    struct stat status = {};
    const bool isKnown = fstat(file_, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
    return isKnown ? static_cast<std::size_t>(status.st_size) : 0;
  }

  bool IsTerminal() const { return isatty(file_) == 1; }

  /// Waits a moment for bytes, or the end. Whether one of them is there.
  bool Await() const {
    StopIfInterrupted();
    pollfd awaited = {file_, POLLIN, 0};
    const int ready = poll(&awaited, 1, kLongestWait);
    if (ready < 0 && errno != EINTR) FailToRead(name_, errno);
    return ready > 0;
  }

  /// Reads some bytes into the free room; 0 at the end, nothing where they are not there yet.
  std::optional<std::size_t> Read(TextBuffer* text) const {
    const ssize_t got = read(file_, text->Free(), std::min(text->FreeRoom(), kBlock));
    if (got >= 0) {
      text->Grow(static_cast<std::size_t>(got));
      return static_cast<std::size_t>(got);
    }
    if (errno != EINTR && errno != EAGAIN) FailToRead(name_, errno);
    return std::nullopt;
  }

  /// Reads so many bytes from a place on. False if the file ends before them.
  bool ReadAt(std::size_t place, char* bytes, std::size_t count) const {
    while (count > 0) {
      const ssize_t got = pread(file_, bytes, count, static_cast<off_t>(place));
      if (got == 0) return false;
      if (got < 0 && errno != EINTR) FailToRead(name_, errno);
      const auto read = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
      place += read;
      bytes += read;
      count -= read;
    }
    return true;
  }

 private:
  const std::string& name_;
  int file_;
};

void Show(double share, NCProgress* progress) {
  if (progress == nullptr) return;
  if (!progress->SetValue(static_cast<float>(share))) throw Stopped("stopped");
}

/// Reads until the end comes.
TextBuffer ReadToTheEnd(const OpenedFile& file, NCProgress* progress) {
  if (file.IsTerminal()) progress = nullptr;  // a bar would write into what is being typed
  const std::size_t size = file.Size();
  TextBuffer text;
  text.Reserve(size + kBlock);
  for (;;) {
    Show(size == 0 ? 0.0 : static_cast<double>(text.Size()) / static_cast<double>(size), progress);
    if (!file.Await()) continue;
    if (text.FreeRoom() == 0) text.Reserve(2 * text.Size());
    if (file.Read(&text) == std::size_t{0}) return text;
  }
}

/// Reads `size` bytes of a file, each thread some pieces of them. Nothing if they are not all there, or more are.
std::optional<TextBuffer> ReadPieces(const OpenedFile& file, std::size_t size, NCProgress* progress) {
  TextBuffer text;
  text.Reserve(size);
  std::atomic<bool> isWhole{true};
  const auto proceed = [progress](double share) {
    StopIfInterrupted();
    Show(share, progress);
  };
  ShareWork((size + kPiece - 1) / kPiece, proceed, [&](std::size_t k) {
    const std::size_t begin = k * kPiece;
    if (!file.ReadAt(begin, text.Free() + begin, std::min(kPiece, size - begin))) isWhole = false;
  });
  char next = 0;
  if (!isWhole || file.ReadAt(size, &next, 1)) return std::nullopt;
  text.Grow(size);
  return text;
}

}  // namespace

TextBuffer ReadText(const std::string& name, NCProgress* progress) {
  const OpenedFile file(name);
  const std::size_t size = name == "-" ? 0 : file.Size();  // standard input may have been read in part
  if (size >= kWorthSharing) {
    if (std::optional<TextBuffer> text = ReadPieces(file, size, progress)) return *std::move(text);
  }
  return ReadToTheEnd(file, progress);
}

std::string ReadInput(const std::string& name) { return std::string(ReadText(name).View()); }

std::string InputName(const std::string& name) { return name == "-" ? "standard input" : OneLine(name); }

}  // namespace kalmia::app
