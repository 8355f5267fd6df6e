#include "validation/PlainPls.h"

#include <cmath>
#include <cstdlib>

#include "TestTables.h"

using kalmia::analysis::Table;
using kalmia::analysis::RealMatrix;

namespace {

using Vector = std::vector<double>;

struct Scale {
  Vector means, deviations;
};

Scale ScaleOf(const RealMatrix& table, const std::vector<bool>& isTraining) {
  Scale scale;
  for (std::size_t c = 0; c < table.columns; ++c) {
    double n = 0.0, sum = 0.0, squares = 0.0;
    for (std::size_t i = 0; i < table.rows; ++i) {
      if (!isTraining[i]) continue;
      n += 1.0;
      sum += table(i, c);
    }
    for (std::size_t i = 0; i < table.rows; ++i) {
      if (isTraining[i]) squares += std::pow(table(i, c) - sum / n, 2);
    }
    scale.means.push_back(sum / n);
    scale.deviations.push_back(std::sqrt(squares / (n - 1.0)));
  }
  return scale;
}

RealMatrix Scaled(const RealMatrix& table, const Scale& scale) {
  RealMatrix scaled = table;
  for (std::size_t i = 0; i < table.rows; ++i) {
    for (std::size_t c = 0; c < table.columns; ++c) {
      const double s = scale.deviations[c];
      scaled(i, c) = s > 0.0 ? (table(i, c) - scale.means[c]) / s : 0.0;
    }
  }
  return scaled;
}

/// Column sums of the rows that count, each weighed: table' weights / weights' weights.
Vector Regressed(const RealMatrix& table, const Vector& weights, const std::vector<bool>& counts) {
  Vector sums(table.columns, 0.0);
  double squares = 0.0;
  for (std::size_t i = 0; i < table.rows; ++i) {
    if (!counts[i]) continue;
    squares += weights[i] * weights[i];
    for (std::size_t c = 0; c < table.columns; ++c) sums[c] += table(i, c) * weights[i];
  }
  for (double& sum : sums) sum /= squares;
  return sums;
}

Vector Times(const RealMatrix& table, const Vector& v) {
  Vector product(table.rows, 0.0);
  for (std::size_t i = 0; i < table.rows; ++i) {
    for (std::size_t c = 0; c < table.columns; ++c) product[i] += table(i, c) * v[c];
  }
  return product;
}

void Subtract(RealMatrix* table, const Vector& scores, const Vector& loadings) {
  for (std::size_t i = 0; i < table->rows; ++i) {
    for (std::size_t c = 0; c < table->columns; ++c) (*table)(i, c) -= scores[i] * loadings[c];
  }
}

/// The weights of the next component, of unit length.
Vector Weights(const RealMatrix& x, const RealMatrix& y, const std::vector<bool>& isTraining) {
  Vector u(y.rows), w;
  std::size_t largest = 0;
  double most = -1.0;
  for (std::size_t c = 0; c < y.columns; ++c) {
    double squares = 0.0;
    for (std::size_t i = 0; i < y.rows; ++i) squares += isTraining[i] ? y(i, c) * y(i, c) : 0.0;
    if (squares > most) most = squares, largest = c;
  }
  for (std::size_t i = 0; i < y.rows; ++i) u[i] = y(i, largest);
  for (int round = 0; round < 5000; ++round) {
    Vector next = Regressed(x, u, isTraining);
    double length = 0.0, moved = 0.0;
    for (const double cell : next) length += cell * cell;
    for (double& cell : next) cell /= std::sqrt(length);
    for (std::size_t k = 0; k < next.size() && !w.empty(); ++k) moved += std::pow(next[k] - w[k], 2);
    const bool isDone = !w.empty() && moved < 1e-26;
    w = next;
    if (isDone || y.columns == 1) break;
    u = Times(y, Regressed(y, Times(x, w), isTraining));
  }
  return w;
}

RealMatrix Unscaled(const RealMatrix& scaled, const Scale& scale) {
  RealMatrix table = scaled;
  for (std::size_t i = 0; i < table.rows; ++i) {
    for (std::size_t j = 0; j < table.columns; ++j) {
      table(i, j) = scale.means[j] + scale.deviations[j] * scaled(i, j);
    }
  }
  return table;
}

}  // namespace

