#pragma once

#include <string>

#include "CommandRun.h"

/// Expects a failed run: that exit code, nothing on standard output, one line on standard error that says `message`.
void ExpectFailure(const CommandResult& result, int exitCode, const std::string& message);
