// Stored models: what comes back, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
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
#include "kalmia/analysis/model/ClassPredictions.h"
#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/report/InfoReport.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/Analysis.h"
#include "kalmia/analysis/validation/O2PLSAnalysis.h"
#include "kalmia/analysis/validation/OPLSAnalysis.h"
#include "kalmia/analysis/validation/PCAAnalysis.h"
#include "kalmia/support/NCError.h"

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

/// The bytes of a principal component of 8 rows and 3 columns.
std::string SmallPCAFile() {
  PCARecipe recipe;
  recipe.components = 1;
  recipe.groups = 3;
  return ModelFileBytes(Analyse(recipe, Unrelated(8, 2, 1, 1)).fit.model);
}

/// The bytes of an OPLS model of one predictive and one orthogonal component of 8 rows, 3 X columns and 2 Y columns.
std::string SmallOPLSFile() {
  OPLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.predictive = 1;
  recipe.components = 1;
  recipe.groups = 3;
  return ModelFileBytes(Analyse(recipe, Unrelated(8, 3, 2, 1)).fit.model);
}

/// The bytes of an O2PLS model of 9 rows, 3 X columns and 2 Y columns with one joint component and one unique to X.
std::string SmallO2PLSFile() {
  O2PLSRecipe recipe;
  recipe.x = {"x1..x3"};
  recipe.y = {"y1..y2"};
  recipe.numbers = O2PLSNumbers{1, 1, 0};
  recipe.groups = 3;
  const Table table = Unrelated(9, 3, 2, 4);
  return ModelFileBytes(Analyse(recipe, table, table).fit.model);
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

/// A PLS model of one component that full refits and permutations judged.
PLSAnalysis SmallAnalysis() {
  PLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.components = 1;
  ValidationRecipe validation;
  validation.permutations = 5;
  return Analyse(recipe, Unrelated(12, 3, 2, 1), validation);
}

/// Its bytes, with all its parts.
std::string SmallJudgedFile() {
  ModelParts parts;
  parts.table = true;
  return ModelFileBytes(SmallAnalysis().fit.model, parts);
}

/// The bytes of a model of three classes, one of which has more rows than each of the others.
std::string SmallClassFile() {
  PLSRecipe recipe;
  recipe.y = {"kind"};
  recipe.components = 2;
  recipe.priors = ClassPriors::Shares;
  const Table table("kind,x1,x2,x3\na,1,3,2\nb,5,1,1\na,2,2,4\nc,1,7,5\nb,6,3,2\nc,2,9,4\nb,4,2,1\n", "t.csv");
  return ModelFileBytes(Analyse(recipe, table).fit.model);
}

/// A model of the mean of Y: of 8 rows, 3 X columns and 2 Y columns, without components.
StoredPLS ModelOfTheMean() {
  PLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.components = 1;
  PLSResult result = Fit(recipe, Unrelated(8, 3, 2, 1));
  result.model.components.clear();
  result.model.pls = std::make_unique<NCPLS>();
  const std::vector<RowPrediction> rows = PredictRows(result.model, result.data.x);
  result.model.pooledDeviation = PooledDeviationOf(rows, 0);
  DescribeRows(rows, result.data.measuredY, {}, &result.model);
  return std::move(result.model);
}

std::string SmallMeanFile() { return ModelFileBytes(ModelOfTheMean()); }

/// One small file of each kind of model.
std::vector<std::string> SmallFiles() {
  return {SmallModelFile(),        SmallPCAFile(),     SmallOPLSFile(),   SmallO2PLSFile(), SmallFilterFile(),
          SmallPreprocessedFile(), SmallShiftedFile(), SmallJudgedFile(), SmallMeanFile(),
          SmallClassFile()};
}

/// The bytes of the stored model of that name.
std::string StoredFile(const std::string& name) {
  std::ifstream file(std::string(KALMIA_ANALYSIS_DATA_DIR) + "/models/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The files of such models that earlier versions wrote.
std::vector<std::string> OldFiles() {
  std::vector<std::string> files;
  for (const char* name : {"pls-version-3", "pca-version-3", "opls-version-3", "o2pls-version-3", "filter-version-3",
                           "steps-version-3", "shifted-version-4"}) {
    files.push_back(StoredFile(name));
    EXPECT_GT(files.back().size(), kContentAt) << name;
  }
  return files;
}

std::vector<std::string> AllFiles() {
  std::vector<std::string> files = SmallFiles();
  for (const std::string& old : OldFiles()) files.push_back(old);
  return files;
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
  ModelParts all;
  all.table = true;
  for (const std::string& bytes : SmallFiles()) EXPECT_EQ(ModelFileBytes(ReadModelFile(bytes, "m"), all), bytes);
}

TEST(ModelFile, ThatTheCommandStoredIsReadAndWrittenToTheSameBytes) {
  for (const char* name : {"pls-version-5", "classes-version-5", "pca-version-5", "opls-version-5", "o2pls-version-5",
                           "filter-version-5"}) {
    const std::string bytes = StoredFile(name);
    ASSERT_GT(bytes.size(), kContentAt) << name;
    const StoredModel model = ReadModelFile(bytes, name);
    EXPECT_EQ(ModelFileBytes(model, {/*rows=*/true, /*table=*/true}), bytes) << name;
    EXPECT_FALSE(InfoText(model, name).empty());
  }
}

TEST(ModelFile, OfAnEarlierVersionComesBackAsOneOfToday) {
  for (const std::string& old : OldFiles()) {
    const StoredModel model = ReadModelFile(old, "m");
    const std::string bytes = ModelFileBytes(model);
    EXPECT_LT(std::visit([](const ModelInfo& info) { return info.fileVersion; }, model), kModelVersion);
    EXPECT_FALSE(std::visit([](const ModelInfo& info) { return info.rowTerms.has_value(); }, model));
    EXPECT_TRUE(KeepsRows(model));
    EXPECT_EQ(ModelFileBytes(ReadModelFile(bytes, "m")), bytes);
    EXPECT_EQ(ModelDigest(ReadModelFile(bytes, "m")), ModelDigest(model));
  }
}

TEST(ModelFile, HoldsTheTrainingTableOnlyWhereItIsToKeepIt) {
  // A cell of X whose bytes would be found if X, or what is left of it, were in the file.
  PLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.components = 2;
  const PLSResult result = Fit(recipe, Unrelated(8, 3, 2, 1));
  const auto bytesOf = [](float cell) {
    std::string bytes(sizeof(cell), '\0');
    std::memcpy(&bytes[0], &cell, sizeof(cell));
    return bytes;
  };
  const std::string ofX = bytesOf(result.data.x[5][2]), left = bytesOf((*result.model.pls->GetXResiduals())[5][2]);
  const std::string score = bytesOf((*result.model.pls->GetTprim())[1][5]);
  const auto with = [&](bool rows, bool table) {
    ModelParts parts;
    parts.rows = rows;
    parts.table = table;
    return ModelFileBytes(result.model, parts);
  };
  for (const bool rows : {false, true}) {
    EXPECT_EQ(with(rows, true).find(ofX) != std::string::npos, true);
    EXPECT_EQ(with(rows, true).find(left) != std::string::npos, true);
    EXPECT_EQ(with(rows, false).find(ofX), std::string::npos);
    EXPECT_EQ(with(rows, false).find(left), std::string::npos);
    EXPECT_EQ(with(rows, false).find(score) != std::string::npos, rows);
  }
}

/// The largest difference between tables of the same shape, missing cells at the same places.
float LargestGap(const NCDataMatrix<float>& one, const NCDataMatrix<float>& other) {
  EXPECT_EQ(one.SizeRows(), other.SizeRows());
  EXPECT_EQ(one.SizeColumns(), other.SizeColumns());
  float gap = 0.0F;
  for (int r = 1; r <= one.SizeRows(); ++r) {
    for (int c = 1; c <= one.SizeColumns(); ++c) gap = std::max(gap, std::fabs(one[r][c] - other[r][c]));
  }
  return gap;
}

template <class Model>
Model WithTable(const Model& model) {
  ModelParts parts;
  parts.table = true;
  parts.rows = false;
  const std::string bytes = ModelFileBytes(model, parts);
  Model read = std::get<Model>(ReadModelFile(bytes, "m"));
  EXPECT_EQ(ModelFileBytes(read, parts), bytes);
  return read;
}

TEST(ModelFile, KeepsXAndYAndWhatTheModelLeavesOfX) {
  const Table table = Unrelated(9, 3, 2, 4);
  OPLSRecipe opls;
  opls.y = {"y1,y2"};
  opls.predictive = 1;
  opls.components = 1;
  const OPLSResult fit = Fit(opls, table);
  const StoredOPLS kept = WithTable(fit.model);
  EXPECT_EQ(LargestGap(kept.trainingX, fit.data.x), 0.0F);
  EXPECT_EQ(LargestGap(kept.trainingY, fit.data.y), 0.0F);
  const std::vector<RowPrediction> rows = PredictRows(fit.model, fit.data.x);
  for (int r = 1; r <= 9; ++r) {
    double sum = 0.0;
    for (int c = 1; c <= 3; ++c) sum += static_cast<double>(kept.xResiduals[r][c]) * kept.xResiduals[r][c];
    // Cells below 3 in scaled units, rounded thrice to single precision on each of both ways, three of them a row.
    EXPECT_NEAR(sum, rows[static_cast<std::size_t>(r) - 1].residual.sumOfSquares, 3 * 2 * 3 * 6 * 3 * 0x1p-24);
  }
  PLSRecipe pls;
  pls.y = {"y1,y2"};
  pls.components = 2;
  const PLSResult plsFit = Fit(pls, table);
  const StoredPLS plsKept = WithTable(plsFit.model);
  EXPECT_EQ(LargestGap(plsKept.trainingY, plsFit.data.y), 0.0F);
  EXPECT_EQ(LargestGap(*plsKept.pls->GetXResiduals(), *plsFit.model.pls->GetXResiduals()), 0.0F);
}

TEST(ModelFile, KeepsBothBlocksOfO2PLSAndWhatTheModelLeavesOfThem) {
  O2PLSRecipe recipe;
  recipe.x = {"x1..x3"};
  recipe.y = {"y1..y2"};
  recipe.numbers = O2PLSNumbers{1, 1, 0};
  const Table table = Unrelated(9, 3, 2, 4);
  const O2PLSResult fit = Fit(recipe, table, table);
  StoredO2PLS kept = WithTable(fit.model);
  EXPECT_EQ(LargestGap(kept.trainingX, fit.data.x.cells), 0.0F);
  EXPECT_EQ(LargestGap(kept.trainingY, fit.data.y.cells), 0.0F);
  for (int way = 0; way < 2; ++way, TurnAround(&kept)) {
    // With scores times loadings of the fit what is left gives the scaled block back.
    const O2PLSMatrices& o = fit.model.o2pls;
    NCDataMatrix<float> back = kept.trainingX;
    ApplyScale(kept.xScaling, &back);
    EXPECT_EQ(kept.xResiduals.SizeRows(), 9);
    NCDataMatrix<float> sum = kept.xResiduals;
    if (way == 0) {
      for (int a = 1; a <= o.to.SizeRows(); ++a) sum.AddVprimV(o.to[a], o.po[a], 1.0F);
      for (int a = 1; a <= o.t.SizeRows(); ++a) sum.AddVprimV(o.t[a], o.p[a], 1.0F);
    } else {
      sum.AddVprimV(o.u[1], o.q[1], 1.0F);
    }
    EXPECT_LT(LargestGap(sum, back), 4 * 3 * 0x1p-23F);  // four roundings of cells below 3
  }
}

TEST(ModelFile, PredictsTheSameBitsWithoutRowsAndWithThem) {
  NCDataMatrix<float> x(3, 3, 0.5F);
  x(2, 2, -99.0F);
  x(3, 1, 7.25F);
  ModelParts bare;
  bare.rows = false;
  for (const std::string& bytes : {SmallModelFile(), SmallOPLSFile(), SmallJudgedFile(), SmallMeanFile()}) {
    const StoredModel model = ReadModelFile(bytes, "m");
    const StoredModel without = ReadModelFile(ModelFileBytes(model, bare), "m");
    EXPECT_TRUE(KeepsRows(model));
    EXPECT_FALSE(KeepsRows(without));
    EXPECT_TRUE(std::visit([](const ModelInfo& info) { return info.rowNames.empty(); }, without));
    const auto predict = [&x](const auto& own) -> std::vector<double> {
      std::vector<double> numbers;
      if constexpr (std::is_base_of_v<YModelInfo, std::decay_t<decltype(own)>>) {
        for (const RowPrediction& row : PredictRows(own, x)) {
          numbers.insert(numbers.end(), row.y.begin(), row.y.end());
          numbers.push_back(row.residual.sumOfSquares);
        }
      }
      return numbers;
    };
    const std::vector<double> numbers = std::visit(predict, model);
    EXPECT_GE(numbers.size(), 6U);
    EXPECT_EQ(std::visit(predict, without), numbers);
  }
}

TEST(ModelFile, HasADigestOfWhatPredictsAlone) {
  PLSRecipe recipe;
  recipe.y = {"y1"};
  recipe.components = 2;
  const Table table = Unrelated(8, 3, 2, 1);
  PLSResult result = Fit(recipe, table);
  const std::string digest = ModelDigest(result.model);
  EXPECT_EQ(digest.size(), 64U);
  EXPECT_EQ(digest.find_first_not_of("0123456789abcdef"), std::string::npos);
  result.model.writtenBy = "another";
  result.model.table = "elsewhere.csv";
  result.model.idColumn = "sample";
  for (std::string& name : result.model.rowNames) name += " of another";
  EXPECT_EQ(ModelDigest(result.model), digest);
  EXPECT_EQ(ModelDigest(ReadModelFile(ModelFileBytes(result.model, {/*rows=*/false, /*table=*/false}), "m")), digest);
  EXPECT_EQ(ModelDigest(ReadModelFile(ModelFileBytes(result.model, {/*rows=*/true, /*table=*/true}), "m")), digest);
  recipe.components = 1;
  EXPECT_NE(ModelDigest(Fit(recipe, table).model), digest);
}

TEST(ModelFile, HoldsTheRuleThatAssignsClassesAndCountsItToWhatPredicts) {
  StoredModel read = ReadModelFile(SmallClassFile(), "m");
  auto& model = std::get<StoredPLS>(read);
  ASSERT_TRUE(model.classes);
  EXPECT_EQ(model.classes->column, "kind");
  EXPECT_EQ(model.yNames, (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(model.classes->rule.directions.rows, 2U);
  EXPECT_EQ(model.classes->rule.centres.rows, 3U);
  EXPECT_EQ(model.classes->rule.logPriors[1], std::log(3.0 / 7.0));
  const std::string digest = ModelDigest(model);
  model.classes->rule.logPriors[0] -= 1e-9;
  EXPECT_NE(ModelDigest(model), digest);
  EXPECT_FALSE(std::get<StoredPLS>(ReadModelFile(SmallModelFile(), "m")).classes);
}

TEST(ModelFile, IsRefusedWithARuleThatCannotAssign) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto refusal = [](const auto& change) {
    StoredModel read = ReadModelFile(SmallClassFile(), "m");
    auto& model = std::get<StoredPLS>(read);
    change(&model, &model.classes->rule);
    return Refusal(ModelFileBytes(model));
  };
  const std::string damaged = "m is damaged: its parts do not fit together";
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule*) {}), "");
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->logPriors[0] = -kInfinity; }), "");
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->logPriors.assign(3, -kInfinity); }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->logPriors[2] = 0.1; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->logPriors[2] = kNotANumber; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->centres(2, 1) = kInfinity; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->directions(1, 2) = kNotANumber; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->directions = RealMatrix(3, 3); }), damaged);
  EXPECT_EQ(refusal([](StoredPLS* model, DiscriminantRule*) { model->yNames[2] = "a"; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, DiscriminantRule* rule) { rule->logPriors.push_back(-1.0); }), damaged);
}

