#pragma once

#include <string>

#include "kalmia/support/CString.h"
#include "kalmia/support/Export.h"

namespace kalmia {

/// The directory of temporary files: TMPDIR if that is set, else /tmp; without a slash at the end.
KALMIA_EXPORT std::string TemporaryDirectory();

}  // namespace kalmia

/// Creates a new empty file, readable and writable by the user alone, and returns its path: `directory`, then `prefix`,
/// six random characters, a dot and `extension`. A null or empty directory stands for that of temporary files. A null
/// or empty prefix adds nothing, a null or empty extension neither itself nor a dot. The file is the caller's to
/// remove. Cannot be created: the empty string. Never touches a file that is there already.
KALMIA_EXPORT CString VexGetTempFileName(const char* directory, const char* prefix, const char* extension);
