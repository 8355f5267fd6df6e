// The entries of a PCA model.

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

void WriteComponent(const PCAComponentRecord& record, std::ostream& stream) {
  WriteInteger(record.significant ? 1 : 0, stream);
  WriteInteger(record.enoughLeft ? 1 : 0, stream);
  WriteInteger(record.iterations, stream);
  WriteDoubles({record.r2x, record.r2xCum, record.q2, record.q2Cum, record.q2Limit}, stream);
}

bool ReadComponent(PCAComponentRecord* record, std::istream& stream) {
  int significant = 0;
  int enoughLeft = 0;
  if (!ReadInteger(&significant, stream) || !ReadInteger(&enoughLeft, stream) ||
      !ReadInteger(&record->iterations, stream)) {
    return false;
  }
  record->kept = true;
  record->significant = significant != 0;
  record->enoughLeft = enoughLeft != 0;
  return ReadDouble(&record->r2x, stream) && ReadDouble(&record->r2xCum, stream) && ReadDouble(&record->q2, stream) &&
         ReadDouble(&record->q2Cum, stream) && ReadDouble(&record->q2Limit, stream);
}

bool ReadComponents(InputStreamDirectory* directory, StoredPCA* model) {
  std::istream* entry = directory->GetInput(Components);
  return entry != nullptr && ReadRecords(*entry, &model->components, ReadComponent);
}

bool ReadQuality(InputStreamDirectory* directory, StoredPCA* model) {
  std::istream* entry = directory->GetInput(Quality);
  return entry != nullptr && ReadDouble(&model->pooledDeviation, *entry);
}

bool Agrees(const StoredPCA& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t n = model.rowNames.size();
  const std::size_t a = model.components.size();
  return k > 0 && n > 0 && a > 0 && static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         HasShape(model.pca->GetPprim(), a, k) && HasShape(model.pca->GetTprim(), a, n) &&
         HasShape(model.pca->GetResiduals(), n, k);
}

}  // namespace

void WriteOwnEntries(const StoredPCA& model, OutputStreamDirectory* directory) {
  directory->GetOutput(Model) << *model.pca;
  std::ostream& components = directory->GetOutput(Components);
  WriteInteger(model.Components(), components);
  for (const PCAComponentRecord& record : model.components) WriteComponent(record, components);
  WriteDoubles({model.pooledDeviation}, directory->GetOutput(Quality));
}

bool ReadOwnEntries(InputStreamDirectory* directory, StoredPCA* model) {
  model->pca = std::make_unique<NCPCA>();
  return ReadObject(Model, directory, model->pca.get()) && ReadComponents(directory, model) &&
         ReadQuality(directory, model) && Agrees(*model);
}

}  // namespace kalmia::analysis
