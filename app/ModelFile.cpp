#include "app/ModelFile.h"

#include <cstdint>
#include <sstream>
#include <utility>

#include "app/Failure.h"
#include "app/ModelEntries.h"
#include "kalmia/support/MD5.h"

namespace kalmia::app {

namespace {

constexpr std::string_view kMagic = "\x8BKALMIA\n";
constexpr std::size_t kDigits = 32;      ///< of the checksum, in hexadecimals
constexpr int kFirstVersionOfKinds = 2;  ///< before it there was nothing but PLS

std::string Checksum(std::string_view bytes) {
  MD5 md5;
  md5.Update(bytes.data(), bytes.size());
  md5.Finalize();
  return md5.GetDigest();
}

template <class Kind>
void WriteContent(const Kind& model, std::ostream& stream) {
  const ModelFrame& frame = model;
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
  directory.Close();
}

bool ReadGeneral(int version, std::istream* entry, ModelFrame* frame, int* kind) {
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
  ModelFrame frame;
  frame.xScale = std::make_unique<NCScale>();
  int kind = StoredPls::kKind;
  if (!ReadGeneral(version, directory.GetInput(General), &frame, &kind) || !MakeKind(kind, model) ||
      !ReadNames(XNames, &directory, &frame.xNames) || !ReadNames(RowNames, &directory, &frame.rowNames) ||
      !ReadObject(XScaling, &directory, frame.xScale.get())) {
    return false;
  }
  return std::visit(
      [&](auto& own) {
        static_cast<ModelFrame&>(own) = std::move(frame);
        return ReadOwnEntries(&directory, &own);
      },
      *model);
}

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitCode::Files, message); }

template <class Kind>
std::string FileBytes(const Kind& model) {
  std::ostringstream content;
  WriteContent(model, content);
  const std::string bytes = content.str();
  std::ostringstream file;
  file << kMagic;
  WriteInteger(kModelFileVersion, file);
  const auto length = static_cast<std::uint64_t>(bytes.size());
  WriteArray(&length, 1, sizeof(length), file);
  file << Checksum(bytes) << bytes;
  return file.str();
}

}  // namespace

std::string ModelFileBytes(const StoredPls& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredPca& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredOpls& model) { return FileBytes(model); }

std::string ModelFileBytes(const StoredModel& model) {
  return std::visit([](const auto& own) { return FileBytes(own); }, model);
}

StoredModel ReadModelFile(std::string_view bytes, const std::string& name) {
  if (bytes.empty()) Refuse(name + " is empty, no Kalmia model");
  if (bytes.substr(0, kMagic.size()) != kMagic.substr(0, bytes.size())) Refuse(name + " is no Kalmia model");
  std::istringstream header{std::string(bytes.substr(0, kMagic.size() + sizeof(int) + sizeof(std::uint64_t)))};
  header.ignore(static_cast<std::streamsize>(kMagic.size()));
  int version = 0;
  if (!ReadInteger(&version, header)) Refuse(name + " is cut: it ends within its header");
  if (version > kModelFileVersion) {
    Refuse(name + " is a model file of version " + std::to_string(version) + "; this kalmia reads versions up to " +
           std::to_string(kModelFileVersion));
  }
  std::uint64_t length = 0;
  const std::size_t start = kMagic.size() + sizeof(int) + sizeof(length) + kDigits;
  if (!ReadArray(&length, 1, sizeof(length), header) || bytes.size() < start) {
    Refuse(name + " is cut: it ends within its header");
  }
  const std::string_view content = bytes.substr(start);
  if (content.size() < length) {
    Refuse(name + " is cut: " + std::to_string(content.size()) + " of " + std::to_string(length) + " bytes are there");
  }
  const std::string damaged = name + " is damaged: ";
  if (version < 1) Refuse(damaged + "there is no version " + std::to_string(version));
  if (content.size() > length) Refuse(damaged + "it goes on behind its end");
  if (Checksum(content) != bytes.substr(start - kDigits, kDigits)) Refuse(damaged + "its checksum does not match");
  StoredModel model;
  std::istringstream stream{std::string(content)};
  if (!ReadContent(version, stream, &model)) Refuse(damaged + "its parts do not fit together");
  return model;
}

}  // namespace kalmia::app
