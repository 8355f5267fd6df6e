#include "kalmia/analysis/fit/internal/SharedColumns.h"

#include <cstdint>
#include <cstring>
#include <unordered_map>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

/// The same for columns of the same cells, whatever the sign of a zero.
std::uint64_t DigestOf(const NCDataMatrix<float>& cells, int column) {
  constexpr std::uint64_t kBasis = 14695981039346656037U, kPrime = 1099511628211U;  // of FNV-1a
  std::uint64_t digest = kBasis;
  for (int r = 1; r <= cells.SizeRows(); ++r) {
    const float cell = cells[r][column] + 0.0F;
    std::uint32_t bits = 0;
    std::memcpy(&bits, &cell, sizeof(bits));
    digest = (digest ^ bits) * kPrime;
  }
  return digest;
}

bool AreEqual(const NCDataMatrix<float>& x, int columnOfX, const NCDataMatrix<float>& y, int columnOfY) {
  for (int r = 1; r <= x.SizeRows(); ++r) {
    if (x[r][columnOfX] != y[r][columnOfY]) return false;
  }
  return true;
}

}  // namespace

std::string SharedColumnsText(const Block& x, const Block& y) {
  std::unordered_multimap<std::uint64_t, int> columnsOfY;
  for (int c = 1; c <= y.cells.SizeColumns(); ++c) columnsOfY.emplace(DigestOf(y.cells, c), c);
  std::vector<std::string> shared;
  for (int c = 1; c <= x.cells.SizeColumns(); ++c) {
    const auto [first, last] = columnsOfY.equal_range(DigestOf(x.cells, c));
    for (auto found = first; found != last; ++found) {
      if (!AreEqual(x.cells, c, y.cells, found->second)) continue;
      shared.push_back(Quoted(x.names[static_cast<std::size_t>(c) - 1]) + " of X is " +
                       Quoted(y.names[static_cast<std::size_t>(found->second) - 1]) + " of Y");
      break;
    }
  }
  return Listed(shared, kColumnsNamed);
}

}  // namespace kalmia::analysis
