#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Random sequences of operations on one vector beside a plain model of its cells: after each one the cells are the
// model's, the count of missing cells is the brute-force one, and a twin that shared storage before is unchanged.
// CountsAndSharingPropertyTest does without a model, and runs many more operations, on many objects of all kinds.

namespace {

/// Cells that come in lie within +-32 and those that stay within +-64: no sum or difference of complete vectors, whose
/// holes are not looked for, can land on -99. A product or quotient that does is a hole in both.
template <class T>
class Walk {
 public:
  explicit Walk(unsigned seed) : random_(seed) {}

  void Step() {
    const NCDataVector<T> twin(vector_);
    const std::vector<T> before = model_;
    const std::string what = Act();
    SCOPED_TRACE(what);
    EXPECT_EQ(CellsOf(vector_), model_);
    EXPECT_TRUE(HasExactCounts(vector_));
    EXPECT_EQ(CellsOf(twin), before);
    EXPECT_TRUE(HasExactCounts(twin));
    KeepSmall();
  }

 private:
  int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  int Size() const { return static_cast<int>(model_.size()); }
  T Cell() { return Below(4) == 0 ? kHole<T> : static_cast<T>(Below(257) - 128) / 4; }
  int Position() { return 1 + Below(Size()); }
  auto At(int position) { return model_.begin() + (position - 1); }

  std::vector<T> Cells(int n) {
    std::vector<T> cells;
    for (int i = 0; i < n; ++i) cells.push_back(Cell());
    return cells;
  }
  static NCDataVector<T> VectorFrom(const std::vector<T>& cells) {
    NCDataVector<T> v;
    v.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
    return v;
  }

  /// The model of an operation with another vector: missing where either side is.
  void Combine(const std::vector<T>& other, const std::function<double(double, double)>& f) {
    for (std::size_t i = 0; i < model_.size(); ++i)
      model_[i] = model_[i] == kHole<T> || other[i] == kHole<T> ? kHole<T> : static_cast<T>(f(model_[i], other[i]));
  }
  void Map(const std::function<double(double)>& f) {
    for (T& cell : model_)
      if (cell != kHole<T>) cell = static_cast<T>(f(cell));
  }

  void KeepSmall() {
    if (std::all_of(model_.begin(), model_.end(), [](T x) { return x == kHole<T> || std::fabs(x) <= 64; })) return;
    model_ = Cells(Size());
    vector_.CopyZeroBasedVector(model_.data(), Size());
  }

  std::string Act() {
    if (model_.empty()) return Fill();
    switch (Below(4)) {
      case 0: return Write();
      case 1: return Restructure();
      case 2: return Compute();
      default: return Fill();
    }
  }

  std::string Fill() {
    switch (Below(6)) {
      case 0: {
        model_ = Cells(Below(12));
        vector_ = VectorFrom(model_);
        return "assignment";
      }
      case 1: {
        model_ = Cells(Below(12));
        vector_.CopyContent(VectorFrom(model_));
        return "CopyContent";
      }
      case 2: {
        model_ = Cells(Below(12));
        vector_.CopyZeroBasedVector(model_.data(), Size());
        return "CopyZeroBasedVector";
      }
      case 3: {
        const int n = Below(12);
        if (n != Size()) model_.assign(static_cast<std::size_t>(n), kHole<T>);
        vector_.SetSize(n);
        return "SetSize";
      }
      case 4: {
        model_.push_back(Cell());
        vector_.push_back(model_.back());
        return "push_back";
      }
      default: {
        const T cell = Cell();
        std::fill(model_.begin(), model_.end(), cell);
        vector_.SetAllValues(cell);
        return "SetAllValues";
      }
    }
  }

