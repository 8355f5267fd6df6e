// Octane numbers from near-infrared spectra: scale, fit a PLS model one component at a time while cross-validation
// says that it predicts, then predict ten samples that the model has not seen.
//
//     gasoline_pls examples/data/gasoline.csv
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "kalmia/kalmia.h"

namespace {

struct Spectra {
  NCDataMatrix<float> x;  // one sample a row, one channel a column
  NCDataMatrix<float> y;  // one column: the octane number
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

// Fits centres and factors to the matrix and scales it in place.
void FitScale(NCScale* scale, NCScale::Scaling type, NCDataMatrix<float>* matrix) {
  for (int j = 1; j <= matrix->SizeColumns(); ++j) scale->SetType(j, type);
  scale->ScaleMatrix(matrix, /*newModel=*/true);
}

// Adds components while Q2, the share of Y that cross-validation predicts, exceeds its limit. Returns how many.
int FitComponents(NCPLS* model) {
  NCDataVector<float> ssY(1);
  ssY(1, static_cast<float>(model->GetYResiduals()->GetColumnSS(1, 0)));
  PLSCrossValidation validation(model, /*rounds=*/7, /*observationGroups=*/nullptr);
  for (int a = 1;; ++a) {
    model->NextComponent(/*progress=*/nullptr, /*start=*/nullptr, /*quiet=*/true, /*strict=*/true);
    const NCDataVector<float>& w = (*model->GetWprim())[a];
    validation.NextComponent(&w, /*maxIterations=*/200, ssY, /*progress=*/nullptr, /*quiet=*/true);
    const bool significant = validation.GetQ2Tot() > validation.GetQ2Lim();
    std::printf("component %d   Q2 %6.3f   cumulated %6.3f   %s\n", a, static_cast<double>(validation.GetQ2Tot()),
                static_cast<double>(validation.GetQ2TotCum()), significant ? "kept" : "not significant, left out");
    if (!significant) return a - 1;
    model->CalculateResiduals();
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "usage: gasoline_pls gasoline.csv\n");
    return 2;
  }
  const Spectra all = ReadGasoline(argv[1]);
  if (all.x.SizeRows() <= 50) {
    std::fprintf(stderr, "gasoline_pls: %s does not hold the 60 samples\n", argv[1]);
    return 3;
  }

  // Fit on the first 50 samples. Copies share their cells until one of them is written to.
  NCDataMatrix<float> x = all.x.GetRowSubMatrix(1, 50), y = all.y.GetRowSubMatrix(1, 50);
  NCScale scaleX(x.SizeColumns()), scaleY(1);
  FitScale(&scaleX, NCScale::ScalingUnitVariance, &x);
  FitScale(&scaleY, NCScale::ScalingUnitVariance, &y);
  NCPLS model(&x, &y, /*maxIterations=*/200);
  const int components = FitComponents(&model);

  // Predict the others, and bring the predictions back to octane numbers.
  const int newRows = all.x.SizeRows() - 50;
  NCDataMatrix<float> newX = all.x.GetRowSubMatrix(51, all.x.SizeRows());
  scaleX.ScaleMatrix(&newX, /*newModel=*/false);
  NCPLSPred prediction(&newX, model.GetWprim(), model.GetPprim(), model.GetCprim(), /*tolerance=*/0.5f);
  for (int a = 1; a <= components; ++a) prediction.CalcNextComponent();

  const double centre = (*scaleY.GetCentres())[1], factor = (*scaleY.GetScales())[1];
  double sumOfSquares = 0;
  std::printf("\nsample   octane   predicted\n");
  for (int i = 1; i <= newRows; ++i) {
    const double octane = all.y[50 + i][1], predicted = (*prediction.GetYPred())[i][1] / factor + centre;
    sumOfSquares += (octane - predicted) * (octane - predicted);
    std::printf("%6d %8.2f %11.2f\n", 50 + i, octane, predicted);
  }
  std::printf("\n%d components, RMSEP %.3f octane units\n", components, std::sqrt(sumOfSquares / newRows));
  return 0;
} catch (const Exception& error) {
  std::fprintf(stderr, "gasoline_pls: %s\n", static_cast<const char*>(error.GetMessage()));
  return 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "gasoline_pls: %s\n", error.what());
  return 1;
}
