#pragma once

#include <csignal>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "testing/ScratchFolder.h"

/// What a run of the program left behind.
struct CommandResult {
  int exitCode = -1;   ///< 128 + the signal where one ended the program
  std::string output;  ///< standard output
  std::string error;   ///< standard error

  nlohmann::json Json() const { return nlohmann::json::parse(output); }
  int ErrorLines() const;  ///< lines on standard error
};

/// How the program is run.
struct CommandRun {
  std::vector<std::string> arguments;
  std::string input;                     ///< standard input
  std::string outputFile;                ///< standard output goes there instead, e.g. /dev/full
  std::vector<std::string> environment;  ///< NAME=VALUE, beside the present environment
  long largestFile = -1;                 ///< bytes that a file of the program may have; -1: no limit
  int mostFiles = -1;                    ///< that it may have open; -1: no limit of its own
};

/// Runs `kalmia` to its end, at most a minute.
CommandResult RunKalmia(const CommandRun& run);
CommandResult RunKalmia(const std::vector<std::string>& arguments, const std::string& input = "");
/// The same; the test fails where the exit code is not 0.
CommandResult RunWell(const std::vector<std::string>& arguments, const std::string& input = "");

/// Runs `kalmia` on a terminal of its own; sends it the signal, so many times, once `interruptAt` has appeared there.
/// `error` then holds what the terminal showed, both outputs together.
CommandResult RunOnTerminal(const std::vector<std::string>& arguments, const std::string& interruptAt = "",
                            int signal = SIGINT, int times = 1);

/// Does some work in a process of its own, with exit code 0 at its end, on a terminal of its own; `error` holds what
/// the terminal showed.
CommandResult DoOnTerminal(const std::function<void()>& work);

/// Runs `kalmia` with a standard input on which nothing comes, and sends it SIGINT once it waits: there, or for
/// somebody to open or to empty a pipe.
CommandResult InterruptWaiting(const std::vector<std::string>& arguments);

/// Path of a table in examples/data.
std::string ExampleTable(const std::string& name);
