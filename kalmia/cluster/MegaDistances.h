#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// A temporary file of pairs: records of 12 bytes, unsorted. Gone, from the disk too, with its last owner.
struct KALMIA_EXPORT DistanceFile {
  /// Creates the file. Throws NCError "The temporary file %s could not be opened".
  DistanceFile();
  ~DistanceFile();
  DistanceFile(const DistanceFile&) = delete;
  DistanceFile& operator=(const DistanceFile&) = delete;

  // Numbers are of records, from 0, and the caller's: nothing here looks at `count` or changes it.
  /// Writes n records where the stream stands, its end as long as nothing was read. Not checked: what a full disk loses
  /// is missed by a later read.
  void Append(const DistanceAndIndex* pairs, std::size_t n);
  /// To the record that is read next; beyond the last one the read fails. Forgets earlier failures.
  void SeekTo(std::uint32_t record);
  /// Reads n records; false where there are not so many left, and the rest of `pairs` is then as it was.
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

/// Distributes the records of `source` over new files, one for each limit, from the largest distances to the smallest:
/// a record goes into the first file whose lower limit, the next limit, it reaches; the last file takes all others and
/// has the source's lower limit. Files without records are left out. Records of one file keep their order.
/// `buffer` lends its capacity, and is empty afterwards, also where something is thrown. Throws NCError where it has
/// none, before anything is done; "Error when reading from temporary file."; and, on a stop, "Cluster analysis
/// aborted.".
KALMIA_EXPORT DistanceFiles DistributeDistances(DistanceFile& source, std::vector<float>& limits,
                                                std::vector<DistanceAndIndex>& buffer, unsigned total,
                                                NCProgress* progress);

/// The pairs of a table by rising distance, where they do not fit in memory: on disk, split by distance into segments,
/// which are loaded and sorted one by one as they are needed. Of each pair 12 bytes lie on disk, twice that while they
/// are split; each record is written twice and read twice. A segment larger than memory is split again when its turn
/// comes, as often as it takes; one of a single distance is taken in pieces. Each segment keeps its file open: about
/// 2 * pairs / memory of them. Beside its memory it takes a megabyte. Pairs are to be added in the order of their
/// rows; then equal distances come in the order in which a list in memory gives them, whatever the size of the memory.
class KALMIA_EXPORT MegaDistances {
 public:
  /// Takes over the storage of `memory`, whose size tells how many records may be in memory: NCError if it is 0.
  /// `total` pairs are to come.
  MegaDistances(std::vector<DistanceAndIndex>& memory, NCProgress* progress, unsigned total);

  /// Throws NCError "Cluster analysis aborted" when the user stops.
  void AddDistance(const DistanceAndIndex& pair);
  /// To be called once, after the last AddDistance. Throws as DistributeDistances.
  void SplitDistances();
  /// The nearest pair left; of equal distances that of the latest rows. Throws NCError "Internal error in
  /// MegaDistances::LoadNextSegment." if there is none or it cannot be read, and "Cluster analysis aborted." where the
  /// user stops while it is split again or loaded: then it can be loaded again.
  const DistanceAndIndex& GetNearest();
  void RemoveNearest();
  /// Fills the buffer, which has to be empty, with the segment of the smallest distances left. The two above call it
  /// themselves, and it throws what they throw.
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
