#!/bin/sh
# exported_symbols.sh LIBRARY LIST: the library exports exactly the symbols of the list.
set -eu
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
nm -D --defined-only "$1" | cut -d' ' -f3- | c++filt | LC_ALL=C sort -u > "$actual"
if ! diff -u "$2" "$actual"; then
  echo "exported and listed symbols differ (- listed, + exported)"
  exit 1
fi
