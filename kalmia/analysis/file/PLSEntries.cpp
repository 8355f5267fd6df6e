// What a file holds of a PLS model.

#include <algorithm>
#include <memory>

#include "kalmia/analysis/file/internal/ModelEntries.h"
#include "kalmia/analysis/model/Prediction.h"

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

/// The model of these matrices; with scores and residuals where these have rows.
std::unique_ptr<NCPLS> Assembled(const NCPLS& model, const NCDataMatrix<float>& t, const NCDataMatrix<float>& x,
                                 const NCDataMatrix<float>& y) {
  const NCDataMatrix<float> none;
  return std::make_unique<NCPLS>(&x, &y, model.GetCprim(), model.GetPprim(), model.GetWprim(), &none, &t,
                                 kMaxIterations);
}

}  // namespace

void WriteModel(const StoredPLS& model, std::ostream& stream) {
  const NCDataMatrix<float> none;
  if (model.Components() == 0) {
    WriteMatrices({&none, &none, &none}, stream);
  } else {
    WriteMatrices({model.pls->GetWprim(), model.pls->GetPprim(), model.pls->GetCprim()}, stream);
  }
}

bool ReadModel(std::istream& stream, StoredPLS* model) {
  NCDataMatrix<float> w, p, c;
  if (!ReadMatrices({&w, &p, &c}, stream)) return false;
  const NCDataMatrix<float> none;
  model->pls = std::make_unique<NCPLS>(&none, &none, &c, &p, &w, &none, &none, kMaxIterations);
  return true;
}

bool ReadOldModel(std::istream& stream, StoredPLS* model) {
  model->pls = std::make_unique<NCPLS>();
  return ReadObject(&stream, model->pls.get());
}

void WriteComponents(const StoredPLS& model, std::ostream& stream) {
  WriteInteger(model.Components(), stream);
  for (const ComponentRecord& record : model.components) WriteComponent(record, stream);
}

bool ReadComponents(std::istream& stream, StoredPLS* model) {
  const auto read = [model](ComponentRecord* record, std::istream& from) {
    return ReadComponent(record, model->yNames.size(), from);
  };
  return ReadRecords(stream, &model->components, read);
}

void WriteScores(const StoredPLS& model, std::ostream& stream) {
  const NCDataMatrix<float> none;
  WriteMatrices({model.Components() == 0 ? &none : model.pls->GetTprim()}, stream);
}

bool ReadScores(std::istream& stream, StoredPLS* model) {
  NCDataMatrix<float> t;
  if (!ReadMatrices({&t}, stream) || !HasRows(t, model->components.size(), model->rows)) return false;
  model->pls = Assembled(*model->pls, t, {}, {});
  return true;
}

bool HasScores(const StoredPLS& model) {
  return model.Components() == 0 || model.pls->GetTprim()->SizeRows() == model.Components();
}

std::vector<NCDataMatrix<float>> ResidualsOf(const StoredPLS& model) {
  if (model.Components() == 0) return {};
  return {*model.pls->GetXResiduals(), *model.pls->GetYResiduals()};
}

bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredPLS* model) {
  if (residuals.size() != 2 || !HasShape(&residuals[0], model->rows, model->xNames.size()) ||
      !HasShape(&residuals[1], model->rows, model->yNames.size())) {
    return false;
  }
  const NCDataMatrix<float> t = *model->pls->GetTprim();
  model->pls = Assembled(*model->pls, t, residuals[0], residuals[1]);
  return true;
}

bool Agrees(const StoredPLS& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t m = model.yNames.size();
  const std::size_t a = model.components.size();
  const NCPLS& pls = *model.pls;
  return k > 0 && m > 0 && model.rows > 0 && static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(model.yScaling.scale->GetVariables()) == m && HasRows(*pls.GetWprim(), a, k) &&
         HasRows(*pls.GetPprim(), a, k) && HasRows(*pls.GetCprim(), a, m) &&
         HasShapeOrNoRows(*pls.GetTprim(), a, model.rows) &&
         HasShapeOrNoRows(*pls.GetXResiduals(), model.rows, k) &&
         HasShapeOrNoRows(*pls.GetYResiduals(), model.rows, m);
}

}  // namespace kalmia::analysis
