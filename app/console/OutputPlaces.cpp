#include "app/console/OutputPlaces.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "app/Analysis.h"
#include "app/console/OutputFiles.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

namespace fs = std::filesystem;

/// Where a file that is not there yet will be.
fs::path FuturePlace(const std::string& path) {
  std::error_code ignored;
  return fs::weakly_canonical(fs::absolute(BehindLinks(path), ignored), ignored);
}

/// True for two names of one place, whatever is there.
bool HaveOnePlace(const std::string& a, const std::string& b) {
  const fs::path place = FuturePlace(a);
  return !place.empty() && place == FuturePlace(b);
}

/// True for one file under two names, be it there or not yet. A device or a pipe is never overwritten.
bool AreSame(const std::string& a, const std::string& b) {
  std::error_code ignored;
  if (fs::exists(a, ignored)) return fs::is_regular_file(a, ignored) && fs::equivalent(a, b, ignored);
  return HaveOnePlace(a, b);
}

/// "-" is the folder itself, or the file where there is no such folder.
void RefuseStandardOutput(const FilePlace& output) {
  if ((output.folder.empty() ? output.path : output.folder) != "-") return;
  throw BadRequest(output.what + " takes a " + (output.folder.empty() ? "file" : "folder") +
                   ", not '-': standard output shows the results");
}

/// True if what the process prints to this descriptor goes to a file of that name.
bool GoesTo(int descriptor, const std::string& path) {
  struct stat printed = {}, file = {};
  return fstat(descriptor, &printed) == 0 && S_ISREG(printed.st_mode) && stat(path.c_str(), &file) == 0 &&
         printed.st_dev == file.st_dev && printed.st_ino == file.st_ino;
}

/// What is printed would be lost with the file that is replaced.
void RefuseWhatIsPrinted(const FilePlace& output) {
  for (const auto& [descriptor, name] :
       {std::pair{STDOUT_FILENO, "standard output"}, {STDERR_FILENO, "standard error"}}) {
    if (!GoesTo(descriptor, output.path)) continue;
    throw BadRequest(output.what + " would overwrite " + OneLine(output.path) + ", which is where " + name + " goes");
  }
}

void RefuseFolderAsFile(const FilePlace& file, const FilePlace& inFolder) {
  if (inFolder.folder.empty() || !HaveOnePlace(file.path, inFolder.folder)) return;
  throw BadRequest(file.what + " would write the file " + OneLine(file.path) + ", which is the folder of " +
                   inFolder.what);
}

void RefuseTwice(const FilePlace& one, const FilePlace& other) {
  RefuseFolderAsFile(one, other);
  RefuseFolderAsFile(other, one);
  if (!AreSame(other.path, one.path)) return;
  throw BadRequest(one.what + " and " + other.what + " would both write " + OneLine(other.path));
}

}  // namespace

std::vector<FilePlace> Given(std::vector<FilePlace> places) {
  const auto isMissing = [](const FilePlace& place) { return place.path.empty(); };
  places.erase(std::remove_if(places.begin(), places.end(), isMissing), places.end());
  return places;
}

void CheckPlaces(const std::vector<FilePlace>& inputs, const std::vector<FilePlace>& outputs) {
  RefuseToOverwrite(inputs, outputs);
  TryOutputs(outputs);
}

void RefuseToOverwrite(const std::vector<FilePlace>& inputs, const std::vector<FilePlace>& outputs) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    RefuseStandardOutput(outputs[i]);
    for (const FilePlace& input : inputs) {
      if (input.path == "-" || !AreSame(outputs[i].path, input.path)) continue;
      throw BadRequest(outputs[i].what + " would overwrite " + input.what + " " + OneLine(input.path));
    }
    for (std::size_t j = 0; j < i; ++j) RefuseTwice(outputs[j], outputs[i]);
    RefuseWhatIsPrinted(outputs[i]);
  }
}

void TryOutputs(const std::vector<FilePlace>& outputs) {
  OutputFiles trial;  // takes its files back, as they are never committed
  for (const FilePlace& output : outputs) {
    if (!output.folder.empty()) trial.MakeFolder(output.folder);
  }
  for (const FilePlace& output : outputs) trial.Stage(output.path, "");
}

std::vector<std::string> PathsOf(const std::vector<FilePlace>& places) {
  std::vector<std::string> paths;
  for (const FilePlace& place : places) paths.push_back(place.path);
  return paths;
}

std::string WrittenText(const std::vector<FilePlace>& outputs) {
  return analysis::WrittenText(PathsOf(outputs));
}

std::vector<FilePlace> PlacesInCsvFolder(const std::string& folder, const std::vector<std::string>& names) {
  std::vector<FilePlace> places;
  if (folder.empty()) return places;
  for (const std::string& name : names) places.push_back({"--csv", (fs::path(folder) / name).string(), folder});
  return places;
}

std::vector<FilePlace> PlacesInSvgFolder(const std::string& folder, const std::vector<std::string>& figures) {
  std::vector<FilePlace> places;
  if (folder.empty()) return places;
  for (const std::string& figure : figures) places.push_back({"--svg", SvgPath(folder, figure), folder});
  return places;
}

std::string SvgPath(const std::string& folder, const std::string& figure) {
  return (fs::path(folder) / (figure + ".svg")).string();
}

}  // namespace kalmia::app
