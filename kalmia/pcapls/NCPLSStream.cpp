// The stream form of NCPLS: seven matrices in the order of the members, the limit of rounds and the rounds of the
// newest component.
#include <array>
#include <cstddef>
#include <istream>
#include <ostream>
#include <utility>

#include "kalmia/pcapls/NCPLS.h"

NCPLS::DerivedStreamableData NCPLS::MyStreamableData(2, "NCPLS");

bool NCPLS::VexStreamableStartWrite(std::ostream& stream) { return kalmia::StartWrite(*this, stream); }

bool NCPLS::VexStreamableStartRead(std::istream& stream) { return kalmia::StartRead(*this, stream); }

void NCPLS::VexStreamableReset() {
  streamVisited = false;
  VexStreamBase::VexStreamableReset();
}

bool NCPLS::VexStreamableWriteBases(std::ostream& stream) { return VexStreamBase::VexStreamableStartWrite(stream); }

bool NCPLS::VexStreamableReadBases(std::istream& stream) { return VexStreamBase::VexStreamableStartRead(stream); }

std::array<NCDataMatrix<float>*, 7> NCPLS::Matrices() {
  return {&cprim_, &pprim_, &wprim_, &uprim_, &tprim_, &xResiduals_, &yResiduals_};
}

bool NCPLS::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, 9);
  unsigned short entry = 0;
  for (const NCDataMatrix<float>* matrix : Matrices()) directory.GetOutput(entry++) << *matrix;
  WriteFourBytes(&maxIterations_, 1, directory.GetOutput(7));
  WriteFourBytes(&iterations_, 1, directory.GetOutput(8));
  directory.Close();
  return stream.good();
}

bool NCPLS::VexStreamableRead(std::istream& stream) {
  NCPLS read;
  read.components_ = components_;
  NCPLS().Swap(this);  // so that a failure, and a throw too, leaves an empty model
  if (!VexStreamableReadBases(stream)) return false;
  const short version = GetVexStreamVersionNumber();
  const bool done = version == 1 ? read.ReadOldLayout(stream) : version == 2 && read.ReadStreamDirectory(stream);
  if (!done || !read.ShapesAgree()) return false;
  read.Swap(this);
  return true;
}

bool NCPLS::ReadOldLayout(std::istream& stream) {
  for (NCDataMatrix<float>* matrix : Matrices()) stream >> *matrix;
  components_ = pprim_.SizeRows();
  return ReadFourBytes(&maxIterations_, 1, stream) && ReadFourBytes(&iterations_, 1, stream);
}

bool NCPLS::ReadStreamDirectory(std::istream& stream) try {
  InputStreamDirectory directory(stream);
  unsigned short entry = 0;
  for (NCDataMatrix<float>* matrix : Matrices()) ReadFromStreamDir(*matrix, directory, entry++, /*must=*/true);
  ReadFromStreamDir(maxIterations_, directory, 7, /*must=*/true);
  ReadFromStreamDir(iterations_, directory, 8, /*must=*/true);
  directory.Close();
  return !stream.fail();
} catch (const VexStreamError&) {
  return false;
}

bool NCPLS::ShapesAgree() const {
  const int components = pprim_.SizeRows();
  const int observations = xResiduals_.SizeRows();
  const int xVariables = xResiduals_.SizeColumns();
  const auto has = [](const NCDataMatrix<float>& matrix, int rows, int columns) {
    return matrix.SizeRows() == rows && matrix.SizeColumns() == columns;
  };
  return yResiduals_.SizeRows() == observations && has(cprim_, components, yResiduals_.SizeColumns()) &&
         has(pprim_, components, xVariables) && has(wprim_, components, xVariables) &&
         has(uprim_, components, observations) && has(tprim_, components, observations);
}

void NCPLS::Swap(NCPLS* other) {
  const auto others = other->Matrices();
  std::size_t i = 0;
  for (NCDataMatrix<float>* matrix : Matrices()) matrix->swap(*others[i++]);
  std::swap(components_, other->components_);
  std::swap(maxIterations_, other->maxIterations_);
  std::swap(iterations_, other->iterations_);
  std::swap(xSquares_, other->xSquares_);
}
