#include "kalmia/o2pls/GroupSplit.h"

#include <algorithm>

#include "kalmia/pcapls/ComponentRows.h"

namespace kalmia {

GroupSplit SplitByGroup(const NCDataMatrix<float>& table, const NCIntegralVector<int, -99>& groups, int group) {
  GroupSplit split{WithoutRows(table.SizeColumns()), WithoutRows(table.SizeColumns())};
  for (int i = 1; i <= table.SizeRows(); ++i)
    (groups[i] == group ? split.heldOut : split.training).push_back(table[i]);
  return split;
}

int LastGroup(const NCIntegralVector<int, -99>& groups) {
  return groups.empty() ? -1 : *std::max_element(groups.begin(), groups.end());
}

}  // namespace kalmia
