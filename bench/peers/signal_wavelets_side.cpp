// Kalmia's side of the comparison in signal_wavelets.py: reads a table of raw 4-byte floats, row by row, and times
// wavelet transforms of its rows and their inverses.
//
//     signal_wavelets_side FILE ROWS COLUMNS FAMILY ORDER SECONDS
//
// FAMILY is the number of the family, ORDER the name of the order. Repeats for SECONDS, twice at least. Prints the
// seconds of each forward transform on one line, of each backward transform on the next, the largest gap of a cell
// after the round trip, then the coefficients of the first row.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

using Matrix = NCDataMatrix<float>;

Matrix ReadRows(std::ifstream& file, int rows, int columns) {
  Matrix matrix(0, columns);
  std::vector<float> cells(static_cast<std::size_t>(columns));
  for (int r = 1; r <= rows; ++r) {
    file.read(reinterpret_cast<char*>(cells.data()), static_cast<std::streamsize>(cells.size() * sizeof(float)));
    NCDataVector<float> row;
    row.CopyZeroBasedVector(cells.data(), columns);
    matrix.push_back(row);
  }
  return matrix;
}

std::unique_ptr<Matrix> Forward(const Matrix& table, const Wavelet::WaveletFilters& filters) {
  NCDataVector<float>*means = nullptr, *slopes = nullptr;
  return std::unique_ptr<Matrix>(Wavelet::ForwardTransformObswise(&table, filters, Wavelet::DetrendNone, means, slopes,
                                                                  nullptr, /*pad=*/true));
}

std::unique_ptr<Matrix> Backward(const Matrix& coefficients, const Wavelet::WaveletFilters& filters) {
  auto table = std::make_unique<Matrix>(0, coefficients.SizeColumns());
  for (const NCDataVector<float>& row : coefficients) {
    const std::unique_ptr<NCDataVector<float>> signal(
        Wavelet::BackwardTransform(&row, filters, Wavelet::DetrendNone, row.Size(), 0, 0, nullptr));
    table->push_back(*signal);
  }
  return table;
}

/// The seconds of each run, run again until the time is over, twice at least.
template <class Run>
std::vector<double> Seconds(double limit, const Run& run) {
  std::vector<double> seconds;
  double total = 0;
  while (seconds.size() < 2 || total < limit) {
    const auto begin = std::chrono::steady_clock::now();
    run();
    seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    total += seconds.back();
  }
  return seconds;
}

void Print(const std::vector<double>& numbers) {
  for (const double number : numbers) std::printf("%.9g ", number);
  std::printf("\n");
}

double LargestGap(const Matrix& a, const Matrix& b) {
  double gap = 0;
  for (int r = 1; r <= a.SizeRows(); ++r)
    for (int c = 1; c <= a.SizeColumns(); ++c)
      gap = std::max(gap, std::fabs(static_cast<double>(a[r][c]) - static_cast<double>(b[r][c])));
  return gap;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fprintf(stderr, "usage: signal_wavelets_side FILE ROWS COLUMNS FAMILY ORDER SECONDS\n");
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  const Matrix table = ReadRows(file, std::atoi(argv[2]), std::atoi(argv[3]));
  if (!file) {
    std::fprintf(stderr, "%s: fewer cells than promised\n", argv[1]);
    return 1;
  }
  const auto family = static_cast<Wavelet::WaveletFunctionType>(std::atoi(argv[4]));
  const int order = Wavelet::GetFunctionOrderIndex(family, argv[5]);
  auto decomposition = Wavelet::GetDecompositionFilter(family, order);
  auto reconstruction = Wavelet::GetReconstructionFilter(family, order);
  if (!decomposition.lowPass) {
    std::fprintf(stderr, "no such family or order\n");
    return 2;
  }
  const double limit = std::atof(argv[6]);
  std::unique_ptr<Matrix> coefficients, back;
  Print(Seconds(limit, [&] { coefficients = Forward(table, decomposition); }));
  Print(Seconds(limit, [&] { back = Backward(*coefficients, reconstruction); }));
  Print({LargestGap(table, *back)});
  const NCDataVector<float>& first = (*coefficients)[1];
  Print({first.begin(), first.end()});
  decomposition.CleanUp();
  reconstruction.CleanUp();
  return 0;
}