PlainPls FitPlainPls(const RealMatrix& x, const RealMatrix& y, const std::vector<bool>& isTraining, int components) {
  const Scale xScale = ScaleOf(x, isTraining), yScale = ScaleOf(y, isTraining);
  RealMatrix xLeft = Scaled(x, xScale), yLeft = Scaled(y, yScale), sum(y.rows, y.columns);
  PlainPls model;
  model.scores = RealMatrix(x.rows, static_cast<std::size_t>(components));
  model.predicted.push_back(Unscaled(sum, yScale));
  for (std::size_t a = 0; a < model.scores.columns; ++a) {
    const Vector t = Times(xLeft, Weights(xLeft, yLeft, isTraining));
    const Vector p = Regressed(xLeft, t, isTraining), c = Regressed(yLeft, t, isTraining);
    Subtract(&xLeft, t, p);
    Subtract(&yLeft, t, c);
    for (std::size_t i = 0; i < y.rows; ++i) {
      model.scores(i, a) = t[i];
      for (std::size_t j = 0; j < y.columns; ++j) sum(i, j) += t[i] * c[j];
    }
    model.predicted.push_back(Unscaled(sum, yScale));
  }
  for (std::size_t i = 0; i < x.rows; ++i) {
    model.xResiduals.push_back(0.0);
    for (std::size_t k = 0; k < x.columns; ++k) model.xResiduals[i] += xLeft(i, k) * xLeft(i, k);
  }
  return model;
}

void ForRounds(const RealMatrix& x, const RealMatrix& y, const kalmia::analysis::Folds& folds, int components,
               const std::function<void(const PlainPls&, const std::vector<std::size_t>&)>& use) {
  for (int g = 0; g < folds.groups; ++g) {
    const std::vector<std::size_t> leftOut = RowsOfGroup(folds, 0, g);
    std::vector<bool> isTraining(x.rows, true);
    for (const std::size_t i : leftOut) isTraining[i] = false;
    use(FitPlainPls(x, y, isTraining, components), leftOut);
  }
}

kalmia::analysis::LeftOutErrors LeftOutErrorsOfPlainPls(const RealMatrix& x, const RealMatrix& y,
                                                        const kalmia::analysis::Folds& folds, int components) {
  std::vector<RealMatrix> predicted(static_cast<std::size_t>(components) + 1, RealMatrix(y.rows, y.columns));
  ForRounds(x, y, folds, components, [&](const PlainPls& model, const std::vector<std::size_t>& leftOut) {
    for (std::size_t a = 0; a < predicted.size(); ++a) {
      for (const std::size_t i : leftOut) {
        for (std::size_t j = 0; j < y.columns; ++j) predicted[a](i, j) = model.predicted[a](i, j);
      }
    }
  });
  return kalmia::analysis::JudgeLeftOutRows(y, {predicted});
}

RealMatrix ColumnsOfFile(const std::string& path, int first, int count) {
  const Table table = CsvAt(path);
  RealMatrix matrix(static_cast<std::size_t>(table.Rows()), static_cast<std::size_t>(count));
  for (int i = 0; i < table.Rows(); ++i) {
    for (int c = 0; c < count; ++c) {
      matrix(static_cast<std::size_t>(i), static_cast<std::size_t>(c)) =
          std::strtod(std::string(table.Cell(i, first + c)).c_str(), nullptr);
    }
  }
  return matrix;
}

std::vector<std::string> WordsOfFile(const std::string& path, int column) {
  const Table table = CsvAt(path);
  std::vector<std::string> words;
  for (int i = 0; i < table.Rows(); ++i) words.emplace_back(table.Cell(i, column));
  return words;
}

std::string PathOfIris() { return KALMIA_ANALYSIS_DATA_DIR "/iris.csv"; }
std::string PathOfWine() { return KALMIA_ANALYSIS_DATA_DIR "/../../../examples/data/wine.csv"; }
