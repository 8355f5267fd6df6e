#include "kalmia/analysis/file/ModelFile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <unordered_set>
#include <utility>

#include "kalmia/analysis/file/FileHeader.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr int kFirstVersionOfKinds = 2;          ///< before it there was nothing but PLS
constexpr int kFirstVersionOfPreprocessing = 3;
constexpr int kFirstVersionOfShifts = 4;  ///< a model without any is written as the version before it

// Shifts of Y stand behind those of X; a filter and PCA have none of Y.

std::vector<ColumnScaling*> ShiftedBlocks(YModelInfo* model) { return {&model->xScaling, &model->yScaling}; }
std::vector<ColumnScaling*> ShiftedBlocks(ModelInfo* model) { return {&model->xScaling}; }

template <class Kind>
bool HasShifts(const Kind& model) {
  bool any = false;
  for (const ColumnScaling* scaling : ShiftedBlocks(const_cast<Kind*>(&model))) any |= !scaling->shifts.empty();
  return any;
}

template <class Kind>
int VersionOf(const Kind& model) {
  return HasShifts(model) ? kFirstVersionOfShifts : kFirstVersionOfShifts - 1;
}

/// Of each block a count, 0 or its columns, and the shifts.
template <class Kind>
void WriteShifts(const Kind& model, std::ostream& entry) {
  for (const ColumnScaling* scaling : ShiftedBlocks(const_cast<Kind*>(&model))) {
    WriteInteger(static_cast<int>(scaling->shifts.size()), entry);
    WriteDoubles(scaling->shifts, entry);
  }
}

/// The columns have their scaling already.
bool ReadShifts(std::istream* entry, ColumnScaling* scaling) {
  int count = 0;
  if (!ReadInteger(&count, *entry) || (count != 0 && count != scaling->scale->GetVariables())) return false;
  scaling->shifts.resize(static_cast<std::size_t>(count));
  const auto read = [entry](double& shift) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    return ReadDouble(&shift, *entry) && std::fabs(shift) <= kLargest;
  };
  const auto isOne = [](double shift) { return shift != 0.0; };
  return std::all_of(scaling->shifts.begin(), scaling->shifts.end(), read) &&
         (count == 0 || std::any_of(scaling->shifts.begin(), scaling->shifts.end(), isOne));
}

/// A file of an older version has no such entry: one that has it is no such file.
template <class Kind>
bool ReadShifts(int version, std::istream* entry, Kind* model) {
  if (version < kFirstVersionOfShifts) return entry == nullptr;
  if (entry == nullptr) return false;
  for (ColumnScaling* scaling : ShiftedBlocks(model)) {
    if (!ReadShifts(entry, scaling)) return false;
  }
  return HasShifts(*model) && entry->peek() == std::istream::traits_type::eof();
}

template <class Kind>
void WriteContent(const Kind& model, std::ostream& stream) {
  const ModelInfo& frame = model;
  const bool hasShifts = HasShifts(model);
  OutputStreamDirectory directory(stream, hasShifts ? Entries : Shifts);
  std::ostream& general = directory.GetOutput(General);
  for (const std::string& text : {frame.writtenBy, frame.table, frame.idColumn, frame.groupColumn}) {
    WriteBinaryString(text.c_str(), general);
  }
  WriteInteger(frame.groups, general);
  WriteInteger(static_cast<int>(frame.scaling), general);
  WriteInteger(Kind::kKind, general);
  WriteNames(frame.xNames, directory.GetOutput(XNames));
  WriteNames(frame.rowNames, directory.GetOutput(RowNames));
  directory.GetOutput(XScaling) << *frame.xScaling.scale;
  WriteOwnEntries(model, &directory);
  WriteStepChain(frame.chain, directory.GetOutput(Preprocessing));
  if (hasShifts) WriteShifts(model, directory.GetOutput(Shifts));
  directory.Close();
}

