// The numbers that `kalmia opls --csv` writes, held against what they mean and against the library.

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>

#include "CommandRun.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/opls/OPLSCrossValidation.h"

namespace {

using kalmia::analysis::ColumnScaling;
using kalmia::analysis::Table;
using Matrix = NCDataMatrix<float>;
using NameList = std::vector<std::string>;
using Numbers = std::vector<double>;

const NameList kXOfOPLS = {"x1", "x2", "x3", "x4", "x5", "x6"};

struct Case {
  const char* what;
  std::string table;  ///< X columns x1 to x6
  NameList y;
  int predictive;
  int orthogonal;
};

const std::vector<Case>& Cases() {
  static const std::vector<Case> all = {
      {"one component of each kind", LinearTable(30, 6, 2), {"y"}, 1, 1},
      {"holes", WithHoles(LinearTable(30, 6, 2), 7), {"y"}, 1, 2},
      {"several Y, without holes", UnrelatedTable(24, 6, 3, 5), {"y1", "y2", "y3"}, 2, 2},
      {"several Y, with holes in X and Y", WithHoles(UnrelatedTable(24, 6, 3, 5), 11), {"y1", "y2", "y3"}, 2, 1}};
  return all;
}

/// A column of a file as float cells, -99 where it is empty.
std::vector<float> CellsOf(const Table& table, const std::string& column) {
  std::vector<float> cells;
  for (const double number : NumbersOf(table, column))
    cells.push_back(std::isnan(number) ? -99.0F : static_cast<float>(number));
  return cells;
}

Matrix TableOf(const Table& table, const NameList& names) {
  Matrix cells(table.Rows(), static_cast<int>(names.size()));
  for (int c = 1; c <= cells.SizeColumns(); ++c) {
    const std::vector<float> column = CellsOf(table, names[static_cast<std::size_t>(c) - 1]);
    for (int r = 1; r <= cells.SizeRows(); ++r) cells(r, c, column[static_cast<std::size_t>(r) - 1]);
  }
  return cells;
}

/// What the command writes of a table, and the library's model of the same table scaled to unit variance.
class Fit {
 public:
  explicit Fit(const Case& each)
      : table_(each.table, "t.csv"),
        x_(TableOf(table_, kXOfOPLS)),
        y_(TableOf(table_, each.y)),
        xScaling_(kalmia::analysis::ScaleColumns(NCScale::ScalingUnitVariance, kXOfOPLS, &x_)),
        yScaling_(kalmia::analysis::ScaleColumns(NCScale::ScalingUnitVariance, each.y, &y_)),
        model_(&x_, &y_, each.predictive, kalmia::analysis::kMaxIterations) {
    NameList arguments = {"opls", folder_.Write("t.csv", each.table), "--x", "x1..x6", "--csv", folder_.Path("d"),
                       "--save", folder_.Path("m"), "--predictive", std::to_string(each.predictive), "--orthogonal",
                       std::to_string(each.orthogonal), "--validation", "component"};
    for (const std::string& y : each.y) arguments.insert(arguments.end(), {"--y", y});
    const CommandResult run = RunKalmia(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.error;
    for (int o = 0; o <= each.orthogonal; ++o) model_.NextComponent(nullptr);
  }

  Table File(const std::string& name) const { return CsvAt(folder_.Path("d/" + name)); }
  Numbers Column(const std::string& file, const std::string& column) const { return NumbersOf(File(file), column); }
  /// The columns PREFIX1, PREFIX2, ... of a file hold the rows of the matrix to the bit.
  void ExpectRows(const std::string& file, const std::string& prefix, const Matrix& rows) const {
    for (int a = 1; a <= rows.SizeRows(); ++a) {
      const std::string column = prefix + std::to_string(a);
      EXPECT_EQ(CellsOf(File(file), column), std::vector<float>(rows[a].begin(), rows[a].end()))
          << file << " " << column;
    }
  }
  /// The columns PREFIX1, PREFIX2, ... of a file, as many as there are.
  std::vector<Numbers> All(const std::string& file, const std::string& prefix) const {
    const Table table = File(file);
    std::vector<Numbers> columns;
    for (int a = 1; table.Find(prefix + std::to_string(a)) >= 0; ++a)
      columns.push_back(NumbersOf(table, prefix + std::to_string(a)));
    return columns;
  }

  const Table& FittedTable() const { return table_; }
  const Matrix& X() const { return x_; }
  const Matrix& Y() const { return y_; }
  const ColumnScaling& XScaling() const { return xScaling_; }
  const ColumnScaling& YScaling() const { return yScaling_; }
  NCOPLS& Model() { return model_; }
  const ScratchFolder& Folder() const { return folder_; }

 private:
  ScratchFolder folder_;
  Table table_;
  Matrix x_, y_;
  ColumnScaling xScaling_, yScaling_;
  NCOPLS model_;
};

double SumOfSquares(const Numbers& v) { return std::inner_product(v.begin(), v.end(), v.begin(), 0.0); }

Numbers Centred(Numbers v) {
  const double mean = std::accumulate(v.begin(), v.end(), 0.0) / static_cast<double>(v.size());
  for (double& each : v) each -= mean;
  return v;
}

TEST(OPLSCsv, HoldsTheMatricesOfTheModelToTheBit) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    Fit fit(each);
    const NCOPLS& model = fit.Model();
    fit.ExpectRows("scores.csv", "t", *model.GetTprim());
    fit.ExpectRows("scores.csv", "to", *model.GetTOprim());
    fit.ExpectRows("y-scores.csv", "u", *model.GetUprim());
    fit.ExpectRows("loadings.csv", "p", *model.GetPprim());
    fit.ExpectRows("loadings.csv", "po", *model.GetPOprim());
    fit.ExpectRows("weights.csv", "w", *model.GetWprim());
    fit.ExpectRows("weights.csv", "wo", *model.GetWOprim());
    fit.ExpectRows("y-weights.csv", "c", *model.GetCprim());
    fit.ExpectRows("y-weights.csv", "co", *model.GetCOprim());
  }
}

