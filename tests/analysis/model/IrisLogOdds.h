#pragma once

#include <cstddef>
#include <vector>

/// Log odds of the three species for one iris.
struct IrisLogOdds {
  std::size_t row;  ///< from 1
  std::vector<double> odds;
};

/// Some irises by scikit-learn 1.2.1 on the dummies that a PLS model of 3 components fits: data/iris_log_odds.py.
inline std::vector<IrisLogOdds> LogOddsOfScikitLearn() {
  return {{1, {43.27727118221863, -43.27727118221863, -86.18314617465334}},
          {51, {-37.51017668526842, 8.116508168484856, -8.116508168485028}},
          {71, {-53.83054819659979, -0.6732825420329817, 0.6732825420329817}},
          {84, {-59.817634730705045, -0.5221915269187135, 0.5221915269187135}},
          {107, {-62.82235653014163, -1.8836317486741745, 1.8836317486741745}},
          {134, {-53.303269200364625, 2.052729001237849, -2.052729001237849}}};
}
