#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
#   ./run-tests.sh               the optimised build: unit tests, the command, the installed package, the demo
#   ./run-tests.sh asan release  the named presets one after the other (asan: address and undefined-behaviour sanitizers)
# All builds with one summary: .ci/run.
set -euo pipefail
cd "$(dirname "$0")"

presets=("$@")
if [ ${#presets[@]} -eq 0 ]; then presets=(release); fi

case " ${presets[*]} " in
  *" clang "* | *" tsan "* | *" fuzz "*) ./install-packages.sh clang report ;;
  *) ./install-packages.sh report ;;
esac
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}; fi
export CCACHE_SLOPPINESS=pch_defines,time_macros  # or it leaves alone whatever has precompiled headers

for preset in "${presets[@]}"; do
  echo "== Building '$preset' in build/$preset"
  cmake --preset "$preset" >/dev/null
  cmake --build "build/$preset" --parallel "$(nproc)"
  echo "== Testing '$preset'"
  ctest --preset "$preset" --parallel "$(nproc)"
done
