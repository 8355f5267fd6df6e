#pragma once

#include <string>
#include <vector>

/// A folder of its own for one test, removed with all that is in it.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string Path(const std::string& name) const { return path_ + "/" + name; }
  /// Writes a file and returns its path.
  std::string Write(const std::string& name, const std::string& bytes) const;
  /// Names of what is in the folder, in order, hidden files too.
  std::vector<std::string> Names() const;

 private:
  std::string path_;
};

std::string ReadWholeFile(const std::string& path);
