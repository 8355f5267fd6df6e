#include "kalmia/analysis/report/ExactTestReport.h"

#include <cstddef>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 6;  ///< as many as the test of larger tables promises

std::string MeaningOf(const std::string& alternative) {
  if (alternative == "less") return "this table and those whose first cell is smaller";
  if (alternative == "greater") return "this table and those whose first cell is larger";
  return "all tables that are not more probable than this one";
}

}  // namespace

std::string ExactTestText(const ExactTestResult& test) {
  std::string text = "Fisher's exact test of " + test.counts.name + ", " + std::to_string(test.counts.rows) + " x " +
                     std::to_string(test.counts.columns) + ", " +
                     Counted(static_cast<std::size_t>(test.counts.total), "count") + "\n\n  probability " +
                     Significant(test.probability, kDigits) +
                     "\n\nCounted, of the tables with these sums of rows and columns: " + MeaningOf(test.alternative) +
                     "\n";
  if (test.hybrid) {
    text += "Hybrid: chi-square for parts whose expected counts are above 1 all, and at least 5 in 80 % of the cells\n";
  }
  return text;
}

std::string ExactTestJson(const ExactTestResult& test) {
  Json json = JsonHeader("kalmia-fisher");
  json["table"] = test.counts.name;
  json["rows"] = test.counts.rows;
  json["columns"] = test.counts.columns;
  json["total"] = test.counts.total;
  json["alternative"] = test.alternative;
  json["hybrid"] = test.hybrid;
  json["probability"] = JsonNumber(test.probability);
  json["notes"] = test.notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
