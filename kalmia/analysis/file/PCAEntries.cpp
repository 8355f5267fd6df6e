// What a file holds of a PCA model.

#include <memory>

#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/model/Prediction.h"

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

}  // namespace

void WriteModel(const StoredPCA& model, std::ostream& stream) {
  const NCDataMatrix<float> none;
  WriteMatrices({model.Components() == 0 ? &none : model.pca->GetPprim()}, stream);
}

bool ReadModel(std::istream& stream, StoredPCA* model) {
  NCDataMatrix<float> p;
  if (!ReadMatrices({&p}, stream)) return false;
  const NCDataMatrix<float> none;
  model->pca = std::make_unique<NCPCA>(&none, &p, &none, kMaxIterations);
  return true;
}

bool ReadOldModel(std::istream& stream, StoredPCA* model) {
  model->pca = std::make_unique<NCPCA>();
  return ReadObject(&stream, model->pca.get());
}

void WriteComponents(const StoredPCA& model, std::ostream& stream) {
  WriteInteger(model.Components(), stream);
  for (const PCAComponentRecord& record : model.components) WriteComponent(record, stream);
}

bool ReadComponents(std::istream& stream, StoredPCA* model) {
  return ReadRecords(stream, &model->components, ReadComponent);
}

void WriteScores(const StoredPCA& model, std::ostream& stream) {
  const NCDataMatrix<float> none;
  WriteMatrices({model.Components() == 0 ? &none : model.pca->GetTprim()}, stream);
}

bool ReadScores(std::istream& stream, StoredPCA* model) {
  NCDataMatrix<float> t;
  if (!ReadMatrices({&t}, stream) || !HasRows(t, model->components.size(), model->rows)) return false;
  const NCDataMatrix<float> none, p = *model->pca->GetPprim();
  model->pca = std::make_unique<NCPCA>(&none, &p, &t, kMaxIterations);
  return true;
}

bool HasScores(const StoredPCA& model) {
  return model.Components() == 0 || model.pca->GetTprim()->SizeRows() == model.Components();
}

std::vector<NCDataMatrix<float>> ResidualsOf(const StoredPCA& model) {
  if (model.Components() == 0) return {};
  return {*model.pca->GetResiduals()};
}

bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredPCA* model) {
  if (residuals.size() != 1 || !HasShape(&residuals[0], model->rows, model->xNames.size())) return false;
  const NCDataMatrix<float> p = *model->pca->GetPprim(), t = *model->pca->GetTprim();
  model->pca = std::make_unique<NCPCA>(&residuals[0], &p, &t, kMaxIterations);
  return true;
}

bool Agrees(const StoredPCA& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t a = model.components.size();
  return k > 0 && model.rows > 0 && static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         HasRows(*model.pca->GetPprim(), a, k) && HasShapeOrNoRows(*model.pca->GetTprim(), a, model.rows) &&
         HasShapeOrNoRows(*model.pca->GetResiduals(), model.rows, k);
}

}  // namespace kalmia::analysis
