// What a file holds of a filter.

#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"

namespace kalmia::analysis {

namespace {

bool ReadComponent(FilterComponentRecord* record, std::istream& stream) {
  return ReadDouble(&record->r2x, stream) && ReadDouble(&record->r2xCum, stream) && ReadDouble(&record->angle, stream);
}

}  // namespace

void WriteModel(const StoredFilter& model, std::ostream& stream) { WriteMatrices({&model.w, &model.p}, stream); }

bool ReadModel(std::istream& stream, StoredFilter* model) { return ReadMatrices({&model->w, &model->p}, stream); }

bool ReadOldModel(std::istream& stream, StoredFilter* model) {
  NCYOrthogonalPLS filter;
  if (!ReadObject(&stream, &filter)) return false;
  model->w = *filter.GetWprim();
  model->p = *filter.GetPprim();
  model->t = *filter.GetTprim();
  model->xResiduals = *filter.GetXResiduals();
  return true;
}

void WriteComponents(const StoredFilter& model, std::ostream& stream) {
  WriteInteger(model.Components(), stream);
  for (const FilterComponentRecord& record : model.components) {
    WriteDoubles({record.r2x, record.r2xCum, record.angle}, stream);
  }
}

bool ReadComponents(std::istream& stream, StoredFilter* model) {
  return ReadRecords(stream, &model->components, ReadComponent);
}

void WriteScores(const StoredFilter& model, std::ostream& stream) { WriteMatrices({&model.t}, stream); }

bool ReadScores(std::istream& stream, StoredFilter* model) {
  return ReadMatrices({&model->t}, stream) && HasShape(&model->t, model->components.size(), model->rows);
}

bool HasScores(const StoredFilter& model) {
  return model.t.SizeRows() == model.Components();
}

std::vector<NCDataMatrix<float>> ResidualsOf(const StoredFilter& model) { return {model.xResiduals}; }

bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredFilter* model) {
  if (residuals.size() != 1 || !HasShape(&residuals[0], model->rows, model->xNames.size())) return false;
  model->xResiduals = residuals[0];
  return true;
}

bool Agrees(const StoredFilter& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t a = model.components.size();
  return k > 0 && model.rows > 0 && a > 0 && model.chain.Empty() &&
         static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k && HasShape(&model.p, a, k) &&
         HasShape(&model.w, a, k) && HasShapeOrNoRows(model.t, a, model.rows) &&
         HasShapeOrNoRows(model.xResiduals, model.rows, k);
}

}  // namespace kalmia::analysis
