#include <cstdint>
#include <cstring>

#include "kalmia/support/VexStream.h"

namespace {

bool WriteMagic(std::ostream& stream, std::uint16_t version, const char* magic) {
  return WriteBinaryString(magic, stream) && WriteTwoBytes(&version, 1, stream);
}

/// Compares before it reads on, so that the stream never decides how much memory a magic takes.
bool CheckMagic(std::istream& stream, std::uint16_t& version, const char* magic) {
  std::vector<char> expected(magic, magic + std::strlen(magic)), found(expected.size());
  const int length = static_cast<int>(expected.size());
  int foundLength = 0;
  if (!ReadFourBytes(&foundLength, 1, stream) || foundLength != length) return false;
  if (!ReadBytes(found.data(), length, stream) || found != expected) return false;
  std::uint16_t foundVersion = 0;
  if (!ReadTwoBytes(&foundVersion, 1, stream)) return false;
  version = foundVersion;
  return true;
}

}  // namespace

VexStreamError::VexStreamError() : Exception("") {}

VexStreamError::VexStreamError(const CString& message) : Exception(message) {}

void kalmia::ThrowReadError() { throw VexStreamError("Error when reading from stream"); }

VexStreamBase::~VexStreamBase() = default;

bool VexStreamBase::VexStreamableStartWrite(std::ostream&) { return true; }
bool VexStreamBase::VexStreamableStartRead(std::istream&) { return true; }
void VexStreamBase::VexStreamableReset() {}

std::ostream& operator<<(std::ostream& stream, const VexStreamBase& object) {
  // Writing changes nothing of an object but its mark of having been visited, which every class declares mutable.
  VexStreamBase& visited = const_cast<VexStreamBase&>(object);
  visited.VexStreamableReset();
  if (!visited.VexStreamableStartWrite(stream)) stream.setstate(std::ios_base::failbit);
  return stream;
}

std::istream& operator>>(std::istream& stream, VexStreamBase& object) {
  object.VexStreamableReset();
  if (!object.VexStreamableStartRead(stream)) stream.setstate(std::ios_base::failbit);
  return stream;
}

VexStreamableData::VexStreamableData(short version, const char* magic) : version_(version), magic_(magic) {}

bool VexStreamableData::Write(std::ostream& stream) const {
  return WriteMagic(stream, static_cast<std::uint16_t>(version_), magic_.c_str());
}

bool VexStreamableData::Check(std::istream& stream) {
  std::uint16_t version = 0;
  if (!CheckMagic(stream, version, magic_.c_str())) return false;
  versionRead_ = static_cast<short>(version);
  return true;
}

bool VexStreamLight::WriteMagicStringAndVersionNumber(std::ostream& stream, unsigned short version, const char* magic) {
  return WriteMagic(stream, version, magic);
}

bool VexStreamLight::CheckMagicStringAndVersionNumber(std::istream& stream, unsigned short& version,
                                                      const char* magic) {
  return CheckMagic(stream, version, magic);
}
