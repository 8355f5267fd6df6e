#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

// Cluster analyses written down once more in the plainest way, as witnesses.

struct PlainMerge {
  int i, j;  ///< positions, from 0, i < j
  float height;
};
bool operator==(const PlainMerge& a, const PlainMerge& b);

/// The first distance of two rows, column by column.
float PlainDistance(const NCDataMatrix<float>& data, int a, int b, bool half, bool root);

/// Single linkage by looking at all pairs of clusters for each merge; of equal distances the first pair found.
std::vector<PlainMerge> PlainSingleLinkage(const NCDataMatrix<float>& data);

/// What happened on the way through a list of Ward distances.
struct WardCounts {
  int passedOver = 0;  ///< merges at which a stale pair was really nearer
  int negative = 0;    ///< stale pairs whose increase came out below 0, before a root was taken
};

/// The sorted list of Ward distances with its stale entries, every step by itself: sums of squares from the rows,
/// entries inserted one at a time, one thread.
std::vector<PlainMerge> PlainWard(const NCDataMatrix<float>& data, bool root, WardCounts* counts = nullptr);

/// The merges that a calculator makes of a table.
template <class Calculator>
std::vector<PlainMerge> MergesOf(Calculator& calculator, const NCDataMatrix<float>& data) {
  calculator.Init(data, nullptr);
  std::vector<PlainMerge> merges(static_cast<std::size_t>(data.SizeRows()) - 1);
  for (PlainMerge& merge : merges) merge.height = calculator.FindNearestAndMerge(merge.i, merge.j);
  return merges;
}

/// Ward's criterion to the letter, of tables without holes: at each merge all pairs of clusters are looked at, their
/// distance being |A| |B| / (|A| + |B|) times the squared distance of their means.
std::vector<PlainMerge> ExactWard(const NCDataMatrix<float>& data);

/// For each row the first row of its cluster, from 0, after so many merges.
std::vector<int> PartitionAfter(const std::vector<PlainMerge>& merges, std::size_t count);

/// A table of small whole numbers, and thus of many equal distances, with a share of holes.
NCDataMatrix<float> WholeNumbers(int rows, int columns, int largest, double holes, unsigned seed);

/// Twelve rows that SciPy has clustered: see where it is used.
NCDataMatrix<float> TwelveRows();
