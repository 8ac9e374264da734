#!/usr/bin/env bash
# Builds everything, with the tests, and runs them. Arguments go to ctest. ORX_NO_INSTALL=1 installs no packages.
set -euo pipefail
CDPATH='' cd "$(dirname "${BASH_SOURCE[0]}")"
. cmake/install_packages.sh
. cmake/configure.sh

install_packages "${build_packages[@]}" "${test_packages[@]}"
configure release -DORX_TESTS=ON
cmake --build --preset release
ctest --preset release -j"$(nproc)" "$@"
