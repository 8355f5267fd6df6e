#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kalmia::analysis {

using Json = nlohmann::ordered_json;

/// Version of the JSON forms, which docs/schema describes. It changes when a field is removed or changes its meaning,
/// not when one is added.
constexpr int kJsonVersion = 1;
/// The same of the forms whose validation is by refits, of predictions and of stored models.
constexpr int kRefitJsonVersion = 2;

/// The fields that every output begins with; `format` is the name of one of the schemas: kalmia-pls, kalmia-pca...
Json JsonHeader(const std::string& format, int version = kJsonVersion);

/// The number, or null for what is no finite number.
Json JsonNumber(double value);
/// A list of such.
Json JsonNumbers(const std::vector<double>& values);

/// The text, or null where it is empty.
Json TextOrNull(const std::string& text);

/// The text of the output. Bytes of names that are no UTF-8 become U+FFFD.
std::string JsonText(const Json& json);

}  // namespace kalmia::analysis
