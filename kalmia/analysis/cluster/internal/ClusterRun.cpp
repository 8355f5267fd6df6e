#include "kalmia/analysis/cluster/internal/ClusterRun.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/support/TempFile.h"
#include "kalmia/support/UserComm.h"

namespace kalmia::analysis {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kBytesPerPair = sizeof(DendroGram::DistanceAndIndex);  ///< in the list of either method
constexpr int kGiveUp = 5;  ///< the answer to the library's question that ends the calculation
constexpr std::size_t kRowsNamed = 10;

/// Where temporary files are made.
struct Folder {
  std::string path;
  std::string name;  ///< for messages
};

/// Throws BadFile if no temporary files can be made in the folder.
void CheckFolder(const Folder& folder) {
  const CString file = VexGetTempFileName(folder.path.c_str(), "kalmia", nullptr);
  if (file == "") {
    throw BadFile("cannot make temporary files in " + OneLine(folder.name) + ": " +
                  std::generic_category().message(errno));
  }
  std::remove(file);
}

/// Answers the questions of a calculation: a disk that is too small is refused, and nothing is printed.
class DiskDialogue : public UserComm {
 public:
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
                ", more than there is memory for them",
                Remedy::TakeSingleLinkage);
}

[[noreturn]] void FailForSpace(const Folder& folder, int rows) {
  CheckFolder(folder);
  std::error_code ignored;
  throw BadFile(DistancesText(rows) + " take " + BytesText(PairsOf(rows) * kBytesPerPair * 2) +
                " of temporary files, and " + OneLine(folder.name) + " has " +
                BytesText(fs::space(folder.path, ignored).available) +
                " free",
                Remedy::GiveMemoryOrFolder);
}

[[noreturn]] void FailForFiles(const Folder& folder, const NCError& error) {
  CheckFolder(folder);
  throw BadFile("temporary files in " + OneLine(folder.name) +
                " fail (the disk may be full, or there are too many of them): " +
                    OneLine(static_cast<const char*>(error.GetMessage())),
                Remedy::GiveMemory);
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

std::string BytesText(std::uint64_t bytes) {
  const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
  double size = static_cast<double>(bytes);
  int unit = 0;
  for (; unit < 4 && size >= 1024.0; ++unit) size /= 1024.0;
  return Fixed(size, unit == 0 ? 0 : 1) + " " + units[unit];
}

OwnedTree BuildTree(const std::string& table, const ClusterData& data, const ClusterRecipe& recipe,
                    NCProgress* progress, Notes* notes) {
  using namespace DendroGram;
  const std::string directory = recipe.temporaryFolder.empty() ? TemporaryDirectory() : recipe.temporaryFolder;
  const Folder folder = {directory, recipe.temporaryFolderName.empty() ? directory : recipe.temporaryFolderName};
  WorkProgress work(progress);  // the library leaves a range of its bar open: not on the caller's
  work.Begin("clustering " + Counted(static_cast<std::size_t>(data.Rows()), "row"));
  DiskDialogue dialogue;
  const std::uint64_t pairs = recipe.memory ? std::max<std::uint64_t>(*recipe.memory / kBytesPerPair, 1) : 0;
  const DistanceStorage storage({pairs, directory, &dialogue});
  // Its roots are on the scale of distances: for two rows it is their distance over the root of two.
  WardDistanceCalculator ward(WardDistanceCalculator::DistanceRootIncrease);
  SingleLinkageDistanceCalculator single;
  ClusterDistanceCalculator& calculator =
      recipe.method == "ward" ? static_cast<ClusterDistanceCalculator&>(ward) : single;
  try {
    OwnedTree tree(GetDendroGram(data.cells, calculator, work.Bar(), /*cache=*/nullptr));
    if (dialogue.UsesDisk()) {
      notes->Add(DistancesText(data.Rows()) + " found no room in memory and were kept in temporary files in " +
                 OneLine(folder.name));
    }
    return tree;
  } catch (const ClusterAllocationError&) {
    FailForMemory(data.Rows());
  } catch (const CommonColumnsError& error) {
    throw BadData(table + ": " + RowsWithLittleInCommon(data, error));
  } catch (const NCError& error) {
    work.Ask();
    if (dialogue.Refused()) FailForSpace(folder, data.Rows());
    if (dialogue.UsesDisk()) FailForFiles(folder, error);
    const std::string rows = RowsWithHoles(data);
    throw BadData(table + ": " + (rows.empty() ? OneLine(static_cast<const char*>(error.GetMessage())) : rows));
  }
}

}  // namespace kalmia::analysis
