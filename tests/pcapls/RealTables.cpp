#include "RealTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "kalmia/pcapls/NCScale.h"

const char* const kReferenceFolder = "../../tests/pcapls/data/";

std::vector<std::vector<std::string>> ReadCsv(const std::string& name) {
  const std::string path = KALMIA_DATA_DIR "/" + name;
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(file, line);) {
    rows.emplace_back();
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(field);
  }
  return rows;
}

NCDataMatrix<float> ReadColumns(const std::string& table, int first, int last) {
  NCDataMatrix<float> matrix;
  const auto rows = ReadCsv(table + ".csv");
  for (std::size_t i = 1; i < rows.size(); ++i) {
    NCDataVector<float> row(last - first + 1);
    for (int j = 1; j <= row.Size(); ++j) row(j, std::stof(rows[i][static_cast<std::size_t>(first + j - 1)]));
    matrix.push_back(row);
  }
  return matrix;
}

double ScaleToUnitVariance(NCDataMatrix<float>* matrix) {
  NCScale scale(matrix->SizeColumns());
  double lost = 0.0;
  for (int j = 1; j <= matrix->SizeColumns(); ++j) {
    scale.SetType(j, NCScale::ScalingUnitVariance);
    float min = 0.0F;
    float max = 0.0F;
    matrix->GetColumnMinMax(j, min, max);
    const double largest = std::max(std::abs(min), std::abs(max));
    const double inDeviations = largest / static_cast<double>(matrix->GetColumnStdDev(j));
    lost += inDeviations * inDeviations;
  }
  scale.ScaleMatrix(matrix, /*newModel=*/true);
  return 0x1p-24 * std::sqrt(lost / matrix->SizeColumns());
}
