#include "PropertyWorld.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kMatrices = 4;
constexpr std::size_t kVectors = 4;
constexpr std::size_t kIntegers = 3;

template <class N>
void Append(std::string& bytes, const N& number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

template <class T>
std::string FingerprintOf(const NCDataVector<T>& v) {
  std::string bytes;
  Append(bytes, v.Size());
  Append(bytes, v.GetNumMisVal());
  for (const T& cell : v) Append(bytes, cell);
  return bytes;
}

template <class T>
std::string FingerprintOf(const NCDataMatrix<T>& m) {
  std::string bytes;
  Append(bytes, m.SizeRows());
  Append(bytes, m.SizeColumns());
  Append(bytes, m.GetNumMisVal());
  for (int c = 1; c <= m.SizeColumns(); ++c) Append(bytes, m.GetColumnMisVal(c));
  for (const NCDataVector<T>& row : m) bytes += FingerprintOf(row);
  return bytes;
}

std::string FingerprintOf(const IndexVector& v) {
  std::string bytes;
  for (const int cell : v) Append(bytes, cell);
  return bytes;
}

}  // namespace

template <class T>
World<T>::World(unsigned seed) : random_(seed) {
  newMatrices_.reserve(16);  // references to these are handed out
  newVectors_.reserve(16);
  for (std::size_t i = 0; i < kMatrices; ++i)
    matrices_.push_back(NewMatrix(/*fewest=*/0, Chance(0.3) ? 0 : 0.3));
  for (std::size_t i = 0; i < kVectors; ++i) vectors_.push_back(NewVector(/*fewest=*/0));
  for (std::size_t i = 0; i < kIntegers; ++i) integers_.push_back(Indices(Int(0, kMost), 9));
  CheckAndSettle();
}

template <class T>
int World<T>::Int(int first, int last) {
  return last <= first ? first : first + static_cast<int>(random_() % static_cast<unsigned>(last - first + 1));
}

template <class T>
bool World<T>::Chance(double probability) {
  return (random_() >> 12) * 0x1p-20 < probability;
}

template <class T>
NCDataMatrix<T> World<T>::NewMatrix(int fewest, double holes) {
  const int rows = Int(fewest, kMost), columns = Int(fewest, kMost);  // one draw after the other, for every compiler
  return RandomMatrix<T>(rows, columns, holes, random_());
}

template <class T>
NCDataVector<T> World<T>::NewVector(int fewest) {
  const int n = Int(fewest, kMost);
  return RandomVector<T>(n, 0.3, random_());
}

template <class T>
T World<T>::PresentCell() {
  return RandomVector<T>(1, 0, random_())[1];
}

template <class T>
T World<T>::Cell() {
  return Chance(0.25) ? kHole<T> : Chance(0.1) ? T(0) : PresentCell();
}

template <class T>
std::vector<T> World<T>::Cells(int n) {
  std::vector<T> cells;
  for (int i = 0; i < n; ++i) cells.push_back(Cell());
  return cells;
}

template <class T>
NCDataMatrix<T>& World<T>::Matrix() {
  NCDataMatrix<T>& m = matrices_[random_() % matrices_.size()];
  named_.insert(&m);
  return m;
}

template <class T>
NCDataMatrix<T>& World<T>::FilledMatrix() {
  NCDataMatrix<T>& m = Matrix();
  if (m.SizeRows() == 0 || m.SizeColumns() == 0) m = NewMatrix(/*fewest=*/1, 0.3);
  return m;
}

template <class T>
NCDataMatrix<T>& World<T>::CompleteMatrix() {
  NCDataMatrix<T>& m = FilledMatrix();
  for (int r = 1; r <= m.SizeRows(); ++r)
    for (int c = 1; c <= m.SizeColumns(); ++c)
      if (m[r][c] == kHole<T>) m(r, c, PresentCell());
  return m;
}

template <class T>
NCDataVector<T>& World<T>::Vector() {
  NCDataVector<T>& v = vectors_[random_() % vectors_.size()];
  named_.insert(&v);
  return v;
}

template <class T>
NCDataVector<T>& World<T>::FilledVector() {
  NCDataVector<T>& v = Vector();
  if (v.Size() == 0) v = NewVector(/*fewest=*/1);
  return v;
}

template <class T>
IndexVector& World<T>::Integers() {
  IndexVector& v = integers_[random_() % integers_.size()];
  named_.insert(&v);
  return v;
}

template <class T>
IndexVector& World<T>::FilledIntegers() {
  IndexVector& v = Integers();
  if (v.empty()) v = Indices(Int(1, kMost), 9);
  return v;
}

template <class T>
NCDataVector<T>* World<T>::VectorTarget(int n) {
  if (Chance(0.5)) return nullptr;
  NCDataVector<T>& target = Vector();
  target.SetSize(n);
  return &target;
}

template <class T>
NCDataMatrix<T>* World<T>::MatrixTarget(int rows, int columns) {
  if (Chance(0.5)) return nullptr;
  NCDataMatrix<T>& target = Matrix();
  target.SetSize(rows, columns);
  return &target;
}

template <class T>
const NCDataMatrix<T>& World<T>::AnyMatrix() {
  return matrices_[random_() % matrices_.size()];
}