TEST(ModelFile, CarriesWhatJudgedTheModel) {
  const PLSAnalysis analysis = SmallAnalysis();
  const StoredModel read = ReadModelFile(ModelFileBytes(analysis.fit.model), "m");
  ASSERT_TRUE(std::get<StoredPLS>(read).validation);
  const StoredValidation& stored = *std::get<StoredPLS>(read).validation;
  const PLSValidation& validation = *analysis.validation;
  EXPECT_EQ(stored.folds, "interleaved");
  EXPECT_EQ(stored.groups, 7);
  EXPECT_EQ(stored.Model(), 1U);
  ASSERT_EQ(stored.components.size(), validation.errors.press.size());
  for (std::size_t a = 0; a < stored.components.size(); ++a) {
    const StoredValidationEntry& entry = stored.components[a];
    EXPECT_EQ(entry.press, validation.errors.press[a]);
    EXPECT_EQ(entry.q2, validation.errors.q2[a]);
    EXPECT_EQ(entry.r2x, validation.r2x[a]);
    EXPECT_EQ(entry.r2y, validation.r2y[a]);
    for (std::size_t j = 0; j < 2; ++j) EXPECT_EQ(entry.rmsecv[j], validation.errors.rmsecv(a, j));
  }
  ASSERT_EQ(stored.cvAnova.size(), 2U);
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_EQ(stored.cvAnova[j]->f, validation.cvAnova[j]->f);
    EXPECT_EQ(stored.cvAnova[j]->df2, validation.cvAnova[j]->df2);
    for (std::size_t k = 0; k <= 3; ++k) {
      EXPECT_EQ(stored.jackKnife->coefficients(j, k), validation.coefficients[j].standardErrors[k]);
    }
  }
  ASSERT_EQ(stored.jackKnife->importances.size(), 1U);
  EXPECT_EQ(stored.jackKnife->importances[0].standardErrors, validation.importances.front().standardErrors);
  EXPECT_EQ(stored.jackKnife->importances[0].vip.size(), 3U);
  EXPECT_EQ(stored.permutation->runs, 5);
  EXPECT_EQ(stored.permutation->judgement.pQ2, analysis.permutation->judgement.pQ2);
  EXPECT_EQ(stored.permutation->judgement.interceptR2, analysis.permutation->judgement.interceptR2);
}

