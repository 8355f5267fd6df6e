#include "app/console/ReportFiles.h"

#include <filesystem>
#include <system_error>

#include "app/console/InputFile.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace fs = std::filesystem;

namespace {

fs::path ReportFolder() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  return program.parent_path().parent_path() / "share" / "kalmia" / "report";
}

std::string ReadAsset(const fs::path& folder, const char* name) {
  const std::string path = (folder / name).string();
  std::error_code error;
  if (fs::is_regular_file(path, error)) return ReadInput(path);
  throw BadFile("--report needs " + path +
                ", which is not there: this kalmia was built without what pages are drawn with (KALMIA_REPORT)");
}

}  // namespace

ReportAssets ReadReportAssets() {
  const fs::path folder = ReportFolder();
  return {ReadAsset(folder, "echarts.min.js"), ReadAsset(folder, "report.js"), ReadAsset(folder, "report.css"),
          ReadAsset(folder, "NOTICE")};
}

}  // namespace kalmia::app