template <class T>
const NCDataMatrix<T>& World<T>::AnyFilledMatrix() {
  const int rows = Int(1, kMost), columns = Int(1, kMost);
  return MatrixWhere([](const auto& m) { return m.SizeRows() > 0 && m.SizeColumns() > 0; }, rows, columns);
}

template <class T>
const NCDataVector<T>& World<T>::AnyVector() {
  return vectors_[random_() % vectors_.size()];
}

template <class T>
const IndexVector& World<T>::AnyIntegers() {
  return integers_[random_() % integers_.size()];
}

template <class T>
const NCDataVector<T>& World<T>::VectorOfSize(int n) {
  std::vector<const NCDataVector<T>*> candidates;
  for (const auto& v : vectors_)
    if (v.Size() == n) candidates.push_back(&v);
  for (const auto& m : matrices_)
    if (m.SizeColumns() == n && m.SizeRows() > 0) candidates.push_back(&m[Int(1, m.SizeRows())]);
  if (!candidates.empty() && Chance(0.7)) return *candidates[random_() % candidates.size()];
  newVectors_.push_back(RandomVector<T>(n, 0.3, random_()));
  return newVectors_.back();
}

template <class T>
const NCDataVector<T>& World<T>::CompleteVectorOfSize(int n) {
  newVectors_.push_back(RandomVector<T>(n, 0, random_()));
  return newVectors_.back();
}

template <class T>
const NCDataMatrix<T>& World<T>::MatrixWhere(const Shape& fits, int rows, int columns) {
  const std::size_t first = random_();
  for (std::size_t i = 0; i < matrices_.size() && Chance(0.9); ++i) {
    const NCDataMatrix<T>& m = matrices_[(first + i) % matrices_.size()];
    if (fits(m)) return m;
  }
  newMatrices_.push_back(RandomMatrix<T>(rows, columns, 0.3, random_()));
  return newMatrices_.back();
}

template <class T>
const NCDataMatrix<T>& World<T>::MatrixOfRows(int rows) {
  return MatrixWhere([rows](const auto& m) { return m.SizeRows() == rows; }, rows, Int(0, kMost));
}

template <class T>
const NCDataMatrix<T>& World<T>::MatrixOfColumns(int columns) {
  return MatrixWhere([columns](const auto& m) { return m.SizeColumns() == columns; }, Int(0, kMost), columns);
}

template <class T>
const NCDataMatrix<T>& World<T>::MatrixOfSize(int rows, int columns) {
  return MatrixWhere([=](const auto& m) { return m.SizeRows() == rows && m.SizeColumns() == columns; }, rows, columns);
}

template <class T>
IndexVector World<T>::Indices(int n, int among) {
  IndexVector indices;
  for (int i = 0; i < n && among > 0; ++i) indices.push_back(Int(1, among));
  return indices;
}

template <class T>
bool World<T>::IsWild(T cell) const {
  const T magnitude = std::fabs(cell);
  return cell != kHole<T> && cell != 0 && !(magnitude >= T(0.0625) && magnitude <= 3);
}

template <class T>
void World<T>::Tame(NCDataVector<T>& v) {
  if (v.Size() > kMost) v.Resize(Int(0, kMost));
  for (int i = 1; i <= v.Size(); ++i)
    if (IsWild(v[i])) v(i, PresentCell());
}

template <class T>
void World<T>::Tame(NCDataMatrix<T>& m) {
  if (m.SizeRows() > kMost || m.SizeColumns() > kMost) m.Resize(Int(1, kMost), Int(1, kMost));
  for (int r = 1; r <= m.SizeRows(); ++r)
    for (int c = 1; c <= m.SizeColumns(); ++c)
      if (IsWild(m[r][c])) m(r, c, PresentCell());
}

template <class T>
void World<T>::CheckAndSettle() {
  std::vector<std::string> fingerprints;
  const auto check = [&](auto& object) {
    const std::size_t index = fingerprints.size();
    if (!fingerprints_.empty() && named_.count(&object) == 0) {
      EXPECT_TRUE(FingerprintOf(object) == fingerprints_[index]) << "object " << index << " changed with another";
    }
    fingerprints.push_back(FingerprintOf(object));
  };
  for (auto& m : matrices_) EXPECT_TRUE(HasExactCounts(m));
  for (auto& v : vectors_) EXPECT_TRUE(HasExactCounts(v));
  for (auto& m : matrices_) check(m);
  for (auto& v : vectors_) check(v);
  for (auto& v : integers_) check(v);
  for (auto& m : matrices_) Tame(m);
  for (auto& v : vectors_) Tame(v);
  for (auto& v : integers_)
    if (v.Size() > kMost) v.Resize(kMost);
  fingerprints_.clear();
  for (auto& m : matrices_) fingerprints_.push_back(FingerprintOf(m));
  for (auto& v : vectors_) fingerprints_.push_back(FingerprintOf(v));
  for (auto& v : integers_) fingerprints_.push_back(FingerprintOf(v));
  named_.clear();
  newMatrices_.clear();
  newVectors_.clear();
}

template class World<float>;
template class World<double>;
