// Octane numbers from near-infrared spectra as they are, from their first derivatives, and from a tenth of their
// wavelet coefficients: how far the predictions of left-out samples are off.
//
//     gasoline_preprocess examples/data/gasoline.csv
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

constexpr int kGroups = 7, kMostComponents = 6, kKept = 51;  // of 512 coefficients a tenth
constexpr float kNanometres = 2.0f;  // from one channel to the next

using Matrix = NCDataMatrix<float>;

struct Spectra {
  Matrix x;  // one sample a row, one channel a column
  Matrix y;  // one column: the octane number
};

// The file has a header line; then, a line: sample, octane number, spectrum. An empty field is a missing cell.
Spectra ReadGasoline(const char* path) {
  Spectra table;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  while (std::getline(file, line)) {
    NCDataVector<float> spectrum, octane;
    std::istringstream fields(line);
    std::getline(fields, field, ',');
    for (int column = 0; std::getline(fields, field, ','); ++column) {
      const float cell = field.empty() ? -99.0f : std::stof(field);
      (column == 0 ? octane : spectrum).push_back(cell);
    }
    table.x.push_back(spectrum);
    table.y.push_back(octane);
  }
  return table;
}

// The slope of a parabola in a window of 15 channels that slides along each spectrum.
Matrix FirstDerivatives(const Matrix& spectra) {
  const Derivate<float> window(Derivate<float>::Quadratic, /*window=*/15);
  Matrix slopes;
  for (const NCDataVector<float>& spectrum : spectra) {
    NCDataVector<float> slope;
    window.DoDerivate(spectrum, slope, /*order=*/1, kNanometres);
    slopes.push_back(slope);
  }
  return slopes;
}

// Each spectrum, padded to 512 channels, as wavelet coefficients.
Matrix WaveletCoefficients(const Matrix& spectra) {
  const int order = Wavelet::GetFunctionOrderIndex(Wavelet::FunctionSymmlet, "8");
  Wavelet::WaveletFilters filters = Wavelet::GetDecompositionFilter(Wavelet::FunctionSymmlet, order);
  NCDataVector<float>*means = nullptr, *slopes = nullptr;
  const std::unique_ptr<Matrix> coefficients(Wavelet::ForwardTransformObswise(
      &spectra, filters, Wavelet::DetrendNone, means, slopes, /*out=*/nullptr, /*pad=*/true));
  filters.CleanUp();
  return *coefficients;
}

// The columns of largest sum of squares.
NCIntegralVector<int, -99> LargestColumns(const Matrix& table) {
  std::vector<int> columns(static_cast<std::size_t>(table.SizeColumns()));
  std::iota(columns.begin(), columns.end(), 1);
  std::stable_sort(columns.begin(), columns.end(),
                   [&](int a, int b) { return table.GetColumnSS(a, 0) > table.GetColumnSS(b, 0); });
  NCIntegralVector<int, -99> largest;
  for (int k = 0; k < kKept; ++k) largest.push_back(columns[static_cast<std::size_t>(k)]);
  return largest;
}

// The rows of one group, or all others.
Matrix RowsOf(const Matrix& table, int group, bool inGroup) {
  Matrix rows;
  for (int i = 1; i <= table.SizeRows(); ++i) {
    if ((i % kGroups == group) == inGroup) rows.push_back(table[i]);
  }
  return rows;
}

// Takes the column means of the first table off both.
void Centre(Matrix* training, Matrix* others) {
  NCScale scale(training->SizeColumns());
  for (int j = 1; j <= training->SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingCentre);
  scale.ScaleMatrix(training, /*newModel=*/true);
  scale.ScaleMatrix(others, /*newModel=*/false);
}

// Predicts each group of samples by models of all others; root mean square errors with 1, 2, ... components. With
// `compress` the columns are those of largest mean square: in each round of the samples that the model is made of.
std::vector<double> CrossValidatedErrors(const Matrix& x, const Matrix& y, bool compress) {
  std::vector<double> squares(kMostComponents, 0.0);
  for (int group = 0; group < kGroups; ++group) {
    Matrix trainingX = RowsOf(x, group, false), trainingY = RowsOf(y, group, false);
    Matrix othersX = RowsOf(x, group, true), othersY = RowsOf(y, group, true);
    if (compress) {
      const NCIntegralVector<int, -99> kept = LargestColumns(trainingX);
      trainingX.ReduceColumns(kept);
      othersX.ReduceColumns(kept);
    }
    Centre(&trainingX, &othersX);
    Centre(&trainingY, &othersY);
    NCPLS model(&trainingX, &trainingY, /*maxIterations=*/200);
    for (int a = 1; a <= kMostComponents; ++a) {
      model.NextComponent(/*progress=*/nullptr, /*start=*/nullptr, /*quiet=*/true, /*strict=*/true);
      model.CalculateResiduals();
    }
    NCPLSPred prediction(&othersX, model.GetWprim(), model.GetPprim(), model.GetCprim(), /*tolerance=*/0.5f);
    for (double& square : squares) {
      prediction.CalcNextComponent();
      for (int i = 1; i <= othersY.SizeRows(); ++i) {
        square += std::pow(static_cast<double>(othersY[i][1]) - (*prediction.GetYPred())[i][1], 2);
      }
    }
  }
  for (double& square : squares) square = std::sqrt(square / y.SizeRows());
  return squares;
}

void Print(const char* what, int cells, const std::vector<double>& errors) {
  std::printf("%-22s %5d", what, cells);
  for (const double error : errors) std::printf(" %6.3f", error);
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "usage: gasoline_preprocess gasoline.csv\n");
    return 2;
  }
  const Spectra all = ReadGasoline(argv[1]);
  if (all.x.SizeRows() < kGroups) {
    std::fprintf(stderr, "gasoline_preprocess: %s does not hold the samples\n", argv[1]);
    return 3;
  }
  std::printf("cross-validated error of octane, %d samples in %d groups\n\n%-22s %5s", all.x.SizeRows(), kGroups, "",
              "cells");
  for (int a = 1; a <= kMostComponents; ++a) std::printf("      %d", a);
  std::printf("  components\n");
  Print("spectra", all.x.SizeColumns(), CrossValidatedErrors(all.x, all.y, false));
  Print("first derivatives", all.x.SizeColumns(), CrossValidatedErrors(FirstDerivatives(all.x), all.y, false));
  const Matrix coefficients = WaveletCoefficients(all.x);
  Print("wavelet coefficients", kKept, CrossValidatedErrors(coefficients, all.y, true));
  return 0;
} catch (const Exception& error) {
  std::fprintf(stderr, "gasoline_preprocess: %s\n", static_cast<const char*>(error.GetMessage()));
  return 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "gasoline_preprocess: %s\n", error.what());
  return 1;
}
