#include "kalmia/analysis/file/ModelFile.h"

#include <algorithm>
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

template <class Kind>
void WriteContent(const Kind& model, std::ostream& stream) {
  const ModelInfo& frame = model;
  OutputStreamDirectory directory(stream, Entries);
  std::ostream& general = directory.GetOutput(General);
  for (const std::string& text : {frame.writtenBy, frame.table, frame.idColumn, frame.groupColumn}) {
    WriteBinaryString(text.c_str(), general);
  }
  WriteInteger(frame.groups, general);
  WriteInteger(static_cast<int>(frame.scaling), general);
  WriteInteger(Kind::kKind, general);
  WriteNames(frame.xNames, directory.GetOutput(XNames));
  WriteNames(frame.rowNames, directory.GetOutput(RowNames));
  directory.GetOutput(XScaling) << *frame.xScale;
  WriteOwnEntries(model, &directory);
  WriteStepChain(frame.chain, directory.GetOutput(Preprocessing));
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
  frame.xScale = std::make_unique<NCScale>();
  int kind = StoredPLS::kKind;
  if (!ReadGeneral(version, directory.GetInput(General), &frame, &kind) || !MakeKind(kind, model) ||
      !ReadNames(XNames, &directory, &frame.xNames) || !ReadNames(RowNames, &directory, &frame.rowNames) ||
      !ReadObject(XScaling, &directory, frame.xScale.get()) ||
      !ReadPreprocessing(version, directory.GetInput(Preprocessing), &frame)) {
    return false;
  }
  return std::visit(
      [&](auto& own) {
        static_cast<ModelInfo&>(own) = std::move(frame);
        return ReadOwnEntries(&directory, &own);
      },
      *model);
}

template <class Kind>
std::string FileBytes(const Kind& model) {
  if (model.Components() == 0) throw BadRequest("a model without components cannot be stored");
  std::ostringstream content;
  WriteContent(model, content);
  return FramedBytes(kModelFile, content.str());
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
