#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/opls/OPLSCrossvalidationData.h"
#include "kalmia/pcapls/NCScale.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What cross-validation said of the model with one more component. N rows, M Y columns.
struct OPLSCvStep {
  float q2Cum = 0.0F;
  NCDataMatrix<float> residuals;  ///< of Y, scaled, N x M
  NCDataMatrix<float> t;          ///< predictive scores of rows left out, components by N
  NCDataVector<float> to;         ///< the newest orthogonal ones, N; empty in the first step
};

/// How far a cross-validation of an OPLS model has come: the first step is that of the predictive block, each other one
/// that of one more orthogonal component.
struct OPLSCvState {
  int predictive = 0;             ///< size of the block
  OPLSCrossvalidationData data;   ///< what it goes on from
  std::vector<OPLSCvStep> steps;  ///< never empty in a file
};

/// A cross-validation with what tells whether it belongs to a table and a way of judging.
struct StoredOPLSCv {
  std::string name;       ///< how messages call the file that it was read from
  std::string writtenBy;  ///< version of the command
  std::string digest;     ///< of the table
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
  std::vector<std::string> xNames;
  std::vector<std::string> yNames;
  NCIntegralVector<int, -99> groups;  ///< of each row, from 0
  int rounds = 0;
  OPLSCvState state;
};

/// Fills all but name and state.
KALMIA_EXPORT void DescribeTable(const ModelData& data, NCScale::Scaling scaling, StoredOPLSCv* stored);

/// Throws BadData where the cross-validation was made of another table, after other steps, with other groups
/// or other scaling.
KALMIA_EXPORT void RequireSameTable(const StoredOPLSCv& stored, const ModelData& data, NCScale::Scaling scaling);

}  // namespace kalmia::analysis
