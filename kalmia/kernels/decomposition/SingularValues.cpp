#include "kalmia/kernels/decomposition/SingularValues.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace kalmia {
namespace {

using Real = long double;  ///< for scalars: their products must not underflow where T's numbers do not

constexpr int kIterationLimit = 32000;

/// sqrt(a^2 + b^2) without overflow.
Real Length(Real a, Real b) {
  const Real big = std::max(std::abs(a), std::abs(b)), small = std::min(std::abs(a), std::abs(b));
  if (big == 0) return 0;
  const Real ratio = small / big;
  return big * std::sqrt(1 + ratio * ratio);
}

/// A plane rotation of two columns: (y, z) becomes (c y + s z, c z - s y).
struct Rotation {
  double c, s;
};

/// Turns (f, h) onto its first axis: returns the length and sets c and s, which stay as they are for a length of 0.
Real TurnOntoAxis(Real f, Real h, Real& c, Real& s) {
  const Real length = Length(f, h);
  if (length != 0) {
    c = f / length;
    s = h / length;
  }
  return length;
}

/// Rotation q acts on columns first + q and first + q + 1 of `Rows` rows at once.
template <int Rows, class T>
void RotateNeighboursInRows(T** rows, int first, const std::vector<Rotation>& rotations) {
  T carried[Rows];
  for (int r = 0; r < Rows; ++r) carried[r] = rows[r][first];
  int column = first;
  for (const auto [c, s] : rotations) {
    for (int r = 0; r < Rows; ++r) {
      const double y = carried[r], z = rows[r][column + 1];
      rows[r][column] = static_cast<T>(y * c + z * s);
      carried[r] = static_cast<T>(z * c - y * s);
    }
    ++column;
  }
  for (int r = 0; r < Rows; ++r) rows[r][column] = carried[r];
}

/// A chain of rotations of neighbouring columns, on the rows 1 to `count`.
template <class T>
void RotateNeighbours(T** rows, int count, int first, const std::vector<Rotation>& rotations) {
  constexpr int kRowsSideBySide = 4;  // a chain within one row waits for each product; four rows wait together
  int r = 1;
  for (; r + kRowsSideBySide <= count + 1; r += kRowsSideBySide)
    RotateNeighboursInRows<kRowsSideBySide>(rows + r, first, rotations);
  for (; r <= count; ++r) RotateNeighboursInRows<1>(rows + r, first, rotations);
}

template <class T>
class Decomposition {
 public:
  Decomposition(T** a, int rows, int columns, T* w, T** v)
      : a_(a), rows_(rows), columns_(columns), w_(w), v_(v), rv1_(CellCount()), sums_(CellCount()) {}

  bool Run() {
    Bidiagonalise();
    if (!IsFinite()) return false;
    AccumulateRight();
    AccumulateLeft();
    for (int k = columns_; k >= 1; --k)
      if (!Diagonalise(k)) return false;
    return true;
  }

 private:
  std::size_t CellCount() const { return static_cast<std::size_t>(columns_) + 1; }

  void Bidiagonalise() {
    for (int i = 1; i <= columns_; ++i) {
      w_[i] = i <= rows_ ? ReflectColumn(i) : T(0);
      const T next = i <= rows_ && i < columns_ ? ReflectRow(i) : T(0);
      norm_ = std::max(norm_, static_cast<T>(std::abs(w_[i]) + std::abs(rv1_[i])));
      if (i < columns_) rv1_[i + 1] = next;
    }
  }

  /// Householder reflection that clears column i below row i; returns the diagonal cell.
  T ReflectColumn(int i) {
    Real scale = 0;
    for (int k = i; k <= rows_; ++k) scale += std::abs(static_cast<Real>(a_[k][i]));
    if (scale == 0) return 0;
    double s = 0;
    for (int k = i; k <= rows_; ++k) {
      a_[k][i] = static_cast<T>(a_[k][i] / scale);
      s += static_cast<double>(a_[k][i]) * a_[k][i];
    }
    const Real f = a_[i][i], g = -std::copysign(std::sqrt(static_cast<Real>(s)), f), h = f * g - s;
    a_[i][i] = static_cast<T>(f - g);
    SumColumnProducts(i, i);
    for (int j = i + 1; j <= columns_; ++j) sums_[j] = static_cast<double>(sums_[j] / h);
    AddColumnMultiples(i, i);
    for (int k = i; k <= rows_; ++k) a_[k][i] = static_cast<T>(a_[k][i] * scale);
    return static_cast<T>(scale * g);
  }

