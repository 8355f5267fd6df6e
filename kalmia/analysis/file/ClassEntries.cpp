// What a model file holds of classes.

#include "kalmia/analysis/file/internal/ClassEntries.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "kalmia/analysis/file/internal/NumberEntries.h"
#include "kalmia/analysis/text/internal/Bytes.h"

namespace kalmia::analysis {

namespace {

bool AreNamesOfClasses(const std::vector<std::string>& names) {
  return names.size() >= 2 && std::set<std::string>(names.begin(), names.end()).size() == names.size();
}

/// Minus infinity stands for a class without a row to learn from; not all can be such.
bool AreLogPriors(const std::vector<double>& logPriors) {
  const auto isOne = [](double logPrior) { return logPrior <= 0.0; };
  const auto isFinite = [](double logPrior) { return std::isfinite(logPrior); };
  return std::all_of(logPriors.begin(), logPriors.end(), isOne) &&
         std::any_of(logPriors.begin(), logPriors.end(), isFinite);
}

}  // namespace

void WriteClasses(const StoredClasses& classes, std::ostream& stream) {
  const DiscriminantRule& rule = classes.rule;
  WriteBinaryString(classes.column.c_str(), stream);
  WriteDoubles(rule.logPriors, stream);
  WriteInteger(static_cast<int>(rule.directions.rows), stream);
  WriteDoubles(rule.directions.cells, stream);
  WriteDoubles(rule.centres.cells, stream);
}

bool ReadClasses(std::istream& stream, const std::vector<std::string>& names, StoredClasses* classes) {
  DiscriminantRule& rule = classes->rule;
  std::size_t directions = 0;
  return AreNamesOfClasses(names) && ReadText(&classes->column, stream) &&
         ReadNumbers(stream, names.size(), &rule.logPriors) && AreLogPriors(rule.logPriors) &&
         ReadCount(stream, 0, &directions) && directions < names.size() &&
         ReadMatrix(stream, directions, names.size(), &rule.directions) && AreFinite(rule.directions.cells) &&
         ReadMatrix(stream, names.size(), directions, &rule.centres) && AreFinite(rule.centres.cells) &&
         IsAtEnd(stream);
}

}  // namespace kalmia::analysis
