// The stream form of NCYOrthogonalPLS: a directory of four matrices, the scores of Y and their inverse where they are
// known, the number of components and the limit of rounds. Version 1 has the same one after the other, with a flag
// before each of the two that may be absent.
#include <istream>
#include <memory>
#include <ostream>

#include "kalmia/o2pls/NCYOrthogonalPLS.h"

namespace {

using OwnedMatrix = std::unique_ptr<NCDataMatrix<float>>;

constexpr unsigned short kEntries = 8;

OwnedMatrix ReadIfThere(InputStreamDirectory* directory, unsigned short entry) {
  if (!directory->GetInput(entry)) return nullptr;
  auto matrix = std::make_unique<NCDataMatrix<float>>();
  ReadFromStreamDir(*matrix, *directory, entry, /*must=*/true);
  return matrix;
}

bool ReadBehindFlag(std::istream& stream, OwnedMatrix* matrix) {
  short isThere = 0;
  if (!ReadTwoBytes(&isThere, 1, stream)) return false;
  if (isThere == 0) return true;
  *matrix = std::make_unique<NCDataMatrix<float>>();
  return static_cast<bool>(stream >> **matrix);
}

}  // namespace

NCYOrthogonalPLS::DerivedStreamableData NCYOrthogonalPLS::MyStreamableData(2, "YOPLS");

bool NCYOrthogonalPLS::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, kEntries);
  const NCDataMatrix<float>* const matrices[] = {&pprim_,      &wprim_,        &tprim_,
                                                 &xResiduals_, yScores_.get(), yScoresInverse_.get()};
  unsigned short entry = 0;
  for (const NCDataMatrix<float>* matrix : matrices) {
    if (matrix) directory.GetOutput(entry) << *matrix;
    ++entry;
  }
  for (const int* number : {&components_, &maxIterations_}) WriteFourBytes(number, 1, directory.GetOutput(entry++));
  directory.Close();
  return stream.good();
}

bool NCYOrthogonalPLS::VexStreamableRead(std::istream& stream) {
  NCYOrthogonalPLS read, empty;
  read.maxPLSComponents_ = maxPLSComponents_;
  Swap(&empty);  // so that a failure, and a throw too, leaves an empty model
  if (!VexStreamableReadBases(stream)) return false;
  read.y_.reset();
  const short version = GetVexStreamVersionNumber();
  if (version != 1 && version != 2) return false;
  if (!(version == 1 ? read.ReadOldLayout(stream) : read.ReadStreamDirectory(stream))) return false;
  if (!read.PartsAgree()) return false;
  Swap(&read);
  return true;
}

bool NCYOrthogonalPLS::ReadStreamDirectory(std::istream& stream) try {
  InputStreamDirectory directory(stream);
  unsigned short entry = 0;
  for (NCDataMatrix<float>* matrix : {&pprim_, &wprim_, &tprim_, &xResiduals_})
    ReadFromStreamDir(*matrix, directory, entry++, /*must=*/true);
  yScores_ = ReadIfThere(&directory, entry++);
  yScoresInverse_ = ReadIfThere(&directory, entry++);
  for (int* number : {&components_, &maxIterations_}) ReadFromStreamDir(*number, directory, entry++, /*must=*/true);
  directory.Close();
  return !stream.fail();
} catch (const VexStreamError&) {
  return false;
}

bool NCYOrthogonalPLS::ReadOldLayout(std::istream& stream) {
  for (NCDataMatrix<float>* matrix : {&pprim_, &wprim_, &tprim_, &xResiduals_})
    if (!(stream >> *matrix)) return false;
  return ReadBehindFlag(stream, &yScores_) && ReadBehindFlag(stream, &yScoresInverse_) &&
         ReadFourBytes(&components_, 1, stream) && ReadFourBytes(&maxIterations_, 1, stream);
}

bool NCYOrthogonalPLS::PartsAgree() const {
  const int observations = xResiduals_.SizeRows();
  const int variables = xResiduals_.SizeColumns();
  const auto has = [](const NCDataMatrix<float>& matrix, int rows, int columns) {
    return matrix.SizeRows() == rows && matrix.SizeColumns() == columns;
  };
  if (!has(pprim_, components_, variables) || !has(wprim_, components_, variables) ||
      !has(tprim_, components_, observations))
    return false;
  if (!yScores_ || !yScoresInverse_) return !yScores_ && !yScoresInverse_;
  const int ofY = yScores_->SizeColumns();
  return has(*yScores_, observations, ofY) && has(*yScoresInverse_, ofY, ofY);
}
