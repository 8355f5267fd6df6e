#include "kalmia/analysis/text/internal/Json.h"

#include <cmath>

#include "kalmia/analysis/text/Version.h"

namespace kalmia::analysis {

Json JsonHeader(const std::string& format, int version) {
  return {{"format", format}, {"formatVersion", version}, {"kalmia", kVersion}};
}

Json JsonNumber(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json JsonNumbers(const std::vector<double>& values) {
  Json list = Json::array();
  for (const double value : values) list.push_back(JsonNumber(value));
  return list;
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

std::string JsonText(const Json& json) {
  return json.dump(/*indent=*/2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kalmia::analysis
