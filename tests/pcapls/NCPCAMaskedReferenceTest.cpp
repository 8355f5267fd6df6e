// PCA of a real table with holes against the masked least-squares problem, min over p and t of the sum of
// (x_ik - t_i p_k)^2 over the cells that are present. The alternating regressions solve just that as long as no row or
// column has so few cells that its denominator is held up at a third. SciPy's solution, and the script that made it,
// lie in data/.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "PlainPCA.h"
#include "RealTables.h"
#include "kalmia/pcapls/NCPCA.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

/// Whether the cell in row i and column k, from 0, is removed; the same hash stands in data/pca_masked_reference.py.
bool IsHole(std::uint32_t i, std::uint32_t k, std::uint32_t percent, std::uint32_t seed) {
  std::uint32_t h = (i * 13 + k) * 0x9E3779B1U + seed * 0x85EBCA6BU;
  for (int round = 0; round < 2; ++round) h = (h ^ (h >> 16)) * 0x45D9F3BU;
  h ^= h >> 16;
  return h % 100 < percent;
}

struct Solution {
  unsigned seed = 0;
  plain::Vector p, t;
};

Solution ReadSolution(unsigned percent) {
  Solution solution;
  for (const auto& row : ReadCsv(kReferenceFolder + std::string("pca_masked_reference_scipy.csv"))) {
    if (row[0] != std::to_string(percent)) continue;
    if (row[1] == "seed") solution.seed = static_cast<unsigned>(std::stoul(row[3]));
    if (row[1] == "p") solution.p.push_back(std::stod(row[3]));
    if (row[1] == "t") solution.t.push_back(std::stod(row[3]));
  }
  return solution;
}

/// The smallest share of v's sum of squares that a line of the table has on its present cells.
double SmallestShare(const plain::Table& lines, const plain::Vector& v) {
  double smallest = 1.0;
  for (const plain::Vector& line : lines) {
    double present = 0.0;
    for (std::size_t i = 0; i < v.size(); ++i)
      if (!std::isnan(line[i])) present += v[i] * v[i];
    smallest = std::min(smallest, present / plain::SquaresOf(v));
  }
  return smallest;
}

class NCPCAWithHoles : public ::testing::TestWithParam<unsigned> {
 protected:
  NCPCAWithHoles() : solution_(ReadSolution(GetParam())), X_(ReadColumns("wine", 2, 14)) {
    for (int i = 1; i <= X_.SizeRows(); ++i)
      for (int k = 1; k <= X_.SizeColumns(); ++k)
        if (IsHole(static_cast<unsigned>(i) - 1, static_cast<unsigned>(k) - 1, GetParam(), solution_.seed))
          X_(i, k, kHole<float>);
    rounding_ = ScaleToUnitVariance(&X_);
  }

  Solution solution_;
  NCDataMatrix<float> X_;
  double rounding_ = 0.0;
};

INSTANTIATE_TEST_SUITE_P(Percent, NCPCAWithHoles, ::testing::Values(5U, 10U, 30U), ::testing::PrintToStringParamName());

TEST_P(NCPCAWithHoles, HasAFirstComponentThatSolvesTheMaskedLeastSquaresProblem) {
  const plain::Table table = plain::TableOf(X_);
  ASSERT_GT(SmallestShare(table, solution_.p), 1.0 / 3.0);
  ASSERT_GT(SmallestShare(plain::Transposed(table), solution_.t), 1.0 / 3.0);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  NCPCA model(&X_, /*maxIterations=*/1000);
  model.NextComponent(bar.get(), nullptr, 0, nullptr);
  ASSERT_GT(model.GetIterations(), 3);
  // The last two values on the bar, -(log10 d + 10) * 10, tell by what factor q a round makes the error smaller. What
  // is to go when t has moved by 1e-5 of its length is then q / (1 - q) of that; p is half a round behind t.
  const auto value = [&log](std::size_t fromTheEnd) {
    const std::string& call = log.calls[log.calls.size() - 1 - fromTheEnd];
    return std::stod(call.substr(call.find(' ')));
  };
  const double q = std::pow(10.0, (value(1) - value(0)) / 20.0);
  ASSERT_LT(q, 0.8);
  const double tolerance = 1e-5 / (1.0 - q) + rounding_;
  EXPECT_LT(plain::SineOfAngle(plain::VectorOf((*model.GetPprim())[1]), solution_.p), tolerance);
  EXPECT_LT(plain::SineOfAngle(plain::VectorOf((*model.GetTprim())[1]), solution_.t), tolerance);
  // The lengths say that p is the one of unit length.
  EXPECT_NEAR(plain::SquaresOf(plain::VectorOf((*model.GetTprim())[1])) / plain::SquaresOf(solution_.t), 1.0,
              2 * tolerance);
}

}  // namespace
