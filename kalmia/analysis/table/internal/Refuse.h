#pragma once

#include <string>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

/// Throws BadData that names the table.
[[noreturn]] inline void Refuse(const Table& table, const std::string& message) {
  throw BadData(table.Name() + ": " + message);
}

}  // namespace kalmia::analysis
