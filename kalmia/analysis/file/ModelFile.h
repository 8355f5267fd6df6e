#pragma once

#include <string>
#include <string_view>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The bytes of a model file: magic, version, length, checksum, content. docs/command/info.md describes them.
/// Throw BadRequest for a model without components.
KALMIA_EXPORT std::string ModelFileBytes(const StoredPLS& model);
KALMIA_EXPORT std::string ModelFileBytes(const StoredPCA& model);
KALMIA_EXPORT std::string ModelFileBytes(const StoredOPLS& model);
KALMIA_EXPORT std::string ModelFileBytes(const StoredO2PLS& model);
KALMIA_EXPORT std::string ModelFileBytes(const StoredFilter& model);
KALMIA_EXPORT std::string ModelFileBytes(const StoredModel& model);

/// Reads them back. Throws BadFile: no model, cut, damaged, or of a newer version; `name` is how messages call
/// the file.
KALMIA_EXPORT StoredModel ReadModelFile(std::string_view bytes, const std::string& name);

}  // namespace kalmia::analysis
