#include "OPLSIdentities.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "OPLSCase.h"
#include "kalmia/containers/DeepCopied.h"
#include "kalmia/pcapls/NCPCA.h"
#include "testing/RandomTables.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using kalmia::DeepCopy;

constexpr int kMaxIterations = 200;

::testing::AssertionResult Same(const Vector& found, const Vector& expected) {
  if (found.Size() != expected.Size()) return ::testing::AssertionFailure() << "sizes differ";
  if (found.GetNumMisVal() != expected.GetNumMisVal()) return ::testing::AssertionFailure() << "counts of holes differ";
  for (int i = 1; i <= found.Size(); ++i) {
    const float a = found[i], b = expected[i];
    if (std::isnan(a) && std::isnan(b)) continue;
    if (std::memcmp(&a, &b, sizeof(a)) != 0)
      return ::testing::AssertionFailure() << "cell " << i << ": " << a << " instead of " << b;
  }
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult Same(const Matrix& found, const Matrix& expected) {
  if (found.SizeRows() != expected.SizeRows()) return ::testing::AssertionFailure() << "numbers of rows differ";
  for (int r = 1; r <= found.SizeRows(); ++r)
    if (auto same = Same(found[r], expected[r]); !same) return same << " in row " << r;
  return ::testing::AssertionSuccess();
}

Vector RowsOn(const Matrix& table, const Vector& v) { return table.SpecialNipalsRegressRowsFix(v, nullptr, 0); }

Vector ColumnsOn(const Matrix& table, const Vector& v) { return table.SpecialNipalsRegressColumnsFix(v); }

/// The cells of the table with 0 in the holes of `original`.
Matrix WithZeros(const Matrix& table, const Matrix& original) {
  Matrix filled = DeepCopy(table);
  for (int i = 1; i <= filled.SizeRows(); ++i)
    for (int j = 1; j <= filled.SizeColumns(); ++j)
      if (original.GetNumMisVal() > 0 && original[i][j] == kHole<float>) filled(i, j, 0.0F);
  return filled;
}

/// The first principal directions of the rows; of a single row its own.
Matrix PrincipalDirections(const Matrix& rows, int count) {
  if (rows.SizeRows() == 1) {
    Matrix direction = DeepCopy(rows);
    direction(1).Normalise();
    return direction;
  }
  NCPCA components(&rows, kMaxIterations);
  for (int a = 1; a <= count; ++a) {
    components.NextComponent(nullptr, nullptr, 0, nullptr);
    components.CalculateResiduals();
  }
  return *components.GetPprim();
}

/// Whether |c| |t| / |Y| says that a component has nothing to do with Y.
bool IsUnrelated(const Vector& c, const Vector& t, const Matrix& Y) {
  const double g = std::sqrt(static_cast<double>(c.GetSS())) * std::sqrt(static_cast<double>(t.GetSS())) /
                   std::sqrt(static_cast<double>(Y.GetSS()));
  return !std::isfinite(g) || g < 1e-6 / std::sqrt(static_cast<double>(Y.SizeColumns()));
}

class Identities {
 public:
  Identities(const NCOPLS& model, const Tables& tables, FittedFrom from)
      : model_(model), tables_(tables), from_(from), x_(DeepCopy(tables.X)), y_(DeepCopy(tables.Y)) {}

  void Expect() {
    const int orthogonal = model_.SizeOrthogonalComponents();
    for (int o = 0; o <= orthogonal; ++o) {
      SCOPED_TRACE("block " + std::to_string(o));
      ExpectWeights(o);
      ExpectBlock(o, /*isLast=*/o == orthogonal);
      if (o < orthogonal) ExpectOrthogonal(o + 1);
    }
  }

 private:
  bool IsFitted(int block) const { return block >= from_.block; }
  const Matrix& W(int block) const { return (*model_.GetWMatrices())[static_cast<std::size_t>(block)]; }

  void ExpectWeights(int block) const {
    const Matrix y = WithZeros(y_, tables_.Y);
    if (!IsFitted(block) || x_.GetNumMisVal() > 0 || y.GetNumMisVal() > 0) return;  // several passes
    const Matrix crossProduct = y.MatrixMultiply(x_, true, false);
    if (crossProduct.SizeRows() == 0) return;
    EXPECT_TRUE(Same(W(block), PrincipalDirections(crossProduct, W(block).SizeRows()))) << "W";
  }

  void ExpectBlock(int block, bool isLast) const {
    const Matrix& P = (*model_.GetPMatrices())[static_cast<std::size_t>(block)];
    const Matrix& C = (*model_.GetCMatrices())[static_cast<std::size_t>(block)];
    Matrix E = DeepCopy(x_), F = DeepCopy(y_);
    for (int a = 1; a <= W(block).SizeRows(); ++a) {
      const Vector t = RowsOn(E, W(block)[a]);
      if (isLast) {
        EXPECT_TRUE(Same((*model_.GetTprim())[a], t)) << "T " << a;
      }
      if (IsFitted(block)) {
        EXPECT_TRUE(Same(P[a], ColumnsOn(E, t))) << "P " << a;
        EXPECT_TRUE(Same(C[a], ColumnsOn(F, t))) << "C " << a;
      }
      if (isLast && IsFitted(block)) {
        EXPECT_TRUE(Same((*model_.GetUprim())[a], RowsOn(F, C[a]))) << "U " << a;
      }
      E.AddVprimV(t, P[a], -1.0F);
      F.AddVprimV(t, C[a], -1.0F);
    }
    if (!isLast) return;
    EXPECT_EQ(model_.SizeComponents(), W(block).SizeRows());
    EXPECT_TRUE(Same(model_.GetXResiduals(), E)) << "X";
    EXPECT_TRUE(Same(model_.GetYResiduals(), F)) << "Y";
  }

  /// Goes on to the tables without orthogonal component `o`, from 1.
  void ExpectOrthogonal(int o) {
    SCOPED_TRACE("orthogonal component " + std::to_string(o));
    const Vector &wo = (*model_.GetWOprim())[o], &po = (*model_.GetPOprim())[o], &co = (*model_.GetCOprim())[o];
    Matrix E = DeepCopy(x_), scores;
    for (int a = 1; a <= W(o - 1).SizeRows(); ++a) {
      scores.push_back(RowsOn(E, W(o - 1)[a]));
      E.AddVprimV(scores.back(), W(o - 1)[a], -1.0F);
    }
    const Vector to = RowsOn(E, wo);
    EXPECT_TRUE(Same((*model_.GetTOprim())[o], to)) << "TO";
    const Vector uo = RowsOn(y_, co);
    if (IsFitted(o)) {
      const Matrix left = scores.MatrixMultiply(WithZeros(E, tables_.X), false, false);
      EXPECT_TRUE(Same(wo, PrincipalDirections(left, 1)[1])) << "WO";
      EXPECT_TRUE(Same(po, ColumnsOn(x_, to))) << "PO";
      EXPECT_TRUE(Same(co, ColumnsOn(y_, to))) << "CO";
      EXPECT_TRUE(Same((*model_.GetUOprim())[o], IsUnrelated(co, to, y_) ? Vector(uo.Size()) : uo)) << "UO";
    } else {
      EXPECT_TRUE(Same((*model_.GetUOprim())[o], uo)) << "UO";
    }
    x_.AddVprimV(to, po, -1.0F);
    y_.AddVprimV(to, co, -1.0F);
  }

  const NCOPLS& model_;
  const Tables& tables_;
  const FittedFrom from_;
  Matrix x_, y_;  ///< without the orthogonal components so far
};

}  // namespace

