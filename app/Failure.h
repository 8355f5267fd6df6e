#pragma once

#include <stdexcept>
#include <string>

namespace kalmia::app {

/// What the command's exit code says. A stop by Ctrl-C gives the shells' own code for it, 128 + SIGINT; for stops by
/// other signals see ExitStatus.
enum class ExitCode { Success = 0, BadData = 1, Usage = 2, Files = 3, Stopped = 130 };

/// Ends the command: one line for standard error, and the exit code. Whoever throws it has left nothing half done.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}

  ExitCode Code() const { return code_; }

 private:
  ExitCode code_;
};

}  // namespace kalmia::app
