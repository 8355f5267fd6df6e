#include "app/StoredModel.h"

#include <cstdint>
#include <sstream>

#include "app/Failure.h"
#include "kalmia/support/MD5.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::app {

namespace {

constexpr std::string_view kMagic = "\x8BKALMIA\n";
constexpr std::size_t kDigits = 32;  ///< of the checksum, in hexadecimals

/// The entries of the content, in their order.
enum Entry : unsigned short {
  General,
  XNames,
  YNames,
  RowNames,
  XScaling,
  YScaling,
  Model,
  Components,
  Quality,
  Entries
};

std::string Checksum(std::string_view bytes) {
  MD5 md5;
  md5.Update(bytes.data(), bytes.size());
  md5.Finalize();
  return md5.GetDigest();
}

void WriteInteger(int value, std::ostream& stream) { WriteFourBytes(&value, 1, stream); }

void WriteDoubles(const std::vector<double>& values, std::ostream& stream) {
  WriteArray(values.data(), static_cast<int>(values.size()), sizeof(double), stream);
}

void WriteNames(const std::vector<std::string>& names, std::ostream& stream) {
  WriteInteger(static_cast<int>(names.size()), stream);
  for (const std::string& name : names) WriteBinaryString(name.c_str(), stream);
}

bool ReadInteger(int* value, std::istream& stream) { return ReadFourBytes(value, 1, stream); }

bool ReadText(std::string* text, std::istream& stream) {
  CString read;
  if (!ReadBinaryString(read, stream)) return false;
  *text = static_cast<const char*>(read);
  return true;
}

bool ReadDouble(double* value, std::istream& stream) { return ReadArray(value, 1, sizeof(double), stream); }

bool ReadNames(std::vector<std::string>* names, std::istream& stream) {
  int count = 0;
  if (!ReadInteger(&count, stream) || count < 0) return false;
  for (int i = 0; i < count; ++i) {
    std::string name;
    if (!ReadText(&name, stream)) return false;
    names->push_back(std::move(name));
  }
  return true;
}

std::vector<double> Numbers(const YShare& share) { return {share.r2, share.r2Cum, share.q2, share.q2Cum}; }

bool ReadShare(YShare* share, std::istream& stream) {
  return ReadDouble(&share->r2, stream) && ReadDouble(&share->r2Cum, stream) && ReadDouble(&share->q2, stream) &&
         ReadDouble(&share->q2Cum, stream);
}

void WriteComponent(const ComponentRecord& record, std::ostream& stream) {
  WriteInteger(record.significant ? 1 : 0, stream);
  WriteInteger(record.iterations, stream);
  WriteDoubles({record.r2x, record.r2xCum, record.q2Limit}, stream);
  WriteDoubles(Numbers(record.y), stream);
  for (const YShare& share : record.perY) WriteDoubles(Numbers(share), stream);
}

bool ReadComponent(ComponentRecord* record, std::size_t yColumns, std::istream& stream) {
  int significant = 0;
  if (!ReadInteger(&significant, stream) || !ReadInteger(&record->iterations, stream)) return false;
  record->kept = true;
  record->significant = significant != 0;
  bool good = ReadDouble(&record->r2x, stream) && ReadDouble(&record->r2xCum, stream) &&
              ReadDouble(&record->q2Limit, stream) && ReadShare(&record->y, stream);
  for (std::size_t j = 0; good && j < yColumns; ++j) {
    record->perY.emplace_back();
    good = ReadShare(&record->perY.back(), stream);
  }
  return good;
}

void WriteContent(const StoredModel& model, std::ostream& stream) {
  OutputStreamDirectory directory(stream, Entries);
  std::ostream& general = directory.GetOutput(General);
  for (const std::string& text : {model.writtenBy, model.table, model.idColumn, model.groupColumn}) {
    WriteBinaryString(text.c_str(), general);
  }
  WriteInteger(model.groups, general);
  WriteInteger(static_cast<int>(model.scaling), general);
  WriteNames(model.xNames, directory.GetOutput(XNames));
  WriteNames(model.yNames, directory.GetOutput(YNames));
  WriteNames(model.rowNames, directory.GetOutput(RowNames));
  directory.GetOutput(XScaling) << *model.xScale;
  directory.GetOutput(YScaling) << *model.yScale;
  directory.GetOutput(Model) << *model.pls;
  std::ostream& components = directory.GetOutput(Components);
  WriteInteger(model.Components(), components);
  for (const ComponentRecord& record : model.components) WriteComponent(record, components);
  std::ostream& quality = directory.GetOutput(Quality);
  WriteDoubles({model.pooledDeviation}, quality);
  for (const YQuality& y : model.quality) {
    WriteInteger(y.rows, quality);
    WriteDoubles({y.rmsee, y.rmsecv}, quality);
  }
  directory.Close();
}

/// Reads the entries of the content. Every operation is false on bytes that no WriteContent has written.
class ContentReader {
 public:
  ContentReader(std::istream& stream, StoredModel* model) : directory_(stream), model_(model) {}

  bool Read() {
    return ReadGeneral() && ReadNameList(XNames, &model_->xNames) && ReadNameList(YNames, &model_->yNames) &&
           ReadNameList(RowNames, &model_->rowNames) && ReadObjects() && ReadComponents() && ReadQuality() && Agrees();
  }

