// What a file holds of an O2PLS model, and the model turned around.

#include <algorithm>
#include <utility>

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

void WriteComponent(const O2PLSComponentRecord& record, std::ostream& stream) {
  WriteInteger(static_cast<int>(record.kind), stream);
  WriteInteger(static_cast<int>(record.verdict), stream);
  WriteDoubles({record.r2x, record.r2y, record.q2, record.q2Limit}, stream);
}

bool ReadComponent(O2PLSComponentRecord* record, std::istream& stream) {
  int kind = 0;
  int verdict = 0;
  if (!ReadInteger(&kind, stream) || !ReadInteger(&verdict, stream) || kind < O2PLSComponentRecord::Joint ||
      kind > O2PLSComponentRecord::YUnique || verdict < SignificanceE::R1 || verdict > SignificanceE::NB1) {
    return false;
  }
  record->kind = static_cast<O2PLSComponentRecord::Kind>(kind);
  record->verdict = static_cast<SignificanceE::Significance>(verdict);
  record->kept = true;
  return ReadDouble(&record->r2x, stream) && ReadDouble(&record->r2y, stream) && ReadDouble(&record->q2, stream) &&
         ReadDouble(&record->q2Limit, stream);
}

/// As many components of each kind as the matrices have, in the order of the kinds.
bool HasComponents(const StoredO2PLS& model) {
  std::vector<O2PLSComponentRecord::Kind> kinds(static_cast<std::size_t>(model.Joint()), O2PLSComponentRecord::Joint);
  kinds.insert(kinds.end(), static_cast<std::size_t>(model.XUnique()), O2PLSComponentRecord::XUnique);
  kinds.insert(kinds.end(), static_cast<std::size_t>(model.YUnique()), O2PLSComponentRecord::YUnique);
  return std::equal(kinds.begin(), kinds.end(), model.components.begin(), model.components.end(),
                    [](auto kind, const auto& record) { return kind == record.kind; });
}

/// Predictive matrices, those of components unique to X, then to Y, then the inner relations.
template <class List, class Matrices>
List MatricesOf(Matrices& m) {
  return {&m.p, &m.w, &m.c, &m.q, &m.wo, &m.po, &m.s, &m.co, &m.qo, &m.r, &m.lambda, &m.xLambda};
}

}  // namespace

void WriteModel(const StoredO2PLS& model, std::ostream& stream) {
  WriteMatrices(MatricesOf<ConstMatrices>(model.o2pls), stream);
}

bool ReadModel(std::istream& stream, StoredO2PLS* model) {
  return ReadMatrices(MatricesOf<Matrices>(model->o2pls), stream);
}

bool ReadOldModel(std::istream& stream, StoredO2PLS* model) {
  O2PLSMatrices& m = model->o2pls;
  return ReadMatrices({&m.t, &m.u, &m.p, &m.w, &m.c, &m.q, &m.to, &m.wo, &m.po, &m.s, &m.uo, &m.co, &m.qo, &m.r,
                       &m.lambda, &m.xLambda},
                      stream);
}

void WriteComponents(const StoredO2PLS& model, std::ostream& stream) {
  WriteInteger(static_cast<int>(model.components.size()), stream);
  for (const O2PLSComponentRecord& record : model.components) WriteComponent(record, stream);
}

bool ReadComponents(std::istream& stream, StoredO2PLS* model) {
  return ReadRecords(stream, &model->components, ReadComponent);
}

void WriteScores(const StoredO2PLS& model, std::ostream& stream) {
  const O2PLSMatrices& m = model.o2pls;
  WriteMatrices({&m.t, &m.u, &m.to, &m.uo}, stream);
}

