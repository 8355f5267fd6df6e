#include "kalmia/cluster/MegaDistances.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <utility>

#include "kalmia/cluster/PairSort.h"
#include "kalmia/cluster/StoppableProgress.h"
#include "kalmia/statistics/Sta.h"
#include "kalmia/support/TempFile.h"

using kalmia::StoppableProgress;

namespace DendroGram {

namespace {

constexpr unsigned kRecordsPerStep = 10000;      ///< while saving, the bar moves once for so many
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

DistanceRange RangeOf(DistanceFile& file, std::vector<DistanceAndIndex>& buffer) {
  DistanceRange range;
  file.SeekTo(0);
  for (std::uint32_t done = 0; done < file.count;) {
    const std::size_t chunk = std::min<std::size_t>(buffer.capacity(), file.count - done);
    buffer.resize(chunk);
    if (!file.Read(buffer.data(), chunk)) throw NCError(kLoadError);
    for (const DistanceAndIndex& pair : buffer) {
      if (std::isnan(pair.distance)) range.hasNaNs = true;
      if (pair.distance < range.smallest) range.smallest = pair.distance;
      if (pair.distance > range.largest) range.largest = pair.distance;
    }
    done += static_cast<std::uint32_t>(chunk);
  }
  buffer.clear();
  return range;
}

/// Brings pairs into the order of the files first, ..., last - 1, to which they go, and tells in `ends` where those of
/// each file end. By halves, so that a pair meets few limits, however many files there are.
void DealOut(DistanceAndIndex* begin, DistanceAndIndex* end, const DistanceFiles& files, std::size_t first,
             std::size_t last, std::vector<DistanceAndIndex*>& ends) {
  if (last - first < 2) {
    if (first < last) ends[first] = end;
    return;
  }
  const std::size_t middle = first + (last - first) / 2;
  const float limit = files[middle - 1]->minimum;
  const auto reaches = [limit](const DistanceAndIndex& pair) { return pair.distance >= limit; };
  DistanceAndIndex* const rest = std::partition(begin, end, reaches);
  DealOut(begin, rest, files, first, middle, ends);
  DealOut(rest, end, files, middle, last, ends);
}

}  // namespace

DistanceFile::DistanceFile(CString&& nameOfFile) : name(std::move(nameOfFile)) {}

// What is thrown below comes from a whole object already, whose destructor removes the file.
DistanceFile::DistanceFile() : DistanceFile(VexGetTempFileName(nullptr, kPrefix, kExtension)) {
  stream.open(static_cast<const char*>(name), std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
  if (stream.is_open()) return;
  // Without a name none could be made in the directory.
  const std::string path = name == "" ? kalmia::TemporaryDirectory() + "/" + kPrefix + "XXXXXX." + kExtension
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
  const StoppableProgress bar(progress);
  std::sort(limits.begin(), limits.end(), std::greater<>());
  DistanceFiles files;
  for (std::size_t k = 0; k < limits.size(); ++k) {
    files.push_back(std::make_shared<DistanceFile>());
    files.back()->maximum = limits[k];
    files.back()->minimum = k + 1 < limits.size() ? limits[k + 1] : source.minimum;
  }
  std::vector<DistanceAndIndex*> ends(files.size());
  source.SeekTo(0);
  for (std::uint32_t done = 0; done < source.count;) {
    const std::uint32_t chunk =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(buffer.capacity(), source.count - done));
    const auto report = [&](double fraction) {
      bar.Poll();
      if (total != 0) bar.SetValue(static_cast<float>((chunk * fraction + done) / total));
    };
    buffer.resize(chunk);
    const bool good = source.Read(buffer.data(), chunk);
    report(0.3);
    if (!good) throw NCError("Error when reading from temporary file.");
    DealOut(buffer.data(), buffer.data() + chunk, files, 0, files.size(), ends);
    const DistanceAndIndex* rest = buffer.data();
    for (std::size_t k = 0; k < files.size(); ++k) {
      DistanceFile& file = *files[k];
      const std::size_t n = static_cast<std::size_t>(ends[k] - rest);
      file.Append(rest, n);
      file.count += static_cast<std::uint32_t>(n);
      rest = ends[k];
      report(0.7 * static_cast<double>(k + 1) / static_cast<double>(files.size()) + 0.3);
    }
    done += chunk;
  }
  files.erase(std::remove_if(files.begin(), files.end(), [](const auto& file) { return file->count == 0; }),
              files.end());
  buffer.clear();
  return files;
}

MegaDistances::MegaDistances(std::vector<DistanceAndIndex>& memory, NCProgress* progress, unsigned total)
    : memorySize_(static_cast<std::uint32_t>(memory.size())), progress_(progress), total_(total) {
  segments_.push_back(std::make_shared<DistanceFile>());
  buffer_ = std::move(memory);
  buffer_.clear();
  const StoppableProgress bar(progress_);
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
  const StoppableProgress bar(progress_);
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
  StoppableProgress(progress_).SetText("Re-partitioning");
  std::vector<float> limits;
  for (std::uint32_t k = 1; k < parts; ++k)
    limits.push_back(static_cast<float>(k) * (source->maximum - source->minimum) / static_cast<float>(parts) +
                     source->minimum);
  limits.push_back(source->maximum);
  if (!std::any_of(limits.begin(), limits.end(), [](float limit) { return std::isnan(limit); })) {
    const DistanceFiles files = DistributeDistances(*source, limits, buffer_, total_, progress_);
    if (files.size() > 1) return ReplaceLastSegment(files);
  }
  const DistanceRange range = RangeOf(*source, buffer_);
  source->isConstant = range.IsConstant();
  if (source->isConstant) return;
  const bool wasExact = source->minimum == range.smallest && source->maximum == range.largest;
  source->minimum = range.smallest;
  source->maximum = range.largest;
  if (!range.hasNaNs && !wasExact) return;
  limits = {range.largest, range.hasNaNs ? range.smallest : range.largest};
  ReplaceLastSegment(DistributeDistances(*source, limits, buffer_, total_, progress_));
}

void MegaDistances::LoadNextSegment() {
  if (segments_.empty()) throw NCError(kLoadError);
  while (segments_.back()->count > memorySize_ && !segments_.back()->isConstant) SplitLastSegment();
  const StoppableProgress bar(progress_);
  bar.SetText("Loading distances");
  DistanceFile& file = *segments_.back();
  const std::uint32_t n = std::min(file.count, memorySize_);  // less than all only of equal distances
  buffer_.resize(n);
  file.SeekTo(file.count - n);
  if (!file.Read(buffer_.data(), n)) throw NCError(kLoadError);
  file.count -= n;
  if (file.count == 0) segments_.pop_back();
  bar.SetText("Sorting");
  std::sort(buffer_.begin(), buffer_.end(), kalmia::IsFartherPair);
  bar.SetText("Merging clusters");
}

}  // namespace DendroGram