TEST(ModelFile, CarriesBothKindsOfImportanceOfOPLS) {
  OPLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"y"};
  recipe.components = 2;
  const OPLSAnalysis analysis = Analyse(recipe, Table(LinearTable(20, 5, 3), "t"));
  const StoredModel read = ReadModelFile(ModelFileBytes(analysis.fit.model), "m");
  const std::vector<StoredImportance>& stored = std::get<StoredOPLS>(read).validation->jackKnife->importances;
  ASSERT_EQ(stored.size(), 2U);
  for (std::size_t kind = 0; kind < 2; ++kind) {
    EXPECT_EQ(stored[kind].standardErrors, analysis.validation->importances[kind].standardErrors);
    double squares = 0.0;
    for (const double vip : stored[kind].vip) squares += vip * vip;
    EXPECT_NEAR(squares, 5.0, 1e-12) << "the squares of each kind sum to the number of columns";
  }
}

TEST(ModelFile, IsRefusedWithAJudgementThatCannotBe) {
  const auto refusal = [](const auto& change) {
    StoredModel read = ReadModelFile(SmallClassFile(), "m");
    auto& model = std::get<StoredPLS>(read);
    change(&model, &*model.validation);
    return Refusal(ModelFileBytes(model));
  };
  using Stored = StoredValidation;
  const std::string damaged = "m is damaged: its parts do not fit together";
  EXPECT_EQ(refusal([](StoredPLS*, Stored*) {}), "");
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->groups = 1; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->folds = "blocks"; }), "");
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->folds = "group-column"; }), "");
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->folds = "\x1b[2J"; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->rule = "at will"; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->chosen = -5; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->components.clear(); }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->components[1].rmsecv.pop_back(); }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->components[1].components = -1; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->cvAnova.resize(2); }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->permutation = StoredPermutation{9, {1.1, 0.1}}; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->jackKnife->coefficients(0, 0) = -1.0; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->jackKnife->importances[0].standardErrors[0] = HUGE_VAL; }),
            damaged);
  EXPECT_EQ(refusal([](StoredPLS*, Stored* of) { of->jackKnife->importances.resize(3, {{1.0}, {1.0}}); }), damaged);
  EXPECT_EQ(refusal([](StoredPLS* model, Stored*) { model->classes->fitted->confusion[0][0] = -1; }), damaged);
  EXPECT_EQ(refusal([](StoredPLS* model, Stored*) { model->classes->leftOut->auc[2] = 1.5; }), damaged);
}

