// Cross-validations against a twin in double.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "OPLSCase.h"
#include "PlainOPLS.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;
};

class OPLSCrossValidationOnTables : public ::testing::TestWithParam<Shape> {
 protected:
  const Tables tables_ = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables,
                                       GetParam().holes, 27);
};

const Shape kShapes[] = {{"OneY", 24, 6, 1, 0.0, 1},           {"ThreeY", 24, 6, 3, 0.0, 2},
                         {"Wide", 18, 40, 2, 0.0, 2},          {"OneYWithHoles", 24, 6, 1, 0.1, 1},
                         {"ThreeYWithHoles", 24, 6, 3, 0.1, 2}};

INSTANTIATE_TEST_SUITE_P(, OPLSCrossValidationOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

/// The rows whose group is `group`, or all others.
plain::Table RowsOf(const plain::Table& table, const Groups& groups, int group, bool leftOut) {
  plain::Table rows;
  for (std::size_t i = 0; i < table.size(); ++i)
    if ((groups[static_cast<int>(i) + 1] == group) == leftOut) rows.push_back(table[i]);
  return rows;
}

TEST_P(OPLSCrossValidationOnTables, Q2IsThatOfATwinInDoubleThatLeavesEachGroupOut) {
  const Shape& shape = GetParam();
  const int rounds = 5;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  const plain::Table X = plain::TableOf(tables_.X), Y = plain::TableOf(tables_.Y);
  OPLSCrossValidation validation = Validated(tables_, shape.predictive, rounds, 0);
  for (int o = 0; o <= 2; ++o) {
    SCOPED_TRACE(std::to_string(o) + " orthogonal components");
    plain::Table errors = Y;
    for (int group = 0; group < rounds; ++group) {
      const plain::OPLS model(RowsOf(X, groups, group, false), RowsOf(Y, groups, group, false), shape.predictive, o,
                              /*rounds=*/1000, /*passes=*/200);
      plain::Table predicted = model.Predict(RowsOf(X, groups, group, true));
      auto row = predicted.begin();
      for (std::size_t i = 0; i < errors.size(); ++i) {
        if (groups[static_cast<int>(i) + 1] != group) continue;
        for (std::size_t j = 0; j < errors[i].size(); ++j) errors[i][j] -= (*row)[j];
        ++row;
      }
    }
    // Principal components end when their scores move by 1e-5 of their length, which leaves some 1e-4 to go where the
    // next one is as large but for a tenth; float cells add 1e-5. Q2 changes by twice as much at most.
    const double tolerance = 2e-3;
    for (std::size_t j = 0; j < errors[0].size(); ++j) {
      const double q2 =
          1.0 - plain::SquaresOf(plain::Transposed(errors)[j]) / plain::SquaresOf(plain::Transposed(Y)[j]);
      EXPECT_NEAR((*validation.GetQ2YVarCum())[static_cast<int>(j) + 1], q2, tolerance) << j;
    }
    EXPECT_NEAR(validation.GetQ2TotCum(), 1.0 - plain::SquaresOf(errors) / plain::SquaresOf(Y), tolerance);
    validation.NextComponent(nullptr);
  }
}

}  // namespace
