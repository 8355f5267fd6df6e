#!/usr/bin/env bash
# Kalmia's main job on real data: models the octane number of 50 gasoline samples from their near-infrared spectra and
# predicts 10 samples that the model has not seen, once from complete spectra and once with 5 % of the cells taken out.
set -euo pipefail
cd "$(dirname "$0")"

./install-packages.sh
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}; fi
build=${KALMIA_BUILD_DIR:-build/release}
if [ -z "${KALMIA_BUILD_DIR:-}" ]; then
  echo "== Building the command in $build"
  cmake --preset release >/dev/null
  cmake --build "$build" --target kalmia_command --parallel "$(nproc)"
fi
kalmia=$build/app/kalmia
data=examples/data/gasoline.csv
work=$build/demo
mkdir -p "$work"

head -n 51 "$data" >"$work/complete-train.csv"
{ head -n 1 "$data"; tail -n 10 "$data"; } >"$work/complete-new.csv"

# Empties every spectrum cell with probability 5 %, by a seeded generator that is the same in every awk
# (S. K. Park and K. W. Miller, Communications of the ACM 31 (1988) 1192-1201).
take_out_cells() {
  awk -v seed="$1" 'BEGIN { FS = OFS = "," }
    NR > 1 { for (i = 3; i <= NF; i++) { seed = (16807 * seed) % 2147483647; if (seed < 0.05 * 2147483647) $i = "" } }
    { print }'
}
take_out_cells 1 <"$work/complete-train.csv" >"$work/holes-train.csv"
take_out_cells 2 <"$work/complete-new.csv" >"$work/holes-new.csv"

fit_and_predict() {  # NAME: fits NAME-train.csv, predicts NAME-new.csv, keeps what is printed
  "$kalmia" pls "$work/$1-train.csv" --y octane --id sample --save "$work/$1.kalmia" | tee "$work/$1-fit.txt"
  echo
  "$kalmia" predict "$work/$1.kalmia" "$work/$1-new.csv" | tee "$work/$1-predictions.txt"
}

echo
echo "== Complete spectra"
fit_and_predict complete
echo
echo "== The same spectra with 5 % of their cells missing"
fit_and_predict holes

summary() {  # NAME TEXT: one line of the table below, from what fit_and_predict kept
  local components error
  components=$(awk '/components? kept/ { print $1 }' "$work/$1-fit.txt")
  error=$(awk '/RMSEP/ { getline; print $3 }' "$work/$1-predictions.txt")
  printf '  %-24s  %10s  %s octane units\n' "$2" "$components" "$error"
}

echo
echo "== Ten samples that neither model has seen, side by side"
printf '  %-24s  %10s  %s\n' "spectra" "components" "RMSEP"
summary complete "complete"
summary holes "5 % of cells missing"
