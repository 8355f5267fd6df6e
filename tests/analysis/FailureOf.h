#pragma once

#include <exception>
#include <optional>
#include <string>

/// The sentence of the failure of this kind that the call ends with; nothing where it ends well.
template <class Kind, class Call>
std::optional<std::string> FailureOf(const Call& call) {
  try {
    call();
  } catch (const Kind& failure) {
    return failure.what();
  }
  return std::nullopt;
}

/// Whether it is a failure of this kind.
template <class Kind>
bool Is(const std::exception& failure) {
  return dynamic_cast<const Kind*>(&failure) != nullptr;
}
