#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/model/Judgement.h"
#include "kalmia/analysis/model/RowTerms.h"
#include "kalmia/analysis/model/StoredValidation.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Of the files that models are written to; this one and all before it are read.
inline constexpr int kModelVersion = 5;

/// What a stored model has whatever its kind: where it comes from, and what turns new rows of a table into its X.
struct ModelInfo {
  int fileVersion = kModelVersion;       ///< of the file that it was read from
  std::string writtenBy;                 ///< version of the command
  std::string table;                     ///< file that it was fitted to
  std::string idColumn;                  ///< column that named the rows; empty if they were numbered
  std::string groupColumn;               ///< column of the cross-validation groups; empty for every n-th row
  int groups = 0;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
  StepChain chain;  ///< what made X of the columns of the table; without steps they are X themselves. O2PLS and
                    ///< filters have none
  std::vector<std::string> xNames;
  std::size_t rows = 0;               ///< that it was fitted to
  std::vector<std::string> rowNames;  ///< theirs; empty where the file leaves them out
  ColumnScaling xScaling;
  double pooledDeviation = 0.0;  ///< pooled s of the training rows
  std::optional<RowTerms> rowTerms;            ///< nothing in files before version 5, and for a filter
  std::optional<RowStatistics> rowStatistics;  ///< nothing where the file leaves the rows out
  std::optional<StoredValidation> validation;  ///< nothing where no full refits judged the model
  NCDataMatrix<float> trainingX;  ///< before scaling, less the shifts; no rows where the file leaves it out
  NCDataMatrix<float> xResiduals;  ///< of the scaled X: of a filter, and of OPLS and O2PLS from a file that keeps it
  std::string inputBlock = "X";  ///< how messages call the block of xNames; not in the file
};

/// How well a Y column is fitted, in its own units.
struct YQuality {
  int rows = 0;         ///< rows with a measured and a fitted value
  double rmsee = 0.0;   ///< sqrt(SSE / (rows - 1 - A)); not a number without a degree of freedom
  double rmsecv = 0.0;  ///< root mean square of the cross-validated residuals of the last kept component
};

/// What a model of classes has beside its Y columns, which are the dummies of the classes and have their names.
struct StoredClasses {
  std::string column;     ///< of the table, that told the classes of the rows
  DiscriminantRule rule;  ///< that assigns rows by their predicted dummies
  std::optional<ClassFigures> fitted;   ///< how well the training rows are found
  std::optional<ClassFigures> leftOut;  ///< the same while they were left out; nothing without full refits
};

/// What a model that predicts Y has beside that.
struct YModelInfo : ModelInfo {
  std::vector<std::string> yNames;
  ColumnScaling yScaling;
  std::vector<YQuality> quality;         ///< one for each Y column
  NCDataMatrix<float> trainingY;         ///< as trainingX
  std::optional<StoredClasses> classes;  ///< nothing where Y is numbers
};

// What a model holds of its training rows beside their names, scores and residuals, is without rows where it was read
// from a file that leaves them out.

/// A PLS model with everything that turns new rows of a table into predictions.
struct StoredPLS : YModelInfo {
  static constexpr int kKind = 1;

  std::unique_ptr<NCPLS> pls;
  std::vector<ComponentRecord> components;  ///< one for each component of the model

  int Components() const { return static_cast<int>(components.size()); }
};

/// Principal components with everything that turns new rows of a table into scores.
struct StoredPCA : ModelInfo {
  static constexpr int kKind = 2;

  std::unique_ptr<NCPCA> pca;
  std::vector<PCAComponentRecord> components;  ///< one for each component of the model

  int Components() const { return static_cast<int>(components.size()); }
};

/// The matrices of an OPLS model of A predictive and O orthogonal components, see NCOPLS: components in rows.
struct OPLSMatrices {
  std::vector<NCDataMatrix<float>> w, p, c;  ///< O + 1 blocks of A rows
  NCDataMatrix<float> wo, po, co, to;        ///< O rows
  NCDataMatrix<float> t;                     ///< A rows
};

/// An OPLS model with everything that turns new rows of a table into predictions.
struct StoredOPLS : YModelInfo {
  static constexpr int kKind = 3;

  OPLSMatrices opls;
  std::vector<OPLSComponentRecord> components;  ///< the predictive components of the model, then the orthogonal ones

  int Components() const { return static_cast<int>(components.size()); }
  int Predictive() const { return opls.w.empty() ? 0 : opls.w.back().SizeRows(); }
  int Orthogonal() const { return opls.wo.SizeRows(); }
};

/// The matrices of an O2PLS model of A joint components, Ox unique to X and Oy unique to Y, see NCO2PLS: components in
/// rows.
struct O2PLSMatrices {
  NCDataMatrix<float> t, u, p, w, c, q;     ///< A rows
  NCDataMatrix<float> to, wo, po, s;        ///< Ox rows
  NCDataMatrix<float> uo, co, qo, r;        ///< Oy rows
  NCDataMatrix<float> lambda, xLambda;      ///< A x A
};

/// An O2PLS model with everything that turns new rows of one block into predictions of the other. As a YModelInfo it
/// predicts Y from X; TurnAround makes it predict X from Y.
struct StoredO2PLS : YModelInfo {
  static constexpr int kKind = 4;

  std::string yTable;     ///< file of the Y block
  O2PLSMatrices o2pls;
  std::vector<O2PLSComponentRecord> components;  ///< the joint ones, those unique to X, those unique to Y
  // The same of the Y block.
  double yPooledDeviation = 0.0;
  std::optional<RowTerms> yRowTerms;
  std::optional<RowStatistics> yRowStatistics;
  NCDataMatrix<float> yResiduals;

  int Joint() const { return o2pls.p.SizeRows(); }
  int XUnique() const { return o2pls.po.SizeRows(); }
  int YUnique() const { return o2pls.qo.SizeRows(); }
  int Components() const { return Joint() + XUnique(); }  ///< those of the block that it predicts from
};

/// Swaps the blocks: the model then predicts what it did predict from. `components` stay as they are.
KALMIA_EXPORT void TurnAround(StoredO2PLS* model);

/// A filter that takes out of X what has nothing to do with Y, with everything that applies it to new rows of a table.
struct StoredFilter : ModelInfo {
  static constexpr int kKind = 5;

  std::vector<std::string> yNames;
  NCDataMatrix<float> w, p;                       ///< weights and loadings, see NCYOrthogonalPLS: components in rows
  NCDataMatrix<float> t;                          ///< scores of the training rows, likewise
  std::vector<FilterComponentRecord> components;  ///< one for each component of the filter

  int Components() const { return static_cast<int>(components.size()); }
};

/// Takes the components of the filter out of rows that are scaled as its X was, as NCYOrthogonalPLS does.
KALMIA_EXPORT void TakeOut(const StoredFilter& filter, NCDataMatrix<float>* x);

/// A model of any kind. Each kind has its number in the file, kKind, its frame, and Components().
using StoredModel = std::variant<StoredPLS, StoredPCA, StoredOPLS, StoredO2PLS, StoredFilter>;

}  // namespace kalmia::analysis