TEST(OPLSCsv, HoldsTheScoresOfRowsLeftOutAsCrossValidationGivesThem) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    const Fit fit(each);
    OPLSCrossValidation validation(&fit.X(), &fit.Y(), each.predictive, /*rounds=*/7, nullptr, nullptr);
    Matrix orthogonal;
    for (int o = 1; o <= each.orthogonal; ++o) {
      validation.NextComponent(nullptr);
      orthogonal.push_back(*validation.GetToPred());
    }
    fit.ExpectRows("cross-validated-scores.csv", "t", *validation.GetTPred());
    fit.ExpectRows("cross-validated-scores.csv", "to", orthogonal);
  }
}

TEST(OPLSCsv, SPlotHasCovarianceAndCorrelationOfEachScaledColumnWithEachPredictiveScore) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    const Fit fit(each);
    const std::vector<Numbers> scores = fit.All("scores.csv", "t");
    ASSERT_EQ(scores.size(), static_cast<std::size_t>(each.predictive));
    for (std::size_t a = 0; a < scores.size(); ++a) {
      const std::string name = "t" + std::to_string(a + 1);
      const Numbers correlation = fit.Column("s-plot.csv", "correlation " + name);
      const Numbers covariance = fit.Column("s-plot.csv", "covariance " + name);
      for (std::size_t k = 0; k < kXOfOPLS.size(); ++k) {
        Numbers x, t;
        const Numbers column = NumbersOf(fit.FittedTable(), kXOfOPLS[k]);
        for (std::size_t i = 0; i < column.size(); ++i) {
          if (std::isnan(column[i])) continue;
          x.push_back(column[i]);
          t.push_back(scores[a][i]);
        }
        x = Centred(x);
        t = Centred(t);
        const double xt = std::inner_product(x.begin(), x.end(), t.begin(), 0.0);
        const double freedom = static_cast<double>(x.size()) - 1.0;
        // Centre and factor of a column are floats, and its cells go through them: some 1e-7 of their size, which is
        // that of the correlation; the covariance is larger by the deviation of t, which is some units.
        EXPECT_NEAR(correlation[k], xt / std::sqrt(SumOfSquares(x) * SumOfSquares(t)), 1e-6) << k;
        EXPECT_NEAR(covariance[k], xt / freedom / std::sqrt(SumOfSquares(x) / freedom), 5e-6) << k;
      }
    }
  }
}

