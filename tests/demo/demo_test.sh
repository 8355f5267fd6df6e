#!/usr/bin/env bash
# Runs the demo with the command of BUILD and checks what it printed.
#   demo_test.sh SOURCE BUILD
set -euo pipefail
output=$(KALMIA_BUILD_DIR=$2 "$1/run-demo.sh")
printf '%s\n' "$output"

rmsep() { printf '%s\n' "$output" | awk -v name="$1" '/octane units$/ && index($0, name) { print $(NF - 2) }'; }
complete=$(rmsep "complete")
holes=$(rmsep "5 % of cells missing")

# Octane numbers are given in steps of 0.05, and engine tests repeat to about 0.2 units: an error below 0.1 would mean that
# the model has seen the samples, one above 0.3 (the spread of the ten samples is 1.6) that the model is wrong. One cell in
# twenty of 401 neighbouring, highly correlated channels carries next to no information of its own, so the error may
# grow by a quarter at the most.
awk -v complete="$complete" -v holes="$holes" 'BEGIN {
  if (!(complete > 0.1 && complete < 0.3)) { print "RMSEP of complete spectra out of bounds: " complete; exit 1 }
  if (!(holes > 0.1 && holes < 1.25 * complete)) { print "RMSEP with holes out of bounds: " holes; exit 1 }
}'
