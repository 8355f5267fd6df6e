#pragma once

#include <string>
#include <string_view>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// What all binary files of the command have around their content: magic, version, length and checksum of the content.
// docs/model-file.md describes it.

/// A kind of file.
struct FileKind {
  std::string_view magic;       ///< 8 bytes
  int version;                  ///< the newest one; this one and all before it are read
  std::string_view content;     ///< what messages call the content: "Kalmia model"
  std::string_view nameOfKind;  ///< and the file: "model file"
};

inline constexpr FileKind kModelFile{"\x8BKALMIA\n", kModelVersion, "Kalmia model", "model file"};
inline constexpr FileKind kStepsFile{"\x8BKALMST\n", 1, "chain of preprocessing steps", "steps file"};
inline constexpr FileKind kOPLSCvFile{"\x8BKALMCV\n", 1, "cross-validation of kalmia opls", "cross-validation file"};

/// Which of them the bytes begin like; null for none.
KALMIA_EXPORT const FileKind* KindOfBytes(std::string_view bytes);

/// Whether there is not more of them than the beginning of such a file, before it says of which kind it is. No text
/// begins so.
KALMIA_EXPORT bool EndWithinMagic(std::string_view bytes);

/// The content of a file, with the version that the file says.
struct FramedContent {
  int version;
  std::string_view bytes;
};

/// The bytes of a file of that version.
KALMIA_EXPORT std::string FramedBytes(const FileKind& kind, int version, const std::string& content);

/// Its content again, a part of `bytes`. Throws BadFile: another file, cut, damaged, or of a newer version;
/// `name` is how messages call the file.
KALMIA_EXPORT FramedContent ReadFrame(const FileKind& kind, std::string_view bytes, const std::string& name);

}  // namespace kalmia::analysis
