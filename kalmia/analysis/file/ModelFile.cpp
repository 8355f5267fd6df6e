#include "kalmia/analysis/file/ModelFile.h"

#include <sha2.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <utility>

#include "kalmia/analysis/file/FileHeader.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/file/internal/ClassEntries.h"
#include "kalmia/analysis/file/internal/JudgementEntries.h"
#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/file/internal/ModelFrame.h"
#include "kalmia/analysis/file/internal/RowEntries.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr int kFirstVersionOfParts = 5;

/// The parts of the content, each a directory of its own.
enum Part : unsigned short { Origin, Prediction, Judgement, Rows, TrainingTable, Parts };

/// Where the model comes from: nothing that predictions depend on.
enum OriginEntry : unsigned short { Sources, OriginEntries };
enum PredictionEntry : unsigned short {
  General,
  XNames,
  YNames,
  XScaling,
  YScaling,
  Model,
  Preprocessing,
  Shifts,
  Deviations,
  Terms,
  YTerms,
  Classes,
  PredictionEntries
};
enum JudgementEntry : unsigned short { Groups, Components, Quality, Validation, Figures, JudgementEntries };
enum RowsEntry : unsigned short { RowNames, Scores, Statistics, YStatistics, RowsEntries };
enum TableEntry : unsigned short { XCells, Residuals, YCells, TableEntries };

/// The bytes of a directory that write(directory) fills.
template <class Write>
std::string PartBytes(unsigned short entries, const Write& write) {
  std::ostringstream stream;
  OutputStreamDirectory directory(stream, entries);
  write(&directory);
  directory.Close();
  return stream.str();
}

// What kinds of models have differently.

const std::string* YTableOf(const StoredO2PLS& model) { return &model.yTable; }
const std::string* YTableOf(const ModelInfo& /*model*/) { return nullptr; }

const NCDataMatrix<float>* TrainingYOf(const YModelInfo& model) { return &model.trainingY; }
const NCDataMatrix<float>* TrainingYOf(const ModelInfo& /*model*/) { return nullptr; }

bool ReadTrainingY(std::istream* entry, YModelInfo* model) {
  return entry != nullptr && ReadMatrices({&model->trainingY}, *entry) &&
         HasShape(&model->trainingY, model->rows, model->yNames.size());
}
bool ReadTrainingY(std::istream* entry, ModelInfo* /*model*/) { return entry == nullptr; }

void WriteBlockOfY(const YModelInfo& model, OutputStreamDirectory* directory) {
  WriteNames(model.yNames, directory->GetOutput(YNames));
  directory->GetOutput(YScaling) << *model.yScaling.scale;
}
void WriteBlockOfY(const StoredPCA& /*model*/, OutputStreamDirectory* /*directory*/) {}
void WriteBlockOfY(const StoredFilter& model, OutputStreamDirectory* directory) {
  WriteNames(model.yNames, directory->GetOutput(YNames));
}

std::vector<double> DeviationsOf(const ModelInfo& model) { return {model.pooledDeviation}; }
std::vector<double> DeviationsOf(const StoredO2PLS& model) { return {model.pooledDeviation, model.yPooledDeviation}; }

/// What the terms of rows of each block have: their entry, and how many Y columns.
struct TermsOfBlock {
  unsigned short entry;
  std::optional<RowTerms>* terms;
  unsigned short statisticsEntry;
  std::optional<RowStatistics>* statistics;
  std::size_t yColumns;
};

std::vector<TermsOfBlock> BlocksOf(YModelInfo* model) {
  return {{Terms, &model->rowTerms, Statistics, &model->rowStatistics, model->yNames.size()}};
}
std::vector<TermsOfBlock> BlocksOf(StoredPCA* model) {
  return {{Terms, &model->rowTerms, Statistics, &model->rowStatistics, 0}};
}
std::vector<TermsOfBlock> BlocksOf(StoredFilter* /*model*/) { return {}; }
std::vector<TermsOfBlock> BlocksOf(StoredO2PLS* model) {
  return {{Terms, &model->rowTerms, Statistics, &model->rowStatistics, model->yNames.size()},
          {YTerms, &model->yRowTerms, YStatistics, &model->yRowStatistics, model->xNames.size()}};
}
template <class Kind>
std::vector<TermsOfBlock> BlocksToWrite(const Kind& model) {
  return BlocksOf(const_cast<Kind*>(&model));  // only read through
}

