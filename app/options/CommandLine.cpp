#include "app/options/CommandLine.h"

#include <algorithm>
#include <string_view>

namespace kalmia::app {

namespace {

/// Whether the shell takes the word as it is.
bool IsPlain(std::string_view word) {
  constexpr std::string_view kMarks = "-_./,:=+@%";
  return !word.empty() && std::all_of(word.begin(), word.end(), [&](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kMarks.find(c) != std::string_view::npos;
  });
}

std::string ShellWord(std::string_view word) {
  if (IsPlain(word)) return std::string(word);
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace

std::string CommandLine(int argc, const char* const* argv) {
  std::string line = "kalmia";
  for (int i = 1; i < argc; ++i) line += " " + ShellWord(argv[i]);
  return line;
}

}  // namespace kalmia::app
