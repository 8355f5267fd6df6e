#include "kalmia/analysis/model/TrainingRows.h"

#include <cmath>
#include <cstddef>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kFewRows = 10;  ///< fewer rows than these make a limit a guess

/// Components in rows below each other become columns beside each other; a missing score is not a number.
RealMatrix Turned(const std::vector<const NCDataMatrix<float>*>& tPrims, std::size_t rows) {
  std::size_t components = 0;
  for (const NCDataMatrix<float>* tPrim : tPrims) components += static_cast<std::size_t>(tPrim->SizeRows());
  RealMatrix scores(rows, components);
  std::size_t column = 0;
  for (const NCDataMatrix<float>* tPrim : tPrims) {
    for (int a = 1; a <= tPrim->SizeRows(); ++a, ++column) {
      for (std::size_t i = 0; i < rows; ++i) {
        const float score = (*tPrim)[a][static_cast<int>(i) + 1];
        scores(i, column) = score == kMissingCell<float> ? kNotANumber : score;
      }
    }
  }
  return scores;
}

RealMatrix ScoresOf(const StoredPLS& model, std::size_t rows) {
  if (model.Components() == 0) return RealMatrix(rows, 0);
  return Turned({model.pls->GetTprim()}, rows);
}

RealMatrix ScoresOf(const StoredPCA& model, std::size_t rows) {
  if (model.Components() == 0) return RealMatrix(rows, 0);
  return Turned({model.pca->GetTprim()}, rows);
}

RealMatrix ScoresOf(const StoredOPLS& model, std::size_t rows) {
  return Turned({&model.opls.t, &model.opls.to}, rows);
}

std::vector<double> T2Of(const ScoreMoments& moments, const RealMatrix& scores) {
  std::vector<double> t2;
  for (std::size_t i = 0; i < scores.rows; ++i) {
    t2.push_back(T2OfScores(moments, scores.cells.data() + i * scores.columns));
  }
  return t2;
}

/// Of one Y column, from 0.
std::optional<YIntervalTerms> IntervalTermsOfColumn(const RealMatrix& scores, const std::vector<double>& measured,
                                                    const RealMatrix& squaredErrors, std::size_t j, int components) {
  std::vector<bool> isMeasured;
  for (const double cell : measured) isMeasured.push_back(!std::isnan(cell));
  const ScoreMoments moments = MomentsOfScores(scores, &isMeasured);
  std::vector<double> squares;
  for (std::size_t i = 0; i < squaredErrors.rows; ++i) squares.push_back(squaredErrors(i, j));
  const auto terms = IntervalTermsOf(squares, T2Of(moments, scores), moments.rows, components);
  if (!terms) return std::nullopt;
  YIntervalTerms ofColumn;
  static_cast<IntervalTerms&>(ofColumn) = *terms;
  ofColumn.scores = moments;
  return ofColumn;
}

RealMatrix FittedOf(const std::vector<RowPrediction>& rows, std::size_t yColumns) {
  RealMatrix fitted(rows.size(), yColumns, kNotANumber);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows[i].y.size(); ++j) fitted(i, j) = rows[i].y[j];
  }
  return fitted;
}

/// What needs no Y.
template <class Row>
void Describe(const std::vector<Row>& rows, const RealMatrix& scores, const LeftOutFigures& leftOut, int components,
              ModelInfo* model) {
  RowTerms terms;
  terms.scores = MomentsOfScores(scores);
  RowStatistics statistics;
  statistics.t2 = scores.columns > 0 ? T2Of(terms.scores, scores) : std::vector<double>(rows.size(), kNotANumber);
  for (const Row& row : rows) statistics.absoluteDistances.push_back(AbsoluteDistance(components, row));
  model->rowStatistics = std::move(statistics);
  terms.distances = MomentsOfDistances(TrainingDistances(*model));
  if (!leftOut.distances.empty()) {
    terms.leftOut = MomentsOfDistances(leftOut.distances).value_or(DistanceMoments{});
  }
  model->rowTerms = std::move(terms);
}

