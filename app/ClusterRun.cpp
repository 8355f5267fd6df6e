#include "app/ClusterRun.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Interrupt.h"
#include "app/Numbers.h"
#include "app/TemporaryPath.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/support/TempFile.h"
#include "kalmia/support/UserComm.h"

namespace kalmia::app {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kBytesPerPair = sizeof(DendroGram::DistanceAndIndex);  ///< in the list of either method
constexpr int kGiveUp = 5;  ///< the answer to the library's question that ends the calculation
constexpr std::size_t kRowsNamed = 10;

std::string FolderFor(const ClusterOptions& options) {
  return options.temp.empty() ? TemporaryDirectory() : options.temp;
}

/// Makes a folder of its own in this one; empty, with errno, where none can be made.
std::string MakeFolderIn(const std::string& folder) {
  std::string path = folder + "/.kalmia-XXXXXX";
  return mkdtemp(path.data()) == nullptr ? "" : path;
}

/// A folder of the library's temporary files while the object lives: its own, in the one that is named, so that
/// whatever is in it goes with it, by a signal too. Where none can be made the library meets the same trouble, if it
/// needs one.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& folder) {
    if (const char* const before = std::getenv("TMPDIR")) before_ = before;
    const DeadlineHold untilItIsNoted;
    const std::string path = MakeFolderIn(folder);
    if (path.empty()) return;
    own_.emplace(path, TemporaryPath::Kind::FolderWithFiles);
    setenv("TMPDIR", path.c_str(), 1);
  }
  ~TemporaryFolder() {
    if (before_) {
      setenv("TMPDIR", before_->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

 private:
  std::optional<std::string> before_;
  std::optional<TemporaryPath> own_;
};

/// The cap on the distances in memory while the object lives.
class MemorySetting {
 public:
  explicit MemorySetting(const std::optional<std::uint64_t>& bytes) {
    if (bytes) DendroGram::SetMaximumPairsInMemory(std::max<std::uint64_t>(*bytes / kBytesPerPair, 1));
  }
  ~MemorySetting() { DendroGram::SetMaximumPairsInMemory(0); }
  MemorySetting(const MemorySetting&) = delete;
  MemorySetting& operator=(const MemorySetting&) = delete;
};

/// The library's questions while the object lives: a disk that is too small is refused, and nothing is printed.
class DiskDialogue : public UserComm {
 public:
  DiskDialogue() { SetUserComm(this); }
  ~DiskDialogue() override { SetUserComm(nullptr); }

  int Ask(const char* /*question*/, const char* /*message*/, const char* /*caption*/, int /*buttons*/) override {
    refused_ = true;
    return kGiveUp;
  }
  void Show(const char* /*text*/, const char* /*caption*/, int /*helpContext*/) override { usesDisk_ = true; }

  bool Refused() const { return refused_; }
  bool UsesDisk() const { return usesDisk_; }

 private:
  bool refused_ = false;
  bool usesDisk_ = false;
};

std::uint64_t PairsOf(int rows) {
  const auto n = static_cast<std::uint64_t>(rows);
  return n * (n - 1) / 2;
}

std::string DistancesText(int rows) {
  return "the " + std::to_string(PairsOf(rows)) + " distances of " + std::to_string(rows) + " rows";
}

[[noreturn]] void FailForMemory(int rows) {
  throw BadData(DistancesText(rows) + " take " + BytesText(PairsOf(rows) * kBytesPerPair) +
                ", more than there is memory for them; --method single can use the disk");
}

[[noreturn]] void FailForSpace(const std::string& folder, int rows) {
  CheckTemporaryFolder(folder);
  std::error_code ignored;
  throw BadFile(DistancesText(rows) + " take " + BytesText(PairsOf(rows) * kBytesPerPair * 2) +
                " of temporary files, and " + OneLine(folder) + " has " +
                BytesText(fs::space(folder, ignored).available) +
                " free: name another folder with --temp, or give more --memory");
}

[[noreturn]] void FailForFiles(const std::string& folder, const NCError& error) {
  CheckTemporaryFolder(folder);
  throw BadFile("temporary files in " + OneLine(folder) +
                " fail (the disk may be full, or there are too many: give more --memory): " +
                OneLine(static_cast<const char*>(error.GetMessage())));
}

/// The rows that miss more than half of their cells; empty where there are none.
std::string RowsWithHoles(const ClusterData& data) {
  std::vector<std::string> names;
  for (int r = 1; r <= data.Rows(); ++r) {
    if (2 * data.cells[r].GetNumMisVal() > data.cells.SizeColumns()) {
      names.push_back(data.rowNames[static_cast<std::size_t>(r) - 1]);
    }
  }
  if (names.empty()) return "";
  return "more than half of the cells are missing in " + std::string(names.size() == 1 ? "row " : "rows ") +
         Listed(names, kRowsNamed);
}

std::string RowsWithLittleInCommon(const ClusterData& data, const DendroGram::CommonColumnsError& error) {
  const auto name = [&data](int row) { return Quoted(data.rowNames[static_cast<std::size_t>(row) - 1]); };
  return "the rows " + name(error.firstRow) + " and " + name(error.secondRow) + " have " +
         std::to_string(error.commonColumns) + " of " +
         Counted(static_cast<std::size_t>(data.cells.SizeColumns()), "column") +
         " in common, and perhaps other rows too: less than the square root of the number of columns";
}

}  // namespace

void CheckTemporaryFolder(const std::string& folder) {
  const DeadlineHold untilItIsGone;
  const std::string path = MakeFolderIn(folder);
  if (path.empty()) {
    throw BadFile("cannot make temporary files in " + OneLine(folder) + ": " + std::generic_category().message(errno));
  }
  rmdir(path.c_str());
}

std::string BytesText(std::uint64_t bytes) {
  const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
  double size = static_cast<double>(bytes);
  int unit = 0;
  for (; unit < 4 && size >= 1024.0; ++unit) size /= 1024.0;
  return Fixed(size, unit == 0 ? 0 : 1) + " " + units[unit];
}

OwnedTree BuildTree(const std::string& table, const ClusterData& data, const ClusterOptions& options,
                    NCProgress* progress, Notes* notes) {
  using namespace DendroGram;
  const std::string folder = FolderFor(options);
  const TemporaryFolder temporary(folder);
  const MemorySetting memory(options.memory);
  const DiskDialogue dialogue;
  // Its roots are on the scale of distances: for two rows it is their distance over the root of two.
  WardDistanceCalculator ward(WardDistanceCalculator::DistanceRootIncrease);
  SingleLinkageDistanceCalculator single;
  ClusterDistanceCalculator& calculator =
      options.method == "ward" ? static_cast<ClusterDistanceCalculator&>(ward) : single;
  try {
    OwnedTree tree(GetDendroGram(data.cells, calculator, progress, /*cache=*/nullptr));
    if (dialogue.UsesDisk()) {
      notes->Add(DistancesText(data.Rows()) + " found no room in memory and were kept in temporary files in " +
                 OneLine(folder));
    }
    return tree;
  } catch (const ClusterAllocationError&) {
    FailForMemory(data.Rows());
  } catch (const CommonColumnsError& error) {
    throw BadData(table + ": " + RowsWithLittleInCommon(data, error));
  } catch (const NCError& error) {
    StopIfInterrupted();
    if (dialogue.Refused()) FailForSpace(folder, data.Rows());
    if (dialogue.UsesDisk()) FailForFiles(folder, error);
    const std::string rows = RowsWithHoles(data);
    if (rows.empty()) throw;
    throw BadData(table + ": " + rows);
  }
}

}  // namespace kalmia::app
