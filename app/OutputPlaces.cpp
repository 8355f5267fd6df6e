#include "app/OutputPlaces.h"

#include <filesystem>
#include <system_error>

#include "app/DisplayText.h"
#include "app/Failure.h"

namespace kalmia::app {

namespace {

namespace fs = std::filesystem;

/// True for one file under two names, be it there or not yet. A device or a pipe is never overwritten.
bool AreSame(const std::string& a, const std::string& b) {
  std::error_code ignored;
  if (fs::exists(a, ignored)) return fs::is_regular_file(a, ignored) && fs::equivalent(a, b, ignored);
  const fs::path placeOfA = fs::weakly_canonical(fs::absolute(a, ignored), ignored);
  const fs::path placeOfB = fs::weakly_canonical(fs::absolute(b, ignored), ignored);
  return !placeOfA.empty() && placeOfA == placeOfB;
}

}  // namespace

void RefuseToOverwrite(const std::vector<FilePlace>& inputs, const std::vector<FilePlace>& outputs) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    if (outputs[i].path == "-") {
      throw Failure(ExitCode::Usage, outputs[i].what + " takes a file, not '-': standard output shows the results");
    }
    for (const FilePlace& input : inputs) {
      if (input.path == "-" || !AreSame(outputs[i].path, input.path)) continue;
      throw Failure(ExitCode::Usage, outputs[i].what + " would overwrite " + input.what + " " + OneLine(input.path));
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (!AreSame(outputs[i].path, outputs[j].path)) continue;
      throw Failure(ExitCode::Usage,
                    outputs[j].what + " and " + outputs[i].what + " would both write " + OneLine(outputs[i].path));
    }
  }
}

std::string WrittenText(const std::vector<FilePlace>& outputs) {
  std::string text;
  for (const FilePlace& place : outputs) text += "Wrote " + OneLine(place.path) + "\n";
  return text.empty() ? "" : "\n" + text;
}

std::vector<FilePlace> PlacesInCsvFolder(const std::string& folder, const std::vector<std::string>& names) {
  std::vector<FilePlace> places;
  if (folder.empty()) return places;
  for (const std::string& name : names) places.push_back({"--csv", (fs::path(folder) / name).string()});
  return places;
}

}  // namespace kalmia::app