TEST(OPLSCsv, HasT2OfTheScoresOfBothKinds) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    const Fit fit(each);
    const Numbers t2 = fit.Column("rows.csv", "T2");
    Numbers expected(t2.size(), 0.0);
    for (const char* kind : {"t", "to"})
      for (const Numbers& scores : fit.All("scores.csv", kind)) {
        const Numbers t = Centred(scores);
        const double variance = SumOfSquares(t) / static_cast<double>(t.size() - 1);
        for (std::size_t i = 0; i < t.size(); ++i) expected[i] += t[i] * t[i] / variance;
      }
    // The file says scores with the fewest digits that name a float: half of its rounding, twice in a square, on
    // distances of up to 20.
    for (std::size_t i = 0; i < t2.size(); ++i) EXPECT_NEAR(t2[i], expected[i], 1e-5) << i;
    EXPECT_NEAR(std::accumulate(t2.begin(), t2.end(), 0.0),
                (each.predictive + each.orthogonal) * static_cast<double>(t2.size() - 1), 1e-9);  // double throughout
  }
}

/// sqrt(K sum_a(S_a v_ak^2 / v_a'v_a) / sum_a S_a)
Numbers Importance(const std::vector<Numbers>& v, const Numbers& weights) {
  Numbers vip(kXOfOPLS.size(), 0.0);
  for (std::size_t k = 0; k < vip.size(); ++k) {
    for (std::size_t a = 0; a < v.size(); ++a) vip[k] += weights[a] * v[a][k] * v[a][k] / SumOfSquares(v[a]);
    vip[k] = std::sqrt(static_cast<double>(vip.size()) * vip[k] /
                       std::accumulate(weights.begin(), weights.end(), 0.0));
  }
  return vip;
}

/// S_a, the product of the sums of squares of two vectors of each component.
Numbers Products(const std::vector<Numbers>& a, const std::vector<Numbers>& b) {
  Numbers products;
  for (std::size_t i = 0; i < a.size(); ++i) products.push_back(SumOfSquares(a[i]) * SumOfSquares(b[i]));
  return products;
}

TEST(OPLSCsv, HasVipOfTheWeightsAndOfTheOrthogonalLoadings) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    const Fit fit(each);
    const std::vector<Numbers> po = fit.All("loadings.csv", "po");
    const Numbers predictive = Importance(fit.All("weights.csv", "w"),
                                          Products(fit.All("y-weights.csv", "c"), fit.All("scores.csv", "t")));
    const Numbers orthogonal = Importance(po, Products(po, fit.All("scores.csv", "to")));
    const Numbers vipPredictive = fit.Column("vip.csv", "VIP predictive");
    const Numbers vipOrthogonal = fit.Column("vip.csv", "VIP orthogonal");
    // From floats as the file says them; the values are of the size of 1.
    for (std::size_t k = 0; k < kXOfOPLS.size(); ++k) {
      EXPECT_NEAR(vipPredictive[k], predictive[k], 1e-6) << k;
      EXPECT_NEAR(vipOrthogonal[k], orthogonal[k], 1e-6) << k;
    }
  }
}

