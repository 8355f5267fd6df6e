#!/usr/bin/env bash
# Runs every case of cases.txt and holds what the command prints and writes against the files in expected/, byte by byte.
# The demo and the programs of examples/ are cases too: what they print.
#   golden.sh BUILD WORK          compares what BUILD holds, in the folder WORK; fails with the differences
#   golden.sh --write BUILD WORK  writes expected/ anew: for texts that were reworded on purpose; read the diff then
set -euo pipefail
write=false
if [ "$1" = --write ]; then write=true; shift; fi
build=$(realpath "$1")
command=$build/app/kalmia
mkdir -p "$2"
work=$(realpath "$2")
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work/data" "$work/old" "$work/cases"
mkdir -p "$work/data" "$work/cases"
"$here/make-tables.sh" "$here/../../examples/data" "$work/data"
cp -r "$here/../app/data" "$work/old"

run_case() {  # NAME WORDS: runs the command in a folder of this name; paths are relative, so that outputs name no place
  local folder=$work/cases/$1 words=$2 code=0
  words=${words//\$data/..\/..\/data}
  words=${words//\$old/..\/..\/old}
  words=${words//@/..\/}
  mkdir "$folder"
  # shellcheck disable=SC2086  # the words of a case contain no blanks
  (cd "$folder" && "$command" $words >stdout 2>stderr) || code=$?
  echo "$code" >"$folder/exit"
}

count=0
while IFS= read -r line; do
  case "$line" in '' | '#'*) continue ;; esac
  run_case "${line%%: *}" "${line#*: }"
  count=$((count + 1))
done <"$here/cases.txt"

keep_output() {  # NAME PROGRAM ARGUMENTS: what it prints, without this checkout's place in it
  local folder=$work/cases/$1 code=0
  mkdir "$folder"
  "${@:2}" >"$folder/stdout" 2>"$folder/stderr" || code=$?
  echo "$code" >"$folder/exit"
  count=$((count + 1))
}
examples=$here/../../examples
for source in "$examples"/*.cpp; do
  name=$(basename "$source" .cpp)
  case "$name" in
    gasoline_* | recipe_pls | recipe_opls | recipe_filter | recipe_validation | recipe_preprocess) table=gasoline ;;
    olive_* | recipe_o2pls) table=oliveoil ;;
    process_drift | recipe_chart) table=drift ;;
    recipe_spectrum) table=tank ;;
    wine_* | recipe_*) table=wine ;;
    *) echo "$name.cpp is no case yet: say which table it reads"; exit 1 ;;
  esac
  keep_output "example-$name" "$build/examples/$name" "$examples/data/$table.csv"
done
keep_output demo env KALMIA_BUILD_DIR="$build" "$here/../../run-demo.sh"
sed -i "s|$build|build|g" "$work/cases/demo/stdout"

if $write; then
  rm -rf "$here/expected"
  cp -r "$work/cases" "$here/expected"
  echo "$count cases written"
elif diff --recursive --brief "$here/expected" "$work/cases"; then
  echo "$count cases print and write the same bytes as before"
else
  diff --recursive --unified=1 "$here/expected" "$work/cases" | cut -c1-200 | head -n 100
  exit 1
fi
