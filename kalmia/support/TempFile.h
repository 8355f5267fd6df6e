#pragma once

#include <string>

#include "kalmia/support/CString.h"
#include "kalmia/support/Export.h"

namespace kalmia {

/// The directory of temporary files: TMPDIR if that is set, else /tmp; without a slash at the end.
KALMIA_EXPORT std::string TemporaryDirectory();

}  // namespace kalmia

/// Creates a new empty file that only the user can read and write. Returns its path: `directory`, `prefix`, six random
/// characters, a dot and `extension`; the empty string if the file cannot be created. Never touches an existing file.
/// The caller removes the file. A null or empty directory means TemporaryDirectory(). A null or empty prefix adds
/// nothing; without an extension there is no dot either.
KALMIA_EXPORT CString VexGetTempFileName(const char* directory, const char* prefix, const char* extension);