TEST(ModelFile, OfTheMeanPredictsItForEveryRow) {
  const StoredPLS fitted = ModelOfTheMean();
  const auto read = ReadModelFile(ModelFileBytes(fitted), "m");
  const auto& model = std::get<StoredPLS>(read);
  NCDataMatrix<float> x(2, 3, 0.5F);
  for (int k = 1; k <= 3; ++k) x(2, k, -99.0F);
  const std::vector<RowPrediction> rows = PredictRows(model, x);
  ASSERT_EQ(rows.size(), 2U);
  for (const RowPrediction& row : rows) {
    EXPECT_EQ(row.reason, "");
    EXPECT_TRUE(row.t.empty());
    ASSERT_EQ(row.y.size(), 2U);
    for (int j = 1; j <= 2; ++j) EXPECT_EQ(row.y[static_cast<std::size_t>(j) - 1], CentreOf(model.yScaling, j));
  }
  EXPECT_FALSE(std::isnan(DistanceToModel(model, 0, rows[0])));
  EXPECT_TRUE(std::isnan(DistanceToModel(model, 0, rows[1]))) << "no cell, no distance";
  EXPECT_FALSE(LimitsOfNewRows(*model.rowTerms, 0).t2.at95);
  EXPECT_TRUE(LimitsOfNewRows(*model.rowTerms, 0).distance.at95);
}

