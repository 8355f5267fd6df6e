#include "kalmia/containers/BoolVector.h"

#include <vector>

BoolVector::DerivedStreamableData BoolVector::MyStreamableData(3, "BoolVector");

BoolVector::BoolVector(const NCIntegralVector<bool, 0>& other) : Persistent(other) {}

bool BoolVector::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, 0);
  directory.Close();
  return stream.good();
}

bool BoolVector::VexStreamableRead(std::istream& stream) {
  const short version = GetVexStreamVersionNumber();
  Clear();
  bool good = version == 1 ? ReadVersion1(stream) : (version == 2 || version == 3) && VexStreamableReadBases(stream);
  if (good && version == 3) {
    InputStreamDirectory directory(stream);
    directory.Close();
    good = !stream.fail();
  }
  if (!good) Clear();
  return good;
}

/// The size and a byte for each flag, any but 0 being true. The part of VexStreamBase in front has no bytes.
bool BoolVector::ReadVersion1(std::istream& stream) {
  int size = 0;
  std::vector<unsigned char> flags;
  if (!VexStreamBase::VexStreamableStartRead(stream)) return false;
  if (!ReadFourBytes(&size, 1, stream) || !kalmia::ReadCells(stream, size, flags)) return false;
  SetNumValues(size, false);
  for (int i = 1; i <= size; ++i) (*this)(i) = flags[static_cast<std::size_t>(i) - 1] != 0;
  return true;
}
