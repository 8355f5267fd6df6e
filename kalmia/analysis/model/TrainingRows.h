#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What the training rows of a model did while they were left out, as full refits tell it, all of the model's number of
/// components. Empty where no row ever was left out.
struct LeftOutFigures {
  RealMatrix squaredErrors;       ///< N x M, in the units of the table; not a number where a cell does not count
  RealMatrix predicted;           ///< N x M; not a number where a row could not be predicted
  std::vector<double> distances;  ///< those of all repeats; not a number where a row has none
};

// Fill what a fitted model says of its training rows, and what it will judge new ones by: its rowTerms and
// rowStatistics. `rows` is what the model says of them (PredictRows, ScoreRows); `measured` the Y columns in the units
// of the table, a hole not a number. The model has its scaling, components and pooled deviation. Without squared errors
// and for classes there are no intervals, without distances of left-out rows no limit for new ones but that of training
// rows widened. T2 and the moments are of the scores that the fit gave the rows; those of OPLS are of predictive and
// orthogonal components together. O2PLS has no T2: its limits are for the distance to the block that it predicts from.

KALMIA_EXPORT void DescribeRows(const std::vector<RowPrediction>& rows,
                                const std::vector<std::vector<double>>& measured, const LeftOutFigures& leftOut,
                                StoredPLS* model);
KALMIA_EXPORT void DescribeRows(const std::vector<RowPrediction>& rows,
                                const std::vector<std::vector<double>>& measured, const LeftOutFigures& leftOut,
                                StoredOPLS* model);
KALMIA_EXPORT void DescribeRows(const std::vector<RowPrediction>& rows,
                                const std::vector<std::vector<double>>& measured, const LeftOutFigures& leftOut,
                                StoredO2PLS* model);
KALMIA_EXPORT void DescribeRows(const std::vector<RowScores>& rows, const LeftOutFigures& leftOut, StoredPCA* model);

/// The scores that the fit gave the training rows, N x A, which DescribeRows takes T2 of, in the order of RowFit::t;
/// not numbers where they are missing. N is `rows` of the model.
KALMIA_EXPORT RealMatrix TrainingScores(const StoredPLS& model);
KALMIA_EXPORT RealMatrix TrainingScores(const StoredPCA& model);
KALMIA_EXPORT RealMatrix TrainingScores(const StoredOPLS& model);

/// The normalised distances of the training rows; none where the model has no row statistics.
KALMIA_EXPORT std::vector<double> TrainingDistances(const ModelInfo& model);

/// Says what the limits of a model of `components` components rest on, where it is less than it could be: few rows
/// (each counts once, however often it was left out), or no row that was left out by a full refit; then also what else
/// is `missing` for want of refits.
KALMIA_EXPORT void NoteLimits(const ModelInfo& model, int components, Notes* notes, const std::string& missing = "");

}  // namespace kalmia::analysis