TEST(ModelFile, OfMoreRowsThanItKeepsLeavesThemOut) {
  StoredPLS model = ModelOfTheMean();
  EXPECT_TRUE(KeepsRows(ReadModelFile(ModelFileBytes(model), "m")));
  model.rows = kMostRows + 1;
  model.rowNames.assign(model.rows, "r");
  EXPECT_FALSE(KeepsRows(ReadModelFile(ModelFileBytes(model), "m")));
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
  // The kind begins the general entry: then the scaling, 4 for unit variance, and 8 rows.
  const std::size_t at = bytes.find(std::string("\1\0\0\0\4\0\0\0\10\0\0\0", 12));
  ASSERT_NE(at, std::string::npos);
  bytes[at] = 99;
  EXPECT_THAT(Refusal(Forged(bytes)), HasSubstr("its parts do not fit together"));
}

TEST(ModelFile, IsRefusedWhenCutAtAnyByte) {
  EXPECT_EQ(Refusal(""), "m is empty, no Kalmia model");
  for (const std::string& bytes : AllFiles()) {
    for (std::size_t length = 1; length < bytes.size(); ++length) {
      EXPECT_THAT(Refusal(bytes.substr(0, length)), HasSubstr("m is cut")) << length;
    }
    EXPECT_EQ(Refusal(bytes.substr(0, kContentAt + 10)),
              "m is cut: 10 of " + std::to_string(bytes.size() - kContentAt) + " bytes are there");
  }
}

