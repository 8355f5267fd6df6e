#include "kalmia/analysis/file/OPLSCvFile.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "kalmia/analysis/file/FileHeader.h"
#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/text/internal/Bytes.h"

namespace kalmia::analysis {

namespace {

constexpr int kSmallestStep = 4;  ///< bytes on a stream, at least

/// The entries of the content, in their order.
enum CvEntry : unsigned short { CvGeneral, CvXNames, CvYNames, CvGroups, CvSteps, CvData, CvEntries };

void WriteSteps(const std::vector<OPLSCvStep>& steps, std::ostream& stream) {
  WriteInteger(static_cast<int>(steps.size()), stream);
  for (const OPLSCvStep& step : steps) {
    WriteFourBytes(&step.q2Cum, 1, stream);
    stream << step.residuals << step.t << step.to;
  }
}

bool ReadSteps(std::istream* entry, std::vector<OPLSCvStep>* steps) try {
  int count = 0;
  if (entry == nullptr || !ReadInteger(&count, *entry) || !HasBytesFor(*entry, count, kSmallestStep)) return false;
  for (int s = 0; s < count; ++s) {
    OPLSCvStep& step = steps->emplace_back();
    if (!ReadFourBytes(&step.q2Cum, 1, *entry) || !(*entry >> step.residuals >> step.t >> step.to)) return false;
  }
  return true;
} catch (const VexStreamError&) {
  return false;
}

bool ReadGeneral(std::istream* entry, StoredOPLSCv* stored) {
  int scaling = 0;
  if (entry == nullptr || !ReadText(&stored->writtenBy, *entry) || !ReadText(&stored->digest, *entry) ||
      !ReadInteger(&scaling, *entry) || !ReadInteger(&stored->rounds, *entry) ||
      !ReadInteger(&stored->state.predictive, *entry)) {
    return false;
  }
  stored->scaling = static_cast<NCScale::Scaling>(scaling);
  return scaling >= NCScale::ScalingNone && scaling <= NCScale::ScalingUnitVariance;
}

/// Whether a step, the first one or a further one, has the shapes that groups and names ask for.
bool Agrees(const OPLSCvStep& step, bool first, const StoredOPLSCv& stored) {
  const auto rows = static_cast<std::size_t>(stored.groups.Size());
  const int components = step.t.SizeRows();
  return HasShape(&step.residuals, rows, stored.yNames.size()) && components >= 1 &&
         components <= stored.state.predictive && static_cast<std::size_t>(step.t.SizeColumns()) == rows &&
         step.to.Size() == (first ? 0 : stored.groups.Size());
}

/// Each round has as many blocks as there are steps. The shapes of its matrices are the library's to check.
bool Agrees(const StoredOPLSCv& stored) {
  const OPLSCvState& state = stored.state;
  const std::vector<OPLSCvStep>& steps = state.steps;
  const auto& rounds = state.data.WMatricesPerRound;
  if (stored.rounds < 2 || stored.rounds > stored.groups.Size() || steps.empty()) return false;
  const auto isGroup = [&stored](int group) { return group >= 0 && group < stored.rounds; };
  if (!std::all_of(stored.groups.begin(), stored.groups.end(), isGroup)) return false;
  for (const OPLSCvStep& step : steps)
    if (!Agrees(step, &step == &steps.front(), stored)) return false;
  return rounds.size() == static_cast<std::size_t>(stored.rounds) &&
         std::all_of(rounds.begin(), rounds.end(), [&steps](const auto& w) { return w.size() == steps.size(); });
}

/// False on bytes that no writing has made.
bool ReadContent(std::istream& stream, StoredOPLSCv* stored) {
  InputStreamDirectory directory(stream);
  if (!ReadGeneral(directory.GetInput(CvGeneral), stored) ||
      !ReadNames(directory.GetInput(CvXNames), &stored->xNames) ||
      !ReadNames(directory.GetInput(CvYNames), &stored->yNames) ||
      !ReadObject(directory.GetInput(CvGroups), &stored->groups) ||
      !ReadSteps(directory.GetInput(CvSteps), &stored->state.steps)) {
    return false;
  }
  std::istream* data = directory.GetInput(CvData);
  return data != nullptr && stored->state.data.ReadObject(*data) && Agrees(*stored);
}

}  // namespace

std::string OPLSCvFileBytes(const StoredOPLSCv& stored) {
  std::ostringstream content;
  OutputStreamDirectory directory(content, CvEntries);
  std::ostream& general = directory.GetOutput(CvGeneral);
  WriteBinaryString(stored.writtenBy.c_str(), general);
  WriteBinaryString(stored.digest.c_str(), general);
  WriteInteger(static_cast<int>(stored.scaling), general);
  WriteInteger(stored.rounds, general);
  WriteInteger(stored.state.predictive, general);
  WriteNames(stored.xNames, directory.GetOutput(CvXNames));
  WriteNames(stored.yNames, directory.GetOutput(CvYNames));
  directory.GetOutput(CvGroups) << stored.groups;
  WriteSteps(stored.state.steps, directory.GetOutput(CvSteps));
  stored.state.data.WriteObject(directory.GetOutput(CvData));
  directory.Close();
  return FramedBytes(kOPLSCvFile, kOPLSCvFile.version, content.str());
}

StoredOPLSCv ReadOPLSCvFile(std::string_view bytes, const std::string& name) {
  const FramedContent content = ReadFrame(kOPLSCvFile, bytes, name);
  StoredOPLSCv stored;
  stored.name = name;
  std::istringstream stream{std::string(content.bytes)};
  if (!ReadContent(stream, &stored)) RefuseParts(name);
  return stored;
}

}  // namespace kalmia::analysis
