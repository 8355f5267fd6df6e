// A small program of a user of the installed package: fits a PLS model to y = 2 x1 - x2 and predicts it back.
#include <cmath>
#include <cstdio>

#include "kalmia/kalmia.h"

int main() {
  const int rows = 6;
  NCDataMatrix<float> x(rows, 2, 0.0f), y(rows, 1, 0.0f);
  for (int r = 1; r <= rows; ++r) {
    x(r, 1, static_cast<float>(r - 3.5));
    x(r, 2, static_cast<float>((r * r) % 5 - 2));
    y(r, 1, 2 * x[r][1] - x[r][2]);
  }

  NCPLS model(&x, &y, 200);
  for (int a = 1; a <= 2; ++a) {
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model.CalculateResiduals();
  }

  // Two components span both variables, so y comes back but for the rounding of float cells, a few units of 1e-7 of
  // values below 10.
  const NCDataMatrix<float> coefficients = model.GetRegressionCoefficients(-1);
  const double error1 = std::fabs(coefficients[1][1] - 2.0), error2 = std::fabs(coefficients[2][1] + 1.0);
  std::printf("coefficients %.6f %.6f\n", static_cast<double>(coefficients[1][1]),
              static_cast<double>(coefficients[2][1]));
  return error1 < 1e-5 && error2 < 1e-5 ? 0 : 1;
}
