// Smooths the signals of a file, or takes their derivative, and times it; see signal_savgol.py.
//   savgol_side IN OUT SIGNALS CELLS WINDOW POLYNOMIAL DERIVATIVE
// IN and OUT hold SIGNALS x CELLS floats as they lie in memory. Prints the seconds of the fastest of the passes that
// fit one second, two at least.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

void Filter(const Derivate<float>& filter, int derivative, const NCDataMatrix<float>& signals,
            NCDataMatrix<float>& result) {
  for (int r = 1; r <= signals.SizeRows(); ++r) {
    if (derivative == 0)
      filter.Smooth(signals[r], result(r));
    else
      filter.DoDerivate(signals[r], result(r), derivative, /*spacing=*/1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 8) return 2;
  const int rows = std::atoi(argv[3]), columns = std::atoi(argv[4]), window = std::atoi(argv[5]);
  const auto order = static_cast<Derivate<float>::PolynomialOrder>(std::atoi(argv[6]));
  const int derivative = std::atoi(argv[7]);

  NCDataMatrix<float> signals(rows, columns), result(rows, columns);
  std::ifstream in(argv[1], std::ios::binary);
  std::vector<float> cells(static_cast<std::size_t>(columns));
  const auto bytes = static_cast<std::streamsize>(cells.size() * sizeof(float));
  for (int r = 1; r <= rows; ++r) {
    if (!in.read(reinterpret_cast<char*>(cells.data()), bytes)) return 1;
    signals(r).CopyZeroBasedVector(cells.data(), columns);
  }

  double fastest = std::numeric_limits<double>::infinity(), total = 0;
  for (int pass = 0; pass < 2 || total < 1; ++pass) {
    const auto begin = std::chrono::steady_clock::now();
    const Derivate<float> filter(order, window);
    Filter(filter, derivative, signals, result);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    total += seconds;
    if (seconds < fastest) fastest = seconds;
  }
  std::printf("%.6f\n", fastest);

  std::ofstream out(argv[2], std::ios::binary);
  for (const NCDataVector<float>& row : result) out.write(reinterpret_cast<const char*>(row.begin()), bytes);
  return out ? 0 : 1;
}
