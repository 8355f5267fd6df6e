#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;

/// What coefficients are made of, one component per row.
struct Matrices {
  plain::Table W, P, Wo, Po, Lambda, S, Q;
};

constexpr int kVariables = 7, kOtherVariables = 4;

/// Of no model: a fitted one has right angles by which terms could be left out or exchanged.
Matrices RandomMatrices(int predictive, int orthogonal, unsigned seed) {
  const auto random = [&seed](int rows, int columns) {
    return plain::TableOf(RandomMatrix<float>(rows, columns, 0, seed++));
  };
  return {random(predictive, kVariables), random(predictive, kVariables), random(orthogonal, kVariables),
          random(orthogonal, kVariables), random(predictive, predictive), random(orthogonal, kOtherVariables),
          random(predictive, kOtherVariables)};
}

Table CoefficientsOf(const Matrices& m) {
  using plain::ToFloat;
  return NCO2PLS::GetCoefficients(ToFloat(m.W), ToFloat(m.P), ToFloat(m.Wo), ToFloat(m.Po), ToFloat(m.Lambda),
                                  ToFloat(m.S), ToFloat(m.Q));
}

/// W*, row by row: w_a less, for each b before it, (p_b w_a) w*_b. With `sign` 1 it is added instead.
plain::Table WStar(const plain::Table& W, const plain::Table& P, double sign) {
  plain::Table star = W;
  for (std::size_t a = 0; a < W.size(); ++a)
    for (std::size_t b = 0; b < a; ++b) {
      const double share = plain::Dot(P[b], W[a]);
      for (std::size_t k = 0; k < W[a].size(); ++k) star[a][k] += sign * share * star[b][k];
    }
  return star;
}

void Add(plain::Table* sum, const plain::Table& term, double sign) {
  for (std::size_t i = 0; i < sum->size(); ++i)
    for (std::size_t j = 0; j < (*sum)[i].size(); ++j) (*sum)[i][j] += sign * term[i][j];
}

/// B = Ws' Lambda Q + Wos' S - Wos' Po Ws' Lambda Q. With `sign` 1 nothing is subtracted: of absolute values that is
/// what all terms of a cell add up to.
plain::Table Formula(const Matrices& m, double sign) {
  using plain::Product;
  const plain::Table star = plain::Transposed(WStar(m.W, m.P, sign));
  plain::Table coefficients = Product(Product(star, m.Lambda), m.Q);
  if (m.Wo.empty()) return coefficients;
  const plain::Table orthogonalStar = plain::Transposed(WStar(m.Wo, m.Po, sign));
  const plain::Table shared = Product(Product(Product(m.Po, star), m.Lambda), m.Q);
  Add(&coefficients, Product(orthogonalStar, m.S), 1.0);
  Add(&coefficients, Product(orthogonalStar, shared), sign);
  return coefficients;
}

plain::Table Absolute(plain::Table table) {
  for (plain::Vector& row : table)
    for (double& cell : row) cell = std::abs(cell);
  return table;
}

Matrices Absolute(const Matrices& m) {
  return {Absolute(m.W),      Absolute(m.P), Absolute(m.Wo), Absolute(m.Po),
          Absolute(m.Lambda), Absolute(m.S), Absolute(m.Q)};
}

void ExpectFormula(const Matrices& m) {
  const Table coefficients = CoefficientsOf(m);
  const plain::Table expected = Formula(m, -1.0), size = Formula(Absolute(m), 1.0);
  ASSERT_EQ(coefficients.SizeRows(), kVariables);
  ASSERT_EQ(coefficients.SizeColumns(), kOtherVariables);
  // A term passes both W* (two roundings for each of at most two rows before, in each), and five products and sums, in
  // which a cell is rounded to float once: under sixteen roundings by half a unit of 2^-23.
  constexpr double kRoundings = 16 * 0x1p-24;
  for (std::size_t k = 0; k < expected.size(); ++k)
    for (std::size_t j = 0; j < expected[k].size(); ++j)
      EXPECT_NEAR(coefficients[static_cast<int>(k) + 1][static_cast<int>(j) + 1], expected[k][j],
                  kRoundings * size[k][j]);
}

TEST(NCO2PLSCoefficients, AreTheSumOfTheirThreeTerms) {
  unsigned seed = 1;
  for (int predictive = 1; predictive <= 3; ++predictive)
    for (int orthogonal = 0; orthogonal <= 3; ++orthogonal) {
      SCOPED_TRACE(std::to_string(predictive) + " predictive, " + std::to_string(orthogonal) + " orthogonal");
      ExpectFormula(RandomMatrices(predictive, orthogonal, seed));
      seed += 10;
    }
}

TEST(NCO2PLSCoefficients, HaveNoTermOfSWithoutOrthogonalWeights) {
  Matrices m = RandomMatrices(2, 0, 1);
  const auto without = CellsOf(CoefficientsOf(m));
  m.S = RandomMatrices(2, 2, 50).S;
  EXPECT_EQ(CellsOf(CoefficientsOf(m)), without);
}

TEST(NCO2PLSCoefficients, OfAFittedModelWithoutOrthogonalWeightsAreThePredictiveTermAlone) {
  const FloatBlocks blocks = MakeFloatBlocks({20, kVariables, kOtherVariables, 2, 1, 1}, 0.05, 3);
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, 500);
  model.Fit(2, 1, 0);
  const plain::O2PLS m = PlainOf(model);
  const Table coefficients = CoefficientsOf({m.W, m.P, {}, {}, m.Lambda, {}, m.Q});
  // Of a fitted model W* is (W P')^-1 W.
  const plain::Table wStar = plain::Product(plain::Inverse(plain::Product(m.W, plain::Transposed(m.P))), m.W);
  const plain::Table expected = plain::Product(plain::Transposed(wStar), plain::Product(m.Lambda, m.Q));
  for (std::size_t k = 0; k < expected.size(); ++k)
    for (std::size_t j = 0; j < expected[k].size(); ++j)
      EXPECT_NEAR(coefficients[static_cast<int>(k) + 1][static_cast<int>(j) + 1], expected[k][j], 1e-5)
          << "cells below 1 of weights that are at right angles to 1e-6, in sums of a few terms";
}

}  // namespace
