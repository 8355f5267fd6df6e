#!/usr/bin/env bash
# What takes too long for every change: all tests under clang++ and under the thread sanitizer, without precompiled headers
# under clang++, so that each file includes what it uses; the fuzz harnesses for a while; the benchmarks. docs/nightly.md
# keeps the figures of the last run.
#   tools/nightly.sh            all of it
#   tools/nightly.sh clang tsan fuzz bench    some of it
#   FUZZ_SECONDS=3600           for each harness; 600 unless told
set -euo pipefail
cd "$(dirname "$0")/.."

parts=("$@")
if [ ${#parts[@]} -eq 0 ]; then parts=(clang tsan fuzz bench); fi
fuzz_seconds=${FUZZ_SECONDS:-600}

./install-packages.sh clang bench
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}; fi
export CCACHE_SLOPPINESS=pch_defines,time_macros  # or it leaves alone whatever has precompiled headers

failed=()
build() {  # PRESET OPTION...: in build/nightly/PRESET
  cmake --preset "$1" -B "build/nightly/$1" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON "${@:2}" >/dev/null &&
    cmake --build "build/nightly/$1" --parallel "$(nproc)"
}
test_all() {  # PRESET
  ctest --test-dir "build/nightly/$1" --parallel "$(nproc)" --timeout 3600 --output-on-failure
}
clang() { build clang -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON && test_all clang; }
tsan() {  # libomp is not built for the thread sanitizer
  build tsan && TSAN_OPTIONS=ignore_noninstrumented_modules=1 test_all tsan
}
fuzz() {  # What a harness finds on its way stays in its corpus; an input that breaks something is a file crash-*.
  build fuzz || return 1
  local folder=build/nightly/fuzz/fuzz harness kind broken=0
  for harness in StreamsFuzz:streams TableFuzz:tables ModelFileFuzz:models StepsFuzz:steps; do
    kind=${harness#*:} harness=${harness%:*}
    "$folder/$harness" -max_total_time="$fuzz_seconds" -timeout=60 -print_final_stats=1 -verbosity=0 \
      -artifact_prefix="$folder/" "$folder/corpus/$kind" "$folder/seeds/$kind" || broken=1
  done
  return $broken
}
bench() {
  build bench || return 1
  local program
  for program in build/nightly/bench/bench/*Bench; do
    echo "== $program"
    "$program" --benchmark_min_time=0.1 || return 1
  done
}

for part in "${parts[@]}"; do
  case $part in clang | tsan | fuzz | bench) ;; *) echo "tools/nightly.sh has no part '$part'" >&2; exit 2 ;; esac
  echo "== $part, $(date -u +%H:%M)"
  "$part" || failed+=("$part")
done
echo "== Done, $(date -u +%H:%M)"
if [ ${#failed[@]} -gt 0 ]; then echo "Failed: ${failed[*]}" >&2; exit 1; fi
