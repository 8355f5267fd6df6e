// The entries of a PLS model.

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

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

bool ReadComponents(InputStreamDirectory* directory, StoredPLS* model) {
  std::istream* entry = directory->GetInput(Components);
  const auto read = [model](ComponentRecord* record, std::istream& stream) {
    return ReadComponent(record, model->yNames.size(), stream);
  };
  return entry != nullptr && ReadRecords(*entry, &model->components, read);
}

bool Agrees(const StoredPLS& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t m = model.yNames.size();
  const std::size_t n = model.rowNames.size();
  const std::size_t a = model.components.size();
  const NCPLS& pls = *model.pls;
  return k > 0 && m > 0 && n > 0 && static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(model.yScaling.scale->GetVariables()) == m && HasRows(*pls.GetWprim(), a, k) &&
         HasRows(*pls.GetPprim(), a, k) && HasRows(*pls.GetCprim(), a, m) && HasRows(*pls.GetTprim(), a, n) &&
         HasRows(*pls.GetUprim(), a, n) && HasShape(pls.GetXResiduals(), n, k) && HasShape(pls.GetYResiduals(), n, m);
}

}  // namespace

void WriteOwnEntries(const StoredPLS& model, OutputStreamDirectory* directory) {
  WriteNames(model.yNames, directory->GetOutput(YNames));
  directory->GetOutput(YScaling) << *model.yScaling.scale;
  directory->GetOutput(Model) << *model.pls;
  std::ostream& components = directory->GetOutput(Components);
  WriteInteger(model.Components(), components);
  for (const ComponentRecord& record : model.components) WriteComponent(record, components);
  WriteYQuality(model, directory);
}

bool ReadOwnEntries(InputStreamDirectory* directory, StoredPLS* model) {
  model->yScaling.scale = std::make_unique<NCScale>();
  model->pls = std::make_unique<NCPLS>();
  return ReadNames(YNames, directory, &model->yNames) && ReadObject(YScaling, directory, model->yScaling.scale.get()) &&
         ReadObject(Model, directory, model->pls.get()) && ReadComponents(directory, model) &&
         ReadYQuality(directory, model) && Agrees(*model);
}

}  // namespace kalmia::analysis
