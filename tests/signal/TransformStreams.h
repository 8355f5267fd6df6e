#pragma once

#include <sstream>
#include <string>

#include "signal/Transforms.h"

// Streams of transformations, and what becomes of a reading.

inline TransformStruct Power() { return TransformOf(TransformE::TransformPower, 2, 3, 4, 1); }

/// A TransformStruct of this version with the kind if bit 0 of `entries` is set, so many constants if bit 1 is.
inline std::string StructStream(unsigned short entries, short version = 1, int constants = 4, int typeBytes = 2) {
  std::ostringstream stream;
  VexStreamableData(version, "TS").Write(stream);
  OutputStreamDirectory directory(stream, 2);
  const short type = TransformE::TransformLog;
  const float numbers[] = {1, 2, 3, 4};
  if (entries & 1) WriteBytes(&type, typeBytes, directory.GetOutput(0));
  if (entries & 2) WriteFourBytes(numbers, constants, directory.GetOutput(1));
  directory.Close();
  return stream.str();
}

/// What a reading of these bytes throws; "" if nothing.
template <class Object>
std::string ErrorOf(const std::string& bytes, Object& object) try {
  std::istringstream stream(bytes);
  stream >> object;
  return "";
} catch (const VexStreamError& error) {
  return static_cast<const char*>(error.GetMessage());
}
