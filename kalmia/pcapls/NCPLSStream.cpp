// The stream form of NCPLS: seven matrices in the order of the members, the limit of rounds and the rounds of the
// newest component.
#include <cstddef>
#include <istream>
#include <ostream>
#include <utility>

#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/pcapls/internal/ModelStream.h"

NCPLS::DerivedStreamableData NCPLS::MyStreamableData(2, "NCPLS");

kalmia::ModelFields NCPLS::Fields() {
  return {{&cprim_, &pprim_, &wprim_, &uprim_, &tprim_, &xResiduals_, &yResiduals_}, &maxIterations_, &iterations_};
}

bool NCPLS::VexStreamableWrite(std::ostream& stream) { return kalmia::WriteModel(stream, Fields()); }

bool NCPLS::VexStreamableRead(std::istream& stream) {
  NCPLS read;
  read.components_ = components_;
  NCPLS().Swap(this);  // so that a failure, and a throw too, leaves an empty model
  if (!VexStreamableReadBases(stream)) return false;
  const short version = GetVexStreamVersionNumber();
  if (!kalmia::ReadModel(stream, version, read.Fields())) return false;
  if (version == 1) read.components_ = read.pprim_.SizeRows();
  if (!read.ShapesAgree()) return false;
  read.Swap(this);
  return true;
}

bool NCPLS::ShapesAgree() const {
  kalmia::CommonSize observations, xVariables, yVariables;
  return kalmia::PartsAgree({{&cprim_, &yVariables},
                             {&pprim_, &xVariables},
                             {&wprim_, &xVariables},
                             {&uprim_, &observations},
                             {&tprim_, &observations},
                             {&xResiduals_, &xVariables, &observations},
                             {&yResiduals_, &yVariables, &observations}});
}

void NCPLS::Swap(NCPLS* other) {
  const kalmia::ModelFields mine = Fields();
  const kalmia::ModelFields others = other->Fields();
  for (std::size_t i = 0; i < mine.matrices.size(); ++i) mine.matrices[i]->swap(*others.matrices[i]);
  std::swap(components_, other->components_);
  std::swap(maxIterations_, other->maxIterations_);
  std::swap(iterations_, other->iterations_);
  std::swap(xLengthAtMost_, other->xLengthAtMost_);
}
