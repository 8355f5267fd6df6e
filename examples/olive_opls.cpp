// What in the chemistry of olive oils tells how a panel judges them, apart from what does not: several Y at once.
// Scale, ask cross-validation about each size of the predictive block, and look at what one orthogonal component sets
// apart from the common direction of both tables.
//
//     olive_opls examples/data/oliveoil.csv
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

// The cross-validated Q2 of the panel: of the predictive block alone, and with one orthogonal component.
void PrintQ2(const Oils& oils, int predictive) {
  OPLSCrossValidation validation(&oils.chemistry, &oils.panel, predictive, /*rounds=*/7, /*progress=*/nullptr,
                                 /*groups=*/nullptr);
  const auto alone = static_cast<double>(validation.GetQ2TotCum());
  validation.NextComponent(/*progress=*/nullptr);
  std::printf("%d predictive   Q2 %5.3f   with one orthogonal %5.3f\n", predictive, alone,
              static_cast<double>(validation.GetQ2TotCum()));
}

// t p' of one component, as a share of the sum of squares of the table.
double Share(const NCDataVector<float>& t, const NCDataVector<float>& p, const NCDataMatrix<float>& table) {
  return static_cast<double>(t.GetSS()) * static_cast<double>(p.GetSS()) / static_cast<double>(table.GetSS());
}

void PrintVectors(const char* title, const NCDataVector<float>& predictive, const NCDataVector<float>& orthogonal,
                  const std::vector<std::string>& names, std::size_t first) {
  std::printf("\n%-12s  predictive  orthogonal\n", title);
  for (int j = 1; j <= predictive.Size(); ++j)
    std::printf("  %-10s  %10.3f  %10.3f\n", names[first + static_cast<std::size_t>(j) - 1].c_str(),
                static_cast<double>(predictive[j]), static_cast<double>(orthogonal[j]));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: olive_opls oliveoil.csv\n");
    return 2;
  }
  Oils oils = ReadOils(argv[1]);
  ScaleToUnitVariance(&oils.chemistry);
  ScaleToUnitVariance(&oils.panel);

  // Size 0 leaves it to the model: the directions of note in what the two blocks have in common.
  NCOPLS automatic(&oils.chemistry, &oils.panel, /*predictiveComponents=*/0, /*maxIterations=*/200);
  automatic.NextComponent(/*progress=*/nullptr);
  std::printf("directions of note: %d\n", automatic.SizeComponents());
  for (int predictive = 1; predictive <= automatic.SizeComponents(); ++predictive) PrintQ2(oils, predictive);

  NCOPLS model(&oils.chemistry, &oils.panel, /*predictiveComponents=*/1, /*maxIterations=*/200);
  for (int component = 0; component <= 1; ++component) model.NextComponent(/*progress=*/nullptr);
  const NCDataVector<float>&t = (*model.GetTprim())[1], &to = (*model.GetTOprim())[1];
  const NCDataVector<float>&p = (*model.GetPprim())[1], &po = (*model.GetPOprim())[1];
  const NCDataVector<float>&c = (*model.GetCprim())[1], &co = (*model.GetCOprim())[1];
  PrintVectors("chemistry", p, po, oils.columns, 0);
  PrintVectors("panel", c, co, oils.columns, kChemical);
  std::printf("\n%-12s  %10.2f  %10.2f\n%-12s  %10.2f  %10.2f\n", "of chemistry", Share(t, p, oils.chemistry),
              Share(to, po, oils.chemistry), "of the panel", Share(t, c, oils.panel), Share(to, co, oils.panel));
  return 0;
}
