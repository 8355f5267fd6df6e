// What in the spectra of gasoline tells the octane number, apart from what does not: scale, take orthogonal components
// out while cross-validation says that it helps, and compare the one predictive score with the first score of PLS.
//
//     gasoline_opls examples/data/gasoline.csv
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "kalmia/kalmia.h"

namespace {

struct Spectra {
  NCDataMatrix<float> x;  // one sample a row, one wavelength a column
  NCDataMatrix<float> y;  // octane numbers
};

// The file has a header line; then, a line: sample, octane, absorbances. An empty field is a missing cell.
Spectra ReadSpectra(const char* path) {
  Spectra spectra;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  while (std::getline(file, line)) {
    NCDataVector<float> cells;
    std::istringstream fields(line);
    std::getline(fields, field, ',');
    while (std::getline(fields, field, ',')) cells.push_back(field.empty() ? -99.0f : std::stof(field));
    NCDataVector<float> octane(1);
    octane(1, cells[1]);
    cells.erase(cells.begin());
    spectra.x.push_back(cells);
    spectra.y.push_back(octane);
  }
  return spectra;
}

void Centre(NCDataMatrix<float>* table) {
  NCScale scale(table->SizeColumns());
  for (int j = 1; j <= table->SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingCentre);
  scale.ScaleWithNewModel(table);
}

// Orthogonal components that are worth it: each raises the cross-validated Q2 of the model by more than the limit.
int CountOrthogonal(const Spectra& spectra) {
  OPLSCrossValidation validation(&spectra.x, &spectra.y, /*predictiveComponents=*/1, /*rounds=*/7,
                                 /*progress=*/nullptr, /*groups=*/nullptr);
  std::printf("without orthogonal components   Q2 %5.3f\n", static_cast<double>(validation.GetQ2TotCum()));
  for (int o = 1;; ++o) {
    const float before = validation.GetQ2TotCum();
    validation.NextComponent(/*progress=*/nullptr);
    const bool helps = validation.GetQ2TotCum() - before > validation.GetQ2Lim();
    std::printf("orthogonal component %d          Q2 %5.3f   %s\n", o, static_cast<double>(validation.GetQ2TotCum()),
                helps ? "kept" : "hardly better, left out");
    if (!helps) return o - 1;
  }
}

// The share of the octane numbers' variance that a score has in common with them.
double SharedWithOctane(const NCDataVector<float>& score, const Spectra& spectra) {
  const double r = static_cast<double>(score.Correlation(spectra.y.GetColumn(1)));
  return r * r;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: gasoline_opls gasoline.csv\n");
    return 2;
  }
  Spectra spectra = ReadSpectra(argv[1]);
  Centre(&spectra.x);
  Centre(&spectra.y);
  const int orthogonal = CountOrthogonal(spectra);

  NCOPLS opls(&spectra.x, &spectra.y, /*predictiveComponents=*/1, /*maxIterations=*/200);
  for (int o = 0; o <= orthogonal; ++o) opls.NextComponent(/*progress=*/nullptr);
  NCPLS pls(&spectra.x, &spectra.y, /*maxIterations=*/200);
  pls.NextComponent(/*progress=*/nullptr, /*start=*/nullptr, /*quiet=*/true, /*strict=*/true);

  std::printf("\nshared with octane\n  first score of PLS         %5.3f\n  predictive score of OPLS   %5.3f\n",
              SharedWithOctane((*pls.GetTprim())[1], spectra), SharedWithOctane((*opls.GetTprim())[1], spectra));
  for (int o = 1; o <= orthogonal; ++o) {
    const double ssOfPart =
        static_cast<double>((*opls.GetTOprim())[o].GetSS()) * static_cast<double>((*opls.GetPOprim())[o].GetSS());
    std::printf("  orthogonal score %d         %5.3f, though it holds %.0f %% of the spectra\n", o,
                SharedWithOctane((*opls.GetTOprim())[o], spectra),
                100.0 * ssOfPart / static_cast<double>(spectra.x.GetSS()));
  }
  return 0;
}
