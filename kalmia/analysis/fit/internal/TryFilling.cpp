#include "kalmia/analysis/fit/internal/TryFilling.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>

#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kOneOf = 10;  ///< one of so many present cells is hidden
constexpr int kMostComponents = 15;
constexpr int kEnoughCells = 1000;  ///< hidden in all the trials of a choice
constexpr std::uint32_t kMostTrials = 10;
constexpr int kPatience = 3;       ///< so many further components may fail to make the error smaller
constexpr double kSmaller = 0.99;  ///< of the error before: less of a change is chance
constexpr std::uint32_t kSeedOfReport = 0;

struct Place {
  int row;
  int column;
};

/// Present cells of the columns that vary.
std::vector<Place> Candidates(const NCDataMatrix<float>& cells) {
  std::vector<Place> places;
  for (int c = 1; c <= cells.SizeColumns(); ++c) {
    if (IsConstant(cells, c)) continue;
    for (int r = 1; r <= cells.SizeRows(); ++r) {
      if (cells[r][c] != kMissingCell<float>) places.push_back({r, c});
    }
  }
  return places;
}

/// In an order that is the same on every machine: the engine's numbers are laid down, a library's shuffle is not.
void Shuffle(std::uint32_t seed, std::vector<Place>* places) {
  std::mt19937 engine(seed);
  for (std::size_t i = places->size(); i > 1; --i) std::swap((*places)[i - 1], (*places)[engine() % i]);
}

/// The columns with a tenth of their cells hidden, but no row's or column's last one.
struct Hidden {
  NumberColumns rest;
  std::vector<Place> places;
};

Hidden Hide(const NumberColumns& columns, std::uint32_t seed) {
  Hidden hidden{columns, {}};
  std::vector<Place> candidates = Candidates(columns.cells);
  const std::size_t wanted = candidates.size() / kOneOf;
  Shuffle(seed, &candidates);
  NCDataMatrix<float>& rest = hidden.rest.cells;
  const NCDataMatrix<float>& now = rest;
  for (const Place& place : candidates) {
    if (hidden.places.size() == wanted) break;
    const bool lastOfRow = now[place.row].GetNumMisVal() + 1 == now.SizeColumns();
    const bool lastOfColumn = now.GetColumnMisVal(place.column) + 1 == now.SizeRows();
    if (lastOfRow || lastOfColumn) continue;
    rest(place.row, place.column, kMissingCell<float>);
    hidden.places.push_back(place);
  }
  return hidden;
}

/// Sums of squared errors on the way to their roots.
void Add(double squareOfFilled, double squareOfMeans, FillError* error) {
  ++error->cells;
  error->filled += squareOfFilled;
  error->means += squareOfMeans;
}

void TakeRoots(FillError* error) {
  error->filled = std::sqrt(error->filled / error->cells);
  error->means = std::sqrt(error->means / error->cells);
}

/// Compares what was filled into the hidden cells with what is there.
FillTrial Compare(const NumberColumns& columns, const Hidden& hidden, const FilledColumns& filled) {
  FillTrial trial;
  trial.components = filled.model.components;
  std::vector<FillError> errors(columns.names.size());
  for (const Place& place : hidden.places) {
    const float estimate = filled.cells[place.row][place.column];
    if (estimate == kMissingCell<float>) continue;  // of a row that is left with constant columns
    const auto variance = std::pow(static_cast<double>(columns.cells.GetColumnStdDev(place.column)), 2);
    const double truth = columns.cells[place.row][place.column];
    const double mean = static_cast<double>(hidden.rest.cells.GetColumnMean(place.column));
    const double ofFilled = (estimate - truth) * (estimate - truth);
    const double ofMean = (mean - truth) * (mean - truth);
    Add(ofFilled, ofMean, &errors[static_cast<std::size_t>(place.column) - 1]);
    Add(ofFilled / variance, ofMean / variance, &trial.all);
  }
  for (std::size_t c = 0; c < errors.size(); ++c) {
    if (errors[c].cells == 0) continue;
    errors[c].name = columns.names[c];
    TakeRoots(&errors[c]);
    trial.columns.push_back(errors[c]);
  }
  if (trial.all.cells > 0) TakeRoots(&trial.all);
  return trial;
}

/// What the trials of a choice hide.
std::vector<Hidden> TrialsOfChoice(const NumberColumns& columns) {
  std::vector<Hidden> trials;
  std::size_t cells = 0;
  for (std::uint32_t i = 1; i <= kMostTrials && cells < kEnoughCells; ++i) {
    trials.push_back(Hide(columns, kSeedOfReport + i));
    if (trials.back().places.empty()) return {};
    cells += trials.back().places.size();
  }
  return trials;
}

/// The root mean square error of all trials with so many components; nothing where some have fewer, or where no hidden
/// cell could be filled.
std::optional<double> ErrorWith(const NumberColumns& columns, const std::vector<Hidden>& trials, int components,
                                NCProgress* progress) {
  double squares = 0.0;
  int cells = 0;
  for (const Hidden& hidden : trials) {
    const FilledColumns filled = FillColumns(hidden.rest, components, progress);
    if (filled.model.components < components) return std::nullopt;
    const FillError error = Compare(columns, hidden, filled).all;
    squares += error.filled * error.filled * error.cells;
    cells += error.cells;
  }
  if (cells == 0) return std::nullopt;
  return std::sqrt(squares / cells);
}

}  // namespace

FillChoice ChooseComponents(const NumberColumns& columns, NCProgress* progress) {
  FillChoice choice;
  const std::vector<Hidden> trials = TrialsOfChoice(columns);
  if (trials.empty()) return choice;
  choice.trials = static_cast<int>(trials.size());
  for (const Hidden& hidden : trials) choice.hiddenCells += static_cast<int>(hidden.places.size());
  for (int components = 0; components <= kMostComponents; ++components) {
    const std::optional<double> error = ErrorWith(columns, trials, components, progress);
    if (!error) break;
    choice.errors.push_back(*error);
    if (*error < kSmaller * choice.errors[static_cast<std::size_t>(choice.components)]) choice.components = components;
    if (components - choice.components == kPatience) break;
  }
  return choice;
}

FillTrial TryFilling(const NumberColumns& columns, const std::optional<int>& components, NCProgress* progress) {
  const Hidden hidden = Hide(columns, kSeedOfReport);
  const FillChoice choice = components ? FillChoice{} : ChooseComponents(hidden.rest, progress);
  FillTrial trial =
      Compare(columns, hidden, FillColumns(hidden.rest, components.value_or(choice.components), progress));
  trial.choice = choice;
  return trial;
}

}  // namespace kalmia::analysis
