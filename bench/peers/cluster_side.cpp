// Kalmia's side of the comparison in cluster.py: reads a table of raw 4-byte floats, row by row, and clusters its rows.
//
//     cluster_side FILE ROWS COLUMNS single|ward THREADS REPEATS
//
// Prints the seconds of each repeat on one line, the peak of the memory in bytes on the next, then the merges as
// scipy.cluster.hierarchy numbers them: two clusters, from 0, those merged in the k-th step being ROWS + k; and the
// height, for Ward the increase in the sum of squares.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

using NCMultiThreading::ThreadingControl;

NCDataMatrix<float> ReadTable(const char* name, int rows, int columns) {
  std::ifstream file(name, std::ios::binary);
  NCDataMatrix<float> table(0, columns);
  std::vector<float> cells(static_cast<std::size_t>(columns));
  for (int r = 1; r <= rows; ++r) {
    file.read(reinterpret_cast<char*>(cells.data()), static_cast<std::streamsize>(cells.size() * sizeof(float)));
    NCDataVector<float> row;
    row.CopyZeroBasedVector(cells.data(), columns);
    table.push_back(row);
  }
  return table;
}

std::unique_ptr<DendroGram::ClusterDistanceCalculator> Calculator(const char* method) {
  using DendroGram::WardDistanceCalculator;
  if (std::strcmp(method, "single") == 0) return std::make_unique<DendroGram::SingleLinkageDistanceCalculator>();
  return std::make_unique<WardDistanceCalculator>(WardDistanceCalculator::DistanceIncrease);
}

/// Of this process alone: what getrusage tells begins with the process that started it. 0 where it cannot be learned.
long long PeakOfMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;)
    if (long long kilobytes = 0; word == "VmHWM:" && status >> kilobytes) return 1024 * kilobytes;
  return 0;
}

double SecondsOfTree(const NCDataMatrix<float>& table, const char* method) {
  const std::unique_ptr<DendroGram::ClusterDistanceCalculator> calculator = Calculator(method);
  const auto begin = std::chrono::steady_clock::now();
  DendroGram::DendroGramNode* const root = DendroGram::GetDendroGram(table, *calculator, nullptr, nullptr);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  DendroGram::DendroGramNode::Destroy(root);
  return seconds.count();
}

void PrintMerges(const NCDataMatrix<float>& table, const char* method) {
  const std::unique_ptr<DendroGram::ClusterDistanceCalculator> calculator = Calculator(method);
  calculator->Init(table, nullptr);
  std::vector<int> numbers(static_cast<std::size_t>(table.SizeRows()));
  std::iota(numbers.begin(), numbers.end(), 0);
  for (int merged = table.SizeRows(); numbers.size() > 1; ++merged) {
    int i = 0, j = 0;
    const double height = static_cast<double>(calculator->FindNearestAndMerge(i, j));
    int& stays = numbers[static_cast<std::size_t>(i)];
    std::printf("%d %d %.9g\n", stays, numbers[static_cast<std::size_t>(j)], height);
    stays = merged;
    numbers.erase(numbers.begin() + j);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fprintf(stderr, "usage: cluster_side FILE ROWS COLUMNS single|ward THREADS REPEATS\n");
    return 2;
  }
  const NCDataMatrix<float> table = ReadTable(argv[1], std::atoi(argv[2]), std::atoi(argv[3]));
  const int threads = std::atoi(argv[5]), repeats = std::atoi(argv[6]);
  ThreadingControl::SetNumberOfProcessors(threads);
  ThreadingControl::SetThreadingIsOn(threads > 1);
  for (int k = 0; k < repeats; ++k) std::printf("%.6f ", SecondsOfTree(table, argv[4]));
  std::printf("\n%lld\n", PeakOfMemory());
  PrintMerges(table, argv[4]);
  return 0;
}
