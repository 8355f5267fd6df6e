#pragma once

// Cluster analysis; includes all its headers.

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/cluster/CommonColumnsError.h"
#include "kalmia/cluster/DendroGramDrawer.h"
#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/cluster/DendroGramNodeLister.h"
#include "kalmia/cluster/DistanceStorage.h"
#include "kalmia/cluster/MegaDistances.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/VexStreamSource.h"

namespace DendroGram {

/// The cluster tree of the rows of a table: one leaf for each row; merges the two nearest clusters by the calculator's
/// distance until one is left. This uses up the calculator. The caller owns the tree and releases it by
/// DendroGramNode::Destroy; smaller clusters are on the left. `progress` and `cache` may be null.
///
/// With a cache, a tree stored for the same table and the same GetId() is returned at once, without checks; any other
/// result is stored, and replaces an unreadable entry. The name of an entry is "Dendro_", rows, an underscore, columns,
/// an underscore, and the MD5 of cells and id.
///
/// Missing: NCError if a row misses more than half of its cells; CommonColumnsError if two rows have fewer columns in
/// common than the root of the number of columns, rounded.
/// Throws NCError for a table without rows or columns, and "Cluster analysis aborted." on a stop request, which is
/// noticed within milliseconds except while a stored tree is read or written. Exceptions of the calculator pass
/// through. Nothing leaks then.
KALMIA_EXPORT DendroGramNode* GetDendroGram(const NCDataMatrix<float>& data, ClusterDistanceCalculator& calculator,
                                            NCProgress* progress, VexStreamSource* cache);

}  // namespace DendroGram
