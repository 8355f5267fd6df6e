#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What a model file holds beside what predicts and what judged it.
struct ModelParts {
  bool rows = true;    ///< names, scores, T2, distances, fitted and left-out Y of the training rows, up to kMostRows
  bool table = false;  ///< X of the training rows, and its residuals
};

/// A model of more rows than these is stored without them.
constexpr std::size_t kMostRows = 65536;

/// The bytes of a model file: magic, version, length, checksum, content in parts. docs/model-file.md describes them.
/// A part whose numbers the model does not have, as one read from a file without it, is left out.
/// Throw BadRequest for an O2PLS model or a filter without components, and for what is left of a fit that kept none.
KALMIA_EXPORT std::string ModelFileBytes(const StoredPLS& model, const ModelParts& parts = {});
KALMIA_EXPORT std::string ModelFileBytes(const StoredPCA& model, const ModelParts& parts = {});
KALMIA_EXPORT std::string ModelFileBytes(const StoredOPLS& model, const ModelParts& parts = {});
KALMIA_EXPORT std::string ModelFileBytes(const StoredO2PLS& model, const ModelParts& parts = {});
KALMIA_EXPORT std::string ModelFileBytes(const StoredFilter& model, const ModelParts& parts = {});
KALMIA_EXPORT std::string ModelFileBytes(const StoredModel& model, const ModelParts& parts = {});

/// Whether the model has what the part holds.
KALMIA_EXPORT bool KeepsRows(const StoredModel& model);
KALMIA_EXPORT bool KeepsTable(const StoredModel& model);

/// Reads them back. Throws BadFile: no model, cut, damaged, or of a newer version; `name` is how messages call
/// the file.
KALMIA_EXPORT StoredModel ReadModelFile(std::string_view bytes, const std::string& name);

/// The SHA-256, in 64 lower-case hexadecimals, of the part that predicts: the same for the same model, whoever made it
/// from whatever file, and whatever else its file holds. Names of rows and files are not in it, nor are versions.
KALMIA_EXPORT std::string ModelDigest(const StoredPLS& model);
KALMIA_EXPORT std::string ModelDigest(const StoredPCA& model);
KALMIA_EXPORT std::string ModelDigest(const StoredOPLS& model);
KALMIA_EXPORT std::string ModelDigest(const StoredO2PLS& model);
KALMIA_EXPORT std::string ModelDigest(const StoredFilter& model);
KALMIA_EXPORT std::string ModelDigest(const StoredModel& model);

}  // namespace kalmia::analysis
