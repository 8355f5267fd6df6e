#include "app/Json.h"

#include <cmath>

#include "app/CsvTable.h"
#include "app/Version.h"

namespace kalmia::app {

Json JsonHeader(const std::string& format) {
  return {{"format", format}, {"formatVersion", kJsonVersion}, {"kalmia", kVersion}};
}

Json TableJson(const CsvTable& table) {
  return {{"file", table.Name()},
          {"rows", table.Rows()},
          {"columns", table.Columns()},
          {"separator", std::string(1, table.Separator())},
          {"decimal", table.DecimalComma() ? "," : "."}};
}

Json JsonNumber(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

std::string JsonText(const Json& json) {
  return json.dump(/*indent=*/2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kalmia::app
