#include "kalmia/analysis/validation/ValidationRecipe.h"

#include <algorithm>

namespace kalmia::analysis {

const std::vector<std::string>& ValidationMethodWords() {
  static const std::vector<std::string> words = {"refit", "component", "none"};
  return words;
}

std::optional<ValidationMethod> ValidationMethodOfWord(const std::string& word) {
  const std::vector<std::string>& words = ValidationMethodWords();
  const auto found = std::find(words.begin(), words.end(), word);
  if (found == words.end()) return std::nullopt;
  return static_cast<ValidationMethod>(found - words.begin());
}

const std::string& WordOfValidationMethod(ValidationMethod method) {
  return ValidationMethodWords()[static_cast<std::size_t>(method)];
}

}  // namespace kalmia::analysis
