#!/usr/bin/env bash
# Sets this machine up, builds everything and runs the tests. Arguments go to ctest, for example "-R Session".
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

cmake/set-up.sh
cmake --preset release
cmake --build --preset release
ctest --preset release --parallel "$(nproc)" "$@"
