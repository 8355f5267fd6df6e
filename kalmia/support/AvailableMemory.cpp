#include "kalmia/support/AvailableMemory.h"

#include <algorithm>
#include <fstream>
#include <limits>

namespace kalmia {

namespace {

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

/// The number behind `key` in a file of lines "key number"; `otherwise` if there is none.
std::uint64_t NumberBehind(const std::string& path, const std::string& key, std::uint64_t otherwise) {
  std::ifstream file(path);
  std::string word;
  std::uint64_t number = 0;
  while (file >> word)
    if (word == key) return file >> number ? number : otherwise;
  return otherwise;
}

/// The number that is the file's content; `otherwise` for anything else, such as "max".
std::uint64_t NumberIn(const std::string& path, std::uint64_t otherwise) {
  std::ifstream file(path);
  std::uint64_t number = 0;
  return file >> number ? number : otherwise;
}

std::uint64_t LeftOf(std::uint64_t limit, std::uint64_t used, std::uint64_t reclaimable) {
  if (limit == kUnlimited) return kUnlimited;
  used -= std::min(used, reclaimable);
  return limit - std::min(limit, used);
}

/// What one control group leaves; `v2` tells the names of its files.
std::uint64_t LeftInGroup(const std::string& folder, bool v2) {
  const std::uint64_t limit = NumberIn(folder + (v2 ? "/memory.max" : "/memory.limit_in_bytes"), kUnlimited);
  const std::uint64_t used = NumberIn(folder + (v2 ? "/memory.current" : "/memory.usage_in_bytes"), 0);
  const char* const fileCache = v2 ? "inactive_file" : "total_inactive_file";
  return LeftOf(limit, used, NumberBehind(folder + "/memory.stat", fileCache, 0));
}

/// What the group `path` below `mount` and all groups above it leave.
std::uint64_t LeftInGroups(const std::string& mount, std::string path, bool v2) {
  std::uint64_t left = LeftInGroup(mount, v2);
  for (std::size_t slash = path.rfind('/'); slash != std::string::npos; slash = path.rfind('/')) {
    left = std::min(left, LeftInGroup(mount + path, v2));
    path.erase(slash);
  }
  return left;
}

}  // namespace

std::uint64_t AvailableMemory() { return AvailableMemoryBelow("/"); }

std::uint64_t AvailableMemoryBelow(const std::string& root) {
  std::uint64_t left = kUnlimited;
  const std::uint64_t kilobytes = NumberBehind(root + "proc/meminfo", "MemAvailable:", kUnlimited);
  if (kilobytes != kUnlimited) left = kilobytes * 1024;
  std::ifstream groups(root + "proc/self/cgroup");  // "number:controllers:path"; version 2 has no controllers
  for (std::string line; std::getline(groups, line);) {
    const std::size_t first = line.find(':'), second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) continue;
    const std::string controllers = ',' + line.substr(first + 1, second - first - 1) + ',';
    const std::string path = line.substr(second + 1), mount = root + "sys/fs/cgroup";
    if (controllers == ",,") left = std::min(left, LeftInGroups(mount, path, /*v2=*/true));
    if (controllers.find(",memory,") != std::string::npos)
      left = std::min(left, LeftInGroups(mount + "/memory", path, /*v2=*/false));
  }
  return left;
}

}  // namespace kalmia
