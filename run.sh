#!/usr/bin/env bash
# Builds the library and the command-line host, then runs the host with the arguments given; without any, it shows its
# commands and the sample suite.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$root/cmake/install_packages.sh"

install_packages "${build_packages[@]}"
build=$root/build/release
[ -f "$build/build.ninja" ] || (cd "$root" && cmake --preset release) >&2
cmake --build "$build" --target orx-cli -- --quiet | sed '/^ninja: no work to do/d' >&2

orx=$build/apps/orx/orx
[ $# = 0 ] || exec "$orx" "$@"

"$orx" --help
export ORX_DRIVES=$root/examples/suite/drives
show() {
  printf '\n$ orx %s %s "%s"\n' "$@"
  "$orx" "$@"
}
echo "The sample suite, whose drives are in $ORX_DRIVES"
show list show 'C:\Projects\projects.qpl'
show project show 'C:\Projects\Kestrel Ridge\North Pit\north_pit.qpr'
show project show 'C:\Projects\Gruental\Stollen 4\stollen_4.qpr'
