#include "kalmia/analysis/file/internal/ModelFrame.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <unordered_set>

#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/text/internal/Bytes.h"

namespace kalmia::analysis {

namespace {

/// Whether all of the names are there.
bool Contains(const std::vector<std::string>& there, const std::vector<std::string>& names) {
  const std::unordered_set<std::string> set(there.begin(), there.end());
  return std::all_of(names.begin(), names.end(), [&set](const std::string& name) { return set.count(name) > 0; });
}

bool ReadShifts(std::istream& entry, ColumnScaling* scaling) {
  int count = 0;
  if (!ReadInteger(&count, entry) || (count != 0 && count != scaling->scale->GetVariables())) return false;
  scaling->shifts.resize(static_cast<std::size_t>(count));
  const auto read = [&entry](double& shift) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    return ReadDouble(&shift, entry) && std::fabs(shift) <= kLargest;
  };
  const auto isOne = [](double shift) { return shift != 0.0; };
  return std::all_of(scaling->shifts.begin(), scaling->shifts.end(), read) &&
         (count == 0 || std::any_of(scaling->shifts.begin(), scaling->shifts.end(), isOne));
}

}  // namespace

bool ReadSources(std::istream& entry, ModelInfo* model) {
  return ReadText(&model->writtenBy, entry) && ReadText(&model->table, entry) && ReadText(&model->idColumn, entry);
}

bool ReadBlockOfY(std::istream* names, std::istream* scaling, YModelInfo* model) {
  model->yScaling.scale = std::make_unique<NCScale>();
  return ReadNames(names, &model->yNames) && ReadObject(scaling, model->yScaling.scale.get());
}
bool ReadBlockOfY(std::istream* /*names*/, std::istream* /*scaling*/, StoredPCA* /*model*/) { return true; }
bool ReadBlockOfY(std::istream* names, std::istream* /*scaling*/, StoredFilter* model) {
  return ReadNames(names, &model->yNames);
}

bool ReadDeviations(std::istream* entry, ModelInfo* model) {
  return entry != nullptr && ReadDouble(&model->pooledDeviation, *entry);
}
bool ReadDeviations(std::istream* entry, StoredO2PLS* model) {
  return entry != nullptr && ReadDouble(&model->pooledDeviation, *entry) &&
         ReadDouble(&model->yPooledDeviation, *entry);
}

bool ReadScaling(std::istream& stream, NCScale::Scaling* scaling) {
  int read = 0;
  if (!ReadInteger(&read, stream) || read < NCScale::ScalingNone || read > NCScale::ScalingUnitVariance) return false;
  *scaling = static_cast<NCScale::Scaling>(read);
  return true;
}

bool ReadChain(std::istream& stream, ModelInfo* model) {
  if (!ReadStepChain(stream, &model->chain)) return false;
  return model->chain.Empty() || Contains(OutputNames(model->chain), model->xNames);
}

void WriteShifts(const std::vector<ColumnScaling*>& blocks, std::ostream& entry) {
  for (const ColumnScaling* scaling : blocks) {
    WriteInteger(static_cast<int>(scaling->shifts.size()), entry);
    WriteDoubles(scaling->shifts, entry);
  }
}

bool ReadShifts(std::istream& entry, const std::vector<ColumnScaling*>& blocks) {
  bool any = false;
  for (ColumnScaling* scaling : blocks) {
    if (!ReadShifts(entry, scaling)) return false;
    any |= !scaling->shifts.empty();
  }
  return any && entry.peek() == std::istream::traits_type::eof();
}

}  // namespace kalmia::analysis
