#include "kalmia/cluster/MegaDistances.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <utility>

#include "kalmia/cluster/internal/ClusterProgress.h"
#include "kalmia/cluster/internal/PairSort.h"
#include "kalmia/cluster/internal/StorageSettings.h"
#include "kalmia/statistics/Sta.h"
#include "kalmia/support/TempFile.h"

using kalmia::ClusterProgress;

namespace DendroGram {

namespace {

constexpr unsigned kRecordsPerStep = 10000;      ///< while saving, the bar moves once for so many
constexpr std::size_t kRecordsAtOnce = 65536;    ///< are read, and dealt out, between two questions
constexpr double kMostParts = 1 << 20;           ///< more files than a process may have open, as Linux comes
constexpr double kDegreesOfFreedom = 10000;      ///< t of so many stands in for the normal distribution
constexpr const char* kPrefix = "kal-";          ///< of the names of temporary files
constexpr const char* kExtension = "clu";
constexpr const char* kLoadError = "Internal error in MegaDistances::LoadNextSegment.";

/// What the distances of a file lie between.
struct DistanceRange {
  float smallest = std::numeric_limits<float>::infinity();
  float largest = -std::numeric_limits<float>::infinity();
  bool hasNaNs = false;

  bool HasNumbers() const { return smallest <= largest; }
  bool IsConstant() const { return hasNaNs ? !HasNumbers() : smallest == largest; }
};

/// Empties a buffer that was lent, whichever way the borrower is left.
struct EmptiedAtTheEnd {
  std::vector<DistanceAndIndex>& buffer;
  ~EmptiedAtTheEnd() { buffer.clear(); }
};

/// How many records are read at once into a buffer of which no more than the capacity may be used.
std::size_t ChunkOf(const std::vector<DistanceAndIndex>& buffer, std::uint32_t left) {
  return std::min({buffer.capacity(), kRecordsAtOnce, static_cast<std::size_t>(left)});
}

DistanceRange RangeOf(DistanceFile& file, std::vector<DistanceAndIndex>& buffer, const ClusterProgress& bar) {
  const EmptiedAtTheEnd lent = {buffer};
  DistanceRange range;
  file.SeekTo(0);
  for (std::uint32_t done = 0; done < file.count;) {
    const std::size_t chunk = ChunkOf(buffer, file.count - done);
    buffer.resize(chunk);
    if (!file.Read(buffer.data(), chunk)) throw NCError(kLoadError);
    for (const DistanceAndIndex& pair : buffer) {
      if (std::isnan(pair.distance)) range.hasNaNs = true;
      if (pair.distance < range.smallest) range.smallest = pair.distance;
      if (pair.distance > range.largest) range.largest = pair.distance;
    }
    done += static_cast<std::uint32_t>(chunk);
    if (done < file.count) bar.ThrowIfStopped();
  }
  return range;
}

/// Deals records out to the files that they go to, without changing their order within a file: who reads a file of
/// equal distances finds the rows in the order in which they were written.
class Dealer {
 public:
  explicit Dealer(const DistanceFiles& files) : begins_(files.size() + 1) {
    for (std::size_t k = 0; k + 1 < files.size(); ++k) limits_.push_back(files[k]->minimum);
  }

  void Deal(const std::vector<DistanceAndIndex>& records) {
    fileOf_.clear();
    std::fill(begins_.begin(), begins_.end(), 0);
    for (const DistanceAndIndex& record : records) {
      fileOf_.push_back(FileOf(record.distance));
      ++begins_[fileOf_.back() + 1];
    }
    std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
    sorted_.resize(records.size());
    std::vector<std::size_t> next(begins_.begin(), begins_.end() - 1);
    for (std::size_t k = 0; k < records.size(); ++k) sorted_[next[fileOf_[k]]++] = records[k];
  }
  const DistanceAndIndex* RecordsOf(std::size_t file) const { return sorted_.data() + begins_[file]; }
  std::size_t CountOf(std::size_t file) const { return begins_[file + 1] - begins_[file]; }

 private:
  std::uint32_t FileOf(float distance) const {
    const auto reached = std::partition_point(limits_.begin(), limits_.end(),
                                              [distance](float limit) { return !(distance >= limit); });
    return static_cast<std::uint32_t>(reached - limits_.begin());
  }

