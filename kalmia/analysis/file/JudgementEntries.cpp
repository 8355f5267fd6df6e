// What a model file holds of what judged the model.

#include "kalmia/analysis/file/internal/JudgementEntries.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "kalmia/analysis/file/internal/NumberEntries.h"
#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

namespace {

/// A share, or no number.
bool IsShare(double number) { return std::isnan(number) || (number >= 0.0 && number <= 1.0); }

bool AreShares(const std::vector<double>& numbers) { return std::all_of(numbers.begin(), numbers.end(), IsShare); }

void WriteEntry(const StoredValidationEntry& entry, std::ostream& stream) {
  WriteInteger(entry.components, stream);
  for (const int count : entry.kinds) WriteInteger(count, stream);
  WriteNumbers({entry.r2x, entry.r2y, entry.press, entry.q2}, stream);
  WriteNumbers(entry.rmsecv, stream);
  WriteNumbers(entry.q2PerY, stream);
  if (entry.classes) WriteNumbers({entry.classes->accuracy, entry.classes->balancedAccuracy}, stream);
}

bool ReadRates(std::istream& stream, std::optional<ClassRates>* rates) {
  ClassRates read;
  if (!ReadDouble(&read.accuracy, stream) || !ReadDouble(&read.balancedAccuracy, stream)) return false;
  *rates = read;
  return AreShares({read.accuracy, read.balancedAccuracy});
}

bool ReadEntry(std::istream& stream, std::size_t kinds, std::size_t yColumns, bool hasClasses,
               StoredValidationEntry* entry) {
  if (!ReadInteger(&entry->components, stream) || entry->components < 0) return false;
  for (std::size_t kind = 0; kind < kinds; ++kind) {
    entry->kinds.push_back(0);
    if (!ReadInteger(&entry->kinds.back(), stream) || entry->kinds.back() < 0) return false;
  }
  return ReadDouble(&entry->r2x, stream) && ReadDouble(&entry->r2y, stream) && ReadDouble(&entry->press, stream) &&
         ReadDouble(&entry->q2, stream) && ReadNumbers(stream, yColumns, &entry->rmsecv) &&
         ReadNumbers(stream, yColumns, &entry->q2PerY) && (!hasClasses || ReadRates(stream, &entry->classes));
}

bool ReadEntries(std::istream& stream, std::size_t count, std::size_t kinds, std::size_t yColumns, bool hasClasses,
                 std::vector<StoredValidationEntry>* entries) {
  for (std::size_t a = 0; a < count; ++a) {
    entries->emplace_back();
    if (!ReadEntry(stream, kinds, yColumns, hasClasses, &entries->back())) return false;
  }
  return true;
}

/// No degrees stand for none.
void WriteAnova(const std::optional<CvAnova>& anova, std::ostream& stream) {
  WriteInteger(anova ? anova->df1 : 0, stream);
  if (!anova) return;
  WriteInteger(anova->df2, stream);
  WriteNumbers({anova->f, anova->p}, stream);
}

bool ReadAnova(std::istream& stream, std::optional<CvAnova>* anova) {
  CvAnova read;
  if (!ReadInteger(&read.df1, stream) || read.df1 < 0) return false;
  if (read.df1 == 0) return true;
  if (!ReadInteger(&read.df2, stream) || !ReadDouble(&read.f, stream) || !ReadDouble(&read.p, stream)) return false;
  *anova = read;
  return read.df2 > 0 && !std::isnan(read.f) && read.p >= 0.0 && read.p <= 1.0;
}

bool ReadAnovas(std::istream& stream, std::size_t yColumns, std::vector<std::optional<CvAnova>>* anovas) {
  std::size_t count = 0;
  if (!ReadCount(stream, 0, &count) || (count != 0 && count != yColumns)) return false;
  for (std::size_t j = 0; j < count; ++j) {
    anovas->emplace_back();
    if (!ReadAnova(stream, &anovas->back())) return false;
  }
  return true;
}

/// No runs stand for no test.
void WritePermutation(const std::optional<StoredPermutation>& test, std::ostream& stream) {
  WriteInteger(test ? test->runs : 0, stream);
  if (!test) return;
  const PermutationJudgement& of = test->judgement;
  WriteNumbers({of.pR2, of.pQ2, of.pAccuracy, of.interceptR2, of.interceptQ2}, stream);
}

bool ReadPermutation(std::istream& stream, std::optional<StoredPermutation>* test) {
  StoredPermutation read;
  if (!ReadInteger(&read.runs, stream) || read.runs < 0) return false;
  if (read.runs == 0) return true;
  PermutationJudgement& of = read.judgement;
  for (double* number : {&of.pR2, &of.pQ2, &of.pAccuracy, &of.interceptR2, &of.interceptQ2}) {
    if (!ReadDouble(number, stream)) return false;
  }
  *test = read;
  return AreShares({of.pR2, of.pQ2, of.pAccuracy});
}

constexpr int kMostKindsOfImportance = 2;

/// 0 stands for none, 1 for coefficients alone; one more for each kind of VIP.
void WriteJackKnife(const std::optional<StoredJackKnife>& jackKnife, std::ostream& stream) {
  WriteInteger(jackKnife ? 1 + static_cast<int>(jackKnife->importances.size()) : 0, stream);
  if (!jackKnife) return;
  WriteNumbers(jackKnife->coefficients.cells, stream);
  for (const StoredImportance& importance : jackKnife->importances) {
    WriteNumbers(importance.vip, stream);
    WriteNumbers(importance.standardErrors, stream);
  }
}

bool AreStandardErrors(const std::vector<double>& numbers) {
  return std::all_of(numbers.begin(), numbers.end(),
                     [](double s) { return std::isnan(s) || (s >= 0.0 && std::isfinite(s)); });
}

bool ReadJackKnife(std::istream& stream, const JudgedColumns& columns, std::optional<StoredJackKnife>* jackKnife) {
  int parts = 0;
  if (!ReadInteger(&parts, stream) || parts < 0 || parts > 1 + kMostKindsOfImportance) return false;
  if (parts == 0) return true;
  StoredJackKnife read;
  if (columns.y == 0 || !ReadMatrix(stream, columns.y, columns.x + 1, &read.coefficients)) return false;
  bool areGood = AreStandardErrors(read.coefficients.cells);
  for (int kind = 1; kind < parts; ++kind) {
    StoredImportance& importance = read.importances.emplace_back();
    if (!ReadNumbers(stream, columns.x, &importance.vip) || !ReadNumbers(stream, columns.x, &importance.standardErrors)) {
      return false;
    }
    areGood = areGood && AreStandardErrors(importance.standardErrors);
  }
  *jackKnife = std::move(read);
  return areGood;
}

/// No flag, or 1 and the figures.
void WriteFigures(const std::optional<ClassFigures>& figures, std::ostream& stream) {
  WriteInteger(figures ? 1 : 0, stream);
  if (!figures) return;
  for (const std::vector<int>& row : figures->confusion) {
    for (const int count : row) WriteInteger(count, stream);
  }
  WriteInteger(figures->unpredictedRows, stream);
  WriteNumbers({figures->accuracy, figures->balancedAccuracy}, stream);
  for (const auto* rates : {&figures->sensitivity, &figures->specificity, &figures->auc}) WriteNumbers(*rates, stream);
}

bool ReadConfusion(std::istream& stream, std::size_t count, std::vector<std::vector<int>>* confusion) {
  for (std::size_t g = 0; g < count; ++g) {
    confusion->emplace_back();
    for (std::size_t h = 0; h < count; ++h) {
      int rows = 0;
      if (!ReadInteger(&rows, stream) || rows < 0) return false;
      confusion->back().push_back(rows);
    }
  }
  return true;
}

bool ReadFigures(std::istream& stream, std::size_t count, std::optional<ClassFigures>* figures) {
  int isThere = 0;
  if (!ReadInteger(&isThere, stream) || isThere < 0 || isThere > 1) return false;
  if (isThere == 0) return true;
  ClassFigures read;
  if (!ReadConfusion(stream, count, &read.confusion) || !ReadInteger(&read.unpredictedRows, stream) ||
      read.unpredictedRows < 0 || !ReadDouble(&read.accuracy, stream) || !ReadDouble(&read.balancedAccuracy, stream)) {
    return false;
  }
  bool areShares = AreShares({read.accuracy, read.balancedAccuracy});
  for (auto* rates : {&read.sensitivity, &read.specificity, &read.auc}) {
    if (!ReadNumbers(stream, count, rates)) return false;
    areShares = areShares && AreShares(*rates);
  }
  *figures = std::move(read);
  return areShares;
}

}  // namespace

