#include "kalmia/analysis/report/WrittenFiles.h"

#include <filesystem>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace fs = std::filesystem;

namespace {

/// "Wrote 11 files into DIR: ..."; empty without files.
std::string FolderText(const std::vector<std::string>& paths) {
  if (paths.empty()) return "";
  std::vector<std::string> names;
  for (const std::string& path : paths) names.push_back(fs::path(path).filename().string());
  const std::string folder = fs::path(paths.front()).parent_path().string();
  return "\nWrote " + Counted(names.size(), "file") + " into " + OneLine(folder) + ": " + Listed(names) + "\n";
}

}  // namespace

std::string WrittenText(const FitFiles& files) {
  std::string text;
  if (!files.saved.empty()) text += "\nSaved the model as " + OneLine(files.saved) + "\n";
  if (!files.savedCv.empty()) text += "\nSaved the cross-validation as " + OneLine(files.savedCv) + "\n";
  if (!files.report.empty()) text += "\nWrote the report " + OneLine(files.report) + "\n";
  return text + FolderText(files.csv) + FolderText(files.svg);
}

std::string WrittenText(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) text += "Wrote " + OneLine(path) + "\n";
  return text.empty() ? "" : "\n" + text;
}

}  // namespace kalmia::analysis
