#include "kalmia/analysis/report/internal/TableJson.h"

#include <string>

namespace kalmia::analysis {

Json TableJson(const Table& table) {
  return {{"file", table.Name()},
          {"rows", table.Rows()},
          {"columns", table.Columns()},
          {"separator", std::string(1, table.Separator())},
          {"decimal", table.DecimalComma() ? "," : "."}};
}

}  // namespace kalmia::analysis
