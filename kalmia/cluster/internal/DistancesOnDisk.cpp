#include "kalmia/cluster/internal/DistancesOnDisk.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <string>
#include <system_error>
#include <vector>

#include "kalmia/cluster/internal/ClusterProgress.h"
#include "kalmia/cluster/internal/InitialDistances.h"
#include "kalmia/cluster/internal/PairMemory.h"
#include "kalmia/cluster/internal/StorageSettings.h"

using DendroGram::DistanceAndIndex;
using DendroGram::MegaDistances;

namespace kalmia {

namespace {

constexpr const char* kCaption = "Cluster Analysis";
constexpr int kButtons = 5;          ///< go on or give up; the answer 5 gives up
constexpr int kHelpContext = 854226;
constexpr std::uint64_t kBytesOnDisk = 2 * sizeof(DistanceAndIndex);  ///< of a pair: two lie there while they are split

CString ShortageText(int rows, std::int64_t pairs, const std::string& directory, std::uint64_t bytesFree) {
  const char* const units[] = {"", "Kilo", "Mega", "Giga", "Tera"};
  float needed = static_cast<float>(static_cast<double>(pairs) * 12.0 * 2), free = static_cast<float>(bytesFree);
  int unit = 0;
  for (; unit < 4 && needed > 1024 && free > 1024; ++unit) {
    needed /= 1024;
    free /= 1024;
  }
  CString text;
  text.Format(
      "When doing cluster analysis, a total of N*(N-1)/2 initial distances are calculated. In this case, enough RAM to "
      "hold these distances could not be allocated (N=%u). Kalmia can use your disk to store these numbers but it "
      "needs %.3f %sbytes of free space on the disk where Kalmia stores temporary files ('%s'). The free space on the "
      "disk is currently %.3f %sbytes. Please make sure that there is enough free space on the disk.",
      static_cast<unsigned>(rows), static_cast<double>(needed), units[unit], directory.c_str(),
      static_cast<double>(free), units[unit]);
  return text;
}

/// The largest buffer that can be had by halving, of one record at least.
std::vector<DistanceAndIndex> LargestBuffer(const NCDataMatrix<float>& data, const Ask& ask) {
  const std::uint64_t fit = PairsThatFit(data.SizeRows(), data.SizeColumns(), kNeedsOfBuffer);
  std::uint64_t size = static_cast<std::uint64_t>(PairCount(data.SizeRows()));
  const auto halve = [&size] { size = std::max<std::uint64_t>(size / 2, 1); };
  while (size > fit && size > 1) halve();
  for (;; halve()) {
    try {
      std::vector<DistanceAndIndex> buffer;
      GrowTo(static_cast<std::size_t>(size), ask, &buffer);
      return buffer;
    } catch (const std::bad_alloc&) {
      if (size == 1) throw;
    }
  }
}

}  // namespace

void TellOfDisk(int rows, const std::string& directory, std::uint64_t bytesFree) {
  const std::int64_t pairs = PairCount(rows);
  if (bytesFree < static_cast<std::uint64_t>(pairs) * kBytesOnDisk) {
    const CString message = ShortageText(rows, pairs, directory, bytesFree);
    if (DistanceDialogue().Ask("Do you wish to continue?", message, kCaption, kButtons) == kButtons)
      throw NCError("Cluster analysis aborted.");
  }
  CString text;
  text.Format(
      "When doing cluster analysis, a total of N*(N-1)/2 initial distances are calculated. In this case, enough RAM to "
      "hold these distances could not be allocated (N=%u). The disk ('%s') will be used to temporarily store the "
      "calculated distances. The calculations may be time-consuming but you can increase the speed by using a fast "
      "disk for the temporary storage.",
      static_cast<unsigned>(rows), directory.c_str());
  DistanceDialogue().Show(text, kCaption, kHelpContext);
}

std::uint64_t BytesFree(const std::string& directory) {
  std::error_code error;
  const std::uint64_t bytes = std::filesystem::space(directory, error).available;
  return error ? std::numeric_limits<std::uint64_t>::max() : bytes;
}

std::unique_ptr<MegaDistances> DistancesOnDisk(const NCDataMatrix<float>& data, NCProgress* progress,
                                               const FreeSpace& freeSpace) {
  const int rows = data.SizeRows();
  const std::int64_t pairs = PairCount(rows);
  const std::string directory = DistanceDirectory();
  TellOfDisk(rows, directory, freeSpace(directory));
  // First what is of another order than the pairs: the buffer may take nearly all that is free.
  using DendroGram::RowDistances;
  const ClusterProgress bar(progress);
  const Ask poll = QuestionsTo(bar);
  const RowDistances distances(data, DendroGram::SquaredDifference, DendroGram::SquareRootOfDistance, poll);
  std::vector<DistanceAndIndex> some(static_cast<std::size_t>(rows) * RowDistances::kRowsSideBySide);
  std::vector<DistanceAndIndex> memory = LargestBuffer(data, poll);
  WorkMeter cells(poll, RowDistances::kCellsPerQuestion);
  bar.SetRange(0, 2);
  bar.PushSubRange(0, 1);
  auto store = std::make_unique<MegaDistances>(memory, progress, static_cast<unsigned>(pairs));
  for (int a = 1; a < rows; a += RowDistances::kRowsSideBySide) {
    const DistanceAndIndex* const end =
        distances.Calculate(a, std::min(RowDistances::kRowsSideBySide, rows - a), some.data(), &cells);
    for (const DistanceAndIndex* pair = some.data(); pair != end; ++pair) store->AddDistance(*pair);
  }
  bar.PopSubRange();
  bar.PushSubRange(1, 2);
  store->SplitDistances();
  bar.PopSubRange();
  return store;
}

}  // namespace kalmia
