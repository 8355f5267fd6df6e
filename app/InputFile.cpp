#include "app/InputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18U;

[[noreturn]] void FailToRead(const std::string& name, int error) {
  throw Failure(ExitCode::Files, "cannot read " + InputName(name) + ": " + std::generic_category().message(error));
}

/// A file descriptor that closes itself; standard input is left open.
class Descriptor {
 public:
  explicit Descriptor(const std::string& name)
      : value_(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (value_ < 0) FailToRead(name, errno);
  }
  ~Descriptor() {
    if (value_ != STDIN_FILENO) close(value_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Value() const { return value_; }

 private:
  int value_;
};

}  // namespace

std::string ReadInput(const std::string& name) {
  const Descriptor file(name);
  std::string bytes;
  std::vector<char> block(kBlock);
  for (;;) {
    StopIfInterrupted();
    const ssize_t got = read(file.Value(), block.data(), block.size());
    if (got == 0) return bytes;
    if (got > 0) {
      bytes.append(block.data(), static_cast<std::size_t>(got));
    } else if (errno != EINTR) {
      FailToRead(name, errno);
    }
  }
}

std::string InputName(const std::string& name) { return name == "-" ? "standard input" : OneLine(name); }

}  // namespace kalmia::app
