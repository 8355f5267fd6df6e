// What two halves of a spectrum share, and what is each one's own: split gasoline spectra at 1300 nm, let
// cross-validation find the numbers of components, and see which part knows the octane number, which neither was told.
//
//     gasoline_o2pls examples/data/gasoline.csv
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "kalmia/kalmia.h"

namespace {

constexpr int kShortWaves = 200;  // columns below 1300 nm

struct Spectra {
  NCDataMatrix<float> x;  // 900 to 1298 nm, one sample a row
  NCDataMatrix<float> y;  // 1300 to 1700 nm
  NCDataVector<float> octane;
};

// The file has a header line; then, a line: sample, octane, absorbances.
Spectra ReadSpectra(const char* path) {
  Spectra spectra;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::getline(fields, field, ',');
    std::getline(fields, field, ',');
    spectra.octane.push_back(std::stof(field));
    NCDataVector<float> shortWaves, longWaves;
    while (std::getline(fields, field, ','))
      (shortWaves.Size() < kShortWaves ? shortWaves : longWaves).push_back(std::stof(field));
    spectra.x.push_back(shortWaves);
    spectra.y.push_back(longWaves);
  }
  return spectra;
}

void ScaleToUnitVariance(NCDataMatrix<float>* block) {
  NCScale scale(block->SizeColumns());
  for (int j = 1; j <= block->SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingUnitVariance);
  scale.ScaleWithNewModel(block);
}

double SumOfSquares(const NCDataMatrix<float>& table) { return static_cast<double>(table.GetSS()); }

// Takes what the components describe out of a block and returns its share of the whole.
double TakeOut(const NCDataMatrix<float>& scores, const NCDataMatrix<float>& loadings, double whole,
               NCDataMatrix<float>* left) {
  const double before = SumOfSquares(*left);
  for (int a = 1; a <= scores.SizeRows(); ++a) left->AddVprimV(scores[a], loadings[a], -1.0f);
  return (before - SumOfSquares(*left)) / whole;
}

void PrintShares(const char* name, const NCDataMatrix<float>& block, const NCDataMatrix<float>& uniqueScores,
                 const NCDataMatrix<float>& uniqueLoadings, const NCDataMatrix<float>& scores,
                 const NCDataMatrix<float>& loadings) {
  NCDataMatrix<float> left = block;
  const double whole = SumOfSquares(block);
  const double unique = TakeOut(uniqueScores, uniqueLoadings, whole, &left);
  const double joint = TakeOut(scores, loadings, whole, &left);
  std::printf("  %s   joint %5.3f   unique %5.3f   rest %5.3f\n", name, joint, unique, 1.0 - joint - unique);
}

// Of each score the share of its variance that it has in common with the octane number.
void PrintOctane(const char* name, const NCDataMatrix<float>& scores, const NCDataVector<float>& octane) {
  for (int a = 1; a <= scores.SizeRows(); ++a) {
    const double r = static_cast<double>(scores[a].Correlation(octane));
    std::printf("  %-24s %d   %5.3f\n", name, a, r * r);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: gasoline_o2pls gasoline.csv\n");
    return 2;
  }
  Spectra spectra = ReadSpectra(argv[1]);
  ScaleToUnitVariance(&spectra.x);
  ScaleToUnitVariance(&spectra.y);
  spectra.octane -= spectra.octane.GetMean();  // correlations are those of centred vectors

  // Negative numbers ask for a search; seven groups of rows are left out in turn.
  const O2PLSCrossValidation validation(&spectra.x, &spectra.y, /*cvGroups=*/7, /*progress=*/nullptr,
                                        /*groups=*/nullptr, /*maxIterations=*/500, -1, -1, -1);
  const O2PLSCVResults& found = validation.GetResults();
  std::printf("%d joint components, %d unique to 900-1298 nm, %d unique to 1300-1700 nm; Q2 %5.3f\n\n",
              found.PredictiveComponents, found.XSideComponents, found.YSideComponents,
              static_cast<double>(found.Q2Cum[found.PredictiveComponents]));

  NCO2PLS model(spectra.x, spectra.y, /*checkDimensions=*/true, /*maxIterations=*/500);
  model.Fit(found.PredictiveComponents, found.XSideComponents, found.YSideComponents);
  std::printf("shares of the variance\n");
  PrintShares(" 900-1298 nm", spectra.x, model.GetTo(), model.GetPo(), model.GetT(), model.GetP());
  PrintShares("1300-1700 nm", spectra.y, model.GetUo(), model.GetQo(), model.GetU(), model.GetQ());

  std::printf("\nshared with octane\n");
  PrintOctane("joint score", model.GetT(), spectra.octane);
  PrintOctane("unique to 900-1298 nm", model.GetTo(), spectra.octane);
  PrintOctane("unique to 1300-1700 nm", model.GetUo(), spectra.octane);
  return 0;
}
