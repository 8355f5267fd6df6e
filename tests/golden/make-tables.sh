#!/usr/bin/env bash
# Makes the tables of the cases from those of examples/data.
#   make-tables.sh EXAMPLES OUT
set -euo pipefail
cp "$1/wine.csv" "$1/oliveoil.csv" "$1/drift.csv" "$1/tank.csv" "$2"

# Every eighth channel of the gasoline spectra: as good for a model, and small enough to keep what comes of it.
awk 'BEGIN { FS = OFS = "," } { line = $1 OFS $2; for (i = 3; i <= NF; i += 8) line = line OFS $i; print line }' \
  "$1/gasoline.csv" >"$2/spectra.csv"

# Empties one cell in twenty but for those of the first KEEP columns, by a seeded generator that is the same in every awk
# (S. K. Park and K. W. Miller, Communications of the ACM 31 (1988) 1192-1201).
take_out_cells() {  # KEEP < table
  awk -v keep="$1" 'BEGIN { FS = OFS = ","; seed = 7 }
    NR > 1 { for (i = keep + 1; i <= NF; i++) { seed = (16807 * seed) % 2147483647; if (seed < 0.05 * 2147483647) $i = "" } }
    { print }'
}
take_out_cells 2 <"$2/spectra.csv" >"$2/holes.csv"
take_out_cells 2 <"$1/wine.csv" >"$2/wine-holes.csv"
take_out_cells 1 <"$1/oliveoil.csv" >"$2/oil-holes.csv"

# Some wines, the last one of ten times the alcohol.
awk 'BEGIN { FS = OFS = "," } NR == 1 || NR % 45 == 2 { if (NR == 137) $3 *= 10; print }' "$1/wine.csv" >"$2/few-wines.csv"

# Far from zero: 10,000,000 on top of every number.
move_far() {
  awk 'BEGIN { FS = OFS = "," } NR > 1 { for (i = 2; i <= NF; i++) if ($i != "") $i = sprintf("%.4f", $i + 10000000) } { print }'
}
move_far <"$1/oliveoil.csv" >"$2/far.csv"
move_far <"$2/oil-holes.csv" >"$2/far-holes.csv"

head -n 101 "$1/drift.csv" >"$2/first-drift.csv"
printf 'job,very,fairly,little,none\nA,1,2,1,0\nB,3,3,6,1\nC,10,10,14,9\nD,6,7,12,11\n' >"$2/counts.csv"
