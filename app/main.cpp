#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <variant>

#include "app/Commands.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"
#include "app/Options.h"
#include "app/OutputFiles.h"
#include "kalmia/support/Exception.h"

namespace {

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

}  // namespace

int main(int argc, char** argv) {
  ExitCode code = ExitCode::BadData;
  try {
    RunCommandLine(argc, argv);
    return static_cast<int>(ExitCode::Success);
  } catch (const Failure& failure) {
    CancelDeadline();
    PrintError(failure.what());
    code = failure.Code();
  } catch (const Exception& error) {
    PrintError(OneLine(static_cast<const char*>(error.GetMessage())));
  } catch (const std::bad_alloc&) {
    PrintError("not enough memory");
  } catch (const std::exception& error) {
    PrintError(OneLine(error.what()));
  }
  return ExitStatus(code);
}
