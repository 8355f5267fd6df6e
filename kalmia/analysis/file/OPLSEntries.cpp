// The entries of an OPLS model.

#include <algorithm>

#include "kalmia/analysis/file/internal/ModelEntries.h"

namespace kalmia::analysis {

namespace {

/// The matrices in their order in the file: those of each block, then those of the orthogonal components, then T.
template <class Matrices, class Action>
bool ForEachMatrix(Matrices& opls, const Action& action) {
  for (auto* blocks : {&opls.w, &opls.p, &opls.c})
    for (auto& matrix : *blocks)
      if (!action(&matrix)) return false;
  for (auto* matrix : {&opls.wo, &opls.po, &opls.co, &opls.to, &opls.t})
    if (!action(matrix)) return false;
  return true;
}

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

bool ReadComponents(InputStreamDirectory* directory, StoredOPLS* model) {
  std::istream* entry = directory->GetInput(Components);
  return entry != nullptr && ReadRecords(*entry, &model->components, ReadComponent);
}

/// The number of blocks stands in front of the matrices. Each of these takes bytes of the stream, so that a lie ends
/// with them.
bool ReadMatrices(InputStreamDirectory* directory, OPLSMatrices* opls) {
  std::istream* entry = directory->GetInput(Model);
  int blocks = 0;
  if (entry == nullptr || !ReadInteger(&blocks, *entry) || !HasBytesFor(*entry, blocks, 3)) return false;
  for (auto* each : {&opls->w, &opls->p, &opls->c}) each->resize(static_cast<std::size_t>(blocks));
  try {
    return ForEachMatrix(*opls, [entry](NCDataMatrix<float>* matrix) { return !(*entry >> *matrix).fail(); });
  } catch (const VexStreamError&) {
    return false;
  }
}

bool Agrees(const StoredOPLS& model) {
  const std::size_t k = model.xNames.size();
  const std::size_t m = model.yNames.size();
  const std::size_t n = model.rowNames.size();
  const OPLSMatrices& opls = model.opls;
  const auto a = static_cast<std::size_t>(model.Predictive());
  const auto o = static_cast<std::size_t>(model.Orthogonal());
  const auto haveShape = [](const std::vector<NCDataMatrix<float>>& blocks, std::size_t rows, std::size_t columns) {
    return std::all_of(blocks.begin(), blocks.end(),
                       [=](const auto& block) { return HasShape(&block, rows, columns); });
  };
  return k > 0 && m > 0 && n > 0 && a > 0 && opls.w.size() == o + 1 && model.components.size() == a + o &&
         static_cast<std::size_t>(model.xScaling.scale->GetVariables()) == k &&
         static_cast<std::size_t>(model.yScaling.scale->GetVariables()) == m && haveShape(opls.w, a, k) &&
         haveShape(opls.p, a, k) && haveShape(opls.c, a, m) && HasRows(opls.wo, o, k) && HasRows(opls.po, o, k) &&
         HasRows(opls.co, o, m) && HasRows(opls.to, o, n) && HasShape(&opls.t, a, n);
}

}  // namespace

void WriteOwnEntries(const StoredOPLS& model, OutputStreamDirectory* directory) {
  WriteNames(model.yNames, directory->GetOutput(YNames));
  directory->GetOutput(YScaling) << *model.yScaling.scale;
  std::ostream& matrices = directory->GetOutput(Model);
  WriteInteger(static_cast<int>(model.opls.w.size()), matrices);
  ForEachMatrix(model.opls, [&matrices](const NCDataMatrix<float>* matrix) { return !(matrices << *matrix).fail(); });
  std::ostream& components = directory->GetOutput(Components);
  WriteInteger(model.Components(), components);
  for (const OPLSComponentRecord& record : model.components) WriteComponent(record, components);
  WriteYQuality(model, directory);
}

bool ReadOwnEntries(InputStreamDirectory* directory, StoredOPLS* model) {
  model->yScaling.scale = std::make_unique<NCScale>();
  return ReadNames(YNames, directory, &model->yNames) && ReadObject(YScaling, directory, model->yScaling.scale.get()) &&
         ReadMatrices(directory, &model->opls) && ReadComponents(directory, model) && ReadYQuality(directory, model) &&
         Agrees(*model);
}

}  // namespace kalmia::analysis
