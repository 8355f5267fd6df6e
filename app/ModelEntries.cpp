#include "app/ModelEntries.h"

#include <utility>

namespace kalmia::app {

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

void WriteYQuality(const YModelFrame& model, OutputStreamDirectory* directory) {
  std::ostream& quality = directory->GetOutput(Quality);
  WriteDoubles({model.pooledDeviation}, quality);
  for (const YQuality& y : model.quality) {
    WriteInteger(y.rows, quality);
    WriteDoubles({y.rmsee, y.rmsecv}, quality);
  }
}

bool ReadYQuality(InputStreamDirectory* directory, YModelFrame* model) {
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

}  // namespace kalmia::app
