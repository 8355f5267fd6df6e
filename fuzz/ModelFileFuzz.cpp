// Feeds bytes to the readers of model files, of stored cross-validations and of saved steps, as they are and with a
// length and a checksum that match them, as a forger would write them; and to the reader of steps as text. What is
// accepted is written, and reads back to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "app/Failure.h"
#include "app/ModelFile.h"
#include "app/OplsCvFile.h"
#include "app/StepChainFile.h"
#include "app/Steps.h"
#include "kalmia/support/MD5.h"

using kalmia::app::ModelFileBytes;
using kalmia::app::OplsCvFileBytes;
using kalmia::app::ReadModelFile;
using kalmia::app::ReadOplsCvFile;

namespace {

constexpr std::size_t kLengthAt = 12, kChecksumAt = 20, kContentAt = 52;

void Require(bool holds) {
  if (!holds) std::abort();
}

std::string Forged(std::string bytes) {
  if (bytes.size() < kContentAt) return bytes;
  const std::uint64_t length = bytes.size() - kContentAt;
  for (std::size_t i = 0; i < sizeof length; ++i) bytes[kLengthAt + i] = static_cast<char>(length >> (8 * i) & 0xFF);
  MD5 md5;
  md5.Update(bytes.data() + kContentAt, length);
  md5.Finalize();
  return bytes.replace(kChecksumAt, kContentAt - kChecksumAt, md5.GetDigest());
}

/// `write` is what turns into bytes again what `read` made of them.
template <class Read, class Write>
void Feed(const std::string& bytes, const Read& read, const Write& write) try {
  const std::string written = write(read(bytes, "file"));
  Require(write(read(written, "again")) == written);
} catch (const kalmia::app::Failure& failure) {
  Require(failure.Code() == kalmia::app::ExitCode::Files);
}

/// Steps as text: those that are read have a text of their own, which stands for the same steps.
void FeedSteps(const std::string& text) try {
  std::string canonical;
  for (const kalmia::app::Step& step : kalmia::app::ParseSteps(text, "text")) {
    Require(kalmia::app::IsValid(step));
    canonical += kalmia::app::StepText(step) + "\n";
  }
  std::string again;
  for (const kalmia::app::Step& step : kalmia::app::ParseSteps(canonical, "again")) {
    again += kalmia::app::StepText(step) + "\n";
  }
  Require(again == canonical);
} catch (const kalmia::app::Failure& failure) {
  Require(failure.Code() == kalmia::app::ExitCode::Usage);
}

void FeedAll(const std::string& bytes) {
  Feed(bytes, ReadModelFile, [](const kalmia::app::StoredModel& model) { return ModelFileBytes(model); });
  Feed(bytes, ReadOplsCvFile, OplsCvFileBytes);
  Feed(bytes, kalmia::app::ReadStepChainFile, kalmia::app::StepChainFileBytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  FeedAll(bytes);
  FeedAll(Forged(bytes));
  FeedSteps(bytes);
  return 0;
}
