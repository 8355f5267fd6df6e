// PLS on real tables against R's pls and scikit-learn. The numbers and the scripts that made them, with the versions of
// the packages, lie in data/. All three normalise alike (w of unit length, t = X w, p = X't / t't, c = Y't / t't), but
// for the sign of a component, which is nobody's but the algorithm's, and for u with one Y: R leaves it at the y that
// is left, where here and in scikit-learn it is y c / c'c = y / c.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "PlainPLS.h"
#include "RealTables.h"
#include "kalmia/pcapls/NCPLS.h"

namespace {

constexpr int kComponents = 3;

/// What a package found: quantity and component to cells.
using Reference = std::map<std::pair<std::string, int>, plain::Vector>;

Reference ReadReference(const std::string& package, const std::string& table) {
  Reference reference;
  for (const auto& row : ReadCsv(kReferenceFolder + ("pls_reference_" + package) + ".csv"))
    if (row[0] == table) reference[{row[1], std::stoi(row[2])}].push_back(std::stod(row[4]));
  return reference;
}

struct Table {
  const char* name;
  int firstX, lastX, firstY, lastY;
  int step;  ///< every how many X variables the reference has one
};

const Table kGasoline = {"gasoline", 2, 402, 1, 1, 20};
const Table kOliveOil = {"oliveoil", 1, 5, 6, 11, 1};

class NCPLSReference : public ::testing::TestWithParam<std::tuple<const char*, Table>> {};

INSTANTIATE_TEST_SUITE_P(, NCPLSReference,
                         ::testing::Combine(::testing::Values("r", "sklearn"), ::testing::Values(kGasoline, kOliveOil)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param)) + "_" + std::get<1>(info.param).name;
                         });

plain::Vector EveryStep(const NCDataVector<float>& v, int step) {
  plain::Vector kept;
  for (int k = 1; k <= v.Size(); k += step) kept.push_back(v[k]);
  return kept;
}

/// How far from the reference, relative to its length, but for the sign.
double GapUpToSign(plain::Vector found, const plain::Vector& reference) {
  if (plain::Dot(found, reference) < 0.0)
    for (double& cell : found) cell = -cell;
  return plain::RelativeGap(found, reference);
}

double NormOf(const NCDataMatrix<float>& matrix) { return std::sqrt(static_cast<double>(matrix.GetSS())); }

TEST_P(NCPLSReference, HasTheSameScoresWeightsLoadingsAndCoefficients) {
  const auto& [package, table] = GetParam();
  const Reference reference = ReadReference(package, table.name);
  const Reference amplifications = ReadReference("r", table.name);
  NCDataMatrix<float> X = ReadColumns(table.name, table.firstX, table.lastX);
  NCDataMatrix<float> Y = ReadColumns(table.name, table.firstY, table.lastY);
  // What the packages, in double, do not have: cells rounded to float, before scaling above all, and a loop that ends
  // when u moves by 1e-5 of its length (see stop_amplification in data/pls_reference.R; with one Y there is no loop).
  double lost = ScaleToUnitVariance(&X) + ScaleToUnitVariance(&Y);
  const double normOfX = NormOf(X);
  const bool oneY = Y.SizeColumns() == 1;
  NCPLS model(&X, &Y, /*maxIterations=*/10000);
  double tolerance = 0.0;
  for (int a = 1; a <= kComponents; ++a) {
    SCOPED_TRACE("component " + std::to_string(a));
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model.CalculateResiduals();
    if (!oneY) lost += 1e-5 * amplifications.at({"amplification", a}).front();
    // What is lost of the table, now or by an earlier component, is so much more of the part that a component has.
    const plain::Vector& t = reference.at({"t", a});
    tolerance = lost * normOfX / std::sqrt(plain::SquaresOf(t));
    EXPECT_LT(GapUpToSign(plain::VectorOf((*model.GetTprim())[a]), t), tolerance);
    EXPECT_LT(GapUpToSign(EveryStep((*model.GetWprim())[a], table.step), reference.at({"w", a})), tolerance);
    EXPECT_LT(GapUpToSign(EveryStep((*model.GetPprim())[a], table.step), reference.at({"p", a})), tolerance);
    EXPECT_LT(GapUpToSign(plain::VectorOf((*model.GetCprim())[a]), reference.at({"c", a})), tolerance);
    plain::Vector u = plain::VectorOf((*model.GetUprim())[a]);
    if (oneY && std::string(package) == "r")
      for (double& cell : u) cell *= (*model.GetCprim())[a][1];
    EXPECT_LT(GapUpToSign(u, reference.at({"u", a})), tolerance);
  }
  const NCDataMatrix<float> coefficients = model.GetRegressionCoefficients(-1);
  for (int j = 1; j <= coefficients.SizeColumns(); ++j)
    EXPECT_LT(plain::RelativeGap(EveryStep(coefficients.GetColumn(j), table.step), reference.at({"b", j})), tolerance);
}

}  // namespace
