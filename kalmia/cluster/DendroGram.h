#pragma once

// Cluster analysis: all that belongs to it.

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/cluster/CommonColumnsError.h"
#include "kalmia/cluster/DendroGramDrawer.h"
#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/cluster/DendroGramNodeLister.h"
#include "kalmia/cluster/MegaDistances.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/VexStreamSource.h"

namespace DendroGram {

/// The cluster tree of the rows of a table: one leaf for each row, merged two by two, each time the two nearest by the
/// calculator's measure, which is used up by it. The tree is the caller's, to be released by DendroGramNode::Destroy;
/// smaller clusters stand on the left. `progress` and `cache` may be null.
///
/// With a cache, a tree that is stored for the same table and the same GetId() is returned at once, before anything is
/// checked or calculated; any other result is stored, also in place of an entry that cannot be read. The name of an
/// entry is "Dendro_", rows and columns with an underscore in between, another one, and the MD5 of cells and id.
///
/// Missing: NCError where a row misses more than half of its cells, and CommonColumnsError where two rows have less
/// than the root of the number of columns, rounded, in common.
/// Throws NCError for a table without rows or columns, and "Cluster analysis aborted." when the user stops: some
/// milliseconds lie between two questions, except while a stored tree is read or written. What the calculator throws
/// passes through. Then nothing is left behind.
KALMIA_EXPORT DendroGramNode* GetDendroGram(const NCDataMatrix<float>& data, ClusterDistanceCalculator& calculator,
                                            NCProgress* progress, VexStreamSource* cache);

}  // namespace DendroGram
