#!/bin/sh
# exported_symbols.sh LIBRARY LIST: the library exports exactly the symbols of the list.
set -eu
if ! nm -D --defined-only "$1" | cut -d' ' -f3- | c++filt | LC_ALL=C sort -u | diff -u "$2" -; then
  echo "exported and listed symbols differ (- listed, + exported)"
  exit 1
fi
