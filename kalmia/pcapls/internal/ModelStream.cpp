#include "kalmia/pcapls/internal/ModelStream.h"

#include <istream>
#include <ostream>

#include "kalmia/support/VexStream.h"

namespace kalmia {

namespace {

bool ReadDirectory(std::istream& stream, const ModelFields& fields) try {
  InputStreamDirectory directory(stream);
  unsigned short entry = 0;
  for (NCDataMatrix<float>* matrix : fields.matrices) ReadFromStreamDir(*matrix, directory, entry++, /*must=*/true);
  for (int* number : {fields.maxIterations, fields.iterations})
    ReadFromStreamDir(*number, directory, entry++, /*must=*/true);
  directory.Close();
  return !stream.fail();
} catch (const VexStreamError&) {
  return false;
}

bool ReadOldLayout(std::istream& stream, const ModelFields& fields) {
  for (NCDataMatrix<float>* matrix : fields.matrices) stream >> *matrix;
  return ReadFourBytes(fields.maxIterations, 1, stream) && ReadFourBytes(fields.iterations, 1, stream);
}

}  // namespace

bool WriteModel(std::ostream& stream, const ModelFields& fields) {
  OutputStreamDirectory directory(stream, static_cast<unsigned short>(fields.matrices.size() + 2));
  unsigned short entry = 0;
  for (const NCDataMatrix<float>* matrix : fields.matrices) directory.GetOutput(entry++) << *matrix;
  for (const int* number : {fields.maxIterations, fields.iterations})
    WriteFourBytes(number, 1, directory.GetOutput(entry++));
  directory.Close();
  return stream.good();
}

bool ReadModel(std::istream& stream, short version, const ModelFields& fields) {
  if (version == 1) return ReadOldLayout(stream, fields);
  return version == 2 && ReadDirectory(stream, fields);
}

}  // namespace kalmia
