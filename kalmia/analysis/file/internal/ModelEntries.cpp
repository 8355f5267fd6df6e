#include "kalmia/analysis/file/internal/ModelEntries.h"

#include <utility>

namespace kalmia::analysis {

bool ReadNames(unsigned short entry, InputStreamDirectory* directory, std::vector<std::string>* names) {
  std::istream* stream = directory->GetInput(entry);
  return stream != nullptr && ReadNames(*stream, names);
}

bool ReadObject(unsigned short entry, InputStreamDirectory* directory, VexStreamBase* object) {
  std::istream* stream = directory->GetInput(entry);
  if (stream == nullptr) return false;
  try {
    return !(*stream >> *object).fail();
  } catch (const VexStreamError&) {
    return false;
  }
}

void WriteYQuality(const YModelInfo& model, OutputStreamDirectory* directory) {
  std::ostream& quality = directory->GetOutput(Quality);
  WriteDoubles({model.pooledDeviation}, quality);
  for (const YQuality& y : model.quality) {
    WriteInteger(y.rows, quality);
    WriteDoubles({y.rmsee, y.rmsecv}, quality);
  }
}

bool ReadYQuality(InputStreamDirectory* directory, YModelInfo* model) {
  std::istream* entry = directory->GetInput(Quality);
  if (entry == nullptr || !ReadDouble(&model->pooledDeviation, *entry)) return false;
  for (std::size_t j = 0; j < model->yNames.size(); ++j) {
    YQuality y;
    if (!ReadInteger(&y.rows, *entry) || !ReadDouble(&y.rmsee, *entry) || !ReadDouble(&y.rmsecv, *entry)) return false;
    model->quality.push_back(y);
  }
  return true;
}

bool HasShape(const NCDataMatrix<float>* matrix, std::size_t rows, std::size_t columns) {
  return static_cast<std::size_t>(matrix->SizeRows()) == rows &&
         static_cast<std::size_t>(matrix->SizeColumns()) == columns;
}

bool HasRows(const NCDataMatrix<float>& matrix, std::size_t rows, std::size_t columns) {
  return rows == 0 ? matrix.SizeRows() == 0 : HasShape(&matrix, rows, columns);
}

}  // namespace kalmia::analysis
