#include "kalmia/analysis/fit/internal/SharedColumns.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

/// The same for columns of the same cells in single precision, whatever the sign of a zero.
std::uint64_t DigestOf(const std::vector<double>& cells) {
  constexpr std::uint64_t kBasis = 14695981039346656037U, kPrime = 1099511628211U;  // of FNV-1a
  std::uint64_t digest = kBasis;
  for (const double measured : cells) {
    const float cell = static_cast<float>(measured) + 0.0F;
    std::uint32_t bits = 0;
    std::memcpy(&bits, &cell, sizeof(bits));
    digest = (digest ^ bits) * kPrime;
  }
  return digest;
}

/// Whether a model cannot tell them apart: the cells less the shift, in single precision. Holes are equal.
bool AreEqual(const std::vector<double>& a, const std::vector<double>& b, double shift) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [shift](double x, double y) {
    return static_cast<float>(x - shift) == static_cast<float>(y - shift) || (std::isnan(x) && std::isnan(y));
  });
}

}  // namespace

std::string SharedColumnsText(const Block& x, const Block& y) {
  std::unordered_multimap<std::uint64_t, std::size_t> columnsOfY;
  for (std::size_t c = 0; c < y.measured.size(); ++c) columnsOfY.emplace(DigestOf(y.measured[c]), c);
  std::vector<std::string> shared;
  for (std::size_t c = 0; c < x.measured.size(); ++c) {
    const double shift = x.shifts.empty() ? 0.0 : x.shifts[c];
    const auto [first, last] = columnsOfY.equal_range(DigestOf(x.measured[c]));
    for (auto found = first; found != last; ++found) {
      if (!AreEqual(x.measured[c], y.measured[found->second], shift)) continue;
      shared.push_back(Quoted(x.names[c]) + " of X is " +
                       Quoted(y.names[found->second]) + " of Y");
      break;
    }
  }
  return Listed(shared, kColumnsNamed);
}

}  // namespace kalmia::analysis
