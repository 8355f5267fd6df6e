#include "FloatRate.h"

#include <benchmark/benchmark.h>

void DoOperations() {
  // Enough chains to hide the time that a product and a sum take.
  double chains[64];
  for (int k = 0; k < 64; ++k) chains[k] = 1.0 + k;
  double factor = 0.999, term = 0.001;
  benchmark::DoNotOptimize(factor);
  benchmark::DoNotOptimize(term);
  for (int i = 0; i < 1000000; ++i)
    for (double& chain : chains) chain = chain * factor + term;
  benchmark::DoNotOptimize(chains);
}
