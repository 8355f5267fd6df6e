#include "kalmia/statistics/internal/NetworkWorkspace.h"

#include <algorithm>

#include "kalmia/statistics/internal/ExactTestFailure.h"

namespace kalmia {
namespace {

constexpr std::int64_t kDefaultUnits = std::int64_t{1} << 29;
constexpr std::int64_t kUnitsPerNode = 30 * 4 + 16;  ///< 30 paths of 16 bytes, and 64 bytes
constexpr std::int64_t kLeastBytes = 1024;           ///< for the one path that a network begins with

}  // namespace

NetworkWorkspace::NetworkWorkspace(int units) {
  const std::int64_t told = units > 0 ? units : kDefaultUnits;
  mostNodes_ = told / kUnitsPerNode;
  free_ = std::max(told * 11 / 2, kLeastBytes);  // four bytes a unit, and three eighths more
}

void NetworkWorkspace::RequireNode(std::size_t count) const {
  if (static_cast<std::int64_t>(count) >= mostNodes_)
    FailExactTest("LDKEY is too small for this problem.\nTry increasing the size of the workspace.");
}

void NetworkWorkspace::Take(std::size_t bytes) {
  if (static_cast<std::int64_t>(bytes) > free_)
    FailExactTest("LDSTP is too small for this problem.\nTry increasing the size of the workspace.");
  free_ -= static_cast<std::int64_t>(bytes);
}

}  // namespace kalmia
