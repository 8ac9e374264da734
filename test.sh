#!/usr/bin/env bash
# Builds everything, with the tests, and runs them. Arguments go to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. cmake/install_packages.sh

install_packages "${build_packages[@]}" "${test_packages[@]}"
if [ ! -f build/release/build.ninja ] || ! grep -q '^ORX_TESTS:BOOL=ON$' build/release/CMakeCache.txt; then
  cmake --preset release -DORX_TESTS=ON
fi
cmake --build --preset release
ctest --preset release -j"$(nproc)" "$@"
