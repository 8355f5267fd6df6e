#pragma once

#include <string>
#include <string_view>

#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

/// The bytes of a model file: magic, version, length, checksum, content. docs/command/info.md describes them.
/// Throw BadRequest for a model without components.
std::string ModelFileBytes(const StoredPLS& model);
std::string ModelFileBytes(const StoredPCA& model);
std::string ModelFileBytes(const StoredOPLS& model);
std::string ModelFileBytes(const StoredO2PLS& model);
std::string ModelFileBytes(const StoredFilter& model);
std::string ModelFileBytes(const StoredModel& model);

/// Reads them back. Throws BadFile: no model, cut, damaged, or of a newer version; `name` is how messages call
/// the file.
StoredModel ReadModelFile(std::string_view bytes, const std::string& name);

}  // namespace kalmia::analysis
