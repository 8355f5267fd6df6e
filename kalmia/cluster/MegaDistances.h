#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// A temporary file of pairs: records of 12 bytes, unsorted. The last owner deletes it from the disk.
struct KALMIA_EXPORT DistanceFile {
  /// Creates the file. Throws NCError "The temporary file %s could not be opened".
  DistanceFile();
  ~DistanceFile();
  DistanceFile(const DistanceFile&) = delete;
  DistanceFile& operator=(const DistanceFile&) = delete;

  // Numbers are of records, from 0. The caller keeps `count`: nothing here reads or changes it.
  /// Writes n records at the position of the stream, which is its end unless it was read. Not checked: if the disk is
  /// full, a later read fails.
  void Append(const DistanceAndIndex* pairs, std::size_t n);
  /// Sets the next record to read; a read after the last one fails. Forgets earlier failures.
  void SeekTo(std::uint32_t record);
  /// Reads n records; false if fewer are left, and the rest of `pairs` is then unchanged.
  bool Read(DistanceAndIndex* pairs, std::size_t n);

  CString name;
  std::fstream stream;
  float maximum = 0;        ///< upper limit of the distances
  float minimum = 0;        ///< lower limit
  std::uint32_t count = 0;  ///< records
  bool isConstant = false;  ///< known to hold a single distance

 private:
  explicit DistanceFile(CString&& nameOfFile);
};

using DistanceFiles = std::vector<std::shared_ptr<DistanceFile>>;

/// Distributes the records of `source` over new files, one for each limit, from the largest distances to the smallest.
/// A record goes into the first file whose lower limit, which is the next limit, it reaches; the last file takes all
/// others and has the source's lower limit. Files without records are dropped. Records of one file keep their order.
/// Uses the capacity of `buffer`, which is empty afterwards, also after a throw. Throws NCError: if there is no
/// capacity, before anything is done; "Error when reading from temporary file."; on a stop request "Cluster analysis
/// aborted.".
KALMIA_EXPORT DistanceFiles DistributeDistances(DistanceFile& source, std::vector<float>& limits,
                                                std::vector<DistanceAndIndex>& buffer, unsigned total,
                                                NCProgress* progress);

/// The pairs of a table by rising distance, for tables whose pairs do not fit in memory. They are on disk, split by
/// distance into segments, which are loaded and sorted one by one. A pair takes 12 bytes on disk, 24 during the split;
/// each record is written twice and read twice. A segment larger than memory is split again when it is needed, until it
/// fits; one of a single distance is loaded in pieces. Each segment keeps its file open: about 2 * pairs / memory
/// files. It takes a megabyte beside its memory. Add pairs in the order of their rows: equal distances then come in the
/// order of a list in memory, for any size of the memory.
class KALMIA_EXPORT MegaDistances {
 public:
  /// Takes over the storage of `memory`; its size is the number of records in memory, NCError if it is 0. `total` is
  /// the number of pairs that will be added.
  MegaDistances(std::vector<DistanceAndIndex>& memory, NCProgress* progress, unsigned total);

  /// Throws NCError "Cluster analysis aborted" when the user stops.
  void AddDistance(const DistanceAndIndex& pair);
  /// Call it once, after the last AddDistance. Throws as DistributeDistances.
  void SplitDistances();
  /// The nearest pair left; of equal distances the one of the latest rows. Throws NCError "Internal error in
  /// MegaDistances::LoadNextSegment." if there is none or it cannot be read, and "Cluster analysis aborted." on a stop
  /// request while a segment is split or loaded; it can then be loaded again.
  const DistanceAndIndex& GetNearest();
  void RemoveNearest();
  /// Fills the empty buffer with the segment of the smallest distances left. The two operations above call it; it
  /// throws the same.
  void LoadNextSegment();

 private:
  void SplitLastSegment();
  void ReplaceLastSegment(const DistanceFiles& parts);
  void Load(DistanceFile& file, std::uint32_t n);

  std::uint32_t memorySize_;
  double sumOfSquares_ = 0;
  DistanceFiles segments_;  ///< from the largest distances to the smallest
  std::vector<DistanceAndIndex> buffer_;  ///< sorted by descending distance; never beyond its first capacity
  NCProgress* progress_;
  unsigned total_;
};

}  // namespace DendroGram
