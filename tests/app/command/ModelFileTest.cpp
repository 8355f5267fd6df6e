// Stored models: what comes back, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "CommandRun.h"
#include "TestTables.h"
#include "app/console/ExitCode.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/support/MD5.h"

namespace {

using kalmia::app::ExitCode;
using kalmia::app::ExitCodeOf;
using kalmia::analysis::Failure;
using kalmia::analysis::ModelFileBytes;
using kalmia::analysis::PredictRows;
using kalmia::analysis::ReadModelFile;
using kalmia::analysis::ScoreRows;
using kalmia::analysis::StoredPCA;
using kalmia::analysis::StoredPLS;
using ::testing::HasSubstr;

constexpr std::size_t kLengthAt = 12;  ///< where in the file the length of the content stands
constexpr std::size_t kChecksumAt = 20;
constexpr std::size_t kContentAt = 52;

/// The bytes of a model of two components of 8 rows, 3 X columns and 2 Y columns.
std::string SmallModelFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1));
  const CommandResult run = RunKalmia({"pls", table, "--y", "y1,y2", "--components", "2", "--save", folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

/// The bytes of two principal components of 8 rows and 3 columns.
std::string SmallPCAFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 2, 1, 1));
  const CommandResult run = RunKalmia({"pca", table, "--components", "2", "--save", folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

/// The bytes of an OPLS model of one predictive and one orthogonal component of 8 rows, 3 X columns and 2 Y columns.
std::string SmallOPLSFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1));
  const CommandResult run = RunKalmia({"opls", table, "--y", "y1,y2", "--predictive", "1", "--orthogonal", "1",
                                       "--save", folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

/// The bytes of an O2PLS model of 9 rows, 3 X columns and 2 Y columns with one joint component and one unique to X.
std::string SmallO2PLSFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(9, 3, 2, 4));
  const CommandResult run = RunKalmia({"o2pls", table, table, "--x", "x1..x3", "--y", "y1..y2", "--joint", "1",
                                       "--x-unique", "1", "--y-unique", "0", "--groups", "3", "--save",
                                       folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

/// The bytes of a filter of one component of 8 rows, 3 X columns and 2 Y columns.
std::string SmallFilterFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1));
  const CommandResult run = RunKalmia({"filter", table, "--y", "y1,y2", "--components", "1", "--out", folder.Path("o"),
                                       "--save", folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

/// The bytes of a PLS model of one component of 8 rows, of 3 columns that went through steps.
std::string SmallPreprocessedFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 1, 1));
  const std::string steps = folder.Write("s", "derivative:1:3:2,wavelet-compress:3:daubechies:4");
  const CommandResult run = RunKalmia({"pls", table, "--y", "y1", "--components", "1", "--steps-file", steps,
                                       "--save", folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

/// One small file of each kind of model.
std::vector<std::string> SmallFiles() {
  return {SmallModelFile(), SmallPCAFile(),    SmallOPLSFile(),
          SmallO2PLSFile(), SmallFilterFile(), SmallPreprocessedFile()};
}

/// The message with which the bytes are refused; "" if they are read.
std::string Refusal(const std::string& bytes) {
  try {
    ReadModelFile(bytes, "m");
  } catch (const Failure& failure) {
    EXPECT_EQ(ExitCodeOf(failure), ExitCode::Files);
    return failure.what();
  }
  return "";
}

void WriteLength(std::uint64_t length, std::string* bytes) {
  for (std::size_t i = 0; i < 8; ++i) (*bytes)[kLengthAt + i] = static_cast<char>(length >> (8 * i) & 0xFFU);
}

/// The file with a checksum that matches its content: what a forger would write.
std::string WithMatchingChecksum(std::string bytes) {
  MD5 md5;
  md5.Update(bytes.data() + kContentAt, bytes.size() - kContentAt);
  md5.Finalize();
  return bytes.replace(kChecksumAt, 32, md5.GetDigest());
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
  EXPECT_THAT(Refusal(WithMatchingChecksum(bytes)), HasSubstr("its parts do not fit together"));
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
  for (std::string bytes : SmallFiles()) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      for (unsigned bit = 0; bit < 8; ++bit) {
        bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << bit));
        EXPECT_NE(Refusal(bytes), "") << "byte " << i << " bit " << bit;
        bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << bit));
      }
    }
  }
}