void WriteQuality(const YModelInfo& model, OutputStreamDirectory* directory) {
  std::ostream& quality = directory->GetOutput(Quality);
  WriteInteger(static_cast<int>(model.quality.size()), quality);
  for (const YQuality& y : model.quality) {
    WriteInteger(y.rows, quality);
    WriteDoubles({y.rmsee, y.rmsecv}, quality);
  }
}
void WriteQuality(const ModelInfo& /*model*/, OutputStreamDirectory* /*directory*/) {}
void WriteQuality(const StoredO2PLS& /*model*/, OutputStreamDirectory* /*directory*/) {}

bool ReadQuality(std::istream* entry, YModelInfo* model) {
  const auto read = [](YQuality* y, std::istream& stream) {
    return ReadInteger(&y->rows, stream) && ReadDouble(&y->rmsee, stream) && ReadDouble(&y->rmsecv, stream);
  };
  return entry != nullptr && ReadRecords(*entry, &model->quality, read) &&
         model->quality.size() == model->yNames.size();
}
bool ReadQuality(std::istream* entry, ModelInfo* /*model*/) { return entry == nullptr; }
bool ReadQuality(std::istream* entry, StoredO2PLS* /*model*/) { return entry == nullptr; }

void WriteClassRule(const YModelInfo& model, OutputStreamDirectory* directory) {
  if (model.classes) WriteClasses(*model.classes, directory->GetOutput(Classes));
}
void WriteClassRule(const ModelInfo& /*model*/, OutputStreamDirectory* /*directory*/) {}

/// The names of Y are known.
bool ReadClassRule(std::istream* entry, YModelInfo* model) {
  if (entry == nullptr) return true;
  model->classes = StoredClasses{};
  return ReadClasses(*entry, model->yNames, &*model->classes);
}
bool ReadClassRule(std::istream* entry, ModelInfo* /*model*/) { return entry == nullptr; }
bool ReadClassRule(std::istream* entry, StoredO2PLS* /*model*/) { return entry == nullptr; }

void WriteClassFigures(const YModelInfo& model, OutputStreamDirectory* directory) {
  if (model.classes) WriteClassFigures(*model.classes, directory->GetOutput(Figures));
}
void WriteClassFigures(const ModelInfo& /*model*/, OutputStreamDirectory* /*directory*/) {}

/// A model of classes always has the entry.
bool ReadClassFigures(std::istream* entry, YModelInfo* model) {
  if (!model->classes || entry == nullptr) return !model->classes && entry == nullptr;
  return ReadClassFigures(*entry, model->yNames.size(), &*model->classes);
}
bool ReadClassFigures(std::istream* entry, ModelInfo* /*model*/) { return entry == nullptr; }

JudgedColumns JudgedColumnsOf(const StoredPLS& model) {
  return {model.xNames.size(), model.yNames.size(), /*kinds=*/0, /*bothWays=*/false, model.classes.has_value()};
}
JudgedColumns JudgedColumnsOf(const StoredPCA& model) { return {model.xNames.size()}; }
JudgedColumns JudgedColumnsOf(const StoredOPLS& model) {
  return {model.xNames.size(), model.yNames.size(), /*kinds=*/2, /*bothWays=*/false, model.classes.has_value()};
}
JudgedColumns JudgedColumnsOf(const StoredO2PLS& model) {
  return {model.xNames.size(), model.yNames.size(), /*kinds=*/3, /*bothWays=*/true};
}
JudgedColumns JudgedColumnsOf(const StoredFilter& model) { return {model.xNames.size()}; }

// Writing, part by part.

template <class Kind>
std::string OriginBytes(const Kind& model) {
  return PartBytes(OriginEntries, [&](OutputStreamDirectory* directory) {
    std::ostream& sources = directory->GetOutput(Sources);
    for (const std::string& text : {model.writtenBy, model.table, model.idColumn}) {
      WriteBinaryString(text.c_str(), sources);
    }
    if (YTableOf(model) != nullptr) WriteBinaryString(YTableOf(model)->c_str(), sources);
  });
}

