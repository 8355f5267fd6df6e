#include "kalmia/kernels/product/MatrixProduct.h"

#include <omp.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "kalmia/kernels/simd/ProductTile.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {
namespace {

using simd::kTileColumns;
using simd::kTileRows;

// A block of the product, and as much of the factors as it needs at a time: 64 + 128 + 256 KiB at most.
constexpr int kBlockRows = 64;
constexpr int kBlockColumns = 128;
constexpr int kBlockDepth = 256;

int BlocksOf(int n, int block) { return n / block + (n % block != 0); }
std::size_t RoundUp(int n, int step) {
  return static_cast<std::size_t>(BlocksOf(n, step)) * static_cast<std::size_t>(step);
}

/// Multiply-adds of a packed product in the time that a pass takes for one cell.
constexpr double kProductsPerCell = 4.0;

int TeamForProduct(int rows, int columns, int depth) {
  const double passes = static_cast<double>(rows) * columns * depth / kProductsPerCell;
  return TeamSize(static_cast<std::int64_t>(std::min(passes, 0x1p60)));
}

/// Working memory of one thread.
struct BlockBuffers {
  BlockBuffers(int rows, int columns, int depth)
      : a(RoundUp(rows, kTileRows) * static_cast<std::size_t>(depth)),
        b(RoundUp(columns, kTileColumns) * static_cast<std::size_t>(depth)),
        sums(RoundUp(rows, kTileRows) * RoundUp(columns, kTileColumns)) {}

  std::vector<double> a, b;  ///< packed parts of the factors
  std::vector<double> sums;  ///< the block's cells, tile after tile
};

/// One product under way; its blocks may be computed in any order and by any thread.
template <class T>
class Product {
 public:
  Product(const ProductFactor<T>& a, const ProductFactor<T>& b, bool holes, T* const* cells)
      : a_(a), b_(b), holes_(holes), cells_(cells) {}

  void ComputeBlock(int row, int column, BlockBuffers& buffers) const {
    const int rows = std::min(kBlockRows, a_.Outer() - row);
    const int columns = std::min(kBlockColumns, b_.Outer() - column);
    std::fill(buffers.sums.begin(), buffers.sums.end(), 0.0);
    for (int k = 0; k < a_.Shared(); k += kBlockDepth) {
      const int depth = std::min(kBlockDepth, a_.Shared() - k);
      a_.template Pack<kTileRows>(row, rows, k, depth, buffers.a.data());
      b_.template Pack<kTileColumns>(column, columns, k, depth, buffers.b.data());
      AddBlockProducts(rows, columns, depth, buffers);
    }
    StoreBlock(row, rows, column, columns, buffers.sums.data());
  }

 private:
  static void AddBlockProducts(int rows, int columns, int depth, BlockBuffers& buffers) {
    double* tile = buffers.sums.data();
    for (int i = 0; i < rows; i += kTileRows)
      for (int j = 0; j < columns; j += kTileColumns, tile += kTileRows * kTileColumns)
        simd::AddProductTile(buffers.a.data() + static_cast<std::ptrdiff_t>(i) * depth,
                             buffers.b.data() + static_cast<std::ptrdiff_t>(j) * depth, depth,
                             /*productsAreExact=*/std::is_same<T, float>::value, tile);
  }

  void StoreBlock(int row, int rows, int column, int columns, const double* tile) const {
    for (int i = 0; i < rows; i += kTileRows)
      for (int j = 0; j < columns; j += kTileColumns, tile += kTileRows * kTileColumns)
        for (int y = 0; y < std::min(kTileRows, rows - i); ++y)
          StoreTileRow(row + i + y, column + j, std::min(kTileColumns, columns - j), tile + y * kTileColumns);
  }

  void StoreTileRow(int i, int j, int count, const double* sums) const {
    T* cells = cells_[i] + j;
    for (int x = 0; x < count; ++x) cells[x] = static_cast<T>(sums[x]);
    for (int x = 0; holes_ && x < count; ++x)
      if (!a_.HasPair(i, b_, j + x)) cells[x] = kMissingCell<T>;
  }

  const ProductFactor<T>& a_;
  const ProductFactor<T>& b_;
  bool holes_;
  T* const* cells_;
};

/// The product in blocks, dealt out to a team. Holes count as 0 in the sums, so the factors must be finite if there are
/// any.
template <class T>
void MultiplyInBlocks(const ProductFactor<T>& a, const ProductFactor<T>& b, bool holes, T* const* cells) {
  const Product<T> product(a, b, holes, cells);
  const int blockColumns = BlocksOf(b.Outer(), kBlockColumns);
  const std::int64_t blocks = std::int64_t{BlocksOf(a.Outer(), kBlockRows)} * blockColumns;
  const int team = static_cast<int>(std::min<std::int64_t>(TeamForProduct(a.Outer(), b.Outer(), a.Shared()), blocks));
  const BlockBuffers ofOneThread(std::min(kBlockRows, a.Outer()), std::min(kBlockColumns, b.Outer()),
                                 std::min(kBlockDepth, a.Shared()));
  std::vector<BlockBuffers> buffers(static_cast<std::size_t>(team), ofOneThread);
#pragma omp parallel for schedule(static) num_threads(team)
  for (std::int64_t i = 0; i < blocks; ++i)
    product.ComputeBlock(static_cast<int>(i / blockColumns) * kBlockRows,
                         static_cast<int>(i % blockColumns) * kBlockColumns,
                         buffers[static_cast<std::size_t>(omp_get_thread_num())]);
}

/// The product cell by cell, for factors with holes and with cells that are not finite: 0 times such a cell is no 0.
template <class T>
void MultiplyPairs(const ProductFactor<T>& a, const ProductFactor<T>& b, T* const* cells) {
  for (int i = 0; i < a.Outer(); ++i)
    for (int j = 0; j < b.Outer(); ++j) {
      double sum = 0.0;
      for (int k = 0; k < a.Shared(); ++k)
        if (a.Cell(i, k) != kMissing && b.Cell(j, k) != kMissing)
          sum += static_cast<double>(a.Cell(i, k)) * static_cast<double>(b.Cell(j, k));
      cells[i][j] = static_cast<T>(a.HasPair(i, b, j) ? sum : kMissing);
    }
}

}  // namespace

template <class T>
void MultiplyFactors(ProductFactor<T>& a, ProductFactor<T>& b, bool holes, T* const* product) {
  if (holes) {
    a.MarkPresent();
    b.MarkPresent();
  }
  if (a.IsFinite() && b.IsFinite())
    MultiplyInBlocks(a, b, holes, product);
  else
    MultiplyPairs(a, b, product);
}

template void MultiplyFactors(ProductFactor<float>&, ProductFactor<float>&, bool, float* const*);
template void MultiplyFactors(ProductFactor<double>&, ProductFactor<double>&, bool, double* const*);

}  // namespace kalmia
