#pragma once

#include <algorithm>
#include <string>

#include "testing/RecordingProgress.h"

/// Whether the calls end with the first question at or after `stopAt`: its answer, that the user wants to stop, was
/// heard, and nothing was asked or told any more, no sub-range closed either.
inline bool EndsAtItsFirstRefusal(const ProgressLog& log) {
  const auto isQuestion = [](const std::string& call) {
    const std::string operation = call.substr(0, call.find(' '));
    return operation == "SetValue" || operation == "PushSubRange" || operation == "PopSubRange" ||
           operation == "IsBreakPressed";
  };
  if (log.stopAt < 1 || static_cast<int>(log.calls.size()) < log.stopAt) return false;
  const auto refused = std::find_if(log.calls.begin() + (log.stopAt - 1), log.calls.end(), isQuestion);
  return refused != log.calls.end() && refused + 1 == log.calls.end();
}