void ExpectOPLSIdentities(const NCOPLS& model, const Tables& tables, FittedFrom from) {
  Identities(model, tables, from).Expect();
}

void ExpectPredictionOf(const NCOPLS& rebuilt, const NCDataMatrix<float>& X) {
  NCOPLSPred prediction(&X, rebuilt.GetWMatrices(), rebuilt.GetPMatrices(), rebuilt.GetCMatrices(),
                        rebuilt.GetWOprim(), rebuilt.GetPOprim(), rebuilt.GetCOprim());
  for (int o = 1; o <= rebuilt.SizeOrthogonalComponents(); ++o) prediction.CalcNextComponent();
  EXPECT_TRUE(Same(*prediction.GetTPred(), *rebuilt.GetTprim())) << "T";
  EXPECT_TRUE(Same(*prediction.GetTOPred(), *rebuilt.GetTOprim())) << "TO";
  Matrix left = DeepCopy(X), Y(X.SizeRows(), rebuilt.GetCprim()->SizeColumns(), 0.0F);
  for (int o = 1; o <= rebuilt.SizeOrthogonalComponents(); ++o) {
    left.AddVprimV((*rebuilt.GetTOprim())[o], (*rebuilt.GetPOprim())[o], -1.0F);
    Y.AddVprimV((*rebuilt.GetTOprim())[o], (*rebuilt.GetCOprim())[o], 1.0F);
  }
  for (int a = 1; a <= rebuilt.SizeComponents(); ++a)
    Y.AddVprimV((*rebuilt.GetTprim())[a], (*rebuilt.GetCprim())[a], 1.0F);
  EXPECT_TRUE(Same(prediction.GetXOrthoResiduals(), left)) << "X";
  EXPECT_TRUE(Same(*prediction.GetYPred(), Y)) << "Y";
}
