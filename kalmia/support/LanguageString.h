#pragma once

#include <vector>

#include "kalmia/support/Export.h"

/// The library's user-visible texts by number. Built-in texts are English; an application replaces them by its own.
/// Some are printf formats (marked in LanguageString.cpp); format them with CString::Format, for a replacement may be
/// of any length.
class KALMIA_EXPORT LanguageString {
 public:
  /// The text of `id`, "" if there is none. The pointer stays valid for the life of the process.
  static const char* Get(unsigned id);

  /// Replaces a text; null restores the built-in one. Returns false and changes nothing if the placeholders of `text`
  /// differ from those of the built-in text in number, order or type. Width and precision may differ, up to 99. An id
  /// without a built-in text takes no placeholders. Also false for -1 and -2, which stand for "no text".
  /// Must not run while another thread calls Get.
  static bool Set(unsigned id, const char* text);
};

/// A list of ids of texts, fixed at construction. The constructor takes the ids one by one; a 0 ends the list. The
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
