// Stored models: what comes back, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "FailureOf.h"
#include "FramedFile.h"
#include "TestTables.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using namespace framed;
using ::testing::HasSubstr;

Table Unrelated(int rows, int columns, int yColumns, unsigned seed) {
  return Table(UnrelatedTable(rows, columns, yColumns, seed), "t.csv");
}

/// The bytes of a model of two components of 8 rows, 3 X columns and 2 Y columns.
std::string SmallModelFile() {
  PLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.components = 2;
  return ModelFileBytes(Fit(recipe, Unrelated(8, 3, 2, 1)).model);
}

/// The bytes of two principal components of 8 rows and 3 columns.
std::string SmallPCAFile() {
  PCARecipe recipe;
  recipe.components = 2;
  return ModelFileBytes(Fit(recipe, Unrelated(8, 2, 1, 1)).model);
}

/// The bytes of an OPLS model of one predictive and one orthogonal component of 8 rows, 3 X columns and 2 Y columns.
std::string SmallOPLSFile() {
  OPLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.predictive = 1;
  recipe.components = 1;
  return ModelFileBytes(Fit(recipe, Unrelated(8, 3, 2, 1)).model);
}

/// The bytes of an O2PLS model of 9 rows, 3 X columns and 2 Y columns with one joint component and one unique to X.
std::string SmallO2PLSFile() {
  O2PLSRecipe recipe;
  recipe.x = {"x1..x3"};
  recipe.y = {"y1..y2"};
  recipe.numbers = O2PLSNumbers{1, 1, 0};
  recipe.groups = 3;
  const Table table = Unrelated(9, 3, 2, 4);
  return ModelFileBytes(Fit(recipe, table, table).model);
}

/// The bytes of a filter of one component of 8 rows, 3 X columns and 2 Y columns.
std::string SmallFilterFile() {
  FilterRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.components = 1;
  return ModelFileBytes(Fit(recipe, Unrelated(8, 3, 2, 1)).filter);
}

/// The bytes of a PLS model of one component of 8 rows, of 3 columns that went through steps.
std::string SmallPreprocessedFile() {
  PLSRecipe recipe;
  recipe.y = {"y1"};
  recipe.components = 1;
  recipe.steps = GivenSteps{"s", ParseSteps("derivative:1:3:2,wavelet-compress:3:daubechies:4", "s"), {}};
  return ModelFileBytes(Fit(recipe, Unrelated(8, 3, 1, 1)).model);
}

/// The bytes of a PLS model of one component of 4 rows, an X column of which is shifted, and Y.
std::string SmallShiftedFile() {
  PLSRecipe recipe;
  recipe.y = {"y"};
  recipe.components = 1;
  const char* const text =
      "a,b,c,y\n1,1000001,2,5000001\n2,1000003,5,5000002\n4,1000002,1,5000004\n3,1000005,2,5000003\n";
  const Table table(text, "t");
  return ModelFileBytes(Fit(recipe, table).model);
}

/// One small file of each kind of model.
std::vector<std::string> SmallFiles() {
  return {SmallModelFile(),  SmallPCAFile(),          SmallOPLSFile(),   SmallO2PLSFile(),
          SmallFilterFile(), SmallPreprocessedFile(), SmallShiftedFile()};
}

/// The message with which the bytes are refused; "" if they are read.
std::string Refusal(const std::string& bytes) {
  try {
    ReadModelFile(bytes, "m");
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<BadFile>(failure));
    return failure.what();
  }
  return "";
}

TEST(ModelFile, ComesBackToTheSameBytes) {
  for (const std::string& bytes : SmallFiles()) EXPECT_EQ(ModelFileBytes(ReadModelFile(bytes, "m")), bytes);
}

TEST(ModelFile, IsTheSameForTheSameTable) {
  EXPECT_EQ(SmallModelFile().substr(kContentAt + 200), SmallModelFile().substr(kContentAt + 200));
  EXPECT_EQ(SmallPCAFile().substr(kContentAt + 200), SmallPCAFile().substr(kContentAt + 200));
}

TEST(ModelFile, HoldsNamesScalingModelAndHistory) {
  const auto read = ReadModelFile(SmallModelFile(), "m");
  const auto& model = std::get<StoredPLS>(read);
  EXPECT_EQ(model.xNames, (std::vector<std::string>{"x1", "x2", "x3"}));
  EXPECT_EQ(model.yNames, (std::vector<std::string>{"y1", "y2"}));
  EXPECT_EQ(model.rowNames.size(), 8U);
  EXPECT_EQ(model.scaling, NCScale::ScalingUnitVariance);
  EXPECT_EQ(model.groups, 7);
  ASSERT_EQ(model.Components(), 2);
  EXPECT_EQ(model.components[1].perY.size(), 2U);
  EXPECT_EQ(model.pls->GetPprim()->SizeRows(), 2);
  EXPECT_GT(model.components[0].iterations, 0);
}

TEST(ModelFile, OfAKindThatIsNotKnownIsRefused) {
  std::string bytes = SmallModelFile();
  // The kind ends the general entry: behind the scaling, 4 for unit variance.
  const std::string scalingAndKind("\4\0\0\0\1\0\0\0", 8);
  const std::size_t at = bytes.find(scalingAndKind);
  ASSERT_NE(at, std::string::npos);
  bytes[at + 4] = 99;
  EXPECT_THAT(Refusal(Forged(bytes)), HasSubstr("its parts do not fit together"));
}

