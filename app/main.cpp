#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <variant>

#include "app/command/Commands.h"
#include "app/console/ExitCode.h"
#include "app/console/Interrupt.h"
#include "app/console/OutputFiles.h"
#include "app/console/Remedies.h"
#include "app/options/Options.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/Exception.h"

namespace {

using namespace kalmia::analysis;
using namespace kalmia::app;

void PrintError(const std::string& message) { std::cerr << "kalmia: " << message << std::endl; }

void RunCommandLine(int argc, char** argv) {
  const Command command = ParseCommandLine(argc, argv);
  CatchSignalsWithDeadline();
  Notes notes;
  const std::string output = std::visit([&notes](const auto& options) { return RunCommand(options, &notes); }, command);
  StopIfInterrupted();
  for (const std::string& line : notes.Lines()) std::cerr << "note: " << line << '\n';
  std::cerr.flush();
  WriteStandardOutput(output);
}

struct Ending {
  ExitCode code;
  std::string message;
};

/// What the exception that is being handled says, and that came out of a subcommand.
Ending EndingOfException(const std::string& command) {
  try {
    throw;
  } catch (const Failure& failure) {
    return {ExitCodeOf(failure), MessageOf(failure, command)};
  } catch (const Exception& error) {
    return {ExitCode::BadData, OneLine(static_cast<const char*>(error.GetMessage()))};
  } catch (const std::bad_alloc&) {
    return {ExitCode::BadData, "not enough memory"};
  } catch (const std::exception& error) {
    return {ExitCode::BadData, OneLine(error.what())};
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    RunCommandLine(argc, argv);
    return static_cast<int>(ExitCode::Success);
  } catch (...) {
    CancelDeadline();
    // A run that was to stop has stopped, whatever came in between.
    const Ending ending =
        Interrupted() ? Ending{ExitCode::Stopped, "stopped"} : EndingOfException(argc > 1 ? argv[1] : "");
    PrintError(ending.message);
    return ExitStatus(ending.code);
  }
}
