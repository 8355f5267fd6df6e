#include "kalmia/cluster/DendroGram.h"

#include <algorithm>
#include <cstddef>
#include <istream>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "kalmia/cluster/internal/ClusterProgress.h"
#include "kalmia/cluster/internal/CommonColumns.h"
#include "kalmia/support/MD5.h"

using kalmia::ClusterProgress;

namespace DendroGram {

namespace {

struct DestroyTree {
  void operator()(DendroGramNode* root) const { DendroGramNode::Destroy(root); }
};
using Tree = std::unique_ptr<DendroGramNode, DestroyTree>;

constexpr int kCellsDigestedAtOnce = 1 << 20;  ///< some milliseconds

CString CacheName(const NCDataMatrix<float>& data, ClusterDistanceCalculator& calculator, const kalmia::Ask& ask) {
  MD5 digest;
  kalmia::WorkMeter meter(ask, kCellsDigestedAtOnce);
  const int rows = data.SizeRows(), columns = data.SizeColumns();
  for (int r = 1; r <= rows; ++r)
    for (int done = 0; done < columns;) {
      const int cells = std::min(kCellsDigestedAtOnce, columns - done);
      digest.Update(data[r].begin() + done, sizeof(float) * static_cast<std::size_t>(cells));
      meter.Add(cells);
      done += cells;
    }
  digest.Update(calculator.GetId());
  digest.Finalize();
  CString name;
  name.Format("%s%i_%i_%s", "Dendro_", rows, columns, digest.GetDigest());
  return name;
}

/// The stored tree; null if there is none that can be read.
Tree ReadFromCache(VexStreamSource& cache, const CString& name) {
  const std::unique_ptr<std::istream> stream(cache.OpenInput(name));
  if (!stream) return nullptr;
  Tree tree(new DendroGramNode);
  *stream >> *tree;
  return stream->fail() ? nullptr : std::move(tree);
}

void WriteToCache(VexStreamSource& cache, const CString& name, const DendroGramNode& root) {
  const std::unique_ptr<std::ostream> stream(cache.OpenOutput(name));
  if (stream) *stream << root;
}

/// Questions of a search of which nothing is seen where it is short.
kalmia::Ask QuestionsOfCheck(const ClusterProgress& bar) {
  if (!bar.IsThere()) return {};
  return [bar, told = false]() mutable {
    if (!told) bar.SetText("Comparing missing cells");
    told = true;
    bar.ThrowIfStopped();
  };
}

/// Merges clusters i and j of the list at the place of the lower one.
void Merge(std::vector<Tree>& list, int i, int j, float height) {
  if (i > j) std::swap(i, j);
  if (i < 0 || i == j || static_cast<std::size_t>(j) >= list.size())
    throw NCError("Cluster analysis: the distance calculator named clusters that do not exist.");
  Tree &left = list[static_cast<std::size_t>(i)], &right = list[static_cast<std::size_t>(j)];
  Tree merged(new DendroGramNode(height, left.get(), right.get()));
  left.release();
  right.release();
  left = std::move(merged);
  list.erase(list.begin() + j);
}

/// Merges until one node is left.
void MergeAll(std::vector<Tree>& list, ClusterDistanceCalculator& calculator, const ClusterProgress& bar) {
  int merges = 0;
  while (list.size() >= 2) {
    int i = 0, j = 0;
    const float height = calculator.FindNearestAndMerge(i, j);
    Merge(list, i, j, height);
    if (++merges % 10 == 0) bar.SetValue(static_cast<float>(merges));
    bar.ThrowIfStopped();
  }
}

}  // namespace

DendroGramNode* GetDendroGram(const NCDataMatrix<float>& data, ClusterDistanceCalculator& calculator,
                              NCProgress* progress, VexStreamSource* cache) {
  const ClusterProgress bar(progress);
  const CString name = cache ? CacheName(data, calculator, kalmia::QuestionsTo(bar)) : CString();
  if (cache)
    if (Tree stored = ReadFromCache(*cache, name)) return stored.release();
  if (data.SizeRows() < 1 || data.SizeColumns() < 1)
    throw NCError("Cluster analysis can not be performed on data without rows or columns.");

  bar.SetRange(0, 10);
  bar.PushSubRange(0, 5);
  if (data.GetNumMisVal() > 0) kalmia::CheckMissingData(data, QuestionsOfCheck(bar));
  std::vector<Tree> list;
  list.reserve(static_cast<std::size_t>(data.SizeRows()));
  for (int r = 1; r <= data.SizeRows(); ++r) list.emplace_back(new DendroGramNode(r));
  calculator.Init(data, progress);
  bar.PopSubRange();
  bar.PushSubRange(5, 10);  // left open: the caller closes the bar
  bar.SetText("Merging clusters");
  bar.SetRange(0, static_cast<float>(list.size()));
  MergeAll(list, calculator, bar);
  list.front()->SortBySize();
  if (cache) WriteToCache(*cache, name, *list.front());
  return list.front().release();
}

}  // namespace DendroGram
