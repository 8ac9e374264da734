#!/usr/bin/env bash
# install_test.sh BUILD LIBDIR COMPILER FLAGS: another CMake project and pkg-config find an installed library that was
# moved, the installed headers are those that orx.h includes, and the installed host finds its library.
set -euo pipefail
build=$1 libdir=$2 compiler=$3 flags=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" > "$work/log"
mv "$work/first" "$work/moved here"
prefix="$work/moved here"

"$prefix/bin/orx" --version
cd "$prefix/include"
diff <(find orx -name '*.h' | sort) \
  <("$compiler" -std=c++20 -I. -M -x c++ - <<< '#include <orx/orx.h>' | tr -s ' \\' '\n' | grep '^orx/.*\.h$' | sort -u)

cmake -G Ninja -S "$here" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_CXX_FLAGS="$flags" >> "$work/log"
cmake --build "$work/cmake" >> "$work/log"
"$work/cmake/stranger"

export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
eval "$compiler $flags -std=c++20 '$here/stranger.cpp' -o '$work/by_hand' $(pkg-config --cflags --libs 'orx >= 6.9')"
LD_LIBRARY_PATH="$prefix/$libdir" "$work/by_hand"