bool ReadScores(std::istream& stream, StoredO2PLS* model) {
  O2PLSMatrices& m = model->o2pls;
  return ReadMatrices({&m.t, &m.u, &m.to, &m.uo}, stream) &&
         HasRows(m.t, static_cast<std::size_t>(model->Joint()), model->rows) &&
         HasRows(m.u, static_cast<std::size_t>(model->Joint()), model->rows) &&
         HasRows(m.to, static_cast<std::size_t>(model->XUnique()), model->rows) &&
         HasRows(m.uo, static_cast<std::size_t>(model->YUnique()), model->rows);
}

bool HasScores(const StoredO2PLS& model) {
  return model.o2pls.t.SizeRows() == model.Joint() && model.o2pls.u.SizeRows() == model.Joint() &&
         model.o2pls.to.SizeRows() == model.XUnique() && model.o2pls.uo.SizeRows() == model.YUnique();
}

std::vector<NCDataMatrix<float>> ResidualsOf(const StoredO2PLS& model) {
  if (model.xResiduals.SizeRows() > 0) return {model.xResiduals, model.yResiduals};
  const O2PLSMatrices& o = model.o2pls;
  return {LeftOf(model.trainingX, model.xScaling, {{&o.to, &o.po}, {&o.t, &o.p}}),
          LeftOf(model.trainingY, model.yScaling, {{&o.uo, &o.qo}, {&o.u, &o.q}})};
}

bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredO2PLS* model) {
  if (residuals.size() != 2 || !HasShape(&residuals[0], model->rows, model->xNames.size()) ||
      !HasShape(&residuals[1], model->rows, model->yNames.size())) {
    return false;
  }
  model->xResiduals = residuals[0];
  model->yResiduals = residuals[1];
  return true;
}

bool Agrees(const StoredO2PLS& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t m = model.yNames.size();
  const std::size_t n = model.rows;
  const O2PLSMatrices& o = model.o2pls;
  const auto a = static_cast<std::size_t>(model.Joint());
  const auto ox = static_cast<std::size_t>(model.XUnique());
  const auto oy = static_cast<std::size_t>(model.YUnique());
  return k > 0 && m > 0 && n > 0 && a > 0 && model.chain.Empty() && HasComponents(model) &&
         static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(model.yScaling.scale->GetVariables()) == m && HasShape(&o.p, a, k) &&
         HasShape(&o.w, a, k) && HasShape(&o.c, a, m) && HasShape(&o.q, a, m) && HasRows(o.wo, ox, k) &&
         HasRows(o.po, ox, k) && HasRows(o.s, ox, m) && HasRows(o.co, oy, m) && HasRows(o.qo, oy, m) &&
         HasRows(o.r, oy, k) && HasShape(&o.lambda, a, a) && HasShape(&o.xLambda, a, a) &&
         HasShapeOrNoRows(o.t, a, n) && HasShapeOrNoRows(o.u, a, n) && HasShapeOrNoRows(o.to, ox, n) &&
         HasShapeOrNoRows(o.uo, oy, n);
}

void TurnAround(StoredO2PLS* model) {
  O2PLSMatrices& o = model->o2pls;
  std::swap(model->table, model->yTable);
  std::swap(model->xNames, model->yNames);
  std::swap(model->xScaling, model->yScaling);
  std::swap(model->pooledDeviation, model->yPooledDeviation);
  std::swap(model->rowTerms, model->yRowTerms);
  std::swap(model->rowStatistics, model->yRowStatistics);
  std::swap(model->trainingX, model->trainingY);
  std::swap(model->xResiduals, model->yResiduals);
  for (const auto& [x, y] : {std::make_pair(&o.t, &o.u), std::make_pair(&o.p, &o.q), std::make_pair(&o.w, &o.c),
                             std::make_pair(&o.to, &o.uo), std::make_pair(&o.wo, &o.co), std::make_pair(&o.po, &o.qo),
                             std::make_pair(&o.s, &o.r), std::make_pair(&o.lambda, &o.xLambda)}) {
    std::swap(*x, *y);
  }
  model->inputBlock = model->inputBlock == "X" ? "Y" : "X";
}

}  // namespace kalmia::analysis
