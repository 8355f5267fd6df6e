#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kalmia/support/NCProgress.h"

/// What a bar was told, and when its user wants to stop. Every call counts, from 1; from call `stopAt` on each question
/// is answered with "stop", as a user who has pressed the button does not take it back.
struct ProgressLog {
  std::vector<std::string> calls;  ///< "SetRange 1 0", "SetValue 0.5", "IsBreakPressed", "~" when the bar closes, ...
  int stopAt = 0;                  ///< 0: never

  bool Record(const std::string& call);
  int Count(const std::string& operation) const;  ///< calls of this operation, whatever their arguments
  std::string Joined() const;                     ///< all calls, "; " in between
};

/// A bar that writes into `log`, which has to outlive it.
std::unique_ptr<NCProgress> RecordingBar(ProgressLog* log);

/// For the length of a scope, bars that the library opens itself write into `log`; the opening is recorded as
/// "open <title> <from> <to> <flags as 0 and 1> <text or null>".
class RecordOwnBars {
 public:
  explicit RecordOwnBars(ProgressLog* log);
  ~RecordOwnBars();
  RecordOwnBars(const RecordOwnBars&) = delete;
  RecordOwnBars& operator=(const RecordOwnBars&) = delete;
};
