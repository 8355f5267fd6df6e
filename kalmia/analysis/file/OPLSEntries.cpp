// What a file holds of an OPLS model.

#include <algorithm>

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

void WriteComponent(const OPLSComponentRecord& record, std::ostream& stream) {
  WriteInteger(record.orthogonal ? 1 : 0, stream);
  WriteInteger(record.significant ? 1 : 0, stream);
  WriteDoubles({record.r2x, record.r2y, record.q2, record.q2Cum, record.q2Limit}, stream);
}

bool ReadComponent(OPLSComponentRecord* record, std::istream& stream) {
  int orthogonal = 0;
  int significant = 0;
  if (!ReadInteger(&orthogonal, stream) || !ReadInteger(&significant, stream)) return false;
  record->orthogonal = orthogonal != 0;
  record->significant = significant != 0;
  record->kept = true;
  return ReadDouble(&record->r2x, stream) && ReadDouble(&record->r2y, stream) && ReadDouble(&record->q2, stream) &&
         ReadDouble(&record->q2Cum, stream) && ReadDouble(&record->q2Limit, stream);
}

/// W, P and C of each block, then those of the orthogonal components.
template <class List, class Matrices>
List MatricesOf(Matrices& opls) {
  List list;
  for (auto* blocks : {&opls.w, &opls.p, &opls.c}) {
    for (auto& matrix : *blocks) list.push_back(&matrix);
  }
  for (auto* matrix : {&opls.wo, &opls.po, &opls.co}) list.push_back(matrix);
  return list;
}

/// The number of blocks stands in front of the matrices. Each of these takes bytes of the stream, so that a lie ends
/// with them.
bool ReadBlocks(std::istream& stream, OPLSMatrices* opls) {
  int blocks = 0;
  if (!ReadInteger(&blocks, stream) || !HasBytesFor(stream, blocks, 3)) return false;
  for (auto* each : {&opls->w, &opls->p, &opls->c}) each->resize(static_cast<std::size_t>(blocks));
  return ReadMatrices(MatricesOf<Matrices>(*opls), stream);
}

}  // namespace

void WriteModel(const StoredOPLS& model, std::ostream& stream) {
  const OPLSMatrices none;
  const OPLSMatrices& opls = model.Components() == 0 ? none : model.opls;
  WriteInteger(static_cast<int>(opls.w.size()), stream);
  WriteMatrices(MatricesOf<ConstMatrices>(opls), stream);
}

bool ReadModel(std::istream& stream, StoredOPLS* model) { return ReadBlocks(stream, &model->opls); }

bool ReadOldModel(std::istream& stream, StoredOPLS* model) {
  return ReadBlocks(stream, &model->opls) && ReadScores(stream, model);
}

void WriteComponents(const StoredOPLS& model, std::ostream& stream) {
  WriteInteger(model.Components(), stream);
  for (const OPLSComponentRecord& record : model.components) WriteComponent(record, stream);
}

bool ReadComponents(std::istream& stream, StoredOPLS* model) {
  return ReadRecords(stream, &model->components, ReadComponent);
}

void WriteScores(const StoredOPLS& model, std::ostream& stream) {
  WriteMatrices({&model.opls.to, &model.opls.t}, stream);
}

bool ReadScores(std::istream& stream, StoredOPLS* model) {
  OPLSMatrices& opls = model->opls;
  return ReadMatrices({&opls.to, &opls.t}, stream) &&
         HasRows(opls.to, static_cast<std::size_t>(model->Orthogonal()), model->rows) &&
         HasRows(opls.t, static_cast<std::size_t>(model->Predictive()), model->rows);
}

bool HasScores(const StoredOPLS& model) {
  return model.opls.t.SizeRows() == model.Predictive() && model.opls.to.SizeRows() == model.Orthogonal();
}

std::vector<NCDataMatrix<float>> ResidualsOf(const StoredOPLS& model) {
  if (model.Components() == 0) return {};
  if (model.xResiduals.SizeRows() > 0) return {model.xResiduals};
  const OPLSMatrices& opls = model.opls;
  return {LeftOf(model.trainingX, model.xScaling, {{&opls.to, &opls.po}, {&opls.t, &opls.p.back()}})};
}

bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredOPLS* model) {
  if (residuals.size() != 1 || !HasShape(&residuals[0], model->rows, model->xNames.size())) return false;
  model->xResiduals = residuals[0];
  return true;
}

bool Agrees(const StoredOPLS& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t m = model.yNames.size();
  const OPLSMatrices& opls = model.opls;
  const auto a = static_cast<std::size_t>(model.Predictive());
  const auto o = static_cast<std::size_t>(model.Orthogonal());
  const auto haveShape = [](const std::vector<NCDataMatrix<float>>& blocks, std::size_t rows, std::size_t columns) {
    return std::all_of(blocks.begin(), blocks.end(),
                       [=](const auto& block) { return HasShape(&block, rows, columns); });
  };
  const bool isMean = opls.w.empty() && o == 0;
  return k > 0 && m > 0 && model.rows > 0 && (isMean || (a > 0 && opls.w.size() == o + 1)) &&
         model.components.size() == a + o && static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(model.yScaling.scale->GetVariables()) == m && haveShape(opls.w, a, k) &&
         haveShape(opls.p, a, k) && haveShape(opls.c, a, m) && HasRows(opls.wo, o, k) && HasRows(opls.po, o, k) &&
         HasRows(opls.co, o, m) && HasShapeOrNoRows(opls.to, o, model.rows) &&
         HasShapeOrNoRows(opls.t, a, model.rows);
}

}  // namespace kalmia::analysis