TEST(OPLSCsv, HasVipOfOneComponentInProportionToItsWeightAndItsLoading) {
  const Fit fit(Cases().front());
  const Numbers w = fit.Column("weights.csv", "w1"), po = fit.Column("loadings.csv", "po1");
  for (std::size_t k = 0; k < kXOfOPLS.size(); ++k) {
    // The length of w, a float vector, is 1 but for 1e-7.
    EXPECT_NEAR(fit.Column("vip.csv", "VIP predictive")[k], std::sqrt(6.0) * std::abs(w[k]), 1e-6);
    EXPECT_NEAR(fit.Column("vip.csv", "VIP orthogonal")[k], std::sqrt(6.0 / SumOfSquares(po)) * std::abs(po[k]), 1e-6);
  }
}

TEST(OPLSCsv, HasNoOrthogonalVipWithoutOrthogonalComponents) {
  const Fit fit({"none", LinearTable(30, 6, 2), {"y"}, 1, 0});
  EXPECT_EQ(fit.Column("vip.csv", "VIP orthogonal"), Numbers(6, 0.0));
  EXPECT_GT(SumOfSquares(fit.Column("vip.csv", "VIP predictive")), 5.0);  // 6 but for rounding
}

TEST(OPLSCsv, PredictsNewRowsToTheBitAsTheModelDoes) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    Fit fit(each);
    const std::string file = fit.Folder().Write("new.csv", WithHoles(UnrelatedTable(12, 6, 1, 9), 17));
    const CommandResult run = RunKalmia({"predict", fit.Folder().Path("m"), file, "--csv", fit.Folder().Path("n")});
    ASSERT_EQ(run.exitCode, 0) << run.error;
    Matrix x = TableOf(CsvAt(file), kXOfOPLS);
    kalmia::analysis::ApplyScale(fit.XScaling(), &x);
    NCOPLSPred prediction(&x, &fit.Model());
    while (prediction.SizeOComps() < prediction.GetMaxComp()) prediction.CalcNextComponent();
    for (int j = 1; j <= static_cast<int>(each.y.size()); ++j) {
      Numbers expected;
      for (int i = 1; i <= x.SizeRows(); ++i)
        expected.push_back((*prediction.GetYPred())[i][j] / kalmia::analysis::FactorOf(fit.YScaling(), j) +
                           kalmia::analysis::CentreOf(fit.YScaling(), j));
      const std::string column = "predicted " + each.y[static_cast<std::size_t>(j) - 1];
      EXPECT_EQ(NumbersOf(CsvAt(fit.Folder().Path("n/predictions.csv")), column), expected) << column;
    }
  }
}

TEST(OPLSCsv, HasCoefficientsThatPredictNewCompleteRowsAsTheModelDoes) {
  for (const Case& each : Cases()) {
    SCOPED_TRACE(each.what);
    const Fit fit(each);
    const std::string file = fit.Folder().Write("new.csv", UnrelatedTable(12, 6, 1, 9));
    const CommandResult run = RunKalmia({"predict", fit.Folder().Path("m"), file, "--csv", fit.Folder().Path("n")});
    ASSERT_EQ(run.exitCode, 0) << run.error;
    const Table table = CsvAt(file);
    for (const std::string& y : each.y) {
      const Numbers coefficients = fit.Column("coefficients.csv", y);
      const Numbers predicted = NumbersOf(CsvAt(fit.Folder().Path("n/predictions.csv")), "predicted " + y);
      for (std::size_t i = 0; i < predicted.size(); ++i) {
        double sum = coefficients[0];
        for (std::size_t k = 0; k < kXOfOPLS.size(); ++k) sum += coefficients[k + 1] * NumbersOf(table, kXOfOPLS[k])[i];
        // The prediction goes through floats of up to some ten deviations of X and Y, a few dozen of them.
        EXPECT_NEAR(sum, predicted[i], 1e-4) << y << i;
      }
    }
  }
}

}  // namespace
