#!/usr/bin/env bash
# Installs the missing packages for the build, the tests, the checks and the demonstration. For Debian 12. If no package
# is missing, the script changes nothing and needs neither a network nor root privileges.
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
  # documentation site
  doxygen
  # fuzzing and the address sanitizer; llvm adds source lines to their reports
  clang libclang-rt-dev llvm
  # demonstration, and programs that the tests run
  ca-certificates openssl sqlite3 curl python3
)

if ! command -v dpkg-query >/dev/null; then
  echo "set-up.sh: this is not a Debian system; install these Debian packages or their equivalents: ${packages[*]}" >&2
  exit 1
fi

missing=()
for package in "${packages[@]}"; do
  # dpkg-query expands the format, not the shell.
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
