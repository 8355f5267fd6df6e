#include "kalmia/support/TempFile.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

bool IsGiven(const char* text) { return text && *text; }

}  // namespace

std::string kalmia::TemporaryDirectory() {
  const char* const set = std::getenv("TMPDIR");
  std::string directory = IsGiven(set) ? set : "/tmp";
  while (directory.size() > 1 && directory.back() == '/') directory.pop_back();
  return directory;
}

CString VexGetTempFileName(const char* directory, const char* prefix, const char* extension) {
  const std::string suffix = IsGiven(extension) ? "." + std::string(extension) : "";
  std::string path = IsGiven(directory) ? directory : kalmia::TemporaryDirectory();
  if (path.back() != '/') path += '/';
  path += (prefix ? prefix : "") + std::string("XXXXXX") + suffix;
  const int file = mkstemps(path.data(), static_cast<int>(suffix.size()));  // O_EXCL, mode 0600
  if (file < 0) return CString();
  close(file);
  try {
    return CString(path.c_str());
  } catch (...) {  // nobody would know of the file
    unlink(path.c_str());
    throw;
  }
}
