// The entries of a filter.

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

bool ReadComponent(FilterComponentRecord* record, std::istream& stream) {
  return ReadDouble(&record->r2x, stream) && ReadDouble(&record->r2xCum, stream) && ReadDouble(&record->angle, stream);
}

bool ReadComponents(InputStreamDirectory* directory, StoredFilter* filter) {
  std::istream* entry = directory->GetInput(Components);
  return entry != nullptr && ReadRecords(*entry, &filter->components, ReadComponent);
}

bool Agrees(const StoredFilter& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t n = model.rowNames.size();
  const std::size_t a = model.components.size();
  const NCYOrthogonalPLS& filter = *model.filter;
  return k > 0 && n > 0 && a > 0 && model.chain.Empty() &&
         static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(filter.GetComponents()) == a && HasShape(filter.GetPprim(), a, k) &&
         HasShape(filter.GetWprim(), a, k) && HasShape(filter.GetTprim(), a, n) &&
         HasShape(filter.GetXResiduals(), n, k);
}

}  // namespace

void WriteOwnEntries(const StoredFilter& model, OutputStreamDirectory* directory) {
  WriteNames(model.yNames, directory->GetOutput(YNames));
  directory->GetOutput(Model) << *model.filter;
  std::ostream& components = directory->GetOutput(Components);
  WriteInteger(model.Components(), components);
  for (const FilterComponentRecord& record : model.components) {
    WriteDoubles({record.r2x, record.r2xCum, record.angle}, components);
  }
}

bool ReadOwnEntries(InputStreamDirectory* directory, StoredFilter* model) {
  model->filter = std::make_unique<NCYOrthogonalPLS>();
  return ReadNames(YNames, directory, &model->yNames) && ReadObject(Model, directory, model->filter.get()) &&
         ReadComponents(directory, model) && Agrees(*model);
}

}  // namespace kalmia::analysis