  /// Householder reflection that clears row i behind column i + 1; returns the superdiagonal cell.
  T ReflectRow(int i) {
    const int l = i + 1;
    T* row = a_[i];
    Real scale = 0;
    for (int k = l; k <= columns_; ++k) scale += std::abs(static_cast<Real>(row[k]));
    if (scale == 0) return 0;
    double s = 0;
    for (int k = l; k <= columns_; ++k) {
      row[k] = static_cast<T>(row[k] / scale);
      s += static_cast<double>(row[k]) * row[k];
    }
    const Real f = row[l], g = -std::copysign(std::sqrt(static_cast<Real>(s)), f), h = f * g - s;
    row[l] = static_cast<T>(f - g);
    for (int j = l; j <= rows_; ++j) {
      double product = 0;
      for (int k = l; k <= columns_; ++k) product += static_cast<double>(a_[j][k]) * row[k];
      const double factor = static_cast<double>(product / h);
      for (int k = l; k <= columns_; ++k) a_[j][k] = static_cast<T>(a_[j][k] + factor * row[k]);
    }
    for (int k = l; k <= columns_; ++k) row[k] = static_cast<T>(row[k] * scale);
    return static_cast<T>(scale * g);
  }

  /// sums[j] = sum over the rows k >= first of a[k][i] a[k][j], for the columns j behind i.
  void SumColumnProducts(int i, int first) {
    std::fill(sums_.begin(), sums_.end(), 0.0);
    for (int k = first; k <= rows_; ++k) {
      const T* row = a_[k];
      const double factor = row[i];
      for (int j = i + 1; j <= columns_; ++j) sums_[j] += factor * row[j];
    }
  }

  /// a[k][j] += sums[j] a[k][i] for the rows k >= first and the columns j behind i.
  void AddColumnMultiples(int i, int first) {
    for (int k = first; k <= rows_; ++k) {
      T* row = a_[k];
      const double factor = row[i];
      for (int j = i + 1; j <= columns_; ++j) row[j] = static_cast<T>(row[j] + sums_[j] * factor);
    }
  }

  /// The right-hand reflections, multiplied out into v.
  void AccumulateRight() {
    for (int i = columns_; i >= 1; --i) {
      const int l = i + 1;
      if (l <= columns_) {
        if (rv1_[l] != 0) MultiplyRightReflection(i);
        for (int j = l; j <= columns_; ++j) v_[i][j] = v_[j][i] = 0;
      }
      v_[i][i] = 1;
    }
  }

  void MultiplyRightReflection(int i) {
    const int l = i + 1;
    const T* row = a_[i];
    for (int j = l; j <= columns_; ++j) v_[j][i] = static_cast<T>(static_cast<Real>(row[j]) / row[l] / rv1_[l]);
    std::fill(sums_.begin(), sums_.end(), 0.0);
    for (int k = l; k <= columns_; ++k)
      for (int j = l; j <= columns_; ++j) sums_[j] += static_cast<double>(row[k]) * v_[k][j];
    for (int k = l; k <= columns_; ++k) {
      const double factor = v_[k][i];
      for (int j = l; j <= columns_; ++j) v_[k][j] = static_cast<T>(v_[k][j] + sums_[j] * factor);
    }
  }

  /// The left-hand reflections, multiplied out into a.
  void AccumulateLeft() {
    for (int i = std::min(rows_, columns_); i >= 1; --i) {
      for (int j = i + 1; j <= columns_; ++j) a_[i][j] = 0;
      if (w_[i] != 0) {
        const Real inverse = 1 / static_cast<Real>(w_[i]);
        SumColumnProducts(i, i + 1);
        for (int j = i + 1; j <= columns_; ++j) sums_[j] = static_cast<double>(sums_[j] / a_[i][i] * inverse);
        AddColumnMultiples(i, i);
        for (int k = i; k <= rows_; ++k) a_[k][i] = static_cast<T>(a_[k][i] * inverse);
      } else {
        for (int k = i; k <= rows_; ++k) a_[k][i] = 0;
      }
      a_[i][i] = static_cast<T>(a_[i][i] + 1);
    }
  }

  bool IsFinite() const {
    for (int i = 1; i <= columns_; ++i)
      if (!std::isfinite(w_[i]) || !std::isfinite(rv1_[i])) return false;
    return std::isfinite(norm_);
  }

  /// Whether x vanishes beside the norm in the precision of T.
  bool IsNegligible(T x) const { return static_cast<T>(std::abs(x) + norm_) == norm_; }

