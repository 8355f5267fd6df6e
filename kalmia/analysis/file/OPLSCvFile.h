#pragma once

#include <string>
#include <string_view>

#include "kalmia/analysis/fit/StoredOPLSCv.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The bytes of the file: magic, version, length, checksum, content. docs/command/info.md describes them.
KALMIA_EXPORT std::string OPLSCvFileBytes(const StoredOPLSCv& stored);

/// Reads them back. Throws BadFile: no cross-validation, cut, damaged, or of a newer version; `name` is how
/// messages call the file. The matrices that the rounds go on from are checked only when they do.
KALMIA_EXPORT StoredOPLSCv ReadOPLSCvFile(std::string_view bytes, const std::string& name);

}  // namespace kalmia::analysis
