// The stream form of NCPCA: loadings, scores and what is left of the table, the limit of rounds and the rounds of the
// newest component.
#include <istream>
#include <ostream>
#include <utility>

#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/pcapls/internal/ModelStream.h"

NCPCA::DerivedStreamableData NCPCA::MyStreamableData(2, "NCPCA");

kalmia::ModelFields NCPCA::Fields() { return {{&pprim_, &tprim_, &residuals_}, &maxIterations_, &iterations_}; }

bool NCPCA::VexStreamableWrite(std::ostream& stream) { return kalmia::WriteModel(stream, Fields()); }

bool NCPCA::VexStreamableRead(std::istream& stream) {
  NCPCA read;
  read.components_ = components_;
  NCPCA().Swap(this);  // so that a failure, and a throw too, leaves an empty model
  if (!VexStreamableReadBases(stream)) return false;
  const short version = GetVexStreamVersionNumber();
  if (!kalmia::ReadModel(stream, version, read.Fields())) return false;
  if (version == 1) read.components_ = read.pprim_.SizeRows();
  if (!read.ShapesAgree()) return false;
  read.Swap(this);
  return true;
}

bool NCPCA::ShapesAgree() const {
  kalmia::CommonSize observations, variables;
  return kalmia::PartsAgree(
      {{&pprim_, &variables}, {&tprim_, &observations}, {&residuals_, &variables, &observations}});
}

void NCPCA::Swap(NCPCA* other) {
  pprim_.swap(other->pprim_);
  tprim_.swap(other->tprim_);
  residuals_.swap(other->residuals_);
  std::swap(components_, other->components_);
  std::swap(maxIterations_, other->maxIterations_);
  std::swap(iterations_, other->iterations_);
}
