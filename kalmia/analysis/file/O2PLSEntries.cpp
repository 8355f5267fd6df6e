// The entries of an O2PLS model, and the model turned around.

#include <algorithm>
#include <utility>

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

/// The matrices in their order in the file: predictive ones, those of components unique to X, then to Y, then the inner
/// relations.
template <class Matrices, class Action>
bool ForEachMatrix(Matrices& m, const Action& action) {
  const auto all = {&m.t,  &m.u,  &m.p,  &m.w, &m.c,  &m.q,  &m.to, &m.wo,
                    &m.po, &m.s,  &m.uo, &m.co, &m.qo, &m.r, &m.lambda, &m.xLambda};
  return std::all_of(all.begin(), all.end(), action);
}

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

bool ReadComponents(InputStreamDirectory* directory, StoredO2PLS* model) {
  std::istream* entry = directory->GetInput(Components);
  return entry != nullptr && ReadText(&model->yTable, *entry) &&
         ReadRecords(*entry, &model->components, ReadComponent);
}

bool ReadMatrices(InputStreamDirectory* directory, O2PLSMatrices* o2pls) {
  std::istream* entry = directory->GetInput(Model);
  if (entry == nullptr) return false;
  try {
    return ForEachMatrix(*o2pls, [entry](NCDataMatrix<float>* matrix) { return !(*entry >> *matrix).fail(); });
  } catch (const VexStreamError&) {
    return false;
  }
}

bool ReadDeviations(InputStreamDirectory* directory, StoredO2PLS* model) {
  std::istream* entry = directory->GetInput(Quality);
  return entry != nullptr && ReadDouble(&model->pooledDeviation, *entry) &&
         ReadDouble(&model->yPooledDeviation, *entry);
}

/// As many components of each kind as the matrices have, in the order of the kinds.
bool HasComponents(const StoredO2PLS& model) {
  std::vector<O2PLSComponentRecord::Kind> kinds(static_cast<std::size_t>(model.Joint()), O2PLSComponentRecord::Joint);
  kinds.insert(kinds.end(), static_cast<std::size_t>(model.XUnique()), O2PLSComponentRecord::XUnique);
  kinds.insert(kinds.end(), static_cast<std::size_t>(model.YUnique()), O2PLSComponentRecord::YUnique);
  return std::equal(kinds.begin(), kinds.end(), model.components.begin(), model.components.end(),
                    [](auto kind, const auto& record) { return kind == record.kind; });
}

bool Agrees(const StoredO2PLS& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t m = model.yNames.size();
  const std::size_t n = model.rowNames.size();
  const O2PLSMatrices& o = model.o2pls;
  const auto a = static_cast<std::size_t>(model.Joint());
  const auto ox = static_cast<std::size_t>(model.XUnique());
  const auto oy = static_cast<std::size_t>(model.YUnique());
  return k > 0 && m > 0 && n > 0 && a > 0 && model.chain.Empty() && HasComponents(model) &&
         static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(model.yScaling.scale->GetVariables()) == m && HasShape(&o.t, a, n) &&
         HasShape(&o.u, a, n) && HasShape(&o.p, a, k) && HasShape(&o.w, a, k) && HasShape(&o.c, a, m) && HasShape(&o.q, a, m) &&
         HasRows(o.to, ox, n) && HasRows(o.wo, ox, k) && HasRows(o.po, ox, k) && HasRows(o.s, ox, m) &&
         HasRows(o.uo, oy, n) && HasRows(o.co, oy, m) && HasRows(o.qo, oy, m) && HasRows(o.r, oy, k) &&
         HasShape(&o.lambda, a, a) && HasShape(&o.xLambda, a, a);
}

}  // namespace

void WriteOwnEntries(const StoredO2PLS& model, OutputStreamDirectory* directory) {
  WriteNames(model.yNames, directory->GetOutput(YNames));
  directory->GetOutput(YScaling) << *model.yScaling.scale;
  std::ostream& matrices = directory->GetOutput(Model);
  ForEachMatrix(model.o2pls, [&matrices](const NCDataMatrix<float>* matrix) { return !(matrices << *matrix).fail(); });
  std::ostream& components = directory->GetOutput(Components);
  WriteBinaryString(model.yTable.c_str(), components);
  WriteInteger(static_cast<int>(model.components.size()), components);
  for (const O2PLSComponentRecord& record : model.components) WriteComponent(record, components);
  WriteDoubles({model.pooledDeviation, model.yPooledDeviation}, directory->GetOutput(Quality));
}

bool ReadOwnEntries(InputStreamDirectory* directory, StoredO2PLS* model) {
  model->yScaling.scale = std::make_unique<NCScale>();
  return ReadNames(YNames, directory, &model->yNames) && ReadObject(YScaling, directory, model->yScaling.scale.get()) &&
         ReadMatrices(directory, &model->o2pls) && ReadComponents(directory, model) &&
         ReadDeviations(directory, model) && Agrees(*model);
}

void TurnAround(StoredO2PLS* model) {
  O2PLSMatrices& o = model->o2pls;
  std::swap(model->table, model->yTable);
  std::swap(model->xNames, model->yNames);
  std::swap(model->xScaling, model->yScaling);
  std::swap(model->pooledDeviation, model->yPooledDeviation);
  for (const auto& [x, y] : {std::make_pair(&o.t, &o.u), std::make_pair(&o.p, &o.q), std::make_pair(&o.w, &o.c),
                             std::make_pair(&o.to, &o.uo), std::make_pair(&o.wo, &o.co), std::make_pair(&o.po, &o.qo),
                             std::make_pair(&o.s, &o.r), std::make_pair(&o.lambda, &o.xLambda)}) {
    std::swap(*x, *y);
  }
  model->inputBlock = model->inputBlock == "X" ? "Y" : "X";
}

}  // namespace kalmia::analysis
