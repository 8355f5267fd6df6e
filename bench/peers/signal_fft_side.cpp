// Kalmia's side of signal_fft.py: the power spectra of a table of signals, one row each.
//   signal_fft_side SIGNALS.f32 ROWS COLUMNS SEGMENT ROUNDS
// prints the best time of the rounds in seconds, then a checksum: the sum of all powers.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <vector>

#include "kalmia/signal/FFT.h"

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  const int rows = std::atoi(argv[2]), columns = std::atoi(argv[3]), segment = std::atoi(argv[4]);
  std::vector<float> cells(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
  std::ifstream file(argv[1], std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(cells.data()), static_cast<std::streamsize>(cells.size() * sizeof(float)))) {
    return 1;
  }
  std::vector<NCDataVector<float>> signals(static_cast<std::size_t>(rows)), powers(signals.size());
  for (std::size_t row = 0; row < signals.size(); ++row)
    signals[row].CopyZeroBasedVector(&cells[row * static_cast<std::size_t>(columns)], columns);

  double best = 1e9, sum = 0;
  for (int round = std::atoi(argv[5]); round > 0; --round) {
    const auto begin = std::chrono::steady_clock::now();
    for (std::size_t row = 0; row < signals.size(); ++row)
      FFT::PowerSpectrum(&signals[row], segment, /*overlap=*/true, FFT::DetrendMean, FFT::ScalingPlain,
                         FFT::WindowHann, &powers[row]);
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  for (const NCDataVector<float>& power : powers) sum += static_cast<double>(power.GetSum());
  std::cout.precision(17);
  std::cout << best << ' ' << sum << '\n';
}