TEST(ModelFile, IsRefusedWithAnyBitFlipped) {
  for (const std::string& bytes : AllFiles()) {
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

/// Rows that are predicted and held against the limits.
template <class Model>
std::size_t RowsDiagnosed(const Model& model, const NCDataMatrix<float>& x) {
  Notes notes;
  const std::vector<RowPrediction> rows = PredictRows(model, x);
  const RowDiagnosis diagnosis = Diagnose(model, rows, &notes);
  if (!model.classes) return diagnosis.flags.size();
  const Table table("x1,x2,x3,kind\n1,2,3,a\n2,,1,c\n", "t");
  const ClassPredictions classes = PredictClasses(model, table, rows, diagnosis, &notes);
  for (const int number : classes.nearest) EXPECT_LT(number, static_cast<int>(model.yNames.size()));
  return classes.assigned.size();
}

std::size_t RowsAnswered(const StoredPLS& model, const NCDataMatrix<float>& x) { return RowsDiagnosed(model, x); }
std::size_t RowsAnswered(const StoredOPLS& model, const NCDataMatrix<float>& x) { return RowsDiagnosed(model, x); }
/// In both directions.
std::size_t RowsAnswered(StoredO2PLS& model, const NCDataMatrix<float>& x) {
  const std::size_t rows = RowsDiagnosed(model, NCDataMatrix<float>(2, static_cast<int>(model.xNames.size()), 0.5F));
  TurnAround(&model);
  ExpectNewRows(model);
  return std::min({rows, RowsDiagnosed(model, NCDataMatrix<float>(2, 2, 0.5F)),
                   static_cast<std::size_t>(x.SizeRows())});
}
std::size_t RowsAnswered(const StoredFilter& model, NCDataMatrix<float> x) {
  ApplyScale(model.xScaling, &x);
  TakeOut(model, &x);
  return static_cast<std::size_t>(x.SizeRows());
}
/// Loadings that a forger made may be beyond what a row with holes can be regressed on.
std::size_t RowsAnswered(const StoredPCA& model, const NCDataMatrix<float>& x) try {
  Notes notes;
  return Diagnose(model, ScoreRows(model, x), &notes).flags.size();
} catch (const NCError&) {
  return static_cast<std::size_t>(x.SizeRows());
}

TEST(ModelFile, EndsInAFailureOrAModelThatPredictsWhenForged) {
  NCDataMatrix<float> x(2, 3, 0.5F);
  x(2, 2, -99.0F);  // one row with a hole, which takes another way
  for (const std::string& original : AllFiles()) {
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

TEST(ModelFile, EndsInAFailureOrAModelThatIsShownWhenForged) {
  for (const char* name : {"pls-version-5", "classes-version-5", "o2pls-version-5"}) {
    const std::string original = StoredFile(name);
    int shown = 0;
    for (std::size_t i = kContentAt; i < original.size(); ++i) {
      try {  // the second bit from the top of a number's last byte makes it huge, infinite or none
        const StoredModel model = ReadModelFile(Forged(WithBitFlipped(original, i, 6)), "m");
        EXPECT_FALSE(InfoJson(model, "m").empty() || InfoText(model, "m").empty());
        ++shown;
      } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("m is damaged: its parts do not fit together"));
      }
    }
    EXPECT_GT(shown, 0);
  }
}

TEST(ModelFile, EndsInAFailureWhenItsContentIsCutByAForger) {
  for (const std::string& original : AllFiles()) {
    for (std::size_t length = kContentAt; length < original.size(); ++length) {
      EXPECT_THAT(Refusal(Forged(original.substr(0, length))), HasSubstr("its parts do not fit together")) << length;
    }
  }
}

TEST(ModelFile, IsRefusedForWhatIsWrong) {
  const std::string bytes = SmallModelFile();
  EXPECT_EQ(Refusal(WithVersion(bytes, 6)), "m is a model file of version 6; this kalmia reads versions up to 5");
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
