#include "kalmia/analysis/file/StepChainFile.h"

#include <sstream>

#include "kalmia/analysis/file/FileHeader.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

namespace {

constexpr int kSmallestStep = 16;  ///< bytes of a step, at least

void WriteStep(const LearntStep& learnt, std::ostream& stream) {
  WriteInteger(static_cast<int>(learnt.step.kind), stream);
  WriteInteger(static_cast<int>(learnt.step.parameters.size()), stream);
  WriteDoubles(learnt.step.parameters, stream);
  WriteFourBytes(&learnt.spacing, 1, stream);
  WriteInteger(static_cast<int>(learnt.positions.size()), stream);
  for (const int position : learnt.positions) WriteInteger(position, stream);
}

/// The count of items that follow, if the stream can hold so many.
bool ReadCount(int* count, int bytesOfItem, std::istream& stream) {
  return ReadInteger(count, stream) && *count >= 0 && HasBytesFor(stream, *count, bytesOfItem);
}

bool ReadStep(LearntStep* learnt, std::istream& stream) {
  int kind = 0;
  int count = 0;
  if (!ReadInteger(&kind, stream) || !ReadCount(&count, sizeof(double), stream)) return false;
  learnt->step.kind = static_cast<StepKind>(kind);
  learnt->step.parameters.resize(static_cast<std::size_t>(count));
  for (double& parameter : learnt->step.parameters) {
    if (!ReadDouble(&parameter, stream)) return false;
  }
  if (!ReadFourBytes(&learnt->spacing, 1, stream) || !ReadCount(&count, sizeof(int), stream)) return false;
  learnt->positions.resize(static_cast<std::size_t>(count));
  for (int& position : learnt->positions) {
    if (!ReadInteger(&position, stream)) return false;
  }
  return true;
}

}  // namespace

void WriteStepChain(const StepChain& chain, std::ostream& stream) {
  WriteNames(chain.inputNames, stream);
  WriteInteger(static_cast<int>(chain.steps.size()), stream);
  for (const LearntStep& step : chain.steps) WriteStep(step, stream);
}

bool ReadStepChain(std::istream& stream, StepChain* chain) {
  int count = 0;
  if (!ReadNames(stream, &chain->inputNames) || !ReadCount(&count, kSmallestStep, stream)) return false;
  chain->steps.resize(static_cast<std::size_t>(count));
  for (LearntStep& step : chain->steps) {
    if (!ReadStep(&step, stream)) return false;
  }
  if (stream.peek() != std::istream::traits_type::eof()) return false;
  return chain->Empty() ? chain->inputNames.empty() : IsConsistent(*chain);
}

std::string StepChainFileBytes(const StepChain& chain) {
  std::ostringstream content;
  WriteStepChain(chain, content);
  return FramedBytes(kStepsFile, kStepsFile.version, content.str());
}

StepChain ReadStepChainFile(std::string_view bytes, const std::string& name) {
  const FramedContent content = ReadFrame(kStepsFile, bytes, name);
  StepChain chain;
  std::istringstream stream{std::string(content.bytes)};
  if (!ReadStepChain(stream, &chain) || chain.Empty()) RefuseParts(name);
  return chain;
}

GivenSteps ReadStepsFile(std::string_view bytes, const std::string& name) {
  GivenSteps file;
  file.name = name;
  if (EndWithinMagic(bytes)) {
    throw BadFile(name + " is not a steps file: it is cut after " + Counted(bytes.size(), "byte"));
  }
  if (KindOfBytes(bytes) != nullptr) {  // no text: a chain, or a file to be refused by what it is
    file.chain = ReadStepChainFile(bytes, name);
  } else {
    file.steps = ParseSteps(std::string(bytes), name);
  }
  return file;
}

}  // namespace kalmia::analysis
