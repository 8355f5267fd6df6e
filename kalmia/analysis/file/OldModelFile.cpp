// Model files before version 5: one directory of entries, with scores and residuals of the training table in them.

#include <memory>
#include <utility>

#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/file/internal/ModelFrame.h"

namespace kalmia::analysis {

namespace {

constexpr int kFirstVersionOfKinds = 2;  ///< before it there was nothing but PLS
constexpr int kFirstVersionOfPreprocessing = 3;
constexpr int kFirstVersionOfShifts = 4;

/// Entries in their order; those that a kind of model has no use for are empty.
enum Entry : unsigned short {
  General,
  XNames,
  YNames,
  RowNames,
  XScaling,
  YScaling,
  Model,
  Components,
  Quality,
  Preprocessing,
  Shifts
};

bool ReadGeneral(int version, std::istream* entry, ModelInfo* frame, int* kind) {
  if (entry == nullptr || !ReadSources(*entry, frame) || !ReadText(&frame->groupColumn, *entry) ||
      !ReadInteger(&frame->groups, *entry) || !ReadScaling(*entry, &frame->scaling)) {
    return false;
  }
  frame->fileVersion = version;
  return version < kFirstVersionOfKinds || ReadInteger(kind, *entry);
}

/// A file of an older version has no such entry: one that has it is no such file.
bool ReadPreprocessing(int version, std::istream* entry, ModelInfo* frame) {
  if (version < kFirstVersionOfPreprocessing) return entry == nullptr;
  return entry != nullptr && ReadChain(*entry, frame);
}

template <class Kind>
bool ReadOldShifts(int version, std::istream* entry, Kind* model) {
  if (version < kFirstVersionOfShifts) return entry == nullptr;
  return entry != nullptr && ReadShifts(*entry, ShiftedBlocks(model));
}

bool ReadQuality(std::istream* entry, YModelInfo* model) {
  if (!ReadDeviations(entry, model)) return false;
  for (std::size_t j = 0; j < model->yNames.size(); ++j) {
    YQuality y;
    if (!ReadInteger(&y.rows, *entry) || !ReadDouble(&y.rmsee, *entry) || !ReadDouble(&y.rmsecv, *entry)) return false;
    model->quality.push_back(y);
  }
  return true;
}
bool ReadQuality(std::istream* entry, StoredPCA* model) { return ReadDeviations(entry, model); }
bool ReadQuality(std::istream* entry, StoredO2PLS* model) { return ReadDeviations(entry, model); }
bool ReadQuality(std::istream* /*entry*/, StoredFilter* /*model*/) { return true; }

/// The table of Y stands before the components of O2PLS.
bool ReadYTable(std::istream& entry, StoredO2PLS* model) { return ReadText(&model->yTable, entry); }
bool ReadYTable(std::istream& /*entry*/, ModelInfo* /*model*/) { return true; }

template <class Kind>
bool ReadOwn(InputStreamDirectory* directory, Kind* model) {
  std::istream* const matrices = directory->GetInput(Model);
  std::istream* const components = directory->GetInput(Components);
  return ReadBlockOfY(directory->GetInput(YNames), directory->GetInput(YScaling), model) && matrices != nullptr && ReadOldModel(*matrices, model) &&
         components != nullptr && ReadYTable(*components, model) && ReadComponents(*components, model) &&
         ReadQuality(directory->GetInput(Quality), model) && model->Components() > 0 && HasScores(*model) &&
         Agrees(*model);
}

}  // namespace

bool ReadOldContent(int version, std::istream& stream, StoredModel* model) {
  InputStreamDirectory directory(stream);
  ModelInfo frame;
  frame.xScaling.scale = std::make_unique<NCScale>();
  int kind = StoredPLS::kKind;
  if (!ReadGeneral(version, directory.GetInput(General), &frame, &kind) || !MakeKind(kind, model) ||
      !ReadNames(directory.GetInput(XNames), &frame.xNames) ||
      !ReadNames(directory.GetInput(RowNames), &frame.rowNames) ||
      !ReadObject(directory.GetInput(XScaling), frame.xScaling.scale.get()) ||
      !ReadPreprocessing(version, directory.GetInput(Preprocessing), &frame)) {
    return false;
  }
  frame.rows = frame.rowNames.size();
  return std::visit(
      [&](auto& own) {
        static_cast<ModelInfo&>(own) = std::move(frame);
        return ReadOwn(&directory, &own) && ReadOldShifts(version, directory.GetInput(Shifts), &own);
      },
      *model);
}

}  // namespace kalmia::analysis
