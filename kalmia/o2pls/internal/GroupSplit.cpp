#include "kalmia/o2pls/internal/GroupSplit.h"

#include <algorithm>

#include "kalmia/pcapls/internal/ComponentRows.h"

namespace kalmia {

GroupSplit SplitByGroup(const NCDataMatrix<float>& table, const NCIntegralVector<int, -99>& groups, int group) {
  GroupSplit split{EmptyMatrix(table.SizeColumns()), EmptyMatrix(table.SizeColumns())};
  for (int i = 1; i <= table.SizeRows(); ++i)
    (groups[i] == group ? split.heldOut : split.training).push_back(table[i]);
  return split;
}

std::size_t CountRounds(const NCIntegralVector<int, -99>& groups) {
  const int last = groups.empty() ? -1 : *std::max_element(groups.begin(), groups.end());
  return last < 0 ? 0 : static_cast<std::size_t>(last) + 1;
}

bool AreTooManyRounds(const NCIntegralVector<int, -99>& groups) {
  constexpr std::size_t kMostEmptyRounds = 10000;
  return CountRounds(groups) > static_cast<std::size_t>(groups.Size()) + kMostEmptyRounds;
}

}  // namespace kalmia