 private:
  bool ReadGeneral() {
    std::istream* entry = directory_.GetInput(General);
    int scaling = 0;
    if (entry == nullptr || !ReadText(&model_->writtenBy, *entry) || !ReadText(&model_->table, *entry) ||
        !ReadText(&model_->idColumn, *entry) || !ReadText(&model_->groupColumn, *entry) ||
        !ReadInteger(&model_->groups, *entry) || !ReadInteger(&scaling, *entry)) {
      return false;
    }
    model_->scaling = static_cast<NCScale::Scaling>(scaling);
    return scaling >= NCScale::ScalingNone && scaling <= NCScale::ScalingUnitVariance;
  }

  bool ReadNameList(Entry entry, std::vector<std::string>* names) {
    std::istream* stream = directory_.GetInput(entry);
    return stream != nullptr && ReadNames(names, *stream);
  }

  bool ReadObjects() {
    model_->xScale = std::make_unique<NCScale>();
    model_->yScale = std::make_unique<NCScale>();
    model_->pls = std::make_unique<NCPLS>();
    return ReadObject(XScaling, model_->xScale.get()) && ReadObject(YScaling, model_->yScale.get()) &&
           ReadObject(Model, model_->pls.get());
  }

  bool ReadObject(Entry entry, VexStreamBase* object) {
    std::istream* stream = directory_.GetInput(entry);
    if (stream == nullptr) return false;
    try {
      return !(*stream >> *object).fail();
    } catch (const VexStreamError&) {
      return false;
    }
  }

  bool ReadComponents() {
    std::istream* entry = directory_.GetInput(Components);
    int count = 0;
    if (entry == nullptr || !ReadInteger(&count, *entry)) return false;
    for (int a = 0; a < count; ++a) {
      model_->components.emplace_back();
      if (!ReadComponent(&model_->components.back(), model_->yNames.size(), *entry)) return false;
    }
    return true;
  }

  bool ReadQuality() {
    std::istream* entry = directory_.GetInput(Quality);
    if (entry == nullptr || !ReadDouble(&model_->pooledDeviation, *entry)) return false;
    for (std::size_t j = 0; j < model_->yNames.size(); ++j) {
      YQuality y;
      if (!ReadInteger(&y.rows, *entry) || !ReadDouble(&y.rmsee, *entry) || !ReadDouble(&y.rmsecv, *entry)) {
        return false;
      }
      model_->quality.push_back(y);
    }
    return true;
  }

  /// Whether the parts belong together: later work relies on their shapes.
  bool Agrees() const {
    const auto k = static_cast<int>(model_->xNames.size());
    const auto m = static_cast<int>(model_->yNames.size());
    const auto n = static_cast<int>(model_->rowNames.size());
    const int a = model_->Components();
    const NCPLS& pls = *model_->pls;
    const auto has = [](const NCDataMatrix<float>* matrix, int rows, int columns) {
      return matrix->SizeRows() == rows && matrix->SizeColumns() == columns;
    };
    return k > 0 && m > 0 && n > 0 && a > 0 && model_->xScale->GetVariables() == k &&
           model_->yScale->GetVariables() == m && has(pls.GetWprim(), a, k) && has(pls.GetPprim(), a, k) &&
           has(pls.GetCprim(), a, m) && has(pls.GetTprim(), a, n) && has(pls.GetUprim(), a, n) &&
           has(pls.GetXResiduals(), n, k) && has(pls.GetYResiduals(), n, m);
  }

  InputStreamDirectory directory_;
  StoredModel* model_;
};

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitCode::Files, message); }

}  // namespace

std::string ModelFileBytes(const StoredModel& model) {
  std::ostringstream content;
  WriteContent(model, content);
  const std::string bytes = content.str();
  std::ostringstream file;
  file << kMagic;
  WriteInteger(kModelFileVersion, file);
  const auto length = static_cast<std::uint64_t>(bytes.size());
  WriteArray(&length, 1, sizeof(length), file);
  file << Checksum(bytes) << bytes;
  return file.str();
}

StoredModel ReadModelFile(std::string_view bytes, const std::string& name) {
  if (bytes.empty()) Refuse(name + " is empty, no Kalmia model");
  if (bytes.substr(0, kMagic.size()) != kMagic.substr(0, bytes.size())) Refuse(name + " is no Kalmia model");
  std::istringstream header{std::string(bytes.substr(0, kMagic.size() + sizeof(int) + sizeof(std::uint64_t)))};
  header.ignore(static_cast<std::streamsize>(kMagic.size()));
  int version = 0;
  if (!ReadInteger(&version, header)) Refuse(name + " is cut: it ends within its header");
  if (version > kModelFileVersion) {
    Refuse(name + " is a model file of version " + std::to_string(version) + "; this kalmia reads versions up to " +
           std::to_string(kModelFileVersion));
  }
  std::uint64_t length = 0;
  const std::size_t start = kMagic.size() + sizeof(int) + sizeof(length) + kDigits;
  if (!ReadArray(&length, 1, sizeof(length), header) || bytes.size() < start) {
    Refuse(name + " is cut: it ends within its header");
  }
  const std::string_view content = bytes.substr(start);
  if (content.size() < length) {
    Refuse(name + " is cut: " + std::to_string(content.size()) + " of " + std::to_string(length) + " bytes are there");
  }
  const std::string damaged = name + " is damaged: ";
  if (version < 1) Refuse(damaged + "there is no version " + std::to_string(version));
  if (content.size() > length) Refuse(damaged + "it goes on behind its end");
  if (Checksum(content) != bytes.substr(start - kDigits, kDigits)) Refuse(damaged + "its checksum does not match");
  StoredModel model;
  std::istringstream stream{std::string(content)};
  if (!ContentReader(stream, &model).Read()) Refuse(damaged + "its parts do not fit together");
  return model;
}

}  // namespace kalmia::app
