// What chemistry and tasters have in common about olive oils: two blocks of the same oils, the components that they
// share, and how well each tells the other.
//
//     olive_o2pls examples/data/oliveoil.csv
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

constexpr int kChemical = 5;  // columns; the others are those of the panel

struct Oils {
  std::vector<std::string> columns;
  NCDataMatrix<float> chemistry;  // one oil a row
  NCDataMatrix<float> panel;
};

// The file has a header line; then, a line: name, five chemical measures, six scores of a sensory panel.
Oils ReadOils(const char* path) {
  Oils oils;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  std::istringstream header(line);
  std::getline(header, field, ',');
  while (std::getline(header, field, ',')) oils.columns.push_back(field);
  while (std::getline(file, line)) {
    NCDataVector<float> chemistry, panel;
    std::istringstream fields(line);
    std::getline(fields, field, ',');
    while (std::getline(fields, field, ','))
      (chemistry.Size() < kChemical ? chemistry : panel).push_back(std::stof(field));
    oils.chemistry.push_back(chemistry);
    oils.panel.push_back(panel);
  }
  return oils;
}

void ScaleToUnitVariance(NCDataMatrix<float>* block) {
  NCScale scale(block->SizeColumns());
  for (int j = 1; j <= block->SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingUnitVariance);
  scale.ScaleWithNewModel(block);
}

void PrintLoadings(const NCDataMatrix<float>& loadings, const std::vector<std::string>& names, std::size_t first) {
  for (int j = 1; j <= loadings.SizeColumns(); ++j) {
    std::printf("  %-10s", names[first + static_cast<std::size_t>(j) - 1].c_str());
    for (int a = 1; a <= loadings.SizeRows(); ++a) std::printf("  %6.3f", static_cast<double>(loadings[a][j]));
    std::printf("\n");
  }
}

// 1 - sum of squared errors / sum of squares.
double Described(const NCDataMatrix<float>& block, const NCDataMatrix<float>& prediction) {
  return 1.0 - static_cast<double>((block - prediction).GetSS()) / static_cast<double>(block.GetSS());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: olive_o2pls oliveoil.csv\n");
    return 2;
  }
  Oils oils = ReadOils(argv[1]);
  ScaleToUnitVariance(&oils.chemistry);
  ScaleToUnitVariance(&oils.panel);

  const O2PLSCrossValidation validation(&oils.chemistry, &oils.panel, /*cvGroups=*/7, /*progress=*/nullptr,
                                        /*groups=*/nullptr, /*maxIterations=*/500, -1, -1, -1);
  const O2PLSCVResults& found = validation.GetResults();
  std::printf("%d joint components, %d unique to chemistry, %d unique to the panel\n\n", found.PredictiveComponents,
              found.XSideComponents, found.YSideComponents);
  for (int a = 1; a <= found.PredictiveComponents; ++a)
    std::printf("Q2 of the panel with %d joint components   %5.3f\n", a, static_cast<double>(found.Q2Cum[a]));

  NCO2PLS model(oils.chemistry, oils.panel, /*checkDimensions=*/true, /*maxIterations=*/500);
  model.Fit(found.PredictiveComponents, found.XSideComponents, found.YSideComponents);
  std::printf("\njoint components: loadings\n");
  PrintLoadings(model.GetP(), oils.columns, 0);
  std::printf("\n");
  PrintLoadings(model.GetQ(), oils.columns, kChemical);

  std::printf("\npanel predicted from chemistry    %.2f of its variance\n",
              Described(oils.panel, NCO2PLSYPred(&oils.chemistry, &model).GetYPred()));
  std::printf("chemistry predicted from panel    %.2f of its variance\n",
              Described(oils.chemistry, NCO2PLSXPred(&oils.panel, &model).GetXPred()));
  return 0;
}
