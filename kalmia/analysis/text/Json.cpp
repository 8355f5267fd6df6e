#include "kalmia/analysis/text/Json.h"

#include <cmath>

#include "kalmia/analysis/text/Version.h"

namespace kalmia::analysis {

Json JsonHeader(const std::string& format) {
  return {{"format", format}, {"formatVersion", kJsonVersion}, {"kalmia", kVersion}};
}

Json JsonNumber(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

std::string JsonText(const Json& json) {
  return json.dump(/*indent=*/2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kalmia::analysis
