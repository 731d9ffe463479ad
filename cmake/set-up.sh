#!/usr/bin/env bash
# Installs what building, testing, checking and the demonstration need and this machine does not have yet.
# With everything in place it changes nothing, needs no network and no rights. Made for Debian 12.
set -euo pipefail

packages=(
  # compiler and build
  g++ cmake ninja-build pkg-config git
  # libraries
  libsqlite3-dev libcurl4-openssl-dev libssl-dev nlohmann-json3-dev libspdlog-dev libboost-dev libcpp-httplib-dev
  libcli11-dev libkainjow-mustache-dev libutf8proc-dev
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev
  # Debian packages
  dpkg-dev file
  # checks
  clang-format clang-tidy valgrind
  # the documentation's site
  doxygen
  # fuzzing and the address sanitizer; llvm names the places in their reports
  clang libclang-rt-dev llvm
  # the demonstration, and what tests compare with
  ca-certificates openssl sqlite3 curl python3
)

if ! command -v dpkg-query >/dev/null; then
  echo "set-up.sh: this is no Debian system; what it needs is, by Debian's names: ${packages[*]}" >&2
  exit 1
fi

missing=()
for package in "${packages[@]}"; do
  # The format is dpkg-query's own, not the shell's.
  # shellcheck disable=SC2016
  state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  if [[ "$state" != installed ]]; then
    missing+=("$package")
  fi
done

if [[ ${#missing[@]} -eq 0 ]]; then
  exit 0
fi

as_root=()
if [[ $EUID -ne 0 ]]; then
  as_root=(sudo)
fi

echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update --quiet
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install --quiet --yes --no-install-recommends "${missing[@]}"
