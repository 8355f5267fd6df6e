#include "kalmia/analysis/report/internal/ModelsCsv.h"

#include "kalmia/analysis/model/RealMatrix.h"

namespace kalmia::analysis {

namespace {

/// What counts the components of a model.
void CountFields(const Json& numbers, CsvText* csv) {
  for (const auto& number : numbers.items()) csv->Field(std::to_string(number.value().get<int>()));
}

void YLines(const RefittedModels& models, std::size_t a, const std::string& kept, CsvText* csv) {
  for (std::size_t j = 0; j < models.yNames.size(); ++j) {
    CountFields(models.numbers[a], csv);
    csv->Field(models.yNames[j]).Number(kNotANumber).Number(kNotANumber).Number(kNotANumber);
    csv->Number(models.entries[a].q2PerY[j]).Number(models.entries[a].rmsecv[j]);
    RateFields(models, /*entry=*/nullptr, csv);
    csv->Field(kept).EndLine();
  }
}

}  // namespace

void RateTitles(const RefittedModels& models, CsvText* csv) {
  if (models.HasClasses()) csv->Field("accuracy").Field("balanced accuracy");
}

void RateFields(const RefittedModels& models, const StoredValidationEntry* entry, CsvText* csv) {
  if (!models.HasClasses()) return;
  const ClassRates rates = entry != nullptr ? entry->classes.value_or(ClassRates()) : ClassRates();
  csv->Number(rates.accuracy).Number(rates.balancedAccuracy);
}

CsvFile ModelsCsv(const RefittedModels& models, const CsvMarks& marks) {
  const bool hasY = !models.yNames.empty();
  CsvText csv(marks);
  for (const auto& number : models.numbers.front().items()) csv.Field(number.key());
  if (hasY) csv.Field("Y");
  csv.Field("R2X cum");
  if (hasY) csv.Field("R2Y cum");
  csv.Field("PRESS").Field("Q2");
  if (hasY) csv.Field("RMSECV");
  RateTitles(models, &csv);
  csv.Field("kept").EndLine();
  for (std::size_t a = 0; a < models.numbers.size(); ++a) {
    const std::string kept = a == models.model ? "yes" : "no";
    CountFields(models.numbers[a], &csv);
    if (hasY) csv.Field("(all)");
    const StoredValidationEntry& entry = models.entries[a];
    csv.Number(entry.r2x);
    if (hasY) csv.Number(entry.r2y);
    csv.Number(entry.press).Number(entry.q2);
    if (hasY) csv.Number(kNotANumber);
    RateFields(models, &entry, &csv);
    csv.Field(kept).EndLine();
    if (hasY) YLines(models, a, kept, &csv);
  }
  return {"components.csv", csv.Text()};
}

}  // namespace kalmia::analysis
