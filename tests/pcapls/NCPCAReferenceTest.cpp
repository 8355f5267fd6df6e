// PCA of real tables without holes against a singular value decomposition in double.
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>

#include "PlainPCA.h"
#include "RealTables.h"
#include "kalmia/pcapls/NCPCA.h"

namespace {

struct RealTable {
  const char* name;
  const char* file;
  int first, last;
  bool unitVariance;  ///< else centred alone
  int judged;         ///< components that are far enough from their neighbours to be compared
};

void PrintTo(const RealTable& table, std::ostream* out) { *out << table.name; }

class NCPCAOfRealTables : public ::testing::TestWithParam<RealTable> {};

INSTANTIATE_TEST_SUITE_P(, NCPCAOfRealTables,
                         ::testing::Values(RealTable{"Wine", "wine", 2, 14, true, 5},
                                           RealTable{"CentredWine", "wine", 2, 14, false, 13},
                                           RealTable{"Gasoline", "gasoline", 2, 402, true, 8},
                                           RealTable{"CentredGasoline", "gasoline", 2, 402, false, 8}),
                         [](const auto& info) { return info.param.name; });

NCDataMatrix<float> Read(const RealTable& table) {
  NCDataMatrix<float> X = ReadColumns(table.file, table.first, table.last);
  if (table.unitVariance) {
    ScaleToUnitVariance(&X);
  } else {
    for (int k = 1; k <= X.SizeColumns(); ++k) X.SubtractFromColumn(k, X.GetColumnMean(k));
  }
  return X;
}

/// Neighbours that are closer than this converge too slowly to be told apart by a change of 1e-5 a round.
constexpr double kLargestRatio = 0.9;

/// What an iteration that ends once t moves by 1e-5 of its length leaves of the neighbour whose singular value is r
/// times as large in t and p, and what that leaves of this component in the neighbour. A round takes the share of the
/// neighbour in t to its r^2 fold: so r^2 / (1 - r^2) of the last change is still to go. p is half a round behind, and
/// taking t p' out leaves the neighbour with just as much of this component: r or 1 for r^2.
double Leftover(double r) { return 1e-5 / (1.0 - r * r); }

TEST_P(NCPCAOfRealTables, HasTheSingularVectorsAndValues) {
  const NCDataMatrix<float> X = Read(GetParam());
  const plain::SingularVectors reference = plain::Decompose(plain::TableOf(X));
  NCPCA model(&X, /*maxIterations=*/10000);
  double before = 0.0;  // the ratio to the component before
  int judged = 0;
  const std::size_t last = reference.values.size() - 1;
  // Behind the rank there is nothing but what the rounding of the cells to float left.
  for (std::size_t a = 0; a <= last && reference.values[a] > 1e-5 * reference.values[0]; ++a) {
    SCOPED_TRACE("component " + std::to_string(a + 1));
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    model.CalculateResiduals();
    const double after = a < last ? reference.values[a + 1] / reference.values[a] : 0.0;
    if (before < kLargestRatio && after < kLargestRatio) {
      ++judged;
      const plain::Vector t = plain::VectorOf(model.GetTprim()->back());
      const plain::Vector p = plain::VectorOf(model.GetPprim()->back());
      // The neighbours are orthogonal to each other. Rounding adds less: 2^-24 of a cell for each component before.
      const double tolerance = std::hypot(Leftover(before), Leftover(after));
      EXPECT_LT(plain::SineOfAngle(t, reference.left[a]), tolerance);
      EXPECT_LT(plain::SineOfAngle(p, reference.right[a]), tolerance);
      // Of the sine only the square counts here; the rounding of the table is 2^-24 of its largest singular value.
      const double rounding = 0x1p-24 * reference.values[0] / reference.values[a];
      EXPECT_NEAR(std::sqrt(plain::SquaresOf(t)) / reference.values[a], 1.0, tolerance * tolerance + 2 * rounding);
      EXPECT_NEAR(plain::SquaresOf(p), 1.0, 4 * 0x1p-24);
    }
    before = after;
  }
  EXPECT_EQ(judged, GetParam().judged);
}

TEST_P(NCPCAOfRealTables, ExplainsAsMuchWithEachComponentAsTheSingularValueHoldsHoweverCloseTheNextOne) {
  const NCDataMatrix<float> X = Read(GetParam());
  const plain::SingularVectors reference = plain::Decompose(plain::TableOf(X));
  const double total = plain::SquaresOf(plain::TableOf(X));
  NCPCA model(&X, /*maxIterations=*/10000);
  double left = total;
  for (std::size_t a = 0; a < reference.values.size() && reference.values[a] > 1e-5 * reference.values[0]; ++a) {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    model.CalculateResiduals();
    left -= reference.values[a] * reference.values[a];
    // What of two neighbours changed places is the square of a sine below 1e-3 times the difference of their squares;
    // and each component rounds each cell, by 2^-24 of the table's largest singular value at most.
    EXPECT_NEAR(static_cast<double>(model.GetResiduals()->GetSS()), left, 1e-6 * left + total * 0x1p-24 * 0x1p-4);
  }
}

}  // namespace