/// The bytes of the same model with a chain that could have been learnt of its columns.
std::string WithStepsGiven(const std::string& bytes) {
  auto model = ReadModelFile(bytes, "m");
  std::visit(
      [](kalmia::analysis::ModelInfo& frame) {
        frame.chain.inputNames = frame.xNames;
        frame.chain.steps = {{kalmia::analysis::ParseSteps("linear:2", "steps").front(), 1.0F, {}}};
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
void ExpectNewRows(const kalmia::analysis::ModelInfo& model) try {
  const kalmia::analysis::CsvTable table("x1,x2,x3,y1,y2\n1,2,3,4,5\n2,,1,5,3\n", "t");
  kalmia::analysis::Notes notes;
  const kalmia::analysis::NewRows rows = ReadNewRows(model, table, "", &notes);
  EXPECT_EQ(rows.x.SizeRows(), 2);
  EXPECT_EQ(static_cast<std::size_t>(rows.x.SizeColumns()), model.xNames.size());
} catch (const Failure& failure) {
  EXPECT_EQ(ExitCodeOf(failure), ExitCode::BadData);
}

std::size_t RowsAnswered(const StoredPLS& model, const NCDataMatrix<float>& x) { return PredictRows(model, x).size(); }
std::size_t RowsAnswered(const kalmia::analysis::StoredOPLS& model, const NCDataMatrix<float>& x) {
  return PredictRows(model, x).size();
}
/// In both directions.
std::size_t RowsAnswered(kalmia::analysis::StoredO2PLS& model, const NCDataMatrix<float>& x) {
  const std::size_t rows = PredictRows(model, x).size();
  TurnAround(&model);
  ExpectNewRows(model);
  return std::min(rows, PredictRows(model, NCDataMatrix<float>(2, 2, 0.5F)).size());
}
std::size_t RowsAnswered(const kalmia::analysis::StoredFilter& model, NCDataMatrix<float> x) {
  kalmia::analysis::ApplyScale(model.xScale.get(), &x);
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
        std::string bytes = original;
        bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << bit));
        try {
          auto model = ReadModelFile(WithMatchingChecksum(bytes), "m");
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
      std::string bytes = original.substr(0, length);
      WriteLength(length - kContentAt, &bytes);
      EXPECT_THAT(Refusal(WithMatchingChecksum(bytes)), HasSubstr("its parts do not fit together")) << length;
    }
  }
}

TEST(ModelFile, IsRefusedForWhatIsWrong) {
  const std::string bytes = SmallModelFile();
  std::string newer = bytes;
  newer[8] = 4;
  EXPECT_EQ(Refusal(newer), "m is a model file of version 4; this kalmia reads versions up to 3");
  std::string none = bytes;
  none[8] = 0;
  EXPECT_EQ(Refusal(none), "m is damaged: there is no version 0");
  std::string damaged = bytes;
  damaged[kContentAt + 100] = static_cast<char>(damaged[kContentAt + 100] + 1);
  EXPECT_EQ(Refusal(damaged), "m is damaged: its checksum does not match");
  EXPECT_EQ(Refusal(bytes + "x"), "m is damaged: it goes on behind its end");
  EXPECT_EQ(Refusal("x1,y\n1,2\n"), "m is no Kalmia model");
  std::string huge = bytes;
  WriteLength(std::uint64_t{1} << 62U, &huge);
  EXPECT_THAT(Refusal(huge), HasSubstr("m is cut"));
}

}  // namespace
