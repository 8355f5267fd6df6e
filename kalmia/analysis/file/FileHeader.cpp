#include "kalmia/analysis/file/FileHeader.h"

#include <cstdint>
#include <sstream>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/Bytes.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kDigits = 32;  ///< of the checksum, in hexadecimals

[[noreturn]] void Refuse(const std::string& message) { throw BadFile(message); }

bool HasMagicOf(const FileKind& kind, std::string_view bytes) {
  return bytes.substr(0, kind.magic.size()) == kind.magic;
}

}  // namespace

const FileKind* KindOfBytes(std::string_view bytes) {
  for (const FileKind* kind : {&kModelFile, &kStepsFile, &kOPLSCvFile}) {
    if (HasMagicOf(*kind, bytes)) return kind;
  }
  return nullptr;
}

bool EndWithinMagic(std::string_view bytes) {
  for (const FileKind* kind : {&kModelFile, &kStepsFile, &kOPLSCvFile}) {
    const bool isBeginning = bytes.size() < kind->magic.size() && kind->magic.substr(0, bytes.size()) == bytes;
    if (isBeginning && !bytes.empty()) return true;
  }
  return false;
}

std::string FramedBytes(const FileKind& kind, int version, const std::string& content) {
  std::ostringstream file;
  file << kind.magic;
  WriteInteger(version, file);
  const auto length = static_cast<std::uint64_t>(content.size());
  WriteArray(&length, 1, sizeof(length), file);
  file << Checksum(content) << content;
  return file.str();
}

FramedContent ReadFrame(const FileKind& kind, std::string_view bytes, const std::string& name) {
  const std::string_view magic = kind.magic;
  if (bytes.empty()) Refuse(name + " is empty, no " + std::string(kind.content));
  if (bytes.substr(0, magic.size()) != magic.substr(0, bytes.size())) {
    const FileKind* other = KindOfBytes(bytes);
    const std::string is = other == nullptr ? " is" : " is a " + std::string(other->nameOfKind) + ",";
    Refuse(name + is + " no " + std::string(kind.content));
  }
  std::istringstream header{std::string(bytes.substr(0, magic.size() + sizeof(int) + sizeof(std::uint64_t)))};
  header.ignore(static_cast<std::streamsize>(magic.size()));
  int version = 0;
  if (!ReadInteger(&version, header)) Refuse(name + " is cut: it ends within its header");
  if (version > kind.version) {
    Refuse(name + " is a " + std::string(kind.nameOfKind) + " of version " + std::to_string(version) +
           "; this kalmia reads versions up to " + std::to_string(kind.version));
  }
  std::uint64_t length = 0;
  const std::size_t start = magic.size() + sizeof(int) + sizeof(length) + kDigits;
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
  return {version, content};
}

}  // namespace kalmia::analysis