template <class Model>
void DescribeWithY(const std::vector<RowPrediction>& rows, const RealMatrix& scores,
                   const std::vector<std::vector<double>>& measured, const LeftOutFigures& leftOut, Model* model) {
  Describe(rows, scores, leftOut, model->Components(), model);
  model->rowStatistics->fitted = FittedOf(rows, measured.size());
  model->rowStatistics->leftOut = leftOut.predicted;
  for (std::size_t j = 0; j < measured.size(); ++j) {
    model->rowTerms->intervals.push_back(
        leftOut.squaredErrors.rows == 0 || model->classes  // a dummy has no values between
            ? std::nullopt
            : IntervalTermsOfColumn(scores, measured[j], leftOut.squaredErrors, j, model->Components()));
  }
}

/// Rows behind the moments. Where groups are dealt several times, a row has a left-out distance of each time.
std::size_t RowsBehind(const ModelInfo& model, const DistanceMoments& moments) {
  const bool arePooled = model.rowTerms->leftOut && model.validation;
  const std::size_t repeats = arePooled ? static_cast<std::size_t>(model.validation->repeats) : 1;
  return (moments.rows + repeats - 1) / repeats;
}

/// Why no refit tells of rows while they were left out.
std::string WhyNoRefits(const ModelInfo& model) {
  if (model.validation) return "the refits do not judge so many components";
  return model.groups > 0 ? "validation by component makes no full refits" : "no row was left out";
}

}  // namespace

void DescribeRows(const std::vector<RowPrediction>& rows, const std::vector<std::vector<double>>& measured,
                  const LeftOutFigures& leftOut, StoredPLS* model) {
  DescribeWithY(rows, ScoresOf(*model, rows.size()), measured, leftOut, model);
}

void DescribeRows(const std::vector<RowPrediction>& rows, const std::vector<std::vector<double>>& measured,
                  const LeftOutFigures& leftOut, StoredOPLS* model) {
  DescribeWithY(rows, ScoresOf(*model, rows.size()), measured, leftOut, model);
}

void DescribeRows(const std::vector<RowPrediction>& rows, const std::vector<std::vector<double>>& measured,
                  const LeftOutFigures& leftOut, StoredO2PLS* model) {
  LeftOutFigures withoutErrors = leftOut;  // intervals take the place of a row among scores, which O2PLS does not tell
  withoutErrors.squaredErrors = {};
  DescribeWithY(rows, RealMatrix(rows.size(), 0), measured, withoutErrors, model);
}

void DescribeRows(const std::vector<RowScores>& rows, const LeftOutFigures& leftOut, StoredPCA* model) {
  Describe(rows, ScoresOf(*model, rows.size()), leftOut, model->Components(), model);
}

RealMatrix TrainingScores(const StoredPLS& model) { return ScoresOf(model, model.rows); }
RealMatrix TrainingScores(const StoredPCA& model) { return ScoresOf(model, model.rows); }
RealMatrix TrainingScores(const StoredOPLS& model) { return ScoresOf(model, model.rows); }

std::vector<double> TrainingDistances(const ModelInfo& model) {
  if (!model.rowStatistics) return {};
  std::vector<double> distances = model.rowStatistics->absoluteDistances;
  for (double& distance : distances) distance /= model.pooledDeviation;
  return distances;
}

void NoteLimits(const ModelInfo& model, int components, Notes* notes, const std::string& missing) {
  const RowTerms none;
  const RowTerms& terms = model.rowTerms ? *model.rowTerms : none;
  const std::optional<DistanceMoments>& moments = terms.leftOut ? terms.leftOut : terms.distances;
  const std::size_t rows = moments ? RowsBehind(model, *moments) : 0;
  if (moments && rows == 0 && terms.distances) {
    notes->Add("the rounds leave nothing of X that a distance could be measured by: there is no limit of the distance for "
               "new rows");
  } else if (rows > 0 && rows < kFewRows) {
    notes->Add("the limits of the distance rest on " + Counted(rows, "row") + ": they are a guess");
  }
  std::string what = missing.empty() ? "" : "there is no " + missing;
  if (moments && !terms.leftOut && LimitsOfNewRows(terms, components).distance.at95) {
    what += std::string(what.empty() ? "" : ", and ") +
            "the limits of the distance for new rows are those of the training rows, widened";
  }
  if (!what.empty()) notes->Add(WhyNoRefits(model) + ": " + what);
}

}  // namespace kalmia::analysis
