#pragma once

#include <vector>

#include "kalmia/support/Export.h"

/// The library's user-visible texts by number. Built-in texts are English; an application replaces them by its own.
/// Some are printf formats (marked in LanguageString.cpp); format them with CString::Format, for a replacement may be
/// of any length.
class KALMIA_EXPORT LanguageString {
 public:
  /// The text of `id`, "" if there is none. Valid as long as the process lives, whatever is set later.
  static const char* Get(unsigned id);

  /// Replaces a text; null brings the built-in one back. False, and nothing is changed, where the placeholders of
  /// `text` are not those of the built-in text in number, order and type: width and precision may differ, up to 99,
  /// and an id without a built-in text has none. False for -1 and -2 too, which stand for "no text". Not while another
  /// thread may Get.
  static bool Set(unsigned id, const char* text);
};

/// A list of ids of texts, fixed at construction. Its constructor takes them one by one, a 0 closes the list. The
/// entries -1 and -2 stand for "no text".
class KALMIA_EXPORT VexLanguageStringVector {
 public:
  template <class... Ids>
  explicit VexLanguageStringVector(unsigned first, Ids... rest)
      : ids_(UpToZero({first, static_cast<unsigned>(rest)...})) {}

  int Size() const { return static_cast<int>(ids_.size()); }
  /// The text of entry i, from 0. "" for the entries -1 and -2 and outside the list.
  const char* operator[](int i) const;

 private:
  static std::vector<unsigned> UpToZero(std::vector<unsigned> ids);

  std::vector<unsigned> ids_;
};

namespace kalmia {

// The tables of names, each in the order of its enumeration.
KALMIA_EXPORT const VexLanguageStringVector& ScalingNames();          ///< from the undefined scaling on
KALMIA_EXPORT const VexLanguageStringVector& TransformNames();        ///< from the undefined transform on
KALMIA_EXPORT const VexLanguageStringVector& TransformFormulas();     ///< the same; the first two transforms have none
KALMIA_EXPORT const VexLanguageStringVector& DetrendNames();          ///< none, mean, linear trend
KALMIA_EXPORT const VexLanguageStringVector& WaveletFunctionNames();  ///< the wavelet families

}  // namespace kalmia