/// Whether all of the names are there.
bool Contains(const std::vector<std::string>& there, const std::vector<std::string>& names) {
  const std::unordered_set<std::string> set(there.begin(), there.end());
  return std::all_of(names.begin(), names.end(), [&set](const std::string& name) { return set.count(name) > 0; });
}

bool ReadGeneral(int version, std::istream* entry, ModelInfo* frame, int* kind) {
  int scaling = 0;
  if (entry == nullptr || !ReadText(&frame->writtenBy, *entry) || !ReadText(&frame->table, *entry) ||
      !ReadText(&frame->idColumn, *entry) || !ReadText(&frame->groupColumn, *entry) ||
      !ReadInteger(&frame->groups, *entry) || !ReadInteger(&scaling, *entry)) {
    return false;
  }
  frame->fileVersion = version;
  frame->scaling = static_cast<NCScale::Scaling>(scaling);
  if (version >= kFirstVersionOfKinds && !ReadInteger(kind, *entry)) return false;
  return scaling >= NCScale::ScalingNone && scaling <= NCScale::ScalingUnitVariance;
}

/// The chain that makes X, which is among the columns that come out of it. A file of an older version has no such
/// entry: one that has it is no such file.
bool ReadPreprocessing(int version, std::istream* entry, ModelInfo* frame) {
  if (version < kFirstVersionOfPreprocessing) return entry == nullptr;
  if (entry == nullptr || !ReadStepChain(*entry, &frame->chain)) return false;
  return frame->chain.Empty() || Contains(OutputNames(frame->chain), frame->xNames);
}

/// The model of the kind with that number, as yet without content; false for a number that no kind has.
template <std::size_t Index = 0>
bool MakeKind(int kind, StoredModel* model) {
  if constexpr (Index < std::variant_size_v<StoredModel>) {
    if (kind != std::variant_alternative_t<Index, StoredModel>::kKind) return MakeKind<Index + 1>(kind, model);
    model->emplace<Index>();
    return true;
  }
  return false;
}

/// False on bytes that no WriteContent has written.
bool ReadContent(int version, std::istream& stream, StoredModel* model) {
  InputStreamDirectory directory(stream);
  ModelInfo frame;
  frame.xScaling.scale = std::make_unique<NCScale>();
  int kind = StoredPLS::kKind;
  if (!ReadGeneral(version, directory.GetInput(General), &frame, &kind) || !MakeKind(kind, model) ||
      !ReadNames(XNames, &directory, &frame.xNames) || !ReadNames(RowNames, &directory, &frame.rowNames) ||
      !ReadObject(XScaling, &directory, frame.xScaling.scale.get()) ||
      !ReadPreprocessing(version, directory.GetInput(Preprocessing), &frame)) {
    return false;
  }
  return std::visit(
      [&](auto& own) {
        static_cast<ModelInfo&>(own) = std::move(frame);
        return ReadOwnEntries(&directory, &own) && ReadShifts(version, directory.GetInput(Shifts), &own);
      },
      *model);
}

/// Whether there is nothing that could predict. PLS without components is a model, the mean of Y, where it was judged.
template <class Kind>
bool IsNoModel(const Kind& model) {
  return model.Components() == 0;
}
bool IsNoModel(const StoredPLS& model) { return model.quality.empty(); }

template <class Kind>
std::string FileBytes(const Kind& model) {
  if (IsNoModel(model)) throw BadRequest("a model without components cannot be stored");
  std::ostringstream content;
  WriteContent(model, content);
  return FramedBytes(kModelFile, VersionOf(model), content.str());
}

}  // namespace

std::string ModelFileBytes(const StoredPLS& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredPCA& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredOPLS& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredO2PLS& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredFilter& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredModel& model) {
  return std::visit([](const auto& own) { return FileBytes(own); }, model);
}

StoredModel ReadModelFile(std::string_view bytes, const std::string& name) {
  const FramedContent content = ReadFrame(kModelFile, bytes, name);
  StoredModel model;
  std::istringstream stream{std::string(content.bytes)};
  if (!ReadContent(content.version, stream, &model)) RefuseParts(name);
  return model;
}

}  // namespace kalmia::analysis