template <class Kind>
std::string PredictionBytes(const Kind& model) {
  return PartBytes(PredictionEntries, [&](OutputStreamDirectory* directory) {
    std::ostream& general = directory->GetOutput(General);
    WriteInteger(Kind::kKind, general);
    WriteInteger(static_cast<int>(model.scaling), general);
    WriteInteger(static_cast<int>(model.rows), general);
    WriteNames(model.xNames, directory->GetOutput(XNames));
    directory->GetOutput(XScaling) << *model.xScaling.scale;
    WriteBlockOfY(model, directory);
    WriteModel(model, directory->GetOutput(Model));
    WriteStepChain(model.chain, directory->GetOutput(Preprocessing));
    if (HasShifts(model)) WriteShifts(ShiftedBlocks(const_cast<Kind*>(&model)), directory->GetOutput(Shifts));
    WriteDoubles(DeviationsOf(model), directory->GetOutput(Deviations));
    for (const TermsOfBlock& block : BlocksToWrite(model)) {
      if (*block.terms) WriteRowTerms(**block.terms, directory->GetOutput(block.entry));
    }
    WriteClassRule(model, directory);
  });
}

template <class Kind>
std::string JudgementBytes(const Kind& model) {
  return PartBytes(JudgementEntries, [&](OutputStreamDirectory* directory) {
    std::ostream& groups = directory->GetOutput(Groups);
    WriteBinaryString(model.groupColumn.c_str(), groups);
    WriteInteger(model.groups, groups);
    WriteComponents(model, directory->GetOutput(Components));
    WriteQuality(model, directory);
    WriteClassFigures(model, directory);
    if (model.validation) WriteValidation(*model.validation, directory->GetOutput(Validation));
  });
}

template <class Kind>
std::string RowsBytes(const Kind& model) {
  return PartBytes(RowsEntries, [&](OutputStreamDirectory* directory) {
    WriteNames(model.rowNames, directory->GetOutput(RowNames));
    WriteScores(model, directory->GetOutput(Scores));
    for (const TermsOfBlock& block : BlocksToWrite(model)) {
      if (*block.statistics) WriteRowStatistics(**block.statistics, directory->GetOutput(block.statisticsEntry));
    }
  });
}

template <class Kind>
std::string TableBytes(const Kind& model) {
  return PartBytes(TableEntries, [&](OutputStreamDirectory* directory) {
    WriteMatrices({&model.trainingX}, directory->GetOutput(XCells));
    std::ostream& entry = directory->GetOutput(Residuals);
    const std::vector<NCDataMatrix<float>> residuals = ResidualsOf(model);
    WriteInteger(static_cast<int>(residuals.size()), entry);
    for (const NCDataMatrix<float>& matrix : residuals) WriteMatrices({&matrix}, entry);
    if (TrainingYOf(model) != nullptr) WriteMatrices({TrainingYOf(model)}, directory->GetOutput(YCells));
  });
}

template <class Kind>
bool RowsAreThere(const Kind& model) {
  return !model.rowNames.empty() && model.rowNames.size() == model.rows && model.rows <= kMostRows && HasScores(model);
}

bool TableIsThere(const ModelInfo& model) { return model.rows > 0 && model.trainingX.SizeRows() > 0; }

/// O2PLS and filters have no model of the mean.
template <class Kind>
constexpr bool kCanBeAMean = !std::is_same_v<Kind, StoredO2PLS> && !std::is_same_v<Kind, StoredFilter>;

/// Whether there is something that predicts: components, or the mean of a fit to its end.
template <class Kind>
bool IsModel(const Kind& model) {
  return model.Components() > 0 || (kCanBeAMean<Kind> && model.rowTerms);
}

template <class Kind>
std::string FileBytes(const Kind& model, const ModelParts& parts) {
  if (!IsModel(model)) throw BadRequest("a model without components cannot be stored");
  std::ostringstream content;
  OutputStreamDirectory directory(content, Parts);
  directory.GetOutput(Origin) << OriginBytes(model);
  directory.GetOutput(Prediction) << PredictionBytes(model);
  directory.GetOutput(Judgement) << JudgementBytes(model);
  if (parts.rows && RowsAreThere(model)) directory.GetOutput(Rows) << RowsBytes(model);
  if (parts.table && TableIsThere(model)) directory.GetOutput(TrainingTable) << TableBytes(model);
  directory.Close();
  return FramedBytes(kModelFile, kModelVersion, content.str());
}