TEST(ModelFile, IsRefusedWhenCutAtAnyByte) {
  EXPECT_EQ(Refusal(""), "m is empty, no Kalmia model");
  for (const std::string& bytes : SmallFiles()) {
    for (std::size_t length = 1; length < bytes.size(); ++length) {
      EXPECT_THAT(Refusal(bytes.substr(0, length)), HasSubstr("m is cut")) << length;
    }
    EXPECT_EQ(Refusal(bytes.substr(0, kContentAt + 10)),
              "m is cut: 10 of " + std::to_string(bytes.size() - kContentAt) + " bytes are there");
  }
}

TEST(ModelFile, IsRefusedWithAnyBitFlipped) {
  for (const std::string& bytes : SmallFiles()) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      for (unsigned bit = 0; bit < 8; ++bit) {
        EXPECT_NE(Refusal(WithBitFlipped(bytes, i, bit)), "") << "byte " << i << " bit " << bit;
      }
    }
  }
}

/// The bytes of the same model with a chain that could have been learnt of its columns.
std::string WithStepsGiven(const std::string& bytes) {
  auto model = ReadModelFile(bytes, "m");
  std::visit(
      [](ModelInfo& frame) {
        frame.chain.inputNames = frame.xNames;
        frame.chain.steps = {{ParseSteps("linear:2", "steps").front(), 1.0F, {}}};
      },
      model);
  return ModelFileBytes(model);
}

TEST(ModelFile, OfAKindThatIsNeverPreprocessedIsRefusedWithSteps) {
  EXPECT_EQ(Refusal(WithStepsGiven(SmallO2PLSFile())), "m is damaged: its parts do not fit together");
  EXPECT_EQ(Refusal(WithStepsGiven(SmallFilterFile())), "m is damaged: its parts do not fit together");
  for (const std::string& bytes : {SmallModelFile(), SmallPCAFile(), SmallOPLSFile()}) {
    EXPECT_EQ(Refusal(WithStepsGiven(bytes)), "");
  }
}

/// New rows as `predict` reads them. A forged model may have other names, and steps that refuse the rows.
void ExpectNewRows(const ModelInfo& model) try {
  const Table table("x1,x2,x3,y1,y2\n1,2,3,4,5\n2,,1,5,3\n", "t");
  Notes notes;
  const NewRows rows = ReadNewRows(model, table, "", &notes);
  EXPECT_EQ(rows.x.SizeRows(), 2);
  EXPECT_EQ(static_cast<std::size_t>(rows.x.SizeColumns()), model.xNames.size());
} catch (const Failure& failure) {
  EXPECT_TRUE(Is<BadData>(failure));
}

std::size_t RowsAnswered(const StoredPLS& model, const NCDataMatrix<float>& x) { return PredictRows(model, x).size(); }
std::size_t RowsAnswered(const StoredOPLS& model, const NCDataMatrix<float>& x) {
  return PredictRows(model, x).size();
}
/// In both directions.
std::size_t RowsAnswered(StoredO2PLS& model, const NCDataMatrix<float>& x) {
  const std::size_t rows = PredictRows(model, x).size();
  TurnAround(&model);
  ExpectNewRows(model);
  return std::min(rows, PredictRows(model, NCDataMatrix<float>(2, 2, 0.5F)).size());
}
std::size_t RowsAnswered(const StoredFilter& model, NCDataMatrix<float> x) {
  ApplyScale(model.xScaling, &x);
  model.filter->CalculateResiduals(&x);
  return static_cast<std::size_t>(x.SizeRows());
}
std::size_t RowsAnswered(const StoredPCA& model, const NCDataMatrix<float>& x) { return ScoreRows(model, x).size(); }

TEST(ModelFile, EndsInAFailureOrAModelThatPredictsWhenForged) {
  NCDataMatrix<float> x(2, 3, 0.5F);
  x(2, 2, -99.0F);  // one row with a hole, which takes another way
  for (const std::string& original : SmallFiles()) {
    int read = 0;
    for (std::size_t i = kContentAt; i < original.size(); ++i) {
      for (unsigned bit = i % 2; bit < 8; bit += 2) {  // numbers have several bytes: each bit has its turn
        try {
          auto model = ReadModelFile(Forged(WithBitFlipped(original, i, bit)), "m");
          std::visit(ExpectNewRows, model);
          EXPECT_EQ(std::visit([&x](auto& own) { return RowsAnswered(own, x); }, model), 2U);
          ++read;
        } catch (const Failure& failure) {
          EXPECT_THAT(failure.what(), HasSubstr("m is damaged: its parts do not fit together"));
        }
      }
    }
    EXPECT_GT(read, 0);  // a flip within a cell is nobody's to notice
  }
}

TEST(ModelFile, EndsInAFailureWhenItsContentIsCutByAForger) {
  for (const std::string& original : SmallFiles()) {
    for (std::size_t length = kContentAt; length < original.size(); ++length) {
      EXPECT_THAT(Refusal(Forged(original.substr(0, length))), HasSubstr("its parts do not fit together")) << length;
    }
  }
}

TEST(ModelFile, IsRefusedForWhatIsWrong) {
  const std::string bytes = SmallModelFile();
  EXPECT_EQ(Refusal(WithVersion(bytes, 5)), "m is a model file of version 5; this kalmia reads versions up to 4");
  EXPECT_EQ(Refusal(WithVersion(bytes, 0)), "m is damaged: there is no version 0");
  std::string damaged = bytes;
  damaged[kContentAt + 100] = static_cast<char>(damaged[kContentAt + 100] + 1);
  EXPECT_EQ(Refusal(damaged), "m is damaged: its checksum does not match");
  EXPECT_EQ(Refusal(bytes + "x"), "m is damaged: it goes on behind its end");
  EXPECT_EQ(Refusal("x1,y\n1,2\n"), "m is no Kalmia model");
  EXPECT_THAT(Refusal(WithLength(bytes, std::uint64_t{1} << 62U)), HasSubstr("m is cut"));
}

}  // namespace
}  // namespace kalmia::analysis
