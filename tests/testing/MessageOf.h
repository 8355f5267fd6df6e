#pragma once

#include <optional>
#include <string>

#include "kalmia/support/NCError.h"

/// The message of the NCError that the call ends with; none where it ends well.
template <class Call>
std::optional<std::string> MessageOf(const Call& call) {
  try {
    call();
  } catch (const NCError& error) {
    return static_cast<const char*>(error.GetMessage());
  }
  return std::nullopt;
}