template <class Kind>
std::string DigestOf(const Kind& model) {
  const std::string bytes = PredictionBytes(model);
  char digest[SHA256_DIGEST_STRING_LENGTH];
  return SHA256Data(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), digest);
}

// Reading, part by part.

template <class Kind>
bool ReadOrigin(std::istream* part, Kind* model) {
  if (part == nullptr) return false;
  InputStreamDirectory directory(*part);
  std::istream* const sources = directory.GetInput(Sources);
  if (sources == nullptr || !ReadSources(*sources, model)) return false;
  if constexpr (std::is_same_v<Kind, StoredO2PLS>) return ReadText(&model->yTable, *sources);
  return true;
}

bool ReadGeneral(std::istream* entry, ModelInfo* frame, int* kind) {
  int rows = 0;
  if (entry == nullptr || !ReadInteger(kind, *entry) || !ReadScaling(*entry, &frame->scaling) ||
      !ReadInteger(&rows, *entry) || rows < 1) {
    return false;
  }
  frame->rows = static_cast<std::size_t>(rows);
  return true;
}

template <class Kind>
bool ReadPrediction(InputStreamDirectory* directory, Kind* model) {
  model->xScaling.scale = std::make_unique<NCScale>();
  std::istream* const matrices = directory->GetInput(Model);
  std::istream* const chain = directory->GetInput(Preprocessing);
  std::istream* const shifts = directory->GetInput(Shifts);
  return ReadNames(directory->GetInput(XNames), &model->xNames) &&
         ReadObject(directory->GetInput(XScaling), model->xScaling.scale.get()) &&
         ReadBlockOfY(directory->GetInput(YNames), directory->GetInput(YScaling), model) &&
         matrices != nullptr && ReadModel(*matrices, model) && chain != nullptr && ReadChain(*chain, model) &&
         (shifts == nullptr || ReadShifts(*shifts, ShiftedBlocks(model))) &&
         ReadDeviations(directory->GetInput(Deviations), model) &&
         ReadClassRule(directory->GetInput(Classes), model);
}

/// The components, which the judgement tells, are known.
template <class Kind>
bool ReadTerms(InputStreamDirectory* directory, Kind* model) {
  if constexpr (!std::is_same_v<Kind, StoredFilter>) {
    for (const TermsOfBlock& block : BlocksOf(model)) {
      std::istream* const entry = directory->GetInput(block.entry);
      if (entry == nullptr) continue;
      *block.terms = RowTerms{};
      if (!ReadRowTerms(*entry, ScoresOf(*model), block.yColumns, &**block.terms)) return false;
    }
  }
  return true;
}

template <class Kind>
bool ReadJudgement(std::istream* part, Kind* model) {
  if (part == nullptr) return false;
  InputStreamDirectory directory(*part);
  std::istream* const groups = directory.GetInput(Groups);
  std::istream* const components = directory.GetInput(Components);
  if (groups == nullptr || !ReadText(&model->groupColumn, *groups) || !ReadInteger(&model->groups, *groups) ||
      components == nullptr || !ReadComponents(*components, model) ||
      !ReadQuality(directory.GetInput(Quality), model)) {
    return false;
  }
  if (!ReadClassFigures(directory.GetInput(Figures), model)) return false;
  std::istream* const validation = directory.GetInput(Validation);
  if (validation == nullptr) return true;
  model->validation = StoredValidation{};
  return ReadValidation(*validation, JudgedColumnsOf(*model), &*model->validation);
}

template <class Kind>
bool ReadRows(std::istream* part, Kind* model) {
  if (part == nullptr) return true;
  InputStreamDirectory directory(*part);
  std::istream* const scores = directory.GetInput(Scores);
  if (!ReadNames(directory.GetInput(RowNames), &model->rowNames) || model->rowNames.size() != model->rows ||
      model->rows > kMostRows || scores == nullptr || !ReadScores(*scores, model)) {
    return false;
  }
  for (const TermsOfBlock& block : BlocksOf(model)) {
    std::istream* const entry = directory.GetInput(block.statisticsEntry);
    if (entry == nullptr) continue;
    *block.statistics = RowStatistics{};
    if (!ReadRowStatistics(*entry, model->rows, block.yColumns, &**block.statistics)) return false;
  }
  return true;
}

