// The stream form of NCScale: centres, scales, and one 4-byte type per variable.
#include <istream>
#include <ostream>

#include "kalmia/pcapls/NCScale.h"

NCScale::DerivedStreamableData NCScale::MyStreamableData(2, "NCS");

bool NCScale::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, 3);
  directory.GetOutput(0) << *centres_;
  directory.GetOutput(1) << *scales_;
  WriteFourBytes(types_->data() + 1, variables_, directory.GetOutput(2));
  directory.Close();
  return stream.good();
}

bool NCScale::VexStreamableRead(std::istream& stream) {
  TakeMembersOf(NCScale());
  NCScale read;
  if (!VexStreamableReadBases(stream)) return false;
  const short version = GetVexStreamVersionNumber();
  const bool done = version == 1 ? read.ReadOldLayout(stream) : version == 2 && read.ReadStreamDirectory(stream);
  if (done) TakeMembersOf(read);
  return done;
}

bool NCScale::ReadOldLayout(std::istream& stream) {
  stream >> *centres_ >> *scales_;
  return !stream.fail() && ReadTypes(stream);
}

bool NCScale::ReadStreamDirectory(std::istream& stream) try {
  InputStreamDirectory directory(stream);
  ReadFromStreamDir(*centres_, directory, 0, /*must=*/true);
  ReadFromStreamDir(*scales_, directory, 1, /*must=*/true);
  std::istream* types = directory.GetInput(2);
  const bool done = types && ReadTypes(*types);
  directory.Close();
  return done && !stream.fail();
} catch (const VexStreamError&) {
  return false;
}

bool NCScale::ReadTypes(std::istream& stream) {
  variables_ = centres_->Size();
  if (scales_->Size() != variables_) return false;
  types_->resize(static_cast<std::size_t>(variables_) + 1);
  return ReadFourBytes(types_->data() + 1, variables_, stream);
}

void NCScale::TakeMembersOf(const NCScale& other) {
  centres_ = other.centres_;
  scales_ = other.scales_;
  types_ = other.types_;
  variables_ = other.variables_;
}