  std::vector<float> limits_;  ///< of all files but the last
  std::vector<std::uint32_t> fileOf_;
  std::vector<DistanceAndIndex> sorted_;
  std::vector<std::size_t> begins_;  ///< by file, and the end
};

}  // namespace

DistanceFile::DistanceFile(CString&& nameOfFile) : name(std::move(nameOfFile)) {}

// What is thrown below comes from a whole object already, whose destructor removes the file.
DistanceFile::DistanceFile()
    : DistanceFile(VexGetTempFileName(kalmia::DistanceDirectory().c_str(), kPrefix, kExtension)) {
  // Without trunc, as the file is empty: of one that was cut to nothing some file systems write all when it is closed.
  stream.open(static_cast<const char*>(name), std::ios::in | std::ios::out | std::ios::binary);
  if (stream.is_open()) return;
  // Without a name none could be made in the directory.
  const std::string path = name == "" ? kalmia::DistanceDirectory() + "/" + kPrefix + "XXXXXX." + kExtension
                                          : static_cast<const char*>(name);
  CString message;
  message.Format("The temporary file %s could not be opened", path.c_str());
  throw NCError(message);
}

DistanceFile::~DistanceFile() {
  stream.close();
  std::remove(name);
}

void DistanceFile::Append(const DistanceAndIndex* pairs, std::size_t n) {
  if (n == 0) return;
  stream.write(reinterpret_cast<const char*>(pairs), static_cast<std::streamsize>(n * sizeof(DistanceAndIndex)));
}

void DistanceFile::SeekTo(std::uint32_t record) {
  stream.clear();
  stream.seekg(static_cast<std::streamoff>(record) * static_cast<std::streamoff>(sizeof(DistanceAndIndex)));
}

bool DistanceFile::Read(DistanceAndIndex* pairs, std::size_t n) {
  stream.read(reinterpret_cast<char*>(pairs), static_cast<std::streamsize>(n * sizeof(DistanceAndIndex)));
  return stream.good();
}

DistanceFiles DistributeDistances(DistanceFile& source, std::vector<float>& limits,
                                  std::vector<DistanceAndIndex>& buffer, unsigned total, NCProgress* progress) {
  if (buffer.capacity() == 0) throw NCError("Cluster analysis: a buffer without room cannot distribute distances.");
  const EmptiedAtTheEnd lent = {buffer};
  const ClusterProgress bar(progress);
  std::sort(limits.begin(), limits.end(), std::greater<>());
  DistanceFiles files;
  for (std::size_t k = 0; k < limits.size(); ++k) {
    files.push_back(std::make_shared<DistanceFile>());
    files.back()->maximum = limits[k];
    files.back()->minimum = k + 1 < limits.size() ? limits[k + 1] : source.minimum;
  }
  Dealer dealer(files);
  source.SeekTo(0);
  for (std::uint32_t done = 0; done < source.count;) {
    const std::size_t chunk = ChunkOf(buffer, source.count - done);
    const auto report = [&](double fraction) {
      bar.ThrowIfStopped();
      if (total != 0) bar.SetValue(static_cast<float>((static_cast<double>(chunk) * fraction + done) / total));
    };
    buffer.resize(chunk);
    const bool good = source.Read(buffer.data(), chunk);
    report(0.3);
    if (!good) throw NCError("Error when reading from temporary file.");
    dealer.Deal(buffer);
    for (std::size_t k = 0; k < files.size(); ++k) {
      files[k]->Append(dealer.RecordsOf(k), dealer.CountOf(k));
      files[k]->count += static_cast<std::uint32_t>(dealer.CountOf(k));
      report(0.7 * static_cast<double>(k + 1) / static_cast<double>(files.size()) + 0.3);
    }
    done += static_cast<std::uint32_t>(chunk);
  }
  files.erase(std::remove_if(files.begin(), files.end(), [](const auto& file) { return file->count == 0; }),
              files.end());
  return files;
}

MegaDistances::MegaDistances(std::vector<DistanceAndIndex>& memory, NCProgress* progress, unsigned total)
    : memorySize_(static_cast<std::uint32_t>(memory.size())), progress_(progress), total_(total) {
  if (memory.empty()) throw NCError("Cluster analysis: distances on disk take memory for one of them at least.");
  segments_.push_back(std::make_shared<DistanceFile>());
  buffer_ = std::move(memory);
  buffer_.clear();
  const ClusterProgress bar(progress_);
  bar.SetRange(0, 1);
  CString text;
  text.Format("Calculating and saving %u distances", total_);
  bar.SetText(text);
}

void MegaDistances::AddDistance(const DistanceAndIndex& pair) {
  DistanceFile& file = *segments_.front();
  file.Append(&pair, 1);
  if (pair.distance > file.maximum) file.maximum = pair.distance;
  ++file.count;
  sumOfSquares_ += static_cast<double>(pair.distance) * pair.distance;
  if (!progress_) return;
  bool goesOn = true;
  if (file.count % kRecordsPerStep == 0)
    goesOn = progress_->SetValue(static_cast<float>(static_cast<double>(file.count) / total_));
  if (!goesOn || progress_->IsBreakPressed()) throw NCError("Cluster analysis aborted");
}

/// Limits at the quantiles that normal distances of mean 0 would have: about equally full segments, twice as many as
/// would just fit.
void MegaDistances::SplitDistances() {
  const std::shared_ptr<DistanceFile> source = segments_.front();
  const int parts = static_cast<int>(std::min(2.0 * source->count / memorySize_ + 1.0, kMostParts));
  const float sigma = static_cast<float>(std::sqrt(sumOfSquares_ / source->count));
  const ClusterProgress bar(progress_);
  bar.SetText("Splitting distances");
  bar.SetRange(0, 1);
  std::vector<float> limits;
  for (int k = 1; k < parts; ++k) {
    const float q = static_cast<float>(static_cast<double>(k) / parts);
    const float t = static_cast<float>(Sta::GetStudentsT(q, kDegreesOfFreedom, false) * sigma);
    if (!(source->maximum > t)) break;
    limits.push_back(t);
  }
  limits.push_back(source->maximum);
  segments_ = DistributeDistances(*source, limits, buffer_, total_, progress_);
}

const DistanceAndIndex& MegaDistances::GetNearest() {
  while (buffer_.empty()) LoadNextSegment();
  return buffer_.back();
}

void MegaDistances::RemoveNearest() {
  while (buffer_.empty()) LoadNextSegment();
  buffer_.pop_back();
}

void MegaDistances::ReplaceLastSegment(const DistanceFiles& parts) {
  segments_.pop_back();
  segments_.insert(segments_.end(), parts.begin(), parts.end());
}

/// Splits the segment into parts of equal width. Where all of it falls into one part, it is given the limits of what it
/// really holds, by which the next attempt divides it, or is marked as constant. Two things no width divides: NaNs are
/// set apart from the numbers; and where the width is no finite number, the largest distance from all others.
void MegaDistances::SplitLastSegment() {
  const std::shared_ptr<DistanceFile> source = segments_.back();
  const auto parts = static_cast<std::uint32_t>(std::min(source->count / memorySize_ + 2.0, kMostParts));
  ClusterProgress(progress_).SetText("Re-partitioning");
  std::vector<float> limits;
  for (std::uint32_t k = 1; k < parts; ++k)
    limits.push_back(static_cast<float>(k) * (source->maximum - source->minimum) / static_cast<float>(parts) +
                     source->minimum);
  limits.push_back(source->maximum);
  if (!std::any_of(limits.begin(), limits.end(), [](float limit) { return std::isnan(limit); })) {
    const DistanceFiles files = DistributeDistances(*source, limits, buffer_, total_, progress_);
    if (files.size() > 1) return ReplaceLastSegment(files);
  }
  const DistanceRange range = RangeOf(*source, buffer_, ClusterProgress(progress_));
  source->isConstant = range.IsConstant();
  if (source->isConstant) return;
  const bool wasExact = source->minimum == range.smallest && source->maximum == range.largest;
  source->minimum = range.smallest;
  source->maximum = range.largest;
  if (!range.hasNaNs && !wasExact) return;
  limits = {range.largest, range.hasNaNs ? range.smallest : range.largest};
  ReplaceLastSegment(DistributeDistances(*source, limits, buffer_, total_, progress_));
}

/// The last records of a file.
void MegaDistances::Load(DistanceFile& file, std::uint32_t n) {
  const ClusterProgress bar(progress_);
  bar.SetText("Loading distances");
  file.SeekTo(file.count - n);
  for (std::size_t done = 0; done < n;) {
    const std::size_t chunk = std::min<std::size_t>(n - done, kRecordsAtOnce);
    buffer_.resize(done + chunk);
    if (!file.Read(buffer_.data() + done, chunk)) throw NCError(kLoadError);
    done += chunk;
    if (done < n) bar.ThrowIfStopped();
  }
  bar.SetText("Sorting");
  kalmia::SortPairs(buffer_.data(), buffer_.size(), kalmia::QuestionsTo(bar));
}

void MegaDistances::LoadNextSegment() {
  if (segments_.empty()) throw NCError(kLoadError);
  while (segments_.back()->count > memorySize_ && !segments_.back()->isConstant) SplitLastSegment();
  DistanceFile& file = *segments_.back();
  const std::uint32_t n = std::min(file.count, memorySize_);  // less than all only of equal distances
  try {
    Load(file, n);
  } catch (...) {
    buffer_.clear();  // the file has them still
    throw;
  }
  file.count -= n;
  if (file.count == 0) segments_.pop_back();
  ClusterProgress(progress_).SetText("Merging clusters");
}

}  // namespace DendroGram
