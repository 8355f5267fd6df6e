#!/usr/bin/env bash
# Holds the structure of the sources: which room may include which, what is inside, where the missing value lives.
#   tools/check-house.sh          prints every breach with its file and reason, and fails if there is one
#   tools/check-house.sh FOLDER   of the sources in another folder
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

# The floors of the house, ground floor first: a file includes its own room and rooms before it.
rooms=(support containers kernels statistics signal pcapls opls o2pls cluster
       analysis/text analysis/table analysis/blocks analysis/steps analysis/model analysis/fit analysis/validation
       analysis/cluster analysis/chart analysis/figure analysis/file analysis/report)

# In an order that does not depend on the disk; finding nothing is no failure.
search() { { grep -r --include='*.h' --include='*.cpp' "$@" || true; } | LC_ALL=C sort; }

breaches=0
breach() { echo "$1: $2"; breaches=$((breaches + 1)); }

includes_of() {  # folders: file:included, a line an include
  search -oE '#include "[^"]+"' "$@" | sed 's/#include "\(.*\)"/\1/'
}

floor_of() {  # sets `floor` for a path below kalmia/; 0 for a file that belongs to no room, such as kalmia/kalmia.h
  local room
  floor=0
  for room in "${rooms[@]}"; do
    floor=$((floor + 1))
    case "$1" in kalmia/"$room"/*) return ;; esac
  done
  floor=0
}

check_floors() {  # every include of a file in a room
  local file included floor own
  while IFS=: read -r file included; do
    floor_of "$file"
    own=$floor
    if [ "$own" -eq 0 ]; then continue; fi
    floor_of "$included"
    case "$included" in
      app/*) breach "$file" "includes $included, which belongs to the command"; continue ;;
    esac
    if [ "$floor" -gt "$own" ]; then breach "$file" "includes $included, a later room"; fi
  done < <(includes_of kalmia)
}

is_inside() { case "$1" in kalmia/*/internal/* | kalmia/kernels/*/*) return 0 ;; *) return 1 ;; esac; }

check_inside() {  # what is public reaches nothing that is inside, nor does who is no room of the library
  local file included
  while IFS=: read -r file included; do
    if ! is_inside "$included" || is_inside "$file"; then continue; fi
    case "$file:$included" in
      kalmia/analysis/*.cpp:kalmia/analysis/*) continue ;;
    esac
    case "$file" in
      kalmia/analysis/* | app/* | examples/*) breach "$file" "includes $included, which is inside the library" ;;
      *.h) breach "$file" "is installed, and includes $included, which is not" ;;
    esac
  done < <(includes_of kalmia app examples)
}

check_exports() {  # what a public header declares can be linked from the shared library
  local place file
  while IFS=: read -r file place _; do
    if ! is_inside "$file"; then breach "$file:$place" "declares a public class without KALMIA_EXPORT"; fi
  done < <(search -nE '^class [A-Za-z0-9_]+( final)?( :| \{|$)' kalmia | grep -E '^[^:]*\.h:')
  while IFS=: read -r file place _; do
    if ! is_inside "$file"; then breach "$file:$place" "declares a public function without KALMIA_EXPORT"; fi
  done < <(search -nE '^[A-Za-z_][A-Za-z0-9_:<>,&* ]* \*?&?[A-Za-z0-9_]+\(' kalmia/analysis | grep -E '^[^:]*\.h:' |
             grep -vE ':(inline|constexpr|template|extern|using|static|friend|namespace|KALMIA_EXPORT) ')
}

check_analysis() {  # the floor above the library knows no command line
  local file
  while IFS= read -r file; do
    breach "$file" "includes the parser of command lines, which belongs to the command"
  done < <(search -lE '#include [<"]CLI/' kalmia)
}

check_circles() {  # a header and its source are one: no two of them need each other, be it by way of others
  local line circle=''
  while IFS= read -r line; do
    case "$line" in
      *'contains a loop:') if [ -n "$circle" ]; then breach "${circle%% *}" "is in a circle: $circle"; fi; circle='' ;;
      *) circle="${circle:+$circle needs }${line#tsort: }" ;;
    esac
  done < <(includes_of kalmia/analysis | sed -E 's/\.(h|cpp):/ /; s/\.h$//' | awk '$1 != $2 && $2 ~ /^kalmia\/analysis/' |
             tsort 2>&1 >/dev/null || true; echo 'contains a loop:')
}

check_missing_value() {  # -99 is defined once
  local place
  while IFS= read -r place; do
    breach "$place" "defines the missing value a second time: its home is kalmia/containers/Missing.h"
  done < <(search -nE \
             -e '^[^/]*(constexpr|const|#define)[^/(;]*[= ({]-99(\.0*)?[fFL]?[;)} ]* *(//.*)?$' \
             -e '= static_cast<(float|double)>\(kMissing\);' \
             kalmia app | grep -v '^kalmia/containers/Missing.h:' | cut -d: -f1,2)
}

check_floors
check_inside
check_exports
check_analysis
check_circles
check_missing_value
if [ "$breaches" -gt 0 ]; then
  echo "$breaches breaches of the house's rules"
  exit 1
fi
echo "The house stands: $(search -l '' kalmia | wc -l) files in their rooms"
