#include "CommandRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

constexpr unsigned kLongestRun = 60;  ///< seconds; an alarm ends a run that hangs

[[noreturn]] void Execute(const std::vector<std::string>& arguments) {
  std::vector<char*> argv = {const_cast<char*>("kalmia")};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  alarm(kLongestRun);
  execv(KALMIA_COMMAND, argv.data());
  _exit(127);
}

int ExitCode(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Reads until the other end closes; a terminal says so by an error.
std::string Drain(int file) {
  std::string text;
  std::array<char, 4096> block = {};
  for (;;) {
    const ssize_t got = read(file, block.data(), block.size());
    if (got <= 0) return text;
    text.append(block.data(), static_cast<std::size_t>(got));
  }
}

void Prepare(const CommandRun& run, const std::string& input, const std::string& output, const std::string& error) {
  dup2(open(input.c_str(), O_RDONLY), STDIN_FILENO);
  const std::string& target = run.outputFile.empty() ? output : run.outputFile;
  dup2(open(target.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
  dup2(open(error.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
  for (const std::string& variable : run.environment) putenv(const_cast<char*>(variable.c_str()));
  if (run.largestFile >= 0) {
    const rlimit limit = {static_cast<rlim_t>(run.largestFile), static_cast<rlim_t>(run.largestFile)};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (run.mostFiles >= 0) {
    const rlimit limit = {static_cast<rlim_t>(run.mostFiles), static_cast<rlim_t>(run.mostFiles)};
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

/// Whether the process catches SIGINT by now and sleeps.
bool IsAsleep(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  bool sleeps = false;
  bool catches = false;
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("State:", 0) == 0) sleeps = line.find('S', 6) != std::string::npos;
    if (line.rfind("SigCgt:", 0) == 0) catches = (std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1) & 1U) != 0;
  }
  return sleeps && catches;
}

/// Returns once the process waits for input, or for somebody to take its output: it has been asleep for some time.
void AwaitItsWait(pid_t process) {
  constexpr int kLooks = 20;  // a calculation does not sleep through so many
  for (int asleep = 0; asleep < kLooks; asleep = IsAsleep(process) ? asleep + 1 : 0) usleep(1000);
}

}  // namespace

int CommandResult::ErrorLines() const { return static_cast<int>(std::count(error.begin(), error.end(), '\n')); }

CommandResult RunKalmia(const CommandRun& run) {
  const ScratchFolder folder;
  const std::string input = folder.Write("input", run.input);
  const std::string output = folder.Write("output", "");
  const std::string error = folder.Write("error", "");
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("no process");
  if (process == 0) {
    Prepare(run, input, output, error);
    Execute(run.arguments);
  }
  CommandResult result;
  result.exitCode = ExitCode(process);
  result.output = ReadWholeFile(output);
  result.error = ReadWholeFile(error);
  return result;
}

CommandResult RunKalmia(const std::vector<std::string>& arguments, const std::string& input) {
  CommandRun run;
  run.arguments = arguments;
  run.input = input;
  return RunKalmia(run);
}

CommandResult RunWell(const std::vector<std::string>& arguments, const std::string& input) {
  CommandResult result = RunKalmia(arguments, input);
  EXPECT_EQ(result.exitCode, 0) << result.error;
  return result;
}

CommandResult RunOnTerminal(const std::vector<std::string>& arguments, const std::string& interruptAt, int signal,
                            int times) {
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process < 0) throw std::runtime_error("no terminal");
  if (process == 0) Execute(arguments);
  CommandResult result;
  std::array<char, 4096> block = {};
  while (interruptAt.empty() || result.error.find(interruptAt) == std::string::npos) {
    const ssize_t got = read(terminal, block.data(), block.size());
    if (got <= 0) break;
    result.error.append(block.data(), static_cast<std::size_t>(got));
  }
  for (int i = 0; i < times && !interruptAt.empty(); ++i) {
    if (i > 0) usleep(1000);  // two that come together are one
    kill(process, signal);
  }
  result.error += Drain(terminal);
  result.exitCode = ExitCode(process);
  close(terminal);
  return result;
}

CommandResult DoOnTerminal(const std::function<void()>& work) {
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process < 0) throw std::runtime_error("no terminal");
  if (process == 0) {
    alarm(kLongestRun);
    work();
    _exit(0);
  }
  CommandResult result;
  result.error = Drain(terminal);
  result.exitCode = ExitCode(process);
  close(terminal);
  return result;
}

CommandResult InterruptWaiting(const std::vector<std::string>& arguments) {
  const ScratchFolder folder;
  const std::string output = folder.Write("output", "");
  const std::string error = folder.Write("error", "");
  const std::string pipe = folder.Path("pipe");
  if (mkfifo(pipe.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);  // keeps the pipe open without a byte in it
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("no process");
  if (process == 0) {
    Prepare({}, pipe, output, error);
    Execute(arguments);
  }
  AwaitItsWait(process);
  kill(process, SIGINT);
  CommandResult result;
  result.exitCode = ExitCode(process);
  close(writer);
  result.output = ReadWholeFile(output);
  result.error = ReadWholeFile(error);
  return result;
}

std::string ExampleTable(const std::string& name) { return std::string(KALMIA_DATA_DIR) + "/" + name; }
