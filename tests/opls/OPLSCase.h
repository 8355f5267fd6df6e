#pragma once

#include <string>
#include <vector>

#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "pcapls/RelatedTables.h"

/// A model of the tables with this many orthogonal components.
NCOPLS FittedOPLS(const Tables& tables, int predictive, int orthogonal, int maxIterations = 200);

/// A model's prediction of X with all of its orthogonal components.
NCOPLSPred PredictedBy(NCOPLS* model, const NCDataMatrix<float>& X);

/// A validation of models of the tables with this many orthogonal components.
OPLSCrossValidation Validated(const Tables& tables, int predictive, int rounds, int orthogonal,
                              NCIntegralVector<int, -99>* groups = nullptr);

/// The sum over the rows a of T of T[a] P[a]', N x K, cell by cell in float.
NCDataMatrix<float> PartOf(const NCDataMatrix<float>& T, const NCDataMatrix<float>& P);

/// All that a model, a prediction or a validation tells, for comparisons to the bit.
std::string Everything(const NCOPLS& model);
std::string Everything(NCOPLSPred& prediction);
std::string Everything(OPLSCrossValidation& validation);
std::string Everything(const OPLSCrossvalidationData& data);
/// Without SSYcvOriginal, which a resumed validation does not have.
std::string EverythingButTrainingSS(OPLSCrossValidation& validation);

/// The streams of matrices one behind the other.
std::string StreamOfEach(const std::vector<NCDataMatrix<float>>& matrices);

/// |a - b| over all cells relative to |b|; infinite where the holes differ.
double RelativeGapOf(const NCDataMatrix<float>& a, const NCDataMatrix<float>& b);
