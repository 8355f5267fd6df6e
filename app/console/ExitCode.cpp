#include "app/console/ExitCode.h"

namespace kalmia::app {

ExitCode ExitCodeOf(const Failure& failure) {
  if (dynamic_cast<const Stopped*>(&failure) != nullptr) return ExitCode::Stopped;
  if (dynamic_cast<const BadFile*>(&failure) != nullptr) return ExitCode::Files;
  if (dynamic_cast<const BadRequest*>(&failure) != nullptr) return ExitCode::Usage;
  return ExitCode::BadData;
}

}  // namespace kalmia::app
