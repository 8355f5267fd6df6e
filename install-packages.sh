#!/usr/bin/env bash
# Installs the Debian packages that Kalmia is built from, but only those that are missing.
#   ./install-packages.sh              what the command, the demo and the tests need
#   ./install-packages.sh clang bench  and what the presets of clang++ and the benchmarks need
#   ./install-packages.sh abi          and what compares the interfaces of shared libraries
#   ./install-packages.sh report       and what tests pages of models in a browser
set -euo pipefail

packages=(
  g++ cmake ninja-build
  libboost-dev libboost-thread-dev                          # threads, functions
  libhwy-dev                                                # vector instructions
  libmd-dev                                                 # MD5
  libcli11-dev nlohmann-json3-dev zlib1g-dev                # the command: options, JSON, gzip
  libgtest-dev libgmock-dev python3                         # the tests, the check of the documentation's links
  libbenchmark-dev                                          # the guard of the speed
)
# Fetches what reports are drawn with. Whoever has another npm keeps it.
if ! command -v npm >/dev/null; then packages+=(nodejs npm); fi
for kind in "$@"; do
  case $kind in
    clang) packages+=(clang libomp-dev libclang-rt-dev llvm) ;;  # OpenMP, sanitizers, names in their reports
    bench) packages+=(libeigen3-dev) ;;                          # products beside ours
    abi) packages+=(abigail-tools) ;;                            # interfaces of shared libraries
    report) packages+=(chromium chromium-driver python3-selenium poppler-utils fonts-dejavu-core) ;;  # pages, paper
    *) echo "$0 knows no packages for '$kind'" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then exit 0; fi

echo "== Installing with apt-get: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Run this as root, or install sudo: ${missing[*]} are missing." >&2; exit 1; }
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
