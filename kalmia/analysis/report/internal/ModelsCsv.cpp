#include "kalmia/analysis/report/internal/ModelsCsv.h"

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/table/internal/CsvText.h"

namespace kalmia::analysis {

namespace {

double ShareAt(const std::vector<double>& shares, std::size_t model) {
  return model < shares.size() ? shares[model] : kNotANumber;
}

/// What counts the components of a model.
void CountFields(const Json& numbers, CsvText* csv) {
  for (const auto& number : numbers.items()) csv->Field(std::to_string(number.value().get<int>()));
}

void YLines(const RefittedModels& models, std::size_t a, const std::string& kept, CsvText* csv) {
  for (std::size_t j = 0; j < models.yNames.size(); ++j) {
    CountFields(models.numbers[a], csv);
    csv->Field(models.yNames[j]).Number(kNotANumber).Number(kNotANumber).Number(kNotANumber);
    csv->Number(models.ofY->q2PerY(a, j)).Number(models.ofY->rmsecv(a, j)).Field(kept).EndLine();
  }
}

}  // namespace

CsvFile ModelsCsv(const RefittedModels& models, const CsvMarks& marks) {
  const bool hasY = models.ofY != nullptr;
  CsvText csv(marks);
  for (const auto& number : models.numbers.front().items()) csv.Field(number.key());
  if (hasY) csv.Field("Y");
  csv.Field("R2X cum");
  if (hasY) csv.Field("R2Y cum");
  csv.Field("PRESS").Field("Q2");
  if (hasY) csv.Field("RMSECV");
  csv.Field("kept").EndLine();
  for (std::size_t a = 0; a < models.numbers.size(); ++a) {
    const std::string kept = a == models.model ? "yes" : "no";
    CountFields(models.numbers[a], &csv);
    if (hasY) csv.Field("(all)");
    csv.Number(ShareAt(models.r2x, a));
    if (hasY) csv.Number(ShareAt(models.r2y, a));
    csv.Number(models.errors.press[a]).Number(models.errors.q2[a]);
    if (hasY) csv.Number(kNotANumber);
    csv.Field(kept).EndLine();
    if (hasY) YLines(models, a, kept, &csv);
  }
  return {"components.csv", csv.Text()};
}

}  // namespace kalmia::analysis
