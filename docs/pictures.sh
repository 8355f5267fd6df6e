#!/usr/bin/env bash
# Draws the pictures of the documentation that the command draws, from the tables in examples/data:
#   docs/pictures.sh [BUILD]    BUILD holds the command, build/release by default
# docs/octane.py and docs/wine.py draw the other two.
set -euo pipefail
cd "$(dirname "$0")/.."
kalmia=$(realpath "${1:-build/release}/app/kalmia")
docs=$PWD/docs
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd examples/data  # pictures name the table as the command line does

"$kalmia" cluster wine.csv --method ward --id cultivar --exclude sample --cut 3 --svg "$docs/wine_tree.svg" >/dev/null

head -n 101 drift.csv >"$work/first.csv"  # the first 20 hours
"$kalmia" chart "$work/first.csv" --column diameter --type cusum --subgroup 5 --save-limits "$work/cusum.limits" >/dev/null
"$kalmia" chart drift.csv --column diameter --type cusum --limits-from "$work/cusum.limits" \
  --svg "$docs/drift.svg" --title "CuSum of 200 diameters" --x-label hour --y-label "diameter, mm" >/dev/null

"$kalmia" spectrum tank.csv --column level --with inflow --lags 24 --svg "$docs/tank.svg" >/dev/null

"$kalmia" pls gasoline.csv --y octane --id sample --svg "$work/gasoline" >/dev/null
cp "$work/gasoline/validation.svg" "$docs/validation.svg"
