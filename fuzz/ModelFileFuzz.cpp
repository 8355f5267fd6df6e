// Feeds bytes to the readers of model files, of stored cross-validations and of saved steps, as they are and with a
// length and a checksum that match them, as a forger would write them. What is accepted is written, and reads back to
// the same bytes, and shown; saved steps are applied to a small table, those of a model to new rows.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <variant>

#include "app/console/ExitCode.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/file/OPLSCvFile.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/report/InfoReport.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "tests/analysis/FramedFile.h"

using kalmia::app::ExitCode;
using kalmia::app::ExitCodeOf;
using kalmia::analysis::Failure;
using kalmia::analysis::ModelFileBytes;
using kalmia::analysis::OPLSCvFileBytes;
using kalmia::analysis::ReadModelFile;
using kalmia::analysis::ReadOPLSCvFile;
using kalmia::analysis::Signals;
using kalmia::analysis::StepChain;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

std::string Forged(const std::string& bytes) {
  return bytes.size() < framed::kContentAt ? bytes : framed::Forged(bytes);
}

/// `write` is what turns into bytes again what `read` made of them, once `use` has tried it.
template <class Read, class Write, class Use>
void Feed(const std::string& bytes, const Read& read, const Write& write, const Use& use) try {
  const auto object = read(bytes, "file");
  use(object);
  const std::string written = write(object);
  Require(write(read(written, "again")) == written);
} catch (const Failure& failure) {
  Require(ExitCodeOf(failure) == ExitCode::Files);
}

/// Two rows of the columns that the chain takes, the second with holes.
void FeedTable(const StepChain& chain) try {
  const auto columns = static_cast<int>(chain.inputNames.size());
  Signals signals{"table", {"1", "2"}, chain.inputNames, {}, kalmia::analysis::CellRows(2, columns)};
  for (int c = 1; c <= columns; ++c) {
    signals.cells.Row(0)[c - 1] = c % 5 + 1;
    if (c % 3 != 0) signals.cells.Row(1)[c - 1] = 0.5 * (c % 7);
  }
  ApplyChain(chain, &signals);
  Require(signals.names == OutputNames(chain) &&
          signals.names.size() == static_cast<std::size_t>(signals.cells.Columns()));
  if (EndsCompressed(chain)) RestoreSignals(chain, &signals);
} catch (const Failure& failure) {
  Require(ExitCodeOf(failure) == ExitCode::BadData);
}

/// A table with one column of X, the others missing.
void FeedNewRows(const kalmia::analysis::ModelInfo& model) try {
  const std::string name = model.chain.Empty() ? model.xNames.front() : model.chain.inputNames.front();
  const kalmia::analysis::Table table(kalmia::analysis::CsvField(name) + ",no column of it\n1,2\n3,4\n", "table");
  kalmia::analysis::Notes notes;
  const kalmia::analysis::NewRows rows = ReadNewRows(model, table, "", &notes);
  Require(rows.x.SizeRows() == 2 && static_cast<std::size_t>(rows.x.SizeColumns()) == model.xNames.size());
} catch (const Failure& failure) {
  Require(ExitCodeOf(failure) == ExitCode::BadData);
}

void FeedAll(const std::string& bytes) {
  const auto write = [](const kalmia::analysis::StoredModel& model) { return ModelFileBytes(model); };
  Feed(bytes, ReadModelFile, write, [](const kalmia::analysis::StoredModel& model) {
    Require(!InfoText(model, "file").empty() && !InfoJson(model, "file").empty());
    std::visit([](const kalmia::analysis::ModelInfo& frame) { FeedNewRows(frame); }, model);
  });
  Feed(bytes, ReadOPLSCvFile, OPLSCvFileBytes, [](const kalmia::analysis::StoredOPLSCv&) {});
  Feed(bytes, kalmia::analysis::ReadStepChainFile, kalmia::analysis::StepChainFileBytes, FeedTable);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  FeedAll(bytes);
  FeedAll(Forged(bytes));
  return 0;
}
