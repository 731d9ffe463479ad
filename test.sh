#!/usr/bin/env bash
# Installs missing packages, builds everything and runs the tests. Passes its arguments, such as "-R Session", to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

cmake/set-up.sh
cmake --preset release
cmake --build --preset release
ctest --preset release --parallel "$(nproc)" "$@"
