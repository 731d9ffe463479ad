#!/usr/bin/env bash
# Installs the missing packages. For Debian 12. If no package is missing, the script changes nothing and needs neither a
# network nor root privileges.
#   set-up.sh          all packages: to build, test and check this repository
#   set-up.sh --use    only what is needed to build, install and try the libraries and programs
set -euo pipefail

used=(
  # compiler and build
  g++ cmake ninja-build make pkg-config git
  # libraries
  libsqlite3-dev libcurl4-openssl-dev libssl-dev nlohmann-json3-dev libspdlog-dev libboost-dev
  # libraries of the programs
  libcrypt-dev libcli11-dev libkainjow-mustache-dev libutf8proc-dev libjs-chart.js
  # certificates, and the programs of a trial
  ca-certificates openssl sqlite3
)

developed=(
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev libcpp-httplib-dev curl python3
  # Debian packages
  dpkg-dev file
  # checks
  clang-format clang-tidy valgrind
  # documentation site
  doxygen doxygen-awesome-css
  # fuzzing and the address sanitizer; llvm adds source lines to their reports
  clang libclang-rt-dev llvm
)

case ${1-} in
  "") packages=("${used[@]}" "${developed[@]}") ;;
  --use) packages=("${used[@]}") ;;
  *)
    echo "usage: set-up.sh [--use]" >&2
    exit 2
    ;;
esac

"$(dirname "${BASH_SOURCE[0]}")/install-packages.sh" "${packages[@]}"
