#include "kalmia/support/LanguageString.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <string>

namespace {

struct Text {
  unsigned id;
  const char* text;
};

/// In ascending order of the ids.
constexpr Text kEnglish[] = {
    {10041, "PCA component %d"},  // the component
    {10047, "PLS component %d"},  // the component
    // Scalings.
    {10066, "None"},
    {10067, "Centred"},
    {10068, "Pareto"},
    {10069, "Unit variance"},
    {10070, "The table does not have the number of variables that the scaling was made for."},
    {10071, "A variable has fewer than two values, so that it cannot be scaled."},
    {10072, "A variable has no variance, so that it cannot be scaled."},
    {10073, "The variance of a variable is too small for it to be scaled."},
    {10074, "The variance of a variable is too large for it to be scaled."},
    // Transforms, their formulas and what can go wrong with them.
    {10087, "None"},
    {10088, "Linear"},
    {10089, "Logarithm"},
    {10090, "Negative logarithm"},
    {10091, "Logit"},
    {10092, "Exponential"},
    {10093, "Power"},
    {10094, "a*x + b"},
    {10095, "log10(a*x + b)"},
    {10096, "-log10(a*x + b)"},
    {10097, "log10((x - a)/(b - x))"},
    {10098, "e^(a*x + b)"},
    {10099, "(a*x + b)^c"},
    {10100, "A value lies outside the domain of the transformation and is missing now."},
    {10101, "The table does not have the number of variables that the transformations were made for."},
    // Wavelet families; those with an order carry its first number.
    {10106, "Beylkin"},
    {10107, "Biorthogonal 1"},
    {10108, "Biorthogonal 2"},
    {10109, "Biorthogonal 3"},
    {10110, "Biorthogonal 4"},
    {10111, "Biorthogonal 5"},
    {10112, "Biorthogonal 6"},
    {10113, "Coiflet"},
    {10114, "Daubechies"},
    // Ways to take out a trend, among the families.
    {10115, "Linear trend removed"},
    {10116, "Mean removed"},
    {10117, "None"},
    // The last wavelet family.
    {10118, "Symmlet"},
    // Models.
    {10123, "Y-orthogonal PLS component %d"},  // the component
    {10124, "The Y-orthogonal PLS calculation was stopped, or there is no variation in Y to start from."},
    {10147, "The PCA calculation was stopped."},
    {10157, "Cross-validation round %d of %d: observations left out"},  // the round, the number of rounds
    {10158, "Cross-validation round %d of %d: variables left out"},     // the round, the number of rounds
    {10159, "X and Y are as good as unrelated: the PLS component cannot be computed."},
    {10160, "The PLS calculation was stopped."},
    {10161, "The PLS calculation was stopped before the component was complete."},
    {10162, "The residuals of Y can be shuffled before the first component only."},
    {10163, "Cross-validation round %d of %d"},  // the round, the number of rounds
    {10165, "A value lies outside the domain of the inverse transformation."},
    {10374, "The sum of squares of the table is not a finite number."},
};

constexpr unsigned kNoText = static_cast<unsigned>(-1);
constexpr unsigned kNoFormula = static_cast<unsigned>(-2);

const char* BuiltIn(unsigned id) {
  const Text* found = std::lower_bound(std::begin(kEnglish), std::end(kEnglish), id,
                                       [](const Text& text, unsigned wanted) { return text.id < wanted; });
  return found != std::end(kEnglish) && found->id == id ? found->text : "";
}

struct Replacements {
  std::map<unsigned, const char*> texts;
  std::set<std::string> everSet;  ///< keeps every text alive that Get may have given out
};

/// Never destroyed, so that texts last until the process ends.
Replacements& TheReplacements() {
  static Replacements* replacements = new Replacements;
  return *replacements;
}

/// Passes over the digits of a width or a precision; false for more of them than any text needs, which would print
/// line upon line of blanks.
bool PassNumber(const char*& at) {
  constexpr std::size_t kMostDigits = 2;
  const std::size_t digits = std::strspn(at, "0123456789");
  at += digits;
  return digits <= kMostDigits;
}

/// The types of the arguments that printf would take for `format`, each closed by a comma, such as "d," or "d,lf,"; "?"
/// in it where the format is not one, or asks for a width or precision above 99. `%i` counts as `%d`.
std::string Placeholders(const char* format) {
  std::string types;
  for (const char* at = std::strchr(format, '%'); at; at = std::strchr(at, '%')) {
    if (*++at == '%') {
      ++at;
      continue;
    }
    at += std::strspn(at, "-+ #0");
    bool known = PassNumber(at);
    if (*at == '.') known = PassNumber(++at) && known;
    const std::size_t lengths = std::strspn(at, "hlLjzt");
    types.append(at, lengths);
    at += lengths;
    known = known && *at != '\0' && std::strchr("diouxXeEfFgGaAcs", *at);
    types += !known ? '?' : *at == 'i' ? 'd' : *at;
    types += ',';
    if (known) ++at;
  }
  return types;
}

}  // namespace

const char* LanguageString::Get(unsigned id) {
  const auto& texts = TheReplacements().texts;
  const auto found = texts.find(id);
  return found == texts.end() ? BuiltIn(id) : found->second;
}

bool LanguageString::Set(unsigned id, const char* text) {
  if (id == kNoText || id == kNoFormula) return false;
  Replacements& replacements = TheReplacements();
  if (!text) {
    replacements.texts.erase(id);
    return true;
  }
  const std::string placeholders = Placeholders(text);
  if (placeholders != Placeholders(BuiltIn(id))) return false;
  replacements.texts[id] = replacements.everSet.insert(text).first->c_str();
  return true;
}

std::vector<unsigned> VexLanguageStringVector::UpToZero(std::vector<unsigned> ids) {
  ids.erase(std::find(ids.begin(), ids.end(), 0U), ids.end());
  return ids;
}

const char* VexLanguageStringVector::operator[](int i) const {
  return i >= 0 && i < Size() ? LanguageString::Get(ids_[static_cast<std::size_t>(i)]) : "";
}

const VexLanguageStringVector& kalmia::ScalingNames() {
  static const VexLanguageStringVector names(kNoText, 10066, 10067, 10068, 10069, 0);
  return names;
}

const VexLanguageStringVector& kalmia::TransformNames() {
  static const VexLanguageStringVector names(kNoText, 10087, 10088, 10089, 10090, 10091, 10092, 10093, 0);
  return names;
}

const VexLanguageStringVector& kalmia::TransformFormulas() {
  static const VexLanguageStringVector formulas(kNoText, kNoFormula, 10094, 10095, 10096, 10097, 10098, 10099, 0);
  return formulas;
}

const VexLanguageStringVector& kalmia::DetrendNames() {
  static const VexLanguageStringVector names(10117, 10116, 10115, 0);
  return names;
}

const VexLanguageStringVector& kalmia::WaveletFunctionNames() {
  static const VexLanguageStringVector names(10106, 10113, 10114, 10118, 10107, 10108, 10109, 10110, 10111, 10112, 0);
  return names;
}