template <class Kind>
bool ReadTable(std::istream* part, Kind* model) {
  if (part == nullptr) return true;
  InputStreamDirectory directory(*part);
  std::istream* const cells = directory.GetInput(XCells);
  std::istream* const entry = directory.GetInput(Residuals);
  if (cells == nullptr || !ReadMatrices({&model->trainingX}, *cells) ||
      !HasShape(&model->trainingX, model->rows, model->xNames.size())) {
    return false;
  }
  std::vector<NCDataMatrix<float>> residuals;
  const auto read = [](NCDataMatrix<float>* matrix, std::istream& stream) { return ReadObject(&stream, matrix); };
  if (entry == nullptr || !ReadRecords(*entry, &residuals, read)) return false;
  if (!ReadTrainingY(directory.GetInput(YCells), model)) return false;
  return (residuals.empty() && model->Components() == 0) || TakeResiduals(residuals, model);
}

/// False on bytes that no FileBytes has written.
bool ReadContent(std::istream& stream, StoredModel* model) try {
  InputStreamDirectory parts(stream);
  std::istream* const prediction = parts.GetInput(Prediction);
  if (prediction == nullptr) return false;
  InputStreamDirectory directory(*prediction);
  ModelInfo frame;
  int kind = 0;
  if (!ReadGeneral(directory.GetInput(General), &frame, &kind) || !MakeKind(kind, model)) return false;
  return std::visit(
      [&](auto& own) {
        static_cast<ModelInfo&>(own) = std::move(frame);
        return ReadPrediction(&directory, &own) && ReadOrigin(parts.GetInput(Origin), &own) &&
               ReadJudgement(parts.GetInput(Judgement), &own) && Agrees(own) &&
               ReadTerms(&directory, &own) && IsModel(own) &&
               ReadRows(parts.GetInput(Rows), &own) && ReadTable(parts.GetInput(TrainingTable), &own);
      },
      *model);
} catch (const VexStreamError&) {
  return false;
}

}  // namespace

std::string ModelFileBytes(const StoredPLS& model, const ModelParts& parts) { return FileBytes(model, parts); }

std::string ModelFileBytes(const StoredPCA& model, const ModelParts& parts) { return FileBytes(model, parts); }

std::string ModelFileBytes(const StoredOPLS& model, const ModelParts& parts) { return FileBytes(model, parts); }

std::string ModelFileBytes(const StoredO2PLS& model, const ModelParts& parts) { return FileBytes(model, parts); }

std::string ModelFileBytes(const StoredFilter& model, const ModelParts& parts) { return FileBytes(model, parts); }

std::string ModelFileBytes(const StoredModel& model, const ModelParts& parts) {
  return std::visit([&parts](const auto& own) { return FileBytes(own, parts); }, model);
}

bool KeepsRows(const StoredModel& model) {
  return std::visit([](const auto& own) { return RowsAreThere(own); }, model);
}

bool KeepsTable(const StoredModel& model) {
  return std::visit([](const ModelInfo& info) { return TableIsThere(info); }, model);
}

StoredModel ReadModelFile(std::string_view bytes, const std::string& name) {
  const FramedContent content = ReadFrame(kModelFile, bytes, name);
  StoredModel model;
  std::istringstream stream{std::string(content.bytes)};
  const bool isRead = content.version < kFirstVersionOfParts ? ReadOldContent(content.version, stream, &model)
                                                             : ReadContent(stream, &model);
  if (!isRead) RefuseParts(name);
  return model;
}

std::string ModelDigest(const StoredPLS& model) { return DigestOf(model); }

std::string ModelDigest(const StoredPCA& model) { return DigestOf(model); }

std::string ModelDigest(const StoredOPLS& model) { return DigestOf(model); }

std::string ModelDigest(const StoredO2PLS& model) { return DigestOf(model); }

std::string ModelDigest(const StoredFilter& model) { return DigestOf(model); }

std::string ModelDigest(const StoredModel& model) {
  return std::visit([](const auto& own) { return DigestOf(own); }, model);
}

}  // namespace kalmia::analysis