  /// Rotates until singular value k stands alone.
  bool Diagonalise(int k) {
    for (int iteration = 1;; ++iteration) {
      const int l = SplitPoint(k);
      if (l == k) {
        MakePositive(k);
        return true;
      }
      if (iteration == kIterationLimit || !Sweep(l, k)) return false;
    }
  }

  /// The first row l of the unreduced block that ends in k; a negligible w[l - 1] is cleared away first.
  int SplitPoint(int k) {
    for (int l = k; l > 1; --l) {
      if (IsNegligible(rv1_[l])) return l;
      if (IsNegligible(w_[l - 1])) {
        CancelSuperdiagonal(l, k);
        return l;
      }
    }
    return 1;  // rv1[1] is always 0
  }

  /// Cancels rv1[l], which stands beside a negligible w[l - 1], with rotations that chase it to rv1[k] and out.
  void CancelSuperdiagonal(int l, int k) {
    Real c = 0, s = 1;
    for (int i = l; i <= k; ++i) {
      const Real f = s * rv1_[i];
      rv1_[i] = static_cast<T>(c * rv1_[i]);
      if (IsNegligible(static_cast<T>(f))) return;
      const Real g = w_[i], h = Length(f, g);
      w_[i] = static_cast<T>(h);
      c = g / h;
      s = -f / h;
      const double cosine = static_cast<double>(c), sine = static_cast<double>(s);
      for (int r = 1; r <= rows_; ++r) {
        const double y = a_[r][l - 1], z = a_[r][i];
        a_[r][l - 1] = static_cast<T>(y * cosine + z * sine);
        a_[r][i] = static_cast<T>(z * cosine - y * sine);
      }
    }
  }

  void MakePositive(int k) {
    if (!(w_[k] < 0)) return;
    w_[k] = -w_[k];
    for (int r = 1; r <= columns_; ++r) v_[r][k] = -v_[r][k];
  }

  /// First element of the shifted sweep over the block l .. k, the shift from its bottom 2 by 2 minor.
  Real ShiftedStart(int l, int k) const {
    const Real x = w_[l], y = w_[k - 1], z = w_[k], g = rv1_[k - 1], h = rv1_[k];
    const Real f = ((y - z) * (y + z) + (g - h) * (g + h)) / (2 * h * y);
    return ((x - z) * (x + z) + h * (y / (f + std::copysign(Length(f, 1), f)) - h)) / x;
  }

  /// One implicit QR sweep from l to k - 1. False where the numbers have ceased to be finite.
  bool Sweep(int l, int k) {
    Real f = ShiftedStart(l, k), x = w_[l], c = 1, s = 1;
    if (!std::isfinite(f)) return false;
    rotationsOfV_.clear();
    rotationsOfU_.clear();
    for (int j = l; j < k; ++j) {
      const int i = j + 1;
      Real g = rv1_[i], y = w_[i], h = s * g;
      g *= c;
      rv1_[j] = static_cast<T>(TurnOntoAxis(f, h, c, s));
      rotationsOfV_.push_back({static_cast<double>(c), static_cast<double>(s)});
      f = x * c + g * s;
      g = g * c - x * s;
      h = y * s;
      y *= c;
      w_[j] = static_cast<T>(TurnOntoAxis(f, h, c, s));
      rotationsOfU_.push_back({static_cast<double>(c), static_cast<double>(s)});
      f = c * g + s * y;
      x = c * y - s * g;
    }
    rv1_[l] = 0;
    rv1_[k] = static_cast<T>(f);
    w_[k] = static_cast<T>(x);
    RotateNeighbours(v_, columns_, l, rotationsOfV_);
    RotateNeighbours(a_, rows_, l, rotationsOfU_);
    return true;
  }

  T** a_;
  int rows_, columns_;
  T* w_;    ///< diagonal of the bidiagonal form, then the singular values
  T** v_;
  std::vector<T> rv1_;        ///< superdiagonal: rv1[i] stands beside w[i - 1] and above w[i]; rv1[1] is 0
  T norm_ = 0;                ///< largest |w[i]| + |rv1[i]|
  std::vector<double> sums_;  ///< one for each column
  std::vector<Rotation> rotationsOfV_, rotationsOfU_;
};

}  // namespace

template <class T>
bool DecomposeSingularValues(T** a, int rows, int columns, T* w, T** v) {
  return Decomposition<T>(a, rows, columns, w, v).Run();
}

template bool DecomposeSingularValues(float** a, int rows, int columns, float* w, float** v);
template bool DecomposeSingularValues(double** a, int rows, int columns, double* w, double** v);

}  // namespace kalmia
