#include <algorithm>
#include <cstdint>
#include <limits>

#include "kalmia/signal/NCTransform.h"

// The stored forms: settings and streams, present and old.

TransformStruct::DerivedStreamableData TransformStruct::MyStreamableData(1, "TS");
NCTransform::DerivedStreamableData NCTransform::MyStreamableData(2, "NCT");

namespace {

/// Bytes that an element takes on a stream of any version, at least.
constexpr int kLeastBytesOfAnElement = 20;

/// The kind as it goes into two bytes.
std::int16_t TwoBytesOf(TransformE::Transform type) {
  using Limits = std::numeric_limits<std::int16_t>;
  const bool fits = type >= Limits::min() && type <= Limits::max();
  return static_cast<std::int16_t>(fits ? type : TransformE::TransformUndefined);
}

}  // namespace

void TransformStruct::Save(ConfigurationSection* section) const {
  section->SetInteger("TransformType", type_);
  section->SetFloatArray("Constants", constants_, kConstants);
}

void TransformStruct::Load(ConfigurationSection* section) {
  TransformStruct loaded = *this;
  loaded.type_ = static_cast<TransformE::Transform>(section->GetInteger("TransformType"));
  section->GetFloatArray("Constants", loaded.constants_, kConstants);
  *this = loaded;
}

std::istream& TransformStruct::OldRead(std::istream& stream) {
  int type = 0;
  float constants[kConstants - 1];
  if (ReadFourBytes(&type, 1, stream) && ReadFourBytes(constants, kConstants - 1, stream)) {
    type_ = static_cast<TransformE::Transform>(type);
    std::copy_n(constants, kConstants - 1, constants_ + 1);
  }
  return stream;
}

bool TransformStruct::VexStreamableWrite(std::ostream& stream) {
  const std::int16_t type = TwoBytesOf(type_);
  OutputStreamDirectory directory(stream, 2);
  WriteTwoBytes(&type, 1, directory.GetOutput(0));
  WriteFourBytes(constants_, kConstants, directory.GetOutput(1));
  directory.Close();
  return stream.good();
}

bool TransformStruct::VexStreamableRead(std::istream& stream) {
  if (!VexStreamableReadBases(stream) || GetVexStreamVersionNumber() != 1) return false;
  InputStreamDirectory directory(stream);
  std::istream* types = directory.GetInput(0);
  std::istream* constants = directory.GetInput(1);
  std::int16_t type = 0;
  float read[kConstants];
  if (!types || !ReadTwoBytes(&type, 1, *types) || !constants) throw VexStreamError("ReadFromStreamDir failed");
  if (!ReadFourBytes(read, kConstants, *constants)) kalmia::ThrowReadError();
  directory.Close();
  type_ = static_cast<TransformE::Transform>(type);
  std::copy_n(read, kConstants, constants_);
  return stream.good();
}

bool NCTransform::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, 1);
  std::ostream& entry = directory.GetOutput(0);
  const int elements = static_cast<int>(transforms_.size());
  WriteFourBytes(&elements, 1, entry);
  for (const TransformStruct& transform : transforms_) entry << transform;
  directory.Close();
  return stream.good();
}

bool NCTransform::VexStreamableRead(std::istream& stream) {
  transforms_.clear();
  if (!VexStreamableReadBases(stream)) return false;
  const short version = GetVexStreamVersionNumber();
  Transforms read;
  const bool done = version == 1 ? ReadTransforms(stream, read) : version == 2 && ReadStreamDirectory(stream, read);
  if (done) transforms_.swap(read);
  return done;
}

bool NCTransform::ReadTransforms(std::istream& stream, Transforms& transforms) {
  int columns = 0;
  if (!ReadFourBytes(&columns, 1, stream) || !kalmia::HasBytesFor(stream, columns, kLeastBytesOfAnElement))
    return false;
  transforms.resize(1);  // the rest as it arrives: the length of a pipe is not known, and its count may lie
  for (int c = 0; c < columns; ++c) {
    int type = 0;
    TransformStruct transform;
    if (!ReadFourBytes(&type, 1, stream) ||
        !ReadFourBytes(transform.GetConstants(), TransformStruct::kConstants, stream))
      return false;
    transform.SetTransform(static_cast<TransformE::Transform>(type));
    transforms.push_back(transform);
  }
  return true;
}

bool NCTransform::ReadStreamDirectory(std::istream& stream, Transforms& transforms) {
  InputStreamDirectory directory(stream);
  std::istream* entry = directory.GetInput(0);
  int elements = 0;
  if (!entry || !ReadFourBytes(&elements, 1, *entry)) return false;
  if (!kalmia::HasBytesFor(*entry, elements, kLeastBytesOfAnElement)) return false;
  transforms.resize(static_cast<std::size_t>(elements));
  for (TransformStruct& transform : transforms)
    if (!(*entry >> transform)) return false;
  directory.Close();
  return stream.good();
}
