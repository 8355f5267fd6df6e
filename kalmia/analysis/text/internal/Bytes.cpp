#include "kalmia/analysis/text/internal/Bytes.h"

#include <utility>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/MD5.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

void WriteInteger(int value, std::ostream& stream) { WriteFourBytes(&value, 1, stream); }

void WriteDoubles(const std::vector<double>& values, std::ostream& stream) {
  WriteArray(values.data(), static_cast<int>(values.size()), sizeof(double), stream);
}

void WriteNames(const std::vector<std::string>& names, std::ostream& stream) {
  WriteInteger(static_cast<int>(names.size()), stream);
  for (const std::string& name : names) WriteBinaryString(name.c_str(), stream);
}

bool ReadInteger(int* value, std::istream& stream) { return ReadFourBytes(value, 1, stream); }

bool ReadDouble(double* value, std::istream& stream) { return ReadArray(value, 1, sizeof(double), stream); }

bool ReadText(std::string* text, std::istream& stream) {
  CString read;
  if (!ReadBinaryString(read, stream)) return false;
  *text = static_cast<const char*>(read);
  return true;
}

bool ReadNames(std::istream& stream, std::vector<std::string>* names) {
  int count = 0;
  if (!ReadInteger(&count, stream) || count < 0) return false;
  for (int i = 0; i < count; ++i) {
    std::string name;
    if (!ReadText(&name, stream)) return false;
    names->push_back(std::move(name));
  }
  return true;
}

std::string Checksum(std::string_view bytes) {
  MD5 md5;
  md5.Update(bytes.data(), bytes.size());
  md5.Finalize();
  return md5.GetDigest();
}

void RefuseParts(const std::string& name) {
  throw BadFile(name + " is damaged: its parts do not fit together");
}

}  // namespace kalmia::analysis