void WriteValidation(const StoredValidation& validation, std::ostream& stream) {
  WriteBinaryString(validation.folds.c_str(), stream);
  WriteInteger(validation.groups, stream);
  WriteInteger(validation.repeats, stream);
  WriteArray(&validation.seed, 1, sizeof(validation.seed), stream);
  WriteBinaryString(validation.rule.c_str(), stream);
  WriteInteger(validation.chosen, stream);
  WriteInteger(static_cast<int>(validation.components.size()), stream);
  for (const auto* entries : {&validation.components, &validation.xFromY}) {
    for (const StoredValidationEntry& entry : *entries) WriteEntry(entry, stream);
  }
  WriteInteger(static_cast<int>(validation.cvAnova.size()), stream);
  for (const std::optional<CvAnova>& anova : validation.cvAnova) WriteAnova(anova, stream);
  WritePermutation(validation.permutation, stream);
  WriteJackKnife(validation.jackKnife, stream);
}

/// Words that texts and JSON repeat.
bool AreKnown(const StoredValidation& validation) {
  return (FoldSchemeOfWord(validation.folds) || validation.folds == kFoldsOfLabels) &&
         (validation.rule.empty() || SelectionRuleOfWord(validation.rule)) && validation.chosen >= 0;
}

bool ReadValidation(std::istream& stream, const JudgedColumns& columns, StoredValidation* validation) {
  std::size_t count = 0;
  return ReadText(&validation->folds, stream) && ReadInteger(&validation->groups, stream) && validation->groups >= 2 &&
         ReadInteger(&validation->repeats, stream) && validation->repeats >= 1 &&
         ReadArray(&validation->seed, 1, sizeof(validation->seed), stream) && ReadText(&validation->rule, stream) &&
         ReadInteger(&validation->chosen, stream) && AreKnown(*validation) && ReadCount(stream, 1, &count) &&
         ReadEntries(stream, count, columns.kinds, columns.y, columns.classes, &validation->components) &&
         ReadEntries(stream, columns.bothWays ? count : 0, columns.kinds, columns.x, /*hasClasses=*/false,
                     &validation->xFromY) &&
         ReadAnovas(stream, columns.y, &validation->cvAnova) && ReadPermutation(stream, &validation->permutation) &&
         ReadJackKnife(stream, columns, &validation->jackKnife) && IsAtEnd(stream);
}

void WriteClassFigures(const StoredClasses& classes, std::ostream& stream) {
  WriteFigures(classes.fitted, stream);
  WriteFigures(classes.leftOut, stream);
}

bool ReadClassFigures(std::istream& stream, std::size_t count, StoredClasses* classes) {
  return ReadFigures(stream, count, &classes->fitted) && ReadFigures(stream, count, &classes->leftOut) &&
         IsAtEnd(stream);
}

}  // namespace kalmia::analysis
