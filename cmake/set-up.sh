#!/usr/bin/env bash
# Installs the missing packages for the build, the tests, the checks and the demonstration. For Debian 12. If no package
# is missing, the script changes nothing and needs neither a network nor root privileges.
set -euo pipefail

packages=(
  # compiler and build
  g++ cmake ninja-build pkg-config git
  # libraries
  libsqlite3-dev libcurl4-openssl-dev libssl-dev nlohmann-json3-dev libspdlog-dev libboost-dev libcpp-httplib-dev
  libcrypt-dev libcli11-dev libkainjow-mustache-dev libutf8proc-dev
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

"$(dirname "${BASH_SOURCE[0]}")/install-packages.sh" "${packages[@]}"
