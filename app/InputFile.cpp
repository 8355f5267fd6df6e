#include "app/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>
#include <vector>

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"
#include "kalmia/support/LargePages.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18U;
constexpr int kLongestWait = 50;  ///< milliseconds between two looks for Ctrl-C, which may come just before a wait

[[noreturn]] void FailToRead(const std::string& name, int error) {
  throw Failure(ExitCode::Files, "cannot read " + InputName(name) + ": " + std::generic_category().message(error));
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

  /// Reads some bytes; 0 at the end, nothing where they are not there yet.
  std::optional<std::size_t> Read(std::vector<char>* block) const {
    const ssize_t got = read(file_, block->data(), block->size());
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR && errno != EAGAIN) FailToRead(name_, errno);
    return std::nullopt;
  }

 private:
  const std::string& name_;
  int file_;
};

void Show(std::size_t bytes, std::size_t size, NCProgress* progress) {
  if (progress == nullptr) return;
  const double share = size == 0 ? 0.0 : static_cast<double>(bytes) / static_cast<double>(size);
  if (!progress->SetValue(static_cast<float>(share))) throw Failure(ExitCode::Stopped, "stopped");
}

}  // namespace

std::string ReadInput(const std::string& name, NCProgress* progress) {
  const OpenedFile file(name);
  if (file.IsTerminal()) progress = nullptr;  // a bar would write into what is being typed
  const std::size_t size = file.Size();
  std::string bytes;
  bytes.reserve(size);
  PreferLargePages(bytes.data(), bytes.capacity());
  std::vector<char> block(kBlock);
  for (;;) {
    Show(bytes.size(), size, progress);
    if (!file.Await()) continue;
    const std::optional<std::size_t> got = file.Read(&block);
    if (got && *got == 0) return bytes;
    bytes.append(block.data(), got.value_or(0));
  }
}

std::string InputName(const std::string& name) { return name == "-" ? "standard input" : OneLine(name); }

}  // namespace kalmia::app