  std::string Write() {
    const int at = Position();
    switch (Below(3)) {
      case 0: {
        const T cell = Cell();
        *At(at) = cell;
        EXPECT_EQ(vector_(at, cell), cell);
        return "a write";
      }
      case 1: {
        const std::vector<T> cells = Cells(Below(Size() - at + 2));
        std::copy(cells.begin(), cells.end(), At(at));
        vector_.SetRange(at, cells.data(), static_cast<int>(cells.size()));
        return "SetRange of an array";
      }
      default: {
        const std::vector<T> cells = Cells(Size());
        std::copy(cells.begin() + at - 1, cells.end(), At(at));
        vector_.SetRange(at, VectorFrom(cells), at, Size() - at + 1);
        return "SetRange of a vector";
      }
    }
  }

  std::string Restructure() {
    const int at = Position(), n = Below(Size() - at + 2);
    switch (Below(7)) {
      case 0: {
        const T cell = Cell();
        model_.insert(At(at), static_cast<std::size_t>(n), cell);
        vector_.InsertValues(at, n, cell);
        return "InsertValues";
      }
      case 1: {
        const std::vector<T> cells = Cells(Below(5));
        model_.insert(At(at), cells.begin(), cells.end());
        vector_.InsertValues(at, VectorFrom(cells));
        return "InsertValues of a vector";
      }
      case 2: {
        model_.erase(At(at), At(at) + n);
        vector_.RemoveValues(at, n);
        return "RemoveValues";
      }
      case 3: {
        const T cell = Cell();
        model_.resize(static_cast<std::size_t>(n), cell);
        vector_.Resize(n, cell);
        return "Resize";
      }
      case 4: {
        NCIntegralVector<int, -99> indices;
        std::vector<T> chosen;
        for (int i = 0; i < n; ++i) {
          indices.push_back(Position());
          chosen.push_back(*At(indices[i + 1]));
        }
        model_ = chosen;
        vector_.Reduce(indices);
        return "Reduce";
      }
      case 5: {
        vector_.Reserve(Size() + n);
        return "Reserve";
      }
      default: {
        model_.erase(At(at));
        vector_.erase(vector_.begin() + at - 1);
        return "erase";
      }
    }
  }

  std::string Compute() {
    const std::vector<T> other = Cells(Size());
    const NCDataVector<T> v = VectorFrom(other);
    switch (Below(8)) {
      case 0:
        Combine(other, [](double x, double y) { return x + y; });
        vector_ += v;
        return "+=";
      case 1:
        Combine(other, [](double x, double y) { return x - y; });
        vector_ = vector_ - v;
        return "-";
      case 2:
        Map([](double x) { return x - 2; });
        vector_ -= 2.0L;
        return "-= of a number";
      case 3:
        Map([](double x) { return x * -1; });
        vector_ = vector_ * -1.0L;
        return "* of a number";
      case 4:
        Map([](double x) { return std::fabs(x); });
        vector_.Abs();
        return "Abs";
      case 5: {
        Combine(other, [](double x, double y) { return x * y; });
        NCDataVector<T> target(Size(), T(5));
        vector_.Result(&target).DotMultiplication(v);
        vector_ = target;
        return "DotMultiplication into a target";
      }
      case 6: {
        Combine(other, [](double x, double y) { return y == 0 ? -99.0 : x / y; });
        vector_ = vector_.DotDivide(v);
        return "DotDivide";
      }
      default: {
        NCDataVector<T> complete(Size(), T(1));
        Map([](double x) { return x - 0.5; });
        vector_.TransformTo_Sub_d_x_Vt(0.5L, complete);
        return "TransformTo_Sub_d_x_Vt";
      }
    }
  }

  std::mt19937 random_;
  NCDataVector<T> vector_;
  std::vector<T> model_;
};

template <class T>
class NCDataVectorProperty : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorProperty, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorProperty, AnySequenceOfOperationsKeepsCellsCountsAndTwins) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Walk<TypeParam> walk(seed);
    for (int step = 0; step < 500 && !this->HasFailure(); ++step) walk.Step();
  }
}

}  // namespace
