// What sets wines of three cultivars apart: scale thirteen chemical measures, extract principal components one at a
// time while cross-validation says that they hold more than noise, and look at the scores of the wines and the
// loadings of the measures. The cultivar is not used, only printed beside the scores.
//
//     wine_pca examples/data/wine.csv
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

struct Wines {
  std::vector<std::string> measures;   // the names of the columns of x
  std::vector<std::string> cultivars;  // of each row
  NCDataMatrix<float> x;               // one wine a row, one measure a column
};

// The file has a header line; then, a line: sample, cultivar, measures. An empty field is a missing cell.
Wines ReadWines(const char* path) {
  Wines wines;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  std::istringstream names(line);
  for (int column = 0; std::getline(names, field, ','); ++column)
    if (column >= 2) wines.measures.push_back(field);
  while (std::getline(file, line)) {
    NCDataVector<float> cells;
    std::istringstream fields(line);
    std::getline(fields, field, ',');
    std::getline(fields, field, ',');
    wines.cultivars.push_back(field);
    while (std::getline(fields, field, ',')) cells.push_back(field.empty() ? -99.0f : std::stof(field));
    wines.x.push_back(cells);
  }
  return wines;
}

// Adds components while Q2, the share of the table that cross-validation predicts, exceeds its limit.
int FitComponents(NCPCA* model) {
  const double ssOfTable = static_cast<double>(model->GetResiduals()->GetSS());
  NCDataVector<float> ss(model->GetResiduals()->SizeColumns());
  for (int j = 1; j <= ss.Size(); ++j) ss(j, static_cast<float>(model->GetResiduals()->GetColumnSS(j, 0)));
  PCACrossValidation validation(model, /*rounds=*/7, /*observationGroups=*/nullptr, /*variableGroups=*/nullptr);
  for (int a = 1;; ++a) {
    model->NextComponent(/*progress=*/nullptr, /*groups=*/nullptr, /*group=*/0, /*start=*/nullptr);
    validation.NextComponent(ss, /*progress=*/nullptr);
    const bool significant = validation.GetQ2Tot() > validation.GetQ2Lim(a, /*reduceObservations=*/true);
    const double r2x = static_cast<double>((*model->GetTprim())[a].GetSS()) / ssOfTable;
    std::printf("component %d   R2X %5.3f   Q2 %6.3f   cumulated %6.3f   %s\n", a, r2x,
                static_cast<double>(validation.GetQ2Tot()), static_cast<double>(validation.GetQ2TotCum()),
                significant ? "kept" : "not significant, left out");
    if (!significant) return a - 1;
    model->CalculateResiduals();
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "usage: wine_pca wine.csv\n");
    return 2;
  }
  const Wines wines = ReadWines(argv[1]);
  if (wines.x.SizeRows() < 2) {
    std::fprintf(stderr, "wine_pca: %s holds no wines\n", argv[1]);
    return 3;
  }

  NCDataMatrix<float> x = wines.x;  // a share: the cells are copied when the scaling writes to them
  NCScale scale(x.SizeColumns());
  for (int j = 1; j <= x.SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingUnitVariance);
  scale.ScaleMatrix(&x, /*newModel=*/true);
  NCPCA model(&x, /*maxIterations=*/500);
  const int components = FitComponents(&model);
  if (components < 2) return 0;

  const NCDataMatrix<float>& p = *model.GetPprim();
  std::printf("\nmeasure                               p1       p2\n");
  for (int j = 1; j <= p.SizeColumns(); ++j)
    std::printf("%-32s %7.3f  %7.3f\n", wines.measures[j - 1].c_str(), p[1][j], p[2][j]);
  const NCDataMatrix<float>& t = *model.GetTprim();
  std::printf("\nwine  cultivar       t1       t2\n");
  for (int i = 1; i <= t.SizeColumns(); ++i)
    std::printf("%4d  %8s  %7.3f  %7.3f\n", i, wines.cultivars[i - 1].c_str(), t[1][i], t[2][i]);
  return 0;
} catch (const Exception& error) {
  std::fprintf(stderr, "wine_pca: %s\n", static_cast<const char*>(error.GetMessage()));
  return 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "wine_pca: %s\n", error.what());
  return 1;
}
